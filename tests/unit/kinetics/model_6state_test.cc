// Would catch: rescaled and unscaled binding constants exchanged, a reverse rate with the energies
// exchanged, the stiffness taken at the stretched length, a factor of the site on a wrong
// transition.

#include "kinetics/model_6state.h"

#include <gtest/gtest.h>

#include <cmath>

#include "elastic/XB_Models.h"
#include "records/filament_data.h"
#include "support/work_dir.h"

namespace {

/// F = x^3: the stiffness depends on the extension.
class CubicLaw : public XB_Model {
 public:
  double GetStiffness(double x) const override { return 3.0 * x * x; }
  double GetForce(double x) const override { return x * x * x; }
  double GetEnergy(double x) const override { return 0.25 * x * x * x * x; }
  bool IsNonLinear() const override { return true; }
};

/// Forward rates c for binding, else 10 from + to + 1. With k = 3 pN/nm at x = 1 and -1:
/// G_1 = 1.5 - 5.5, G_2 = 1.5 (x + 2)^2 - 33.5, G_3 = 1.5 (x + 3)^2 - 56, G_4 = G_3 - 24.
class TestModel : public Model6State {
 public:
  TestModel() : Model6State({&law(), ""}) {
    c_1 = -5.5;
    c_2 = -33.5;
    g_3 = -56.0;
    c_3 = 3.0;
    C_ = 1.5;
    D = 2.0;
    delta = 1.0;
    G_ATP = -24.0;
    kBT = 4.0;
    k_15 = 0.7;
    k_16 = 0.9;
  }

  double get_forward_rate(double, unsigned from, unsigned to, double c) const override {
    return from == 0 && to == 1 ? c : 10.0 * from + to + 1.0;
  }

  using Model6State::rate_type;

 private:
  static XB_Model& law() {
    static CubicLaw cubic;
    return cubic;
  }
};

TEST(Model6State, StatesAndStrokes) {
  TestModel const model;
  ASSERT_EQ(model.n_states(), 6u);
  double const strokes[] = {0.0, 0.0, 2.0, 3.0, 0.0, 0.0};
  for (unsigned s = 0; s < 6; ++s) {
    EXPECT_EQ(model.attached[s], s >= 1 && s <= 3);
    EXPECT_EQ(model.IsPowerStrokeState(static_cast<int>(s)), s == 2 || s == 3);
    EXPECT_EQ(model.power_stroke(s), strokes[s]);
  }
}

TEST(Model6State, ReverseRatesObeyDetailedBalanceFromTheUnscaledBinding) {
  TestModel model;
  for (unsigned s = 0; s < 4; ++s) {
    model.rate_type[s][s + 1] = 1;
    model.rate_type[s + 1][s] = 2;
  }
  model.rate_type[0][4] = model.rate_type[0][5] = 2;
  model.rate_type[5][0] = 3;  // not a kind of this model
  struct {
    double x, G[6];
  } const cases[] = {{1.0, {0.0, -4.0, -20.0, -32.0, -56.0, 0.0}},
                     {-1.0, {0.0, -4.0, -32.0, -50.0, -74.0, 0.0}}};
  for (auto const& c : cases) {
    for (unsigned s = 0; s < 6; ++s) EXPECT_DOUBLE_EQ(model.get_G(c.x, s), c.G[s]);
    EXPECT_EQ(model.get_k(c.x, 0, 1), 1.5);
    EXPECT_DOUBLE_EQ(3.0 / model.get_k(c.x, 1, 0), std::exp(c.G[0] / 4.0 - c.G[1] / 4.0));
    for (unsigned s = 1; s < 4; ++s) {
      double const ratio = model.get_k(c.x, s, s + 1) / model.get_k(c.x, s + 1, s);
      EXPECT_DOUBLE_EQ(ratio, std::exp((c.G[s] - c.G[s + 1]) / 4.0));
      EXPECT_EQ(model.get_k(c.x, s, s + 1), 11.0 * s + 2.0);
    }
    EXPECT_EQ(model.get_k(c.x, 0, 4), 0.7);
    EXPECT_EQ(model.get_k(c.x, 0, 5), 0.9);
    EXPECT_EQ(model.get_k(c.x, 5, 0), 0.0);
    EXPECT_EQ(model.get_k(c.x, 1, 3), 0.0);
  }
}

TEST(Model6State, SiteFactorsStandOnTheirTransitions) {
  TestModel model;
  std::fill(&model.rate_type[0][0], &model.rate_type[0][0] + 36, 1u);
  ActinSite_s const site = {2, 2.0, 3.0, 5.0, nullptr};
  ActinSite_s const blocked = {1, 2.0, 3.0, 5.0, nullptr};
  for (unsigned from = 0; from < 6; ++from) {
    for (unsigned to = 0; to < 6; ++to) {
      unsigned const pair = 10 * from + to;
      double const factor = pair == 1                                ? 2.0
                            : pair == 12                             ? 3.0
                            : pair == 10 || pair == 21 || pair == 34 ? 5.0
                                                                     : 1.0;
      double const k = pair == 1 ? 1.5 : pair + 1.0;
      EXPECT_EQ(model.get_k(0.5, from, to, site), factor * k) << from << " to " << to;
      EXPECT_EQ(model.get_k(0.5, from, to, blocked), 0.0) << from << " to " << to;
    }
  }
}

TEST(Model6State, EnergyTableHasAllStates) {
  TestModel().print_energy(1.0, 1.5, 0.5);
  EXPECT_EQ(read_file("energy.dat"),
            "1.000000e+00 0.000000e+00 -4.000000e+00 -2.000000e+01 -3.200000e+01 -5.600000e+01 "
            "0.000000e+00 \n");
}

}  // namespace
