#include "base/output_file.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include "base/diagnostics.h"
#include "base/run_state.h"

namespace {

/// Where an output goes.
char const* place_of(std::string const& name) {
  return discards_outputs ? "/dev/null" : name.c_str();
}

[[noreturn]] void stop_unwritable(std::string const& name) {
  stop(name + ": can't be written: " + std::strerror(errno));
}

}  // namespace

OutputFile::OutputFile(std::string const& file_name, char const* mode)
    : file(open_output(file_name, mode)), name(file_name) {}

OutputFile OutputFile::if_possible(std::string const& file_name, char const* mode) {
  OutputFile output;
  output.file = std::fopen(place_of(file_name), mode);
  if (output.file) run_facts.outputs.insert(file_name);
  output.name = file_name;
  return output;
}

OutputFile::~OutputFile() {
  if (file) std::fclose(file);
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : file(std::exchange(other.file, nullptr)), name(std::move(other.name)) {}

OutputFile& OutputFile::operator=(OutputFile&& other) noexcept {
  std::swap(file, other.file);
  std::swap(name, other.name);
  return *this;
}

void OutputFile::flush() const { flush_output(file, name); }

WholeFile::WholeFile(std::string const& file_name)
    : name(file_name), part_name(file_name + ".part"), part(part_name, "wt") {}

void WholeFile::complete() {
  part.flush();
  part = OutputFile();
  if (!discards_outputs && std::rename(part_name.c_str(), name.c_str()) != 0) stop_unwritable(name);
  run_facts.outputs.erase(part_name);
  run_facts.outputs.insert(name);
}

FILE* open_output(std::string const& name, char const* mode) {
  FILE* const file = std::fopen(place_of(name), mode);
  if (!file) stop_unwritable(name);
  run_facts.outputs.insert(name);
  return file;
}

void flush_output(FILE* file, std::string const& name) {
  if (std::fflush(file) != 0 || std::ferror(file) != 0) stop_unwritable(name);
}

void close_output(FILE* file, std::string const& name) {
  flush_output(file, name);
  if (std::fclose(file) != 0) stop_unwritable(name);
}

std::ofstream open_output_stream(std::string const& name) {
  std::ofstream stream(place_of(name));
  if (!stream) stop_unwritable(name);
  run_facts.outputs.insert(name);
  return stream;
}

void flush_output(std::ofstream& stream, std::string const& name) {
  stream.flush();
  if (!stream) stop_unwritable(name);
}

void end_row(std::ofstream& stream, std::string const& name) {
  stream << '\n';
  flush_output(stream, name);
}
