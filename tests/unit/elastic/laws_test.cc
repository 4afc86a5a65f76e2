// Would catch: a force that is not the integral of its stiffness, an energy that is not that of the
// force or starts wrongly on one side of zero, a break point on the wrong piece, pieces that don't
// meet, clamped ends, a law that answers an energy query it has no answer for or reads the file of
// another, an integral table of half the range or another curve, a value without sense that is
// taken, a table that is half read.

#include <algorithm>
#include <cmath>

#include "elastic/XB_Models.h"
#include "elastic/create_law.h"
#include "support/expect_refusal.h"
#include "support/quadrature.h"
#include "support/work_dir.h"

namespace {

/// The law of that name, with settings as "key=value key=value"; it prints.
XB_Model& read_law(std::string const& name, std::string const& settings) {
  write_settings("xb_" + name + ".prm", name + ": " + settings);
  return *create_elastic_law(name, "xb_");
}

/// The same; what it prints goes to `printed`.
XB_Model& law(std::string const& name, std::string const& settings = "",
              std::string* printed = nullptr) {
  testing::internal::CaptureStdout();
  XB_Model& made = read_law(name, settings);
  std::string const text = testing::internal::GetCapturedStdout();
  if (printed) *printed = text;
  return made;
}

XB_Model& tabulated(std::string const& rows) {
  write_file("k.dat", rows);
  return law("StiffnessFunction", "xbStiffnessFileName=k.dat");
}

double work(XB_Model const& model, double a, double b, int n) {
  return integral([&](double x) { return model.GetForce(x); }, a, b, n);
}

double rise(XB_Model const& model, double a, double b, int n) {
  return integral([&](double x) { return model.GetStiffness(x); }, a, b, n);
}

/// `breaks` are where the stiffness jumps. Pieces between them end just short of them.
void expect_consistent(XB_Model const& model, bool has_energy, std::vector<double> const& breaks) {
  std::vector<double> ends = {-90.0, -77.0, -40.0, -1.0, 0.7, 12.0};
  for (double const x : breaks) ends.insert(ends.end(), {x - 1e-9, x + 1e-9});
  std::sort(ends.begin(), ends.end());
  for (std::size_t i = 1; i < ends.size(); ++i) {
    double const a = ends[i - 1], b = ends[i];
    if (b - a < 1e-8) continue;
    EXPECT_NEAR(model.GetForce(b) - model.GetForce(a), rise(model, a, b, 4000), 1e-6) << a;
    if (!has_energy) continue;
    double const W = work(model, a, b, 4000);
    EXPECT_NEAR(model.GetEnergy(b) - model.GetEnergy(a), W, 1e-9 * (1.0 + std::abs(W))) << a;
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

TEST(ElasticLaws, GoThroughTheValuesOfTheirParameters) {
  std::string const two_part = "TwoPartSigmoidalStiffness";
  std::string const right = "a_right=2 b_right=0.5 x0_right=1 k0_right=3";
  std::string const left = "a_left=4 b_left=0.5 c_left=8 d_left=2 k0_left=0.25";
  auto const K_left = [](double x) { return 4 * std::exp(x / 2) + 0.25 + 8 * std::exp(2 * x); };
  double const split = -0.8042, K_split = 3 + 2 / (1 + std::exp(2 * (1 - split)));
  double const before = split - 1e-9;
  auto const K = &XB_Model::GetStiffness, F = &XB_Model::GetForce, E = &XB_Model::GetEnergy;
  struct {
    std::string name, settings;
    double (XB_Model::*curve)(double) const;
    std::vector<std::pair<double, double>> points;
  } const cases[] = {
      {"ConstantStiffness", "k=2.5", F, {{-3, -7.5}}},
      {"ConstantStiffness", "k=2.5", E, {{-4, 20}}},
      {"SigmoidalStiffness", "", K, {{-30, 0.08}, {0.01, 0.08 + 1.225}, {30, 0.08 + 2.45}}},
      {"SigmoidalStiffness", "", F, {{0, 1.225 * std::log(std::exp(0.02) + 1)}}},
      {"ThreeLinearForce", "", F, {{-83, -9.1864}, {-76.5709, -4.0105}}},
      {"ThreeLinearForce", "", F, {{-0.4704, -0.9818}, {8, 19.94}}},
      {two_part, left, K, {{-2, K_left(-2)}, {before, K_left(before)}}},
      {two_part, right, K, {{split, K_split}, {1, 4}, {1 + std::log(3) / 2, 4.5}}}};
  for (auto const& c : cases) {
    XB_Model const& made = law(c.name, c.settings);
    EXPECT_EQ(made.xbType == 0, c.name == "ConstantStiffness");  // which snapshots go by
    for (auto const& [x, expected] : c.points) {
      EXPECT_NEAR((made.*c.curve)(x), expected, 1e-12) << c.name << " at " << x;
    }
  }
  std::string printed;
  law("SigmoidalStiffness", "", &printed);
  EXPECT_EQ(printed, "x0 = 0.010000\nk0 = 0.080000\na = 2.450000\nb = 0.500000\n");
  law("ThreeLinearForce", "", &printed);
  EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 9);  // a heading, eight values
  EXPECT_EQ(create_elastic_law("constantStiffness", "xb_"), nullptr);
}

TEST(ElasticLaws, IntegralTableIsDawsonsIntegralWhereThereIsAnEnergy) {
  std::string rows;
  for (int i = -60; i <= 60; ++i) rows += std::to_string(0.05 * i) + " 1.25\n";
  struct {
    XB_Model const& law;
    double end, tolerance;
  } const cases[] = {
      {law("ConstantStiffness"), 30.0, 6e-5},  // half the width of a rectangle, and rounding
      {tabulated(rows), 3.0, 3e-4}};           // chords of 0.05 nm of the energy
  constexpr double a = 1.25 / 8.0;
  for (auto const& [law, end, tolerance] : cases) {
    MyDiscreteFunction const& table = law.GetIntegralFunction();
    double const* const first_row = &table.points.front().first;
    EXPECT_EQ(&law.GetIntegralFunction().points.front().first, first_row);  // built once
    for (double const x : {-2.9, 0.8, 4.0, 20.0}) {
      if (x > end) continue;
      double const y = integral([&](double u) { return std::exp(a * (u * u - x * x)); }, 0.0, x);
      EXPECT_NEAR(table.GetY(x), y, tolerance) << x;
    }
    EXPECT_NEAR(table.points.front().first, -end, 2e-3);
    EXPECT_NEAR(table.points.back().first, end, 2e-3);
  }
  for (char const* name : {"SigmoidalStiffness", "ThreeLinearForce"}) {
    XB_Model const& model = law(name);
    EXPECT_TRUE(model.GetIntegralFunction().points.empty());
    expect_refusal([&] { model.GetEnergy(0.0); },
                   std::string("^XB_") + name + " xb model nije uradjen do kraja!\n.*no energy");
  }
  EXPECT_TRUE(law("TwoPartSigmoidalStiffness").GetIntegralFunction().points.empty());
}

TEST(XB_StiffnessFunction, EachCurveIsTheIntegralOfTheOneBefore) {
  double const rows[] = {-6.0, -2.5, -1.0, 0.0, 0.5, 2.0, 7.0};
  XB_Model const& law =
      tabulated("-6 0.25\n-2.5 0.5 remark\n\n-1\t1.0\n0 1.5\n0.5 2\n2 2.5\n7 1.5\n");
  EXPECT_EQ(law.GetForce(0.0), 0.0);
  EXPECT_EQ(law.GetEnergy(0.0), 0.0);
  // Between rows the curves are straight, so that Simpson's rule adds no error of its own.
  for (int i = 1; i < 7; ++i) {
    double const a = rows[i - 1], b = rows[i];
    EXPECT_NEAR(law.GetForce(b) - law.GetForce(a), rise(law, a, b, 2), 1e-12);
    EXPECT_NEAR(law.GetEnergy(b) - law.GetEnergy(a), work(law, a, b, 2), 1e-12);
  }
  EXPECT_DOUBLE_EQ(law.GetStiffness(-1.0), 1.0);
  EXPECT_DOUBLE_EQ(law.GetStiffness(-1.75), 0.75);
  // As far beyond an end as the row next to it lies inside.
  EXPECT_DOUBLE_EQ(law.GetStiffness(12.0), 2 * 1.5 - 2.5);
  EXPECT_DOUBLE_EQ(law.GetForce(-9.5), 2 * law.GetForce(-6.0) - law.GetForce(-2.5));
  EXPECT_DOUBLE_EQ(law.GetEnergy(12.0), 2 * law.GetEnergy(7.0) - law.GetEnergy(2.0));
}

TEST(XB_StiffnessFunction, SegmentAcrossZeroCountsOnNeitherSide) {
  XB_Model const& law = tabulated("-3 2\n-1 2\n2 2\n4 2\n");
  EXPECT_EQ(law.GetForce(2.0), 0.0);
  EXPECT_EQ(law.GetForce(-3.0), -4.0);
  EXPECT_EQ(law.GetForce(4.0), 4.0);
  EXPECT_EQ(law.GetEnergy(4.0), 4.0);
  EXPECT_EQ(law.GetEnergy(-3.0), 4.0);
}

TEST(XB_TwoPartSigmoidalStiffness, ForceAndEnergyAreTheIntegralsFromZero) {
  XB_Model const& two_part = law("TwoPartSigmoidalStiffness", "x_start=-4 x_end=4");
  double energy = 0.0;
  for (int i = 1; i <= 50; ++i) {
    for (double const side : {-1.0, 1.0}) {
      double const x = side * 0.08 * i, split = side < 0.0 && x < -0.8042 ? -0.8042 : 0.0;
      double const F = rise(two_part, 0.0, split, 4000) + rise(two_part, split, x, 4000);
      EXPECT_NEAR(two_part.GetForce(x), F, 3e-3) << x;  // 100 trapezoids of up to 0.04 nm
    }
    energy += work(two_part, 0.08 * (i - 1), 0.08 * i, 2);
    EXPECT_NEAR(two_part.GetEnergy(0.08 * i), energy, 1e-10);
  }
  // A row per strip pair.
  EXPECT_NEAR(two_part.GetEnergy(-3.2), -work(two_part, -3.2, 0.0, 80), 1e-10);
  double const slope = (two_part.GetForce(4.0) - two_part.GetForce(3.92)) / 0.08;
  EXPECT_NEAR(two_part.GetForce(6.0), two_part.GetForce(4.0) + 2.0 * slope, 1e-9);
  // The default grid has no row at zero, but a triangle on each side of it.
  XB_Model const& coarse = law("TwoPartSigmoidalStiffness");
  for (double const x : {-0.2, 0.2}) {
    EXPECT_NEAR(coarse.GetEnergy(x), 0.5 * coarse.GetForce(x) * x, 1e-10);
  }
}

TEST(ElasticLaws, RefuseWhatTheyCannotUse) {
  struct {
    char const *name, *setting, *message;
  } const cases[] = {
      {"SigmoidalStiffness", "b=0", ".prm, section SigmoidalStiffness: b is '0'"},
      {"ThreeLinearForce", "T1=1", "T2 is '-0.4704'"},
      {"TwoPartSigmoidalStiffness", "x_start=0.1", "x_start is '0.1'"},
      {"TwoPartSigmoidalStiffness", "x_end=0", "x_end is '0'"},
      {"TwoPartSigmoidalStiffness", "x_end=1e-17", "the grid's last extension"},
      {"TwoPartSigmoidalStiffness", "b_right=0", "b_right is '0'"},
      {"TwoPartSigmoidalStiffness", "b_left=-300", "the energy at extension -25 is 'inf'"},
      {"StiffnessFunction", "xbStiffnessFileName=lost.dat",
       "^No fajl XB\\(SEE\\) stiffness! lost\\.dat\n.*xb_StiffnessFunction\\.prm"}};
  for (auto const& c : cases) expect_refusal([&] { read_law(c.name, c.setting); }, c.message);
  std::pair<char const*, char const*> const tables[] = {
      {"0 1\n", "k.dat: the number of rows is '1'"},
      {"-1 1\n1 one\n", "k.dat, line 2: the line is '1 one'"},
      {"-1 1\n\n1 nan\n", "k.dat, line 3: the line"},
      {"-1 1\n1 1\n1 2\n", "k.dat, line 3: the extension is '1'; accepted: a number above 1"},
      {"-2 1\n0 1\n", "k.dat: the range of extensions is '-2 to 0'"},
      {"0 1\n2 1\n", "k.dat: the range of extensions is '0 to 2'"}};
  for (auto const& [rows, message] : tables) {
    write_file("k.dat", rows);
    expect_refusal([] { read_law("StiffnessFunction", "xbStiffnessFileName=k.dat"); }, message);
  }
}

}  // namespace
