#pragma once
/// What a run would be, told without running it.

#include <cstddef>
#include <string>

#include "control/macro_model.h"

struct RunPlan_s {
  std::string model;
  std::string crossbridge;
  int seed = 0;
  Extent_s extent;
  std::size_t snapshots = 0;
  std::size_t lattice_snapshots = 0;
  int steps = 0;
  double end = 0.0;  ///< time of the last of them
  enum class Count { exact, ramp_from_zero, unfinished } count = Count::exact;
};
