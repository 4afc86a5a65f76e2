// Would catch: an overlap that counts too few or too many sites or begins too early, a rescaling
// that makes NaN or never ends.

#include "kinetics/rate_tools.h"

#include <cmath>

#include "support/expect_refusal.h"

namespace {

/// Part of a Gaussian of this width that lies above x.
double above(double x, double width) { return 0.5 * std::erfc(x / width / std::sqrt(2.0)); }

double factor_of_gaussian(double width, double kd) {
  auto const rate = [width](double x) { return 50.0 * std::exp(-0.5 * x * x / (width * width)); };
  return binding_overlap_factor(rate, kd, "model");
}

TEST(BindingOverlap, CountsTheFluxOverAllSitesInReach) {
  struct {
    double width, kd, half_width;
  } const cases[] = {{1.15, 1e7, 2.8826},
                     {2.0, 1e7, 5.0133},
                     {5.0, 1e7, 12.533},
                     {1.0, 1e-12, 14.1}};  // saturated in its whole reach of 7 nm
  for (auto const& c : cases) {
    // The m-th neighbours on both sides take part beyond 5.5 m - half width.
    double const own = above(-c.half_width, c.width) - above(c.half_width, c.width);
    double others = 0.0;
    for (double edge = 5.5 - c.half_width; edge < c.half_width; edge += 5.5) {
      others += 2.0 * (above(edge, c.width) - above(c.half_width, c.width));
    }
    double const factor = factor_of_gaussian(c.width, c.kd);
    EXPECT_GT(factor, 1.0);
    EXPECT_NEAR(factor, 1.0 + others / own, 0.012 * factor);  // sums of 0.1 nm steps
  }
  EXPECT_EQ(factor_of_gaussian(1.09, 1e7), 1.0);  // 2.73 nm, less than half way to the next site
  // By hand: 49 strains, -2.4 to 2.4, bind; a neighbour counts where a step ends beyond 5.5 - 4.9,
  // the 19 from 0.6 on (sums of 0.1 put the end of the one at 0.5 just below the edge).
  auto const box = [](double x) { return std::abs(x) < 2.45 ? 10.0 : 0.0; };
  EXPECT_NEAR(binding_overlap_factor(box, 1e-30, "model"), 1.0 + 2.0 * 19.0 / 49.0, 1e-12);
}

TEST(BindingOverlap, WarnsWhereNothingBindsAtZeroAndRefusesARateThatNeverFallsOff) {
  testing::internal::CaptureStderr();
  auto const beside_zero = [](double x) { return x > 1.0 && x < 9.0 ? 20.0 : 0.0; };
  EXPECT_EQ(binding_overlap_factor(beside_zero, 0.1, "model.prm"), 1.0);
  EXPECT_EQ(binding_overlap_factor([](double) { return 0.0; }, 0.0, "model.prm"), 1.0);
  std::string const message = testing::internal::GetCapturedStderr();
  EXPECT_EQ(message.find("tavelo: warning: model.prm"), 0u);
  EXPECT_NE(message.rfind("tavelo: warning: model.prm"), 0u);
  expect_refusal([] { binding_overlap_factor([](double) { return 20.0; }, 0.1, "model.prm"); },
                 "model.prm.*never falls off");
}

}  // namespace
