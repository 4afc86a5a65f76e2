#pragma once
/// One draw among outcomes whose probabilities lie one after the other on a scale from 0.
///
/// A variate u picks the outcome k with cum[k] < u <= cum[k + 1]; what is left up to 1 is staying.
/// A scale longer than 1 is shortened in proportion, and then nothing stays.

#include <algorithm>
#include <boost/container/small_vector.hpp>

/// The scale stands on the stack for up to `capacity` outcomes.
template <class Outcome, std::size_t capacity>
class OutcomeScale {
 public:
  void add(double probability, Outcome const& outcome) {
    sum += probability;
    cum.push_back(sum);
    outcomes.push_back(outcome);
  }

  /// Ends the scale with the probability of staying, or shortens it where there is none.
  void close() {
    if (!(sum > 1.0)) {
      cum.push_back(1.0);
      return;
    }
    cum.push_back(sum);
    for (double& value : cum) value /= sum;
  }

  /// The outcome that a variate picks, or null for staying.
  Outcome const* pick(double u) const {
    auto const i =
        static_cast<std::size_t>(std::lower_bound(cum.begin(), cum.end(), u) - cum.begin());
    return i == 0 || i >= outcomes.size() + 1 ? nullptr : &outcomes[i - 1];
  }

  double sum = 0.0;

 private:
  boost::container::small_vector<double, capacity + 2> cum{0.0};
  boost::container::small_vector<Outcome, capacity> outcomes;
};
