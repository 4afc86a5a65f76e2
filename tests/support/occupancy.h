#pragma once
/// Stationary occupancies of a scheme of states: what its rates demand, and what its draws give.

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

/// Null vector of the rate matrix, with sum 1, over the states that can be reached from 0; by
/// Gauss-Jordan elimination.
template <class Rate>
std::vector<double> stationary_occupancy(unsigned n, Rate rate) {
  std::vector<unsigned> reached = {0};
  std::vector<bool> is_reached(n, false);
  is_reached[0] = true;
  for (std::size_t i = 0; i < reached.size(); ++i) {
    for (unsigned to = 0; to < n; ++to) {
      if (is_reached[to] || !(rate(reached[i], to) > 0.0)) continue;
      is_reached[to] = true;
      reached.push_back(to);
    }
  }
  std::size_t const m = reached.size();
  // Balance of each state, in place of the last one the sum; the right-hand side in column m.
  std::vector<std::vector<double>> a(m, std::vector<double>(m + 1, 0.0));
  for (std::size_t i = 0; i < m; ++i) {
    for (std::size_t j = 0; j < m; ++j) {
      double const k = rate(reached[j], reached[i]);
      a[i][j] += k;
      a[j][j] -= k;
    }
  }
  a[m - 1].assign(m + 1, 1.0);
  for (std::size_t c = 0; c < m; ++c) {
    std::size_t pivot = c;
    for (std::size_t i = c; i < m; ++i) {
      if (std::abs(a[i][c]) > std::abs(a[pivot][c])) pivot = i;
    }
    std::swap(a[c], a[pivot]);
    for (std::size_t i = 0; i < m; ++i) {
      double const f = i == c ? 0.0 : a[i][c] / a[c][c];
      for (std::size_t j = 0; j <= m && f != 0.0; ++j) a[i][j] -= f * a[c][j];
    }
  }
  std::vector<double> occupancy(n, 0.0);
  for (std::size_t i = 0; i < m; ++i) occupancy[reached[i]] = a[i][m] / a[i][i];
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
