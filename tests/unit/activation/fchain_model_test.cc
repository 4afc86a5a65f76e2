// Would catch: tails exchanged, a joined curve with a step at its cut, factors of the wrong state,
// no limit at 1, an inverse that throws far from the cut.

#include "activation/fchain_model.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/work_dir.h"

namespace {

double normal(double x, double mean, double sd) {
  return 0.5 * (1.0 + std::erf((x - mean) / (sd * std::sqrt(2.0))));
}

FChainModel model_with(std::string const& km, std::string const& kps) {
  write_settings("mg_old.prm", "rates: km=" + km + " kps=" + kps);
  return FChainModel();
}

double factor(FChainModel const& model, unsigned state, double mean, double sd, double mean_weak,
              double sd_weak) {
  double result = 77.0;
  EXPECT_EQ(model.update_status(3, mean, sd, mean_weak, sd_weak, state, result), state);
  return result;
}

TEST(FChainModel, IsOneNormalCurveWhereBothCoincide) {
  FChainModel const model = model_with("0.5", "0.5");
  for (double x = -1.5; x < 1.5; x += 0.01) {
    EXPECT_NEAR(model.belowProbability(x, 0.1, 0.4, 0.1, 0.4, 0.1), normal(x, 0.1, 0.4), 1e-15);
    EXPECT_NEAR(model.belowProbability(x, 0.4), normal(x, 0.0, 0.4), 1e-15);
  }
  EXPECT_NEAR(model.closing_probability(0.1, 0.4, 0.1, 0.4), normal(-0.3, 0.1, 0.4), 1e-15);
}

// Below the cut the lower curve; above it the upper one, moved so that they meet there. The lower
// mean: erfc_inv undoes erfc, so u = c - t (c - m) / (s sqrt 2).
TEST(FChainModel, FactorsFollowTheCurvesJoinedAtTheCut) {
  FChainModel const model = model_with("0.5", "0.25");
  double const m = 0.15, s = 0.4, c = -0.05, t = 0.2;
  double const u = c - t * (c - m) / (s * std::sqrt(2.0));
  auto const below = [&](double x) {
    return x < c ? normal(x, u, t) : normal(c, u, t) + normal(x, m, s) - normal(c, m, s);
  };
  for (double x = -2.0; x < 3.0; x += 0.01) {
    EXPECT_NEAR(model.belowProbability(x, m, s, c, t, u), below(x), 1e-15) << x;
  }
  EXPECT_NEAR(factor(model, 1, m, s, c, t), 0.5 * (1.0 - below(0.0)), 1e-14);
  EXPECT_NEAR(factor(model, 2, m, s, c, t), 0.25 * (1.0 - below(0.2)), 1e-14);
  EXPECT_NEAR(model.closing_probability(m, s, c, t), below(-0.3), 1e-14);
  for (unsigned const state : {0u, 3u}) EXPECT_EQ(factor(model, state, m, s, c, t), 0.0);
  // A lower curve without width has no weight below the cut.
  EXPECT_EQ(model.belowProbability(-0.2, m, s, c, 1e-10, c), 0.0);
  EXPECT_NEAR(model.belowProbability(c, m, s, c, 1e-10, c), normal(c, m, s), 1e-15);
}

TEST(FChainModel, LimitsFactorsToOne) {
  FChainModel const model = model_with("1e6", "1e6");
  for (unsigned const state : {1u, 2u}) EXPECT_EQ(factor(model, state, 0.1, 0.4, 0.1, 0.4), 1.0);
}

TEST(FChainModel, PinnedSiteIsAtItsAngle) {
  FChainModel const model = model_with("0.5", "0.25");
  EXPECT_EQ(factor(model, 1, -0.3, 0.0, -0.3, 0.0), 0.0);
  EXPECT_EQ(factor(model, 1, 0.0, 0.0, 0.0, 0.0), 0.5);
  EXPECT_EQ(factor(model, 1, 0.2, 1e-10, 0.2, 0.0), 0.5);
  EXPECT_EQ(factor(model, 2, 0.19, 0.0, 0.0, 0.0), 0.0);
  EXPECT_EQ(factor(model, 2, 0.2, 0.0, 0.0, 0.0), 0.25);
  EXPECT_EQ(model.closing_probability(-0.5, 0.0, -0.5, 0.3), 0.0);
}

TEST(FChainModel, StandsCutsFarInTheTails) {
  FChainModel const model = model_with("0.5", "0.25");
  for (unsigned const state : {1u, 2u}) {
    double const found = factor(model, state, 0.0, 1.0, 60.0, 0.5);
    EXPECT_TRUE(found >= -1e-15 && found <= 1.0) << found;
  }
  // Far above the cut the lower curve keeps the weight below its bound, -4.24 deviations.
  double const rest = normal(-4.24109, 0.0, 1.0);
  EXPECT_NEAR(factor(model, 1, 0.0, 1.0, -60.0, 0.5), 0.5 * (0.5 - rest), 1e-10);
}

}  // namespace
