// Would catch: a wrong branch of the rates at 0 and h, rates where none belong, a factor of the
// site on the wrong transition, a rescaling that touches a single site's binding.

#include <gtest/gtest.h>

#include "kinetics/model_huxley.h"
#include "mechanics/filament_data.h"
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

}  // namespace
