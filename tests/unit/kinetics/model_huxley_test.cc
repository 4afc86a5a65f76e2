// Would catch: a wrong branch of the rates at 0 and h, rates where none belong, a factor of the
// site on the wrong transition, a rescaling that touches a single site's binding or counts other
// sites than those in reach, a value without sense that is taken.

#include <gtest/gtest.h>

#include "kinetics/model_huxley.h"
#include "records/filament_data.h"
#include "support/work_dir.h"

namespace {

ModelHuxley make_model(std::vector<std::string> const& settings) {
  write_parameters("huxley.prm", "huxley", settings);
  return ModelHuxley({nullptr, "huxley.prm"});
}

// h of at most one site spacing: f1 is not rescaled.
std::vector<std::string> const one_site = {"f1 = 40", "g1 = 10", "g2 = 200", "g3 = 3", "h = 5"};

TEST(ModelHuxley, RatesArePiecewiseLinearInTheStrain) {
  ModelHuxley const model = make_model(one_site);
  EXPECT_EQ(model.get_k(-0.1, 0, 1), 0.0);
  EXPECT_EQ(model.get_k(0.0, 0, 1), 0.0);
  EXPECT_DOUBLE_EQ(model.get_k(2.5, 0, 1), 20.0);
  EXPECT_EQ(model.get_k(5.0, 0, 1), 0.0);
  EXPECT_EQ(model.get_k(-7.0, 1, 0), 200.0);
  EXPECT_EQ(model.get_k(0.0, 1, 0), 0.0);
  EXPECT_DOUBLE_EQ(model.get_k(2.5, 1, 0), 5.0);
  EXPECT_DOUBLE_EQ(model.get_k(5.0, 1, 0), 30.0);  // the g3 branch from h on
  EXPECT_DOUBLE_EQ(model.get_k(10.0, 1, 0), 60.0);
}

TEST(ModelHuxley, SiteActsThroughItsFactorsNotItsState) {
  ModelHuxley const model = make_model(one_site);
  ActinSite_s site;
  site.state = 1;
  site.k_on_factor = 0.5;
  site.k_stroke_factor = 7.0;
  site.k_off_factor = 2.0;
  EXPECT_DOUBLE_EQ(model.get_k(2.5, 0, 1, site), 10.0);
  EXPECT_DOUBLE_EQ(model.get_k(2.5, 1, 0, site), 10.0);
}

/// What f1 was divided by.
double rescaling(std::string const& h) {
  ModelHuxley const model = make_model({"f1 = 40", "h = " + h});
  return 40.0 / (std::stod(h) * model.get_k(1.0, 0, 1));
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

TEST(ModelHuxley, ListsTheRescaledBinding) {
  make_model({"f1 = 40", "g1 = 10", "g2 = 200", "g3 = 3", "h = 6.05"});
  EXPECT_EQ(listing_text(),
            "\t*** HUXLEY MODEL *********************\n\n"
            "\tf1:\t\t    33.50114416\n\tg1:\t\t    10.00000000\n\tg2:\t\t   200.00000000\n"
            "\tg3(Kerval fac):\t\t     3.00000000\n\th:\t\t     6.05000000\n\n");
}

TEST(ModelHuxley, RefusesValuesWithoutSense) {
  for (char const* const setting :
       {"h = -1", "h = 0", "f1 = -1", "g1 = -1", "g2 = -1", "g3 = -1"}) {
    std::string const key = std::string(setting).substr(0, std::string(setting).find(' '));
    EXPECT_EXIT(make_model({setting}), testing::ExitedWithCode(1), "huxley.prm.*" + key) << setting;
  }
}

}  // namespace
