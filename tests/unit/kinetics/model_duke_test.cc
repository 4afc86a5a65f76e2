// Would catch: a rate with a wrong work or saturation, a stroke that jumps at its threshold, a
// protein-C link that can stroke, a listing without the rescaled binding, a value without sense
// that is taken.

#include "kinetics/model_duke.h"

#include <gtest/gtest.h>

#include <cmath>

#include "elastic/XB_Models.h"
#include "kinetics/model_dukeMyBPC.h"
#include "support/stdout_to_stderr.h"
#include "support/work_dir.h"

namespace {

/// E = a x^2 + b x^4: stiffer the further it is stretched.
class StiffeningLaw : public XB_Model {
 public:
  double GetStiffness(double x) const override { return 2.0 * a + 12.0 * b * x * x; }
  double GetForce(double x) const override { return 2.0 * a * x + 4.0 * b * x * x * x; }
  double GetEnergy(double x) const override { return a * x * x + b * x * x * x * x; }
  bool IsNonLinear() const override { return true; }

 private:
  static constexpr double a = 4.0, b = 0.01;
};

StiffeningLaw law;

ModelDuke make_model(std::vector<std::string> const& settings, XB_Model& xb_model = law) {
  write_parameters("duke.prm", "duke", settings);
  return ModelDuke({&xb_model, "duke.prm"});
}

TEST(ModelDuke, BindingFollowsTheBoltzmannFactorAndSaturatesWithEta) {
  std::vector<std::string> const constants = {"kBT = 4", "k_bind = 200", "eta = 9e-11",
                                              "GBind = -20"};
  ModelDuke const plain = make_model(constants);
  for (double const x : {-2.0, 0.0, 1.5}) {
    EXPECT_EQ(plain.get_k(x, 0, 1), 200.0 * std::exp(-law.GetEnergy(x) / 4.0));
  }
  // At a Boltzmann factor of 1/2 the rate (1 + eta) / (2 + eta) is nearly that of no strain.
  ModelDuke const saturated = make_model({"kBT = 4", "k_bind = 200", "eta = 98", "GBind = -20"});
  double x = 0.0;
  while (law.GetEnergy(x) < 4.0 * std::log(2.0)) x += 1e-7;
  EXPECT_NEAR(saturated.get_k(x, 0, 1) / saturated.get_k(0.0, 0, 1), 0.99, 1e-6);
}

TEST(ModelDuke, StrokeFallsByTheExcessOfItsWork) {
  ModelDuke const model =
      make_model({"kBT = 4", "D = 5", "GStroke = 20", "k_12 = 800", "k_21_cap = 50"});
  auto const work = [](double x) { return law.GetEnergy(x + 5.0) - law.GetEnergy(x); };
  // The threshold, by halves: there the balanced reverse stroke is 50.
  double lo = -20.0, hi = 20.0;
  while (hi - lo > 1e-12) {
    double const x = 0.5 * (lo + hi);
    (800.0 * std::exp((work(x) - 80.0) / 4.0) < 50.0 ? lo : hi) = x;
  }
  double const x_cap = lo;
  EXPECT_EQ(model.get_k(x_cap - 0.01, 1, 2), 800.0);
  EXPECT_NEAR(model.get_k(x_cap, 2, 1), 50.0, 1.0);
  // The threshold is interpolated between strains 0.29 nm apart.
  for (double const d : {0.01, 0.5, 2.0}) {
    double const expected = std::exp((work(0.0) - work(d)) / 4.0);
    EXPECT_NEAR(model.get_k(x_cap + d, 1, 2) / 800.0, expected, 0.02 * expected) << d;
  }
  double const rise = law.GetEnergy(3.0 + 5.0 + 1.0) - law.GetEnergy(3.0 + 5.0);
  EXPECT_DOUBLE_EQ(model.get_k(3.0, 2, 0), 51.0 * std::exp(-rise / 4.0));
  EXPECT_EQ(model.get_k(3.0, 0, 2), 0.0);
  EXPECT_EQ(model.power_stroke(2), 5.0);
}

TEST(ModelDuke, ListsWhatIsInForceWithTheRescaledBinding) {
  XB_ConstantStiffness spring("");
  spring.k = 0.5;
  ModelDuke const model = make_model({"kBT = 4", "eta = 0.25"}, spring);
  std::string const listing = listing_text();
  EXPECT_EQ(listing.substr(0, 42), "\t*** DUKE MODEL ***********************\n\n\t");
  char c_3[64];
  std::snprintf(c_3, sizeof c_3, "\tc_3:\t\t%15.8lf\n", model.get_k(0.0, 0, 1));
  EXPECT_LT(model.get_k(0.0, 0, 1), 170.0);
  EXPECT_EQ(
      listing.substr(41),
      "\tk_adp:\t\t    51.00000000\n\tD:\t\t\t    10.50000000\n\tRT:\t\t\t     4.00000000\n"
      "\tdGStroke:\t   -60.00000000\n\tc_1:\t\t   -14.52000000\n\tc_2:\t\t   -74.52000000\n" +
          std::string(c_3) +
          "\tc_4:\t\t   -96.62000000\n\tk12:\t\t  1000.00000000\n\tk_cap:\t\t   100.00000000\n"
          "\tdelta:\t\t     1.00000000\n\teta:\t\t     0.25000000\n\n");
}

TEST(ModelDukeMyBPC, BindsAndLetsGoButNeverStrokes) {
  write_parameters("model_dukeMyBPC.prm", "duke", {"k_bind = 77", "GBind = -20"});
  testing::internal::CaptureStdout();
  ModelDukeMyBPC const model({&law, "other.prm"});
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "<<<<<<<<<<<<<<<<<<<<<<DukeMyBPC>>>>>>>>>>>>>>>>>>>>>>>> \n");
  EXPECT_EQ(model.get_k(0.0, 0, 1), 77.0);
  for (unsigned from = 0; from < 3; ++from) {
    EXPECT_EQ(model.get_k(0.5, from, 2), 0.0);
    EXPECT_EQ(model.get_k(0.5, 2, from), 0.0);
  }
  EXPECT_TRUE(model.IsPowerStrokeState(2));
}

TEST(ModelDuke, RefusesValuesWithoutSenseAndLawsWithoutEnergy) {
  for (char const* const setting :
       {"kBT = 0", "D = 0", "k_bind = -1", "k_12 = 0", "k_21_cap = 0", "k_adp = -1", "eta = -1"}) {
    std::string const key = std::string(setting).substr(0, std::string(setting).find(' '));
    EXPECT_EXIT(make_model({setting}), testing::ExitedWithCode(1), "duke.prm.*" + key) << setting;
  }
  XB_SigmoidalStiffness sigmoidal("");
  EXPECT_EXIT((stdout_to_stderr(), make_model({}, sigmoidal)), testing::ExitedWithCode(1),
              "^XB_SigmoidalStiffness xb model nije uradjen do kraja!\n");
}

}  // namespace
