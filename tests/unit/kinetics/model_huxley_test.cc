// Would catch: binding that is shared among other sites than those in reach, or rescaled for one.

#include "support/kinetic_model.h"

namespace {

/// What f1 was divided by.
double rescaling(std::string const& h) {
  Spring spring(1.0);
  auto const model = make_model("Huxley", spring, "huxley: f1=40 h=" + h);
  return 40.0 / (std::stod(h) * model->get_k(1.0, 0, 1));
}

TEST(ModelHuxley, BindingIsSharedAmongTheSitesInReach) {
  EXPECT_EQ(rescaling("5.5"), 1.0);
  // The sites 5.5 m away on both sides add 2 (1 - 5.5 m / h) to the flux of one.
  EXPECT_NEAR(rescaling("8"), 1.625, 0.01);  // sums of 0.1 nm steps
  EXPECT_NEAR(rescaling("12"), 2.25, 0.02);
  EXPECT_NEAR(rescaling("30"), 5.5, 0.02);
  // By hand: strains 0, 0.1 .. 6.0 give 183; a neighbour stands where a step ends at or beyond
  // 5.5 (5.5 to 6.0: 34.5; 55 steps of 0.1 end just below it) or up to 0.55 (0 to 0.4: 1.0).
  EXPECT_NEAR(rescaling("6.05"), 1.0 + 35.5 / 183.0, 1e-12);
}

}  // namespace
