#pragma once
/// How a regulatory segment moves between the states of its model in one step.

#include <array>
#include <cstdio>

#include "base/uniform_variate.h"
#include "kinetics/outcome_scale.h"

/// Rates between the N states of a segment, by [from][to]; 0 where there is no transition.
template <unsigned N>
using SegmentRates = std::array<std::array<double, N>, N>;

/// Draws the state after a step of length `dt`: `rate(to)` is the rate out of `status`, and one
/// number of the random stream is used. A step so long that the probabilities add up to more than
/// 1 is told on standard output; the segment then moves with certainty.
template <class Rate>
unsigned draw_status(unsigned n_states, unsigned status, double dt, Rate const& rate) {
  double const r = uniform_variate();
  OutcomeScale<unsigned, 9> scale;
  for (unsigned to = 0; to < n_states; ++to) {
    double const k = rate(to);
    if (k > 0.0) scale.add(k * dt, to);
  }
  if (scale.sum > 1.0) std::printf("Internal Error!!!! Actin Binding, Sum %e\n", scale.sum);
  scale.close();
  unsigned const* const target = scale.pick(r);
  return target ? *target : status;
}
