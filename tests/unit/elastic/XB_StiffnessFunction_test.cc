// Would catch: a force or energy integrated over a wrong row or across zero, a lost sign, clamped
// ends, a law that needs its integral table in every run, a table that is half read.

#include "elastic/XB_StiffnessFunction.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/quadrature.h"
#include "support/stdout_to_stderr.h"
#include "support/work_dir.h"

namespace {

/// What the law prints goes nowhere.
std::unique_ptr<XB_Model> make_law(std::string const& rows) {
  write_file("k.dat", rows);
  write_parameters("law.prm", "StiffnessFunction", {"xbStiffnessFileName = k.dat"});
  testing::internal::CaptureStdout();
  auto law = std::make_unique<XB_StiffnessFunction>("law.prm");
  testing::internal::GetCapturedStdout();
  return law;
}

double const rows_x[] = {-6.0, -2.5, -1.0, 0.0, 0.5, 2.0, 7.0};
char const* const rows = "-6 0.25\n-2.5 0.5 remark\n\n-1\t1.0\n0 1.5\n0.5 2\n2 2.5\n7 1.5\n";

TEST(XB_StiffnessFunction, EachCurveIsTheIntegralOfTheOneBefore) {
  auto const law = make_law(rows);
  EXPECT_EQ(law->xbType, 2);
  EXPECT_TRUE(law->IsNonLinear());
  EXPECT_EQ(law->GetForce(0.0), 0.0);
  EXPECT_EQ(law->GetEnergy(0.0), 0.0);
  // Between rows the curves are straight, so that Simpson's rule adds no error of its own.
  for (int i = 1; i < 7; ++i) {
    double const a = rows_x[i - 1], b = rows_x[i];
    double const rise = integral([&](double x) { return law->GetStiffness(x); }, a, b, 2);
    EXPECT_NEAR(law->GetForce(b) - law->GetForce(a), rise, 1e-12);
    double const work = integral([&](double x) { return law->GetForce(x); }, a, b, 2);
    EXPECT_NEAR(law->GetEnergy(b) - law->GetEnergy(a), work, 1e-12);
  }
  EXPECT_DOUBLE_EQ(law->GetStiffness(-1.0), 1.0);
  EXPECT_DOUBLE_EQ(law->GetStiffness(-1.75), 0.75);
  // As far beyond an end as the row next to it lies inside.
  EXPECT_DOUBLE_EQ(law->GetStiffness(12.0), 2 * 1.5 - 2.5);
  EXPECT_DOUBLE_EQ(law->GetForce(-9.5), 2 * law->GetForce(-6.0) - law->GetForce(-2.5));
  EXPECT_DOUBLE_EQ(law->GetEnergy(12.0), 2 * law->GetEnergy(7.0) - law->GetEnergy(2.0));
}

TEST(XB_StiffnessFunction, SegmentAcrossZeroCountsOnNeitherSide) {
  auto const law = make_law("-3 2\n-1 2\n2 2\n4 2\n");
  EXPECT_EQ(read_file("XB_force.dat"), "-3 -4\n-1 -0\n2 0\n4 4\n");
  EXPECT_EQ(law->GetForce(2.0), 0.0);
  EXPECT_EQ(law->GetForce(-3.0), -4.0);
  EXPECT_EQ(law->GetForce(4.0), 4.0);
  EXPECT_EQ(law->GetEnergy(4.0), 4.0);
  EXPECT_EQ(law->GetEnergy(-3.0), 4.0);
}

TEST(XB_StiffnessFunction, WritesItsThreeCurvesAndTheirLengths) {
  write_file("k.dat", "-2 1\n0 1\n2 3\n");
  write_parameters("law.prm", "StiffnessFunction", {"xbStiffnessFileName = k.dat"});
  testing::internal::CaptureStdout();
  XB_StiffnessFunction const law("law.prm");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "3\n3\n3\n");
  EXPECT_EQ(read_file("XB_stiffness.dat"), "-2 1\n0 1\n2 3\n");
  EXPECT_EQ(read_file("XB_force.dat"), "-2 -2\n0 0\n2 4\n");
  EXPECT_EQ(read_file("XB_energy.dat"), "-2 2\n0 0\n2 4\n");
}

TEST(XB_StiffnessFunction, IntegralTableOfAConstantStiffnessIsDawsonsIntegral) {
  std::string table;
  for (int i = -60; i <= 60; ++i) table += std::to_string(0.05 * i) + " 1.25\n";
  auto const law = make_law(table);
  constexpr double a = 1.25 / 8.0;
  for (double const x : {-3.0, 0.8, 2.9}) {
    double const y = integral([&](double u) { return std::exp(a * (u * u - x * x)); }, 0.0, x);
    EXPECT_NEAR(law->GetIntegralFunction().GetY(x), y, 3e-4);  // chords of 0.05 nm of the energy
  }
}

TEST(XB_StiffnessFunction, RefusesWhatItCannotIntegrate) {
  auto const refuses = [](std::string const& text, std::string const& message) {
    EXPECT_EXIT(make_law(text), testing::ExitedWithCode(1), message);
  };
  refuses("0 1\n", "k.dat: the number of rows is '1'");
  refuses("-1 1\n1 one\n", "k.dat, line 2: the line is '1 one'");
  refuses("-1 1\n\n1 nan\n", "k.dat, line 3: the line");
  refuses("-1 1\n1 1\n1 2\n", "k.dat, line 3: the extension is '1'; accepted: a number above 1");
  refuses("-2 1\n0 1\n", "k.dat: the range of extensions is '-2 to 0'");
  refuses("0 1\n2 1\n", "k.dat: the range of extensions is '0 to 2'");
  write_parameters("lost.prm", "StiffnessFunction", {"xbStiffnessFileName = lost.dat"});
  EXPECT_EXIT((stdout_to_stderr(), XB_StiffnessFunction("lost.prm")), testing::ExitedWithCode(1),
              "^No fajl XB\\(SEE\\) stiffness! lost\\.dat\n.*lost\\.prm");
}

}  // namespace
