#pragma once
/// The times at which a run writes snapshots, from files that may be missing: a heading line, then
/// numbers.

#include <cstddef>
#include <utility>
#include <vector>

/// Times of the snapshots of bonds, "WritingDistributionSteps.dat", ascending. Tells on standard
/// output that there is no such file; times behind what is no number are lost with a warning.
std::vector<double> read_writing_times();

/// Times of the snapshots of the whole lattice, "WritingLatticeSteps.dat", in any order; returned
/// ascending. Refuses what is no time.
std::vector<double> read_lattice_times();

/// Goes through ascending times: one is due at the first step that reaches it.
class LatticeTimes {
 public:
  LatticeTimes() = default;
  explicit LatticeTimes(std::vector<double> ascending) : times(std::move(ascending)) {}
  /// Whether times up to the present one, which only grows, wait for a snapshot; they no longer do.
  bool is_due(double now);

 private:
  std::vector<double> times;
  std::size_t next = 0;
};
