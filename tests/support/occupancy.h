#pragma once
/// Stationary occupancies of a scheme of states: what its rates demand, and what its draws give.

#include <deal.II/lac/full_matrix.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

/// Occupancies that a walk from state 0 ends with: chances of a short step, then of twice as long a
/// walk, again and again.
template <class Rate>
std::vector<double> stationary_occupancy(unsigned n, Rate rate) {
  dealii::FullMatrix<double> chance(n, n), twice(n, n);  // [to][from]
  double fastest = 0.0;
  for (unsigned i = 0; i < n * n; ++i) fastest = std::max(fastest, rate(i / n, i % n));
  for (unsigned from = 0; from < n; ++from) {
    chance(from, from) = 1.0;
    for (unsigned to = 0; to < n; ++to) {
      if (to == from) continue;
      chance(to, from) = rate(from, to) / (n * fastest);
      chance(from, from) -= chance(to, from);
    }
  }
  for (int doublings = 0; doublings < 60; ++doublings) {
    chance.mmult(twice, chance);
    for (unsigned from = 0; from < n; ++from) {
      double sum = 0.0;  // 1 but for rounding, which doubles too
      for (unsigned to = 0; to < n; ++to) sum += twice(to, from);
      for (unsigned to = 0; to < n; ++to) chance(to, from) = twice(to, from) / sum;
    }
  }
  std::vector<double> occupancy(n);
  for (unsigned s = 0; s < n; ++s) occupancy[s] = chance(s, 0);
  return occupancy;
}

/// Lets independent segments move from state 0 until they are stationary, and compares their
/// occupancies within 4.5 standard deviations. `step(state)` gives the state after one step.
template <class Step>
void expect_occupancy(std::vector<double> const& expected, unsigned n_steps, Step step) {
  constexpr int n = 20000;
  std::vector<int> counts(expected.size(), 0);
  for (int segment = 0; segment < n; ++segment) {
    int state = 0;
    for (unsigned i = 0; i < n_steps; ++i) state = step(state);
    ++counts.at(static_cast<std::size_t>(state));
  }
  for (std::size_t s = 0; s < expected.size(); ++s) {
    double const p = expected[s];
    EXPECT_NEAR(counts[s] / double(n), p, 4.5 * std::sqrt(p * (1.0 - p) / n)) << "state " << s;
  }
}
