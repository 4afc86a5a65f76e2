// Would catch: a force that is not the integral of its stiffness, a break point on the wrong piece,
// pieces that don't meet, a law that answers an energy query it has no answer for.

#include "elastic/XB_Models.h"
#include "elastic/create_law.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/quadrature.h"
#include "support/stdout_to_stderr.h"
#include "support/work_dir.h"

namespace {

/// A law with default parameters; what it prints goes nowhere.
XB_Model& law(std::string const& name) {
  write_file("xb_" + name + ".prm", "");
  testing::internal::CaptureStdout();
  XB_Model* const made = create_elastic_law(name, "xb_");
  testing::internal::GetCapturedStdout();
  return *made;
}

/// `breaks` are where the stiffness jumps. Pieces between them end just short of them.
void expect_consistent(XB_Model const& model, bool has_energy, std::vector<double> const& breaks) {
  std::vector<double> ends = {-90.0, -77.0, -40.0, -1.0, 0.7, 12.0};
  for (double const x : breaks) ends.insert(ends.end(), {x - 1e-9, x + 1e-9});
  std::sort(ends.begin(), ends.end());
  for (std::size_t i = 1; i < ends.size(); ++i) {
    double const a = ends[i - 1], b = ends[i];
    if (b - a < 1e-8) continue;
    double const rise = integral([&](double x) { return model.GetStiffness(x); }, a, b);
    EXPECT_NEAR(model.GetForce(b) - model.GetForce(a), rise, 1e-6) << a << " to " << b;
    if (!has_energy) continue;
    double const work = integral([&](double x) { return model.GetForce(x); }, a, b);
    EXPECT_NEAR(model.GetEnergy(b) - model.GetEnergy(a), work, 1e-9 * (1.0 + std::abs(work)));
  }
  for (double const x : breaks) {
    EXPECT_NEAR(model.GetForce(x - 1e-9), model.GetForce(x), 1e-7);
    EXPECT_NEAR(model.GetForce(x + 1e-9), model.GetForce(x), 1e-7);
    EXPECT_EQ(model.GetStiffness(x), model.GetStiffness(x - 1e-9));  // the piece that ends there
    EXPECT_NE(model.GetStiffness(x), model.GetStiffness(x + 1e-9));
  }
}

TEST(ElasticLaws, ForceIsTheIntegralOfStiffnessAndEnergyThatOfForce) {
  expect_consistent(law("ConstantStiffness"), true, {});
  expect_consistent(law("SigmoidalStiffness"), false, {});
  expect_consistent(law("ThreeLinearForce"), false, {-76.5709, -0.4704});
}

TEST(ElasticLaws, WithoutAnEnergyThereIsNoTableAndNoAnswer) {
  for (char const* name : {"SigmoidalStiffness", "ThreeLinearForce"}) {
    XB_Model const& model = law(name);
    EXPECT_TRUE(model.GetIntegralFunction().points.empty());
    EXPECT_EXIT((stdout_to_stderr(), model.GetEnergy(0.0)), testing::ExitedWithCode(1),
                std::string("^XB_") + name + " xb model nije uradjen do kraja!\n.*no energy");
  }
}

TEST(ElasticLaws, AreMadeByExactNameFromTheirPrefixedFile) {
  EXPECT_EQ(create_elastic_law("constantStiffness", "xb_"), nullptr);
  EXPECT_EQ(law("ConstantStiffness").xbType, 0);
  EXPECT_EQ(law("SigmoidalStiffness").xbType, 1);
  EXPECT_EQ(law("ThreeLinearForce").xbType, 3);
  EXPECT_FALSE(law("ConstantStiffness").IsNonLinear());
  EXPECT_TRUE(law("SigmoidalStiffness").IsNonLinear());
  EXPECT_TRUE(law("ThreeLinearForce").IsNonLinear());
  write_parameters("see_ConstantStiffness.prm", "ConstantStiffness", {"k = 2.5"});
  EXPECT_DOUBLE_EQ(create_elastic_law("ConstantStiffness", "see_")->GetForce(-3.0), -7.5);
  EXPECT_DOUBLE_EQ(law("ConstantStiffness").GetEnergy(-4.0), 10.0);  // default stiffness 1.25
}

TEST(XB_ConstantStiffness, IntegralTableIsDawsonsIntegralOn30Nanometres) {
  XB_Model const& model = law("ConstantStiffness");
  MyDiscreteFunction const& table = model.GetIntegralFunction();
  EXPECT_EQ(&model.GetIntegralFunction(), &table);
  constexpr double a = 1.25 / 8.0;
  for (double const x : {1.0, 4.0, 20.0}) {
    double const y = integral([&](double u) { return std::exp(a * (u * u - x * x)); }, 0.0, x);
    EXPECT_NEAR(table.GetY(x), y, 6e-5);  // half the width of a rectangle, and rounding
    EXPECT_NEAR(table.GetY(-x), -y, 6e-5);
  }
  EXPECT_NEAR(table.points.front().first, -30.0, 2e-3);
  EXPECT_NEAR(table.points.back().first, 30.0, 2e-3);
}

TEST(XB_SigmoidalStiffness, RisesFromItsFloorAroundTheMiddle) {
  testing::internal::CaptureStdout();
  XB_SigmoidalStiffness const model("");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "x0 = 0.010000\nk0 = 0.080000\na = 2.450000\nb = 0.500000\n");
  EXPECT_DOUBLE_EQ(model.GetStiffness(0.01), 0.08 + 2.45 / 2.0);
  EXPECT_NEAR(model.GetStiffness(-30.0), 0.08, 1e-12);
  EXPECT_NEAR(model.GetStiffness(30.0), 0.08 + 2.45, 1e-12);
  EXPECT_NEAR(model.GetForce(0.0), 2.45 * 0.5 * std::log(std::exp(0.02) + 1.0), 1e-14);
  write_parameters("flat.prm", "SigmoidalStiffness", {"b = 0"});
  EXPECT_EXIT(XB_SigmoidalStiffness("flat.prm"), testing::ExitedWithCode(1),
              "flat\\.prm, section SigmoidalStiffness: b is '0'");
}

TEST(XB_ThreeLinearForce, PassesThroughItsPointsAndGoesOnBeyondThem) {
  testing::internal::CaptureStdout();
  XB_ThreeLinearForce const model("");
  std::string const printed = testing::internal::GetCapturedStdout();
  EXPECT_EQ(printed.substr(0, 26), "ThreeLinearForce XB Model\n");
  EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 9);  // eight values follow
  EXPECT_DOUBLE_EQ(model.GetForce(-83.0), -9.1864);
  EXPECT_DOUBLE_EQ(model.GetForce(-76.5709), -4.0105);
  EXPECT_DOUBLE_EQ(model.GetForce(-0.4704), -0.9818);
  EXPECT_DOUBLE_EQ(model.GetForce(8.0), 19.94);
  // As far outside an end as the inner break lies inside: the force mirrors.
  EXPECT_NEAR(model.GetForce(-83.0 - 6.4291), 2 * -9.1864 + 4.0105, 1e-12);
  EXPECT_NEAR(model.GetForce(8.0 + 8.4704), 2 * 19.94 + 0.9818, 1e-12);
  write_parameters("turned.prm", "ThreeLinearForce", {"T1 = 1"});
  EXPECT_EXIT(XB_ThreeLinearForce("turned.prm"), testing::ExitedWithCode(1), "T2 is '-0.4704'");
}

}  // namespace
