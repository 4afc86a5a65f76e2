#include "base/protocol.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "base/diagnostics.h"
#include "base/discrete_function.h"
#include "base/input_file.h"
#include "base/run_state.h"

double Protocol::TimeOffset = 0.0;

namespace {

constexpr unsigned table_type = 999;
constexpr char const* end_message = "Kraj - poslednji red protokola dostignut";

std::istringstream open_input(std::string const& name, std::string const& wanted_by) {
  if (auto const text = read_input(name)) return std::istringstream(*text);
  stop(wanted_by + name + ": can't be read: " + std::strerror(errno));
}

bool is_blank(std::string const& line) {
  return line.find_first_not_of(" \t\r\f\v") == std::string::npos;
}

std::string at_line(std::string const& file, int line) {
  return file + ", line " + std::to_string(line);
}

/// Takes the fields of one row apart and refuses what can't be read.
class RowReader {
 public:
  RowReader(std::string const& line, std::string const& row) : words(line), where(row) {}

  double number(char const* field) {
    std::string const word = next(field, "a finite number");
    char* end = nullptr;
    double const value = std::strtod(word.c_str(), &end);
    bool const is_whole_word = end == word.data() + word.size();
    bool const is_decimal = word.find_first_not_of("0123456789+-.eE") == std::string::npos;
    if (!is_whole_word || !is_decimal || !std::isfinite(value)) {
      refuse(where, field, word, "a finite number");
    }
    return value;
  }

  unsigned whole_number(char const* field) {
    char const* const accepted = "a whole number of at least 0";
    std::string const word = next(field, accepted);
    if (word.size() > 9 || word.find_first_not_of("0123456789") != std::string::npos) {
      refuse(where, field, word, accepted);
    }
    return static_cast<unsigned>(std::stoul(word));
  }

  std::string next(char const* field, char const* accepted) {
    std::string word;
    if (!(words >> word)) refuse(where, field, "", accepted);
    return word;
  }

 private:
  std::istringstream words;
  std::string const& where;
};

/// How many of p0 to p3 the law of a type uses.
unsigned parameters_of_type(unsigned type) {
  switch (type) {
    case 0:
      return 1;
    case 1:
    case 4:
      return 2;
    case 2:
    case 3:
    case 5:
      return 4;
    default:
      return 0;
  }
}

/// Values behind the first four columns that a listed row shows; 0 for types that aren't listed.
unsigned listed_parameters(unsigned type) {
  return type == 3 || type == 5 ? 0 : parameters_of_type(type);
}

/// Writes one row of a listed type.
void write_row(FILE* file, ProtocolStep_s const& step) {
  unsigned const n = listed_parameters(step.type);
  if (n == 0) return;
  std::fprintf(file, "%.2f %.2f %d %d ", step.start, step.dt, static_cast<int>(step.mode),
               static_cast<int>(step.type));
  double const parameters[] = {step.p0, step.p1, step.p2, step.p3};
  for (unsigned i = 0; i < n; ++i) std::fprintf(file, "%.2f ", parameters[i]);
  std::fprintf(file, "\n");
}

}  // namespace

Protocol::Protocol(std::string const& file_name) {
  read_protocol(file_name);
  ca_file = OutputFile("Ca_function.csv", "wt");
  std::fprintf(ca_file.get(), "Time, Calcium\n");
  ca_file.flush();
}

void Protocol::read_protocol(std::string const& file_name) {
  protocol_file = file_name;
  steps.clear();
  std::istringstream file = open_input(file_name, "");
  int number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    if (!is_blank(line)) read_row(line, at_line(file_name, number));
  }
  if (steps.empty()) refuse(file_name, "the number of rows", "0", "1 or more");
  current = &steps.front();
}

void Protocol::read_row(std::string const& line, std::string const& where) {
  RowReader row(line, where);
  ProtocolStep_s step;
  step.start = row.number("start");
  step.dt = row.number("step");
  step.mode = row.whole_number("mode");
  step.type = row.whole_number("type");
  double* const parameters[] = {&step.p0, &step.p1, &step.p2, &step.p3};
  char const* const names[] = {"p0", "p1", "p2", "p3"};
  for (unsigned i = 0; i < parameters_of_type(step.type); ++i) {
    *parameters[i] = row.number(names[i]);
  }
  if (!(step.dt > 0.0)) refuse(where, "step", shown(step.dt), "a number above 0");
  if (step.type == 4 && !(step.p0 > 0.0)) {
    refuse(where, "p0", shown(step.p0), "a slope above 0 in a row of type 4");
  }
  // Behind a type 4 row the starts count from the end of its ramp.
  bool const same_clock = !steps.empty() && steps.back().type != 4;
  if (same_clock && step.start < steps.back().start) {
    refuse(where, "start", shown(step.start),
           "a time of at least " + shown(steps.back().start) + ", the row before");
  }
  if (step.type == table_type) {
    function_file = row.next("table file", "the name of a file");
    read_table(where);
  }
  steps.push_back(step);
}

void Protocol::read_table(std::string const& where) {
  function.clear();
  std::istringstream file = open_input(function_file, where + ": ");
  int number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    if (is_blank(line)) continue;
    std::string const table_line = at_line(function_file, number);
    RowReader row(line, table_line);
    double const time = row.number("time");
    double const value = row.number("value");
    if (!function.empty() && !(time > function.back().first)) {
      refuse(table_line, "time", shown(time),
             "a time above " + shown(function.back().first) + ", the row before");
    }
    function.emplace_back(time, value);
  }
  if (function.size() < 2) {
    refuse(function_file, "the number of rows", std::to_string(function.size()), "2 or more");
  }
}

void Protocol::require_end() const {
  if (steps.size() >= 2 && steps.back().type == table_type) {
    warn(protocol_file +
         ": the table row is the last one and only marks the end; "
         "its table is not used");
  }
  if (steps.size() >= 2 || steps.front().type == table_type) return;
  refuse(protocol_file, "the number of rows", "1",
         "2 or more, the last of which marks the end, or one row of type 999");
}

double Protocol::value_at(double time, double lastResponse) {
  if (current->type == 4 && current->started == 0) start_ramp(time, lastResponse);
  double const value = value_of_row(time - current->start);
  if (!std::isfinite(value)) {
    refuse(protocol_file, "the value at time " + shown(time), shown(value),
           "rows whose law has a finite value");
  }
  return value;
}

std::optional<Prescribed> Protocol::prescribed_at(double time, double lastResponse) {
  double const value = value_at(time, lastResponse);
  if (current->mode == 0) return Prescribed{Prescribed::Quantity::length, value};
  if (current->mode == 1) return Prescribed{Prescribed::Quantity::force, value};
  return std::nullopt;
}

bool Protocol::get_value(double time, unsigned& mode, double& value, double lastResponse) {
  mode = current->mode;
  value = value_at(time, lastResponse);
  return true;
}

void Protocol::start_ramp(double time, double lastResponse) {
  current->p2 = lastResponse;
  current->started = 1;
  TimeOffset = std::abs(lastResponse - current->p1) / current->p0 + time;
  if (ProtocolStep_s* const next = next_row()) next->start += TimeOffset;
}

double Protocol::value_of_row(double tau) const {
  ProtocolStep_s const& s = *current;
  switch (s.type) {
    case 0:
      return s.p0;
    case 1:
      return tau * s.p0 + s.p1;
    case 2:
      return s.p0 * std::sin(2.0 * M_PI * tau * s.p1 + M_PI * s.p3) + s.p2;
    case 3:
      return get_twitch(tau, s.p0, s.p1) * s.p2 / get_twitch_peak(s.p0, s.p1) + s.p3;
    case 4:
      return tau * s.p0 + s.p2;
    case 5: {
      double const value = log_normal(tau);
      std::fprintf(ca_file.get(), "%e,%e\n", tau, value);
      ca_file.flush();
      return value;
    }
    case table_type:
      return GetValue(function, tau);
    default:
      return 0.0;
  }
}

double Protocol::log_normal(double tau) const {
  double const x = 1000.0 * tau;
  if (x < 1.1) return 0.0;
  double const L = std::log10(x);
  double const deviation = std::log(L / current->p2) / current->p1;
  return current->p3 * (current->p0 / L) * std::exp(-0.5 * (deviation * deviation));
}

ProtocolStep_s* Protocol::next_row() const {
  return current == &steps.back() ? nullptr : current + 1;
}

bool Protocol::checkForNewProtocol(double time) {
  if (current->type == table_type) {
    if (std::abs(time - function.back().first) > 1e-7) return false;
    std::printf("%s\n", end_message);
    return true;
  }
  ProtocolStep_s* const next = next_row();
  if (!next) return true;
  if (!(std::abs(time - next->start) < 1e-9 || time > next->start)) return false;
  current = next;
  std::printf("Novi protocol\n");
  if (ProtocolStep_s* const after = next_row()) {
    after->start += TimeOffset;
    return false;
  }
  std::printf("%s\n", end_message);
  return true;
}

void Protocol::refuse_missed_end(double time) const {
  if (current->type != table_type || time <= function.back().first + 1e-7) return;
  stop(protocol_file + ": the table " + function_file + " ends the run at the absolute time " +
       shown(function.back().first) + ", which no time step meets; now at " + shown(time));
}

double Protocol::get_twitch(double t, double tau1, double tau2) const {
  return std::exp(-t / tau1) - std::exp(-t / tau2);
}

double Protocol::get_twitch_peak(double tau1, double tau2) const {
  double const t_peak = -std::log(tau2 / tau1) / (1.0 / tau2 - 1.0 / tau1);
  return get_twitch(t_peak, tau1, tau2);
}

double Protocol::longest_step() const {
  double longest = steps.front().dt;
  for (std::size_t i = 1; i + 1 < steps.size(); ++i) longest = std::max(longest, steps[i].dt);
  return longest;
}

void Protocol::WriteToTaveloOutput() const {
  for (ProtocolStep_s const& step : steps) {
    if (step.type == table_type) std::fprintf(fOutputFile, "%s \n", function_file.c_str());
    write_row(fOutputFile, step);
  }
  std::fprintf(fOutputFile, "\n");
}

void Protocol::write_protocol(std::string const& file_name) const {
  OutputFile const file(file_name, "w");
  for (ProtocolStep_s const& step : steps) write_row(file.get(), step);
  file.flush();
}
