#pragma once
/// A kinetic model whose states and rates a test prescribes. It has no elastic law and no file.

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <utility>

#include "kinetics/active_model.h"
#include "records/filament_data.h"

class RateModel : public ActiveModel {
 public:
  using Law = std::function<double(double x, unsigned from, unsigned to, ActinSite_s const& site)>;
  using Rates = std::map<std::pair<unsigned, unsigned>, double>;

  RateModel(unsigned n, std::vector<unsigned> const& attached_states, Law rate_law)
      : ActiveModel({}, n), law(std::move(rate_law)) {
    for (unsigned const state : attached_states) attached[state] = true;
  }

  /// Rates that depend on nothing but {from, to}; a pair left out has rate 0.
  RateModel(unsigned n, std::vector<unsigned> const& attached_states, Rates const& rates = {})
      : RateModel(n, attached_states,
                  [rates](double, unsigned from, unsigned to, ActinSite_s const&) {
                    auto const found = rates.find({from, to});
                    return found == rates.end() ? 0.0 : found->second;
                  }) {}

  bool IsPowerStrokeState(int) const override { return false; }
  using ActiveModel::get_k;
  double get_k(double x, unsigned from, unsigned to, ActinSite_s const& site) const override {
    EXPECT_LT(from, n_states()) << "asked for the rate of a state that the model doesn't have";
    EXPECT_LT(to, n_states()) << "asked for the rate of a state that the model doesn't have";
    return law(x, from, to, site);
  }

 private:
  Law law;
};
