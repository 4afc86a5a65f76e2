#include "base/parameter_file.h"

#include <deal.II/base/parameter_handler.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <regex>
#include <sstream>

#include "base/diagnostics.h"
#include "base/input_file.h"
#include "base/output_file.h"
#include "base/run_state.h"

namespace {

namespace fs = std::filesystem;

/// Of any part of a sarcomere [nm]: 1 mm. A longer one has the wrong unit.
constexpr double longest = 1e6;

/// All declared keys, those of one section behind its name: "section: key, key; section: key".
std::string declared_keys(dealii::ParameterHandler const& handler) {
  std::ostringstream text;
  handler.print_parameters(text, dealii::ParameterHandler::ShortText);
  std::istringstream lines(text.str());
  std::string keys;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string command, name;
    words >> command >> std::ws;
    if (command == "subsection") {
      words >> name;
      keys += (keys.empty() ? "" : "; ") + name + ":";
    } else if (command == "set") {
      std::getline(words, name, '=');
      keys += (keys.back() == ':' ? " " : ", ") + name.substr(0, name.find_last_not_of(' ') + 1);
    }
  }
  return keys;
}

/// A line that the handler refuses.
struct BadLine {
  std::string where;   ///< file, and line where the handler knows it
  std::string reason;  ///< without stack trace and full stop
  std::string line;    ///< the line itself, as " in '...'"
};

BadLine find_bad_line(dealii::ExceptionBase const& exception, std::string const& file_name,
                      std::string const& text) {
  std::ostringstream info;
  exception.print_info(info);
  std::string const message = single_line(info.str());
  BadLine bad = {file_name, message.substr(0, message.find_last_not_of(". ") + 1), ""};
  std::smatch parts;
  if (!std::regex_match(bad.reason, parts, std::regex("Line <(\\d+)> of file <[^:>]*>?: (.*)"))) {
    return bad;
  }
  std::istringstream lines(text);
  std::string line;
  for (int n = std::stoi(parts[1]); n > 0; --n) std::getline(lines, line);
  return {file_name + ", line " + parts[1].str(), parts[2], " in '" + line + "'"};
}

void write_defaults(dealii::ParameterHandler const& handler, std::string const& file_name) {
  if (refuses_missing_parameters) {
    stop("parameter file " + file_name + " is missing; --strict writes no default values");
  }
  std::ostringstream text;
  handler.print_parameters(text, dealii::ParameterHandler::Text);
  WholeFile file(file_name);
  std::fputs(text.str().c_str(), file.get());
  file.finish();
  note_input(file_name, text.str());
  run_facts.defaults.push_back(file_name);
  warn("parameter file " + file_name +
       (discards_outputs ? " is missing; a run writes it with the default values and uses them"
                         : " was missing; it is written with the default values, which are used"));
}

/// The whole text of a file that exists.
std::string read_text(std::string const& file_name) {
  if (auto const text = read_input(file_name)) return *text;
  stop(file_name + ": can't be read as a parameter file: " + std::strerror(errno));
}

/// A file without a word is what remains of one that was lost, rather than one that somebody wrote.
void tell_if_empty(std::string const& text, std::string const& file_name) {
  if (text.find_first_not_of(" \t\r\n\f\v") != std::string::npos) return;
  if (refuses_missing_parameters) {
    stop("parameter file " + file_name + " is empty; --strict takes no default values");
  }
  warn("parameter file " + file_name + " is empty; the default values are used");
}

/// A file that includes itself would never end, and what a run used should stand in its own files.
void refuse_includes(std::string const& text, std::string const& file_name) {
  std::istringstream lines(text);
  int number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    std::istringstream words(line);
    std::string word;
    words >> word;
    if (word == "include" || word == "INCLUDE") {
      refuse(file_name + ", line " + std::to_string(number), "a statement", line,
             "'subsection', 'set', 'end'");
    }
  }
}

}  // namespace

void read_parameter_file(dealii::ParameterHandler& handler, std::string const& file_name) {
  if (file_name.empty()) return;
  std::error_code error;
  if (fs::status(file_name, error).type() == fs::file_type::not_found) {
    write_defaults(handler, file_name);
    return;
  }
  if (error) stop(file_name + ": can't be read as a parameter file: " + error.message());
  std::string const text = read_text(file_name);
  tell_if_empty(text, file_name);
  refuse_includes(text, file_name);
  std::istringstream stream(text);
  try {
    handler.parse_input(stream, file_name);
  } catch (dealii::ParameterHandler::ExcInvalidEntryForPattern const& exception) {
    BadLine const bad = find_bad_line(exception, file_name, text);
    stop(bad.where + ": " + bad.reason);
  } catch (dealii::ExceptionBase const& exception) {
    BadLine const bad = find_bad_line(exception, file_name, text);
    stop(bad.where + ": " + bad.reason + bad.line + "; accepted keys: " + declared_keys(handler));
  } catch (std::exception const& exception) {
    stop(file_name + ": " + exception.what());
  }
}

void load_parameters(std::string const& file_name, ParameterAction const& declare,
                     ParameterAction const& get) {
  dealii::ParameterHandler handler;
  declare(handler);
  read_parameter_file(handler, file_name);
  get(handler);
}

ParameterSection::ParameterSection(dealii::ParameterHandler& parameter_handler,
                                   std::string const& name)
    : ParameterSection(parameter_handler, name, "") {}

ParameterSection::ParameterSection(dealii::ParameterHandler& parameter_handler,
                                   std::string const& name, std::string const& file)
    : handler(parameter_handler), section(name), file_name(file) {
  handler.enter_subsection(section);
}

ParameterSection::~ParameterSection() { handler.leave_subsection(); }

void ParameterSection::declare_text(std::string const& key, std::string const& value) const {
  handler.declare_entry(key, value, dealii::Patterns::Anything(), "");
}

void ParameterSection::declare_selection(std::string const& key, std::string const& value,
                                         std::string const& names) const {
  handler.declare_entry(key, value, dealii::Patterns::Selection(names), "");
}

void ParameterSection::declare_integer(std::string const& key, std::string const& value) const {
  handler.declare_entry(key, value, dealii::Patterns::Integer(), "");
}

void ParameterSection::declare_double(std::string const& key, std::string const& value) const {
  handler.declare_entry(key, value, dealii::Patterns::Double(), "");
}

std::string ParameterSection::text(std::string const& key) const { return handler.get(key); }

double ParameterSection::number(std::string const& key) const {
  // A number that a double can't hold passes the pattern and throws here.
  double value = NAN;
  try {
    value = handler.get_double(key);
  } catch (std::exception const&) {
  }
  if (!std::isfinite(value)) refuse_value(key, "a finite number that a double can hold");
  return value;
}

double ParameterSection::positive(std::string const& key) const {
  double const value = number(key);
  if (!(value > 0.0)) refuse_value(key, "a number above 0");
  return value;
}

double ParameterSection::non_negative(std::string const& key) const {
  double const value = number(key);
  if (!(value >= 0.0)) refuse_value(key, "a number of at least 0");
  return value;
}

double ParameterSection::between(std::string const& key, double lowest, double highest) const {
  double const value = number(key);
  if (!(lowest <= value && value <= highest)) {
    refuse_value(key, "a number from " + shown(lowest) + " to " + shown(highest));
  }
  return value;
}

double ParameterSection::length(std::string const& key) const {
  double const value = number(key);
  if (!(0.0 < value && value <= longest)) {
    refuse_value(key, "a number above 0 and at most " + shown(longest) + " nm");
  }
  return value;
}

int ParameterSection::integer(std::string const& key) const {
  return static_cast<int>(handler.get_integer(key));
}

unsigned ParameterSection::count(std::string const& key, unsigned minimum) const {
  int const value = integer(key);
  if (value < 0 || static_cast<unsigned>(value) < minimum) {
    refuse_value(key, "a whole number of at least " + std::to_string(minimum));
  }
  return static_cast<unsigned>(value);
}

void ParameterSection::refuse_value(std::string const& key, std::string const& accepted) const {
  refuse(file_name + ", section " + section, key, handler.get(key), accepted);
}
