#include "base/diagnostics.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "base/run_state.h"

namespace {

constexpr std::size_t longest_message = 1200;

}  // namespace

void refuse(std::string const& where, std::string const& what, std::string const& got,
            std::string const& accepted) {
  stop(where + ": " + what + " is '" + got + "'; accepted: " + accepted);
}

void stop(std::string const& message) {
  tell(message);
  std::exit(1);
}

void stop_with_message(char const* message, std::string const& detail) {
  std::printf("%s\n", message);
  stop(detail);
}

void tell(std::string const& message) {
  std::fflush(stdout);
  run_facts.messages.push_back(single_line(message));
  std::fprintf(stderr, "tavelo: %s\n", run_facts.messages.back().c_str());
}

void warn(std::string const& message) { tell("warning: " + message); }

void tell_excess(char const* drawn, double sum) {
  std::printf("Internal Error!!!! %s, Sum %e\n", drawn, sum);
  note_excess(drawn, sum);
}

void note_excess(char const* drawn, double sum) {
  RunFacts_s::Excess_s& excess = run_facts.excess;
  if (excess.draws.empty()) excess.first_time = timeForAll;
  if (excess.draws.empty() || excess.last_step != t_timeStep) ++excess.steps;
  excess.last_step = t_timeStep;
  excess.largest_sum = std::max(excess.largest_sum, sum);
  ++excess.draws[drawn];
}

std::string at_step() {
  return " at time " + shown(timeForAll) + ", step " + std::to_string(t_timeStep);
}

std::string shown(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%.12g", number);
  return text;
}

std::string single_line(std::string const& text) {
  std::string line;
  for (char const character : text) {
    auto const code = static_cast<unsigned char>(character);
    bool const blank = std::isspace(code) != 0;
    if (blank && (line.empty() || line.back() == ' ')) continue;
    bool const printable = code >= 0x80 || std::isprint(code) != 0;
    line += blank ? ' ' : printable ? character : '?';
    if (line.size() >= longest_message) return line + " ...";
  }
  return line;
}
