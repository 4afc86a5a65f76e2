// Would catch: a part taken on the wrong side of the split, a force that is not the integral of the
// stiffness, an energy that starts or adds up wrongly on one side, a grid with a row too few.

#include "elastic/XB_TwoPartSigmoidalStiffness.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/quadrature.h"
#include "support/work_dir.h"

namespace {

XB_TwoPartSigmoidalStiffness make_law(std::vector<std::string> const& settings) {
  write_parameters("law.prm", "TwoPartSigmoidalStiffness", settings);
  return XB_TwoPartSigmoidalStiffness("law.prm");
}

TEST(XB_TwoPartSigmoidalStiffness, IsExponentialBelowTheSplitAndSigmoidalFromThereOn) {
  auto const law =
      make_law({"a_right = 2", "b_right = 0.5", "x0_right = 1", "k0_right = 3", "a_left = 4",
                "b_left = 0.5", "c_left = 8", "d_left = 2", "k0_left = 0.25"});
  EXPECT_DOUBLE_EQ(law.GetStiffness(1.0), 4.0);
  EXPECT_DOUBLE_EQ(law.GetStiffness(1.0 + 0.5 * std::log(3.0)), 4.5);
  EXPECT_NEAR(law.GetStiffness(-2.0), 4.0 * std::exp(-1.0) + 0.25 + 8.0 * std::exp(-4.0), 1e-14);
  EXPECT_EQ(law.GetStiffness(-0.8042), law.GetStiffnessRight(-0.8042));
  EXPECT_EQ(law.GetStiffness(-0.80420001), law.GetStiffnessLeft(-0.80420001));
  EXPECT_EQ(law.xbType, 4);
  EXPECT_TRUE(law.IsNonLinear());
  EXPECT_TRUE(law.GetIntegralFunction().points.empty());
}

TEST(XB_TwoPartSigmoidalStiffness, ForceAndEnergyAreTheIntegralsFromZero) {
  auto const law = make_law({"x_start = -4", "x_end = 4"});
  auto const stiffness = [&](double x) { return law.GetStiffness(x); };
  auto const force = [&](double x) { return law.GetForce(x); };
  double energy = 0.0;
  for (int i = 1; i <= 50; ++i) {
    for (double const side : {-1.0, 1.0}) {
      double const x = side * 0.08 * i, split = side < 0.0 && x < -0.8042 ? -0.8042 : 0.0;
      double const F = integral(stiffness, 0.0, split) + integral(stiffness, split, x);
      EXPECT_NEAR(law.GetForce(x), F, 3e-3) << x;  // 100 trapezoids of up to 0.04 nm
    }
    energy += integral(force, 0.08 * (i - 1), 0.08 * i, 2);
    EXPECT_NEAR(law.GetEnergy(0.08 * i), energy, 1e-10);
  }
  EXPECT_NEAR(law.GetEnergy(-3.2), -integral(force, -3.2, 0.0, 80), 1e-10);  // a row per strip pair
  EXPECT_NEAR(law.GetForce(6.0), law.GetForce(4.0) + 25 * (force(4.0) - force(3.92)), 1e-9);
}

TEST(XB_TwoPartSigmoidalStiffness, GridWithoutARowAtZeroStartsWithATriangleOnEachSide) {
  testing::internal::CaptureStdout();
  XB_TwoPartSigmoidalStiffness const law("");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "a_right = 1.8445\nb_right = 0.1555\nx0_right = -0.7659\nk0_right = 1.2443\n\n"
            "a_left = 0.5767\nb_left = 0.3748\nc_left = 8.683\nd_left = 2.1057\nk0_left = 0.037\n\n"
            "x_start = -25\nx_end = 15\n\n");
  for (double const x : {-0.2, 0.2}) {
    EXPECT_NEAR(law.GetEnergy(x), 0.5 * law.GetForce(x) * x, 1e-10);
  }
  auto const files = {"Stiffness.csv", "Force.csv", "Energy.csv"};
  std::size_t const lines[] = {101, 102, 102};
  std::size_t i = 0;
  for (char const* const file : files) EXPECT_EQ(read_lines(file).size(), lines[i++]) << file;
  EXPECT_EQ(read_lines("Stiffness.csv")[0], "X[nm],K(X)[pN/nm]");
  EXPECT_EQ(read_lines("Force.csv")[0], "X[nm],F(X)[pN]");
  EXPECT_EQ(read_lines("Energy.csv")[0], "X[nm],E(X)[pNnm]");
  EXPECT_EQ(read_lines("Energy.csv")[1].substr(0, 11), "-25.000000,");
  EXPECT_EQ(read_lines("Energy.csv")[101].substr(0, 10), "15.000000,");
}

TEST(XB_TwoPartSigmoidalStiffness, RefusesGridsThatMissASideOfZero) {
  auto const refuses = [](std::string const& setting, std::string const& message) {
    EXPECT_EXIT(make_law({setting}), testing::ExitedWithCode(1), message);
  };
  refuses("x_start = 0.1", "x_start is '0.1'");
  refuses("x_end = 0", "x_end is '0'");
  refuses("x_end = 1e-17", "the grid's last extension");
  refuses("b_right = 0", "b_right is '0'");
  refuses("b_left = -300", "the energy at extension -25 is 'inf'");
}

}  // namespace
