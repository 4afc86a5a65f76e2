#pragma once
/// Seconds spent in the direct solver since the start of the benchmark.

#include <chrono>

double seconds_in_solver();

using Clock = std::chrono::steady_clock;

inline double seconds_since(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}
