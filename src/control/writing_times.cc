#include "control/writing_times.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sstream>

#include "base/diagnostics.h"
#include "base/input_file.h"

namespace {

constexpr char const* writing_times_name = "WritingDistributionSteps.dat";

/// Whether a line holds numbers and nothing else.
bool holds_numbers(std::string const& line) {
  std::istringstream words(line);
  int count = 0;
  for (double number; words >> number;) ++count;
  return count > 0 && words.eof();
}

}  // namespace

std::vector<double> read_writing_times() {
  std::vector<double> times;
  auto const text = read_input(writing_times_name);
  if (!text && errno != ENOENT) {
    stop(std::string(writing_times_name) + ": can't be read: " + std::strerror(errno));
  }
  if (!text) {
    std::printf("No file: %s : NO DISTRIBUTIONS TO WRITE\n", writing_times_name);
    return times;
  }
  std::istringstream file(*text);
  std::string heading;
  std::getline(file, heading);
  if (holds_numbers(heading)) {
    warn(std::string(writing_times_name) + ": line 1 is '" + heading +
         "' and is passed over as the heading; times begin in line 2");
  }
  for (double time; file >> time;) times.push_back(time);
  if (!file.eof()) {
    warn(std::string(writing_times_name) + ": entry " + std::to_string(times.size() + 1) +
         " behind the heading is no time; no snapshots from there on");
  }
  return times;
}
