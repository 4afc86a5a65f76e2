#include "control/writing_times.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <sstream>

#include "base/diagnostics.h"
#include "base/input_file.h"

namespace {

constexpr char const* writing_times_name = "WritingDistributionSteps.dat";
constexpr char const* lattice_times_name = "WritingLatticeSteps.dat";

/// Times differ by the rounding of their sums.
constexpr double same_time = 1e-10;

/// Whether a line holds numbers and nothing else.
bool holds_numbers(std::string const& line) {
  std::istringstream words(line);
  int count = 0;
  for (double number; words >> number;) ++count;
  return count > 0 && words.eof();
}

double time_of(std::string const& word, int line) {
  std::istringstream stream(word);
  double time;
  if (stream >> time && stream.eof() && time >= 0.0 && std::isfinite(time)) return time;
  refuse(std::string(lattice_times_name) + ", line " + std::to_string(line), "time", word,
         "a number not below 0");
}

}  // namespace

std::vector<double> read_writing_times() {
  std::vector<double> times;
  auto const text = read_input(writing_times_name);
  if (!text) {
    if (errno != ENOENT) {
      warn(std::string(writing_times_name) + ": can't be read: " + std::strerror(errno) +
           "; no snapshots are written");
    }
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

std::vector<double> read_lattice_times() {
  std::vector<double> times;
  auto const text = read_input(lattice_times_name);
  if (!text && errno == ENOENT) return times;
  if (!text) stop(std::string(lattice_times_name) + ": can't be read: " + std::strerror(errno));
  std::istringstream file(*text);
  std::string line;
  std::getline(file, line);
  if (holds_numbers(line)) {
    refuse(std::string(lattice_times_name) + ", line 1", "heading", line,
           "a line of words; times begin in line 2");
  }
  for (int number = 2; std::getline(file, line); ++number) {
    std::istringstream words(line);
    for (std::string word; words >> word;) times.push_back(time_of(word, number));
  }
  std::sort(times.begin(), times.end());
  return times;
}

bool LatticeTimes::is_due(double now) {
  std::size_t const before = next;
  while (next < times.size() && times[next] <= now + same_time) ++next;
  return next > before;
}
