#include "base/logger.h"

#include <cmath>

#include "base/output_file.h"
#include "base/run_state.h"

FILE* Logger::model_vorn_rates = nullptr;
FILE* Logger::atp_ase_rates_6states = nullptr;
FILE* Logger::atp_ase_rates_8states = nullptr;
FILE* Logger::see_stiffness = nullptr;
FILE* Logger::myosin_head_states = nullptr;
FILE* Logger::titin_data = nullptr;
FILE* Logger::convergence_data = nullptr;
FILE* Logger::crossbridge_convergence = nullptr;

namespace {

struct DiagnosticFile {
  FILE** handle;
  char const* path;
};

/// In the order of their numbers.
DiagnosticFile const files[Log::n_files] = {
    {&Logger::model_vorn_rates, "model_vorn_rates.csv"},
    {&Logger::atp_ase_rates_6states, "atp_ase_rates_6states.csv"},
    {&Logger::atp_ase_rates_8states, "atp_ase_rates_8states.csv"},
    {&Logger::see_stiffness, "see_stiffness.csv"},
    {&Logger::myosin_head_states, "myosin_head_states.csv"},
    {&Logger::titin_data, "titin_data.csv"},
    {&Logger::convergence_data, "convergence_data.csv"},
    {&Logger::crossbridge_convergence, "crossbridge_convergence.csv"},
};

char const* path_of(FILE* file) {
  for (DiagnosticFile const& diagnostic : files) {
    if (*diagnostic.handle == file) return diagnostic.path;
  }
  return "a diagnostic file";
}

bool in_logged_time() {
  return std::abs(timeForAll + 1.0) < 1e-6 || (timeForAll >= 0.0 && timeForAll <= 0.5);
}

}  // namespace

FILE* Logger::GetFile(int number) {
  if (number < 0 || number >= Log::n_files) return nullptr;
  OpenFile(files[number].handle, files[number].path);
  return *files[number].handle;
}

void Logger::OpenFile(FILE** handle, char const* path) {
  if (!*handle) *handle = open_output(path, "w");
}

void Logger::WriteToFile(char const* text, FILE* file, bool filtered) {
  if (filtered && !in_logged_time()) return;
  std::fputs(text, file);
  flush_output(file, path_of(file));
}

bool Logger::Takes(int number, bool filtered) {
  return GetFile(number) && (!filtered || in_logged_time());
}

void Logger::Write(char const* text, int number, bool filtered) {
  FILE* const file = GetFile(number);
  if (file) WriteToFile(text, file, filtered);
}

void Logger::Add(char const* text, int number, bool filtered) {
  if (Takes(number, filtered)) std::fputs(text, GetFile(number));
}

void Logger::Flush(int number) {
  if (FILE* const file = GetFile(number)) flush_output(file, path_of(file));
}
