// Would catch: a reverse rate with the energies exchanged, the end of the cycle taken as state 0, a
// factor of the site on a wrong transition, a blocked site that still lets go.

#include "kinetics/model_3state.h"

#include <gtest/gtest.h>

#include <cmath>

#include "elastic/XB_Models.h"
#include "records/filament_data.h"
#include "support/work_dir.h"

namespace {

/// Forward rates 10 from + to + 1, so that no two are equal. With E(x) = x^2 (k = 2 pN/nm):
/// G_1 = x^2 - 2, G_2 = (x + 4)^2 - 30, end of the cycle -60.
class TestModel : public Model3State {
 public:
  TestModel() : Model3State({&spring(), ""}) {
    c_1 = -2.0;
    c_2 = -30.0;
    c_4 = -60.0;
    D = 4.0;
    kBT = 4.0;
  }

  double get_forward_rate(double, unsigned from, unsigned to) const override {
    return 10.0 * from + to + 1.0;
  }

  using Model3State::rate_type;

 private:
  static XB_Model& spring() {
    static XB_ConstantStiffness law("");
    law.k = 2.0;
    return law;
  }
};

TEST(Model3State, StatesAndStroke) {
  TestModel const model;
  ASSERT_EQ(model.n_states(), 3u);
  for (unsigned s = 0; s < 3; ++s) {
    EXPECT_EQ(model.attached[s], s != 0);
    EXPECT_EQ(model.IsPowerStrokeState(static_cast<int>(s)), s == 2);
    EXPECT_EQ(model.power_stroke(s), s == 2 ? 4.0 : 0.0);
  }
}

TEST(Model3State, ReverseRatesObeyDetailedBalance) {
  TestModel model;
  unsigned const types[3][3] = {{0, 1, 3}, {2, 0, 1}, {1, 2, 0}};
  std::copy(&types[0][0], &types[0][0] + 9, &model.rate_type[0][0]);
  // At x = 1: G_1 = -1, G_2 = -5; at x = -3: G_1 = 7, G_2 = -29.
  struct {
    double x, G_1, G_2;
  } const cases[] = {{1.0, -1.0, -5.0}, {-3.0, 7.0, -29.0}};
  for (auto const& c : cases) {
    EXPECT_EQ(model.get_k(c.x, 0, 1), 2.0);
    EXPECT_EQ(model.get_k(c.x, 1, 2), 13.0);
    EXPECT_EQ(model.get_k(c.x, 2, 0), 21.0);
    // forward / reverse = exp((energy before - energy after) / kBT), kBT = 4
    EXPECT_DOUBLE_EQ(2.0 / model.get_k(c.x, 1, 0), std::exp((0.0 - c.G_1) / 4.0));
    EXPECT_DOUBLE_EQ(13.0 / model.get_k(c.x, 2, 1), std::exp((c.G_1 - c.G_2) / 4.0));
    EXPECT_DOUBLE_EQ(21.0 / model.get_k(c.x, 0, 2), std::exp((c.G_2 + 60.0) / 4.0));
    EXPECT_EQ(model.get_k(c.x, 1, 1), 0.0);
    EXPECT_EQ(model.get_G(c.x, 0), 0.0);
    EXPECT_DOUBLE_EQ(model.get_G(c.x, 1), c.G_1);
    EXPECT_DOUBLE_EQ(model.get_G(c.x, 2), c.G_2);
    EXPECT_EQ(model.get_G(c.x, 3), -60.0);
    EXPECT_EQ(model.get_G(c.x, 4), 0.0);
  }
}

TEST(Model3State, SiteFactorsStandOnTheirTransitions) {
  TestModel model;
  std::fill(&model.rate_type[0][0], &model.rate_type[0][0] + 9, 1u);
  ActinSite_s const site = {2, 2.0, 3.0, 5.0, nullptr};  // closed: its state alone does nothing
  ActinSite_s const blocked = {1, 2.0, 3.0, 5.0, nullptr};
  double const factor[3][3] = {{1, 2, 1}, {5, 1, 3}, {5, 5, 1}};
  for (unsigned from = 0; from < 3; ++from) {
    for (unsigned to = 0; to < 3; ++to) {
      double const k = 10.0 * from + to + 1.0;
      EXPECT_EQ(model.get_k(0.5, from, to), k);
      EXPECT_EQ(model.get_k(0.5, from, to, site), factor[from][to] * k) << from << " to " << to;
      EXPECT_EQ(model.get_k(0.5, from, to, blocked), 0.0) << from << " to " << to;
    }
  }
}

TEST(Model3State, EnergyTableEndsBeforeItsUpperStrain) {
  TestModel().print_energy(-3.0, 5.0, 4.0);
  EXPECT_EQ(read_file("energy.dat"),
            "-3.000000e+00 0.000000e+00 7.000000e+00 -2.900000e+01 \n"
            "1.000000e+00 0.000000e+00 -1.000000e+00 -5.000000e+00 \n");
}

}  // namespace
