#pragma once
/// How a regulatory segment moves between the states of its model in one step.
///
/// Law: a move has the probability rate times step. The moves out of a state lie one after the
///      other, in the order of their targets, on a scale from 0; a uniform variate picks the move
///      in whose stretch it falls, and beyond the last one the segment stays.
///
/// A step so long that the scale is longer than 1 is told on standard output; the scale is then
/// shortened in proportion, and the segment moves with certainty.

#include <algorithm>
#include <array>

#include "base/diagnostics.h"
#include "base/uniform_variate.h"

/// Rates between the N states of a segment, by [from][to]; 0 where there is no transition.
template <unsigned N>
using SegmentRates = std::array<std::array<double, N>, N>;

/// The moves out of one state in the order of their targets: no model has more than four. Behind
/// them the rates are 0, stretches of no length that nothing falls into, so that a draw needs no
/// loop of unforeseen length.
struct SegmentMoves {
  std::array<double, 4> rate{};
  std::array<unsigned, 4> target{};
  double total = 0.0;  ///< of the rates
};

template <std::size_t N>
SegmentMoves moves_of(std::array<double, N> const& rates) {
  SegmentMoves moves;
  unsigned n = 0;
  for (unsigned to = 0; to < N; ++to) {
    if (!(rates[to] > 0.0)) continue;
    moves.rate[n] = rates[to];
    moves.target[n] = to;
    moves.total += rates[to];
    ++n;
  }
  return moves;
}

/// Draws the state after a step of length `dt` in `status`; uses one number of the random stream.
inline unsigned draw_status(unsigned status, SegmentMoves const& moves, double dt) {
  double const r = uniform_variate();
  // Most draws lie far beyond the scale; the margin covers the rounding of its sum.
  if (r > moves.total * dt * (1.0 + 1e-9)) return status;
  std::array<double, 4> ends;
  double sum = 0.0;
  for (unsigned i = 0; i < ends.size(); ++i) ends[i] = sum += moves.rate[i] * dt;
  if (sum > 1.0) {
    tell_excess("Actin Binding", sum);
    for (double& end : ends) end /= sum;
  }
  if (r == 0.0 || r > ends.back()) return status;
  auto const picked = std::lower_bound(ends.begin(), ends.end(), r);
  return moves.target[static_cast<std::size_t>(picked - ends.begin())];
}
