// Would catch: a binding range that is not symmetric or holds its end, a detachment that falls with
// the distance, a factor of the site on the wrong transition, a parameter file of another name.

#include "kinetics/model_huxleyMyBPC.h"

#include <gtest/gtest.h>

#include "records/filament_data.h"
#include "support/work_dir.h"

namespace {

TEST(ModelHuxleyMyBPC, RatesDependOnTheDistanceAlone) {
  write_parameters("model_huxleyMyBPC.prm", "huxley", {"f = 40", "g0 = 3", "g1 = 10", "h = 8"});
  ModelHuxleyMyBPC const model({nullptr, "other.prm"});  // the name given doesn't count
  EXPECT_FALSE(std::filesystem::exists("other.prm"));
  ActinSite_s site;
  site.state = 1;
  site.k_on_factor = 0.5;
  site.k_stroke_factor = 7.0;
  site.k_off_factor = 3.0;
  for (double const sign : {1.0, -1.0}) {
    for (double const x : {0.0, 4.0, 7.999}) EXPECT_EQ(model.get_k(sign * x, 0, 1), 40.0);
    EXPECT_EQ(model.get_k(sign * 8.0, 0, 1), 0.0);
    EXPECT_DOUBLE_EQ(model.get_k(sign * 4.0, 1, 0), 8.0);
    EXPECT_DOUBLE_EQ(model.get_k(sign * 16.0, 1, 0), 23.0);
    EXPECT_DOUBLE_EQ(model.get_k(sign * 4.0, 0, 1, site), 20.0);
    EXPECT_DOUBLE_EQ(model.get_k(sign * 4.0, 1, 0, site), 24.0);
  }
  EXPECT_EQ(model.get_k(0.0, 1, 1), 0.0);
  EXPECT_EQ(listing_text(), "\t*** MyBPC HUXLEY MODEL ***************\n\n");
}

}  // namespace
