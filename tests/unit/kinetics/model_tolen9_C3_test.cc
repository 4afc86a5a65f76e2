// Would catch: a scheme that doesn't build, a table looked up at the wrong strain, a wrong end of
// the grid, a cache that outlives its strain or is not used or acts on Exact, rescaling of the
// wrong constants, a law or a value that is taken without sense.

#include "kinetics/model_tolen9_C3.h"

#include <gtest/gtest.h>

#include <cmath>

#include "elastic/XB_Models.h"
#include "records/filament_data.h"
#include "support/quadrature.h"
#include "support/small_lattice.h"
#include "support/work_dir.h"

namespace {

/// A linear spring that counts how often its stiffness is asked for, once per evaluation of the
/// rates. Its integral table is a stub: only C6 looks into it.
struct CountedSpring : XB_ConstantStiffness {
  explicit CountedSpring(double stiffness = 1.3) : XB_ConstantStiffness("") { k = stiffness; }
  double GetStiffness(double) const override {
    ++asked;
    return k;
  }
  void FillIntegralFunction() const override { integralFunction.SetFunction({{0, 0}, {1, 0.5}}); }
  mutable unsigned asked = 0;
};

/// Text of a section; the settings are separated by ';'.
std::string section(std::string const& name, std::string const& settings) {
  std::string text = "subsection " + name + "\n  set ";
  for (char const c : settings) text += c == ';' ? "\n  set " : std::string(1, c);
  return text + "\nend\n";
}

/// A scheme whose states have a range, on a grid whose strains are exact.
std::string scheme(std::string const& name, std::string const& numerics = "dx = 0.5") {
  std::string text = section("tolen", "model = " + name) +
                     section("numerics", "xs = -10;xe = 10;" + numerics) +
                     section("powerstroke", "h = 3.5;ha = 0.75;hb = 0.5");
  for (char const* const state : {"4", "5", "6", "7", "8", "9"}) {
    text += section(std::string("state") + state, "cc = .5;ccm = .2;dm = 6;dp = 5;gm = 90;gp = 70");
  }
  return text;
}

ModelTolen9_C3 make_model(XB_Model& law, std::string const& text) {
  write_file("tolen.prm", text);
  return ModelTolen9_C3({&law, "tolen.prm"});
}

/// Calls `check` for each pair of states.
template <class Check>
void for_all_pairs(Check check) {
  for (unsigned from = 0; from < 9; ++from) {
    for (unsigned to = 0; to < 9; ++to) check(from, to);
  }
}

class NineStateSchemes : public testing::TestWithParam<char const*> {};

TEST_P(NineStateSchemes, HaveRatesAtEveryStrainOfTheirGrid) {
  XB_ConstantStiffness law("");
  ModelTolen9_C3 const model = make_model(law, scheme(GetParam(), "dx = 0.02"));
  bool const is_c7 = GetParam() == std::string("C7");
  for (unsigned state = 0; state < 9; ++state) {
    EXPECT_EQ(model.attached[state], state >= (is_c7 ? 4u : 3u)) << state;
    EXPECT_EQ(model.IsPowerStrokeState(static_cast<int>(state)), state >= 4 && state <= 7);
  }
  for (double x = -10.0; x < 10.0; x += 0.02) {
    for_all_pairs([&](unsigned from, unsigned to) {
      double const k = model.get_k_exact(x, from, to);
      ASSERT_TRUE(std::isfinite(k) && k >= 0.0 && k <= 1e6)
          << from << to << " at " << x << ": " << k;
    });
  }
}

INSTANTIATE_TEST_SUITE_P(All, NineStateSchemes, testing::Values("C3", "C4", "C5", "C6", "C7"),
                         [](auto const& name) { return std::string(name.param); });

TEST(NineStateModel, LeverFollowsTheScheme) {
  CountedSpring law;
  struct {
    char const* name;
    double levers[5];
  } const cases[] = {{"C3", {3.5, 3.5, 7.5, 7.5, 0}},
                     {"C4", {3.5, 3.5, 7.5, 7.5, 0}},
                     {"C5", {3.5, 4.25, 7.5, 8.0, 8.5}},
                     {"C7", {0, 3.5, 7.5, 7.5, 0}}};
  for (auto const& c : cases) {
    ModelTolen9_C3 const model = make_model(law, scheme(c.name, "dx = 2"));
    for (unsigned s = 0; s < 4; ++s) EXPECT_EQ(model.power_stroke(s), 0.0);
    for (unsigned s = 4; s < 9; ++s) EXPECT_EQ(model.power_stroke(s), c.levers[s - 4]) << c.name;
  }
}

TEST(NineStateModel, BuildsItsTransitionsTablesAndFiles) {
  CountedSpring law;
  ModelTolen9_C3 const model =
      make_model(law, scheme("C3", "dx = 2") + section("rates", "k_13 = 0;k_82 = 3"));
  EXPECT_FALSE(model.transitions[0][2]);
  EXPECT_TRUE(model.transitions[7][1]);
  EXPECT_TRUE(model.transitions[2][0]);
  EXPECT_FALSE(model.transitions[2][4]);
  EXPECT_TRUE(model.transitions[4][2] && model.transitions[6][2]);
  EXPECT_FALSE(model.transitions[5][3] || model.transitions[7][3]);
  EXPECT_EQ(law.asked, 2u * 10u);  // one evaluation per strain and pass
  EXPECT_EQ(read_file("model_tolen_integral.dat"), "0 0\n1 0.5\n");
  EXPECT_EQ(listing_text(), "\t*** tTOLEN9 MODEL ********************\n\n");
}

TEST(NineStateModel, LinearGoesOnFromTheIntervalAbove) {
  CountedSpring law;
  ModelTolen9_C3 const model = make_model(law, scheme("C7"));
  for_all_pairs([&](unsigned from, unsigned to) {
    auto const at = [&](double x) { return model.get_k_exact(x, from, to); };
    auto const line = [&](double x, double x0) {
      return at(x0) + (x - x0) / 0.5 * (at(x0 + 0.5) - at(x0));
    };
    struct {
      double x, expected;
    } const cases[] = {{1.0, line(1.0, 1.5)},       // on a grid strain
                       {1.2, line(1.2, 1.5)},       // between
                       {-9.9, line(-9.9, -9.5)},    // in the first interval
                       {-10.3, line(-10.3, -9.5)},  // less than a step below
                       {-10.8, line(-10.8, -10.0)},
                       {-11.0, at(-10.0)},  // two steps below and more
                       {-99.0, at(-10.0)},
                       {8.9, line(8.9, 9.0)},
                       {9.0, at(9.5)},  // the last interval and beyond
                       {9.4, at(9.5)},
                       {1e300, at(9.5)}};
    for (auto const& c : cases) {
      double const k = model.get_k(c.x, from, to);
      EXPECT_NEAR(k, c.expected, 1e-9 * (1.0 + std::abs(c.expected))) << from << to << ' ' << c.x;
    }
  });
}

TEST(NineStateModel, StepTakesTheGridStrainAbove) {
  CountedSpring law;
  ModelTolen9_C3 const model = make_model(law, scheme("C7", "dx = 0.5;interpolation = Step"));
  struct {
    double x, grid_x;
  } const cases[] = {{1.0, 1.5},    {1.2, 1.5}, {-10.0, -9.5}, {-10.3, -9.5}, {-10.8, -10},
                     {-11.5, -10.}, {8.9, 9.0}, {9.0, 9.5},    {50.0, 9.5}};
  for (auto const& c : cases) {
    for_all_pairs([&](unsigned from, unsigned to) {
      EXPECT_EQ(model.get_k(c.x, from, to), model.get_k_exact(c.grid_x, from, to)) << c.x;
    });
  }
}

TEST(NineStateModel, ExactWorksOutEachStrainOnce) {
  CountedSpring law;
  ModelTolen9_C3 const model = make_model(law, scheme("C7", "dx = 0.5;interpolation = Exact"));
  double const first = model.get_k(1.2, 8, 0);
  unsigned const asked = law.asked;
  for_all_pairs([&](unsigned from, unsigned to) { model.get_k(1.2, from, to); });
  EXPECT_EQ(law.asked, asked);
  EXPECT_NE(model.get_k(1.3, 8, 0), first);
  EXPECT_EQ(law.asked, asked + 1);
  EXPECT_EQ(model.get_k(1.2, 8, 0), first);
  EXPECT_EQ(model.get_k(99.0, 8, 0), 70.0);  // the limit, beyond the grid as well
  ActinSite_s site;
  site.k_on_factor = 0.25;
  EXPECT_EQ(model.get_k(1.2, 0, 8, site), model.get_k(1.2, 0, 8));
}

TEST(NineStateModel, RescalesTheFourConstantsOfBinding) {
  CountedSpring law;
  std::string const rates = section("rates", "k_28 = 40;k_26 = 5;k_37 = 20");
  testing::internal::CaptureStdout();
  ModelTolen9_C3 const wide = make_model(law, scheme("C7") + rates);
  std::string const printed = testing::internal::GetCapturedStdout();
  ModelTolen9_C3 const narrow = make_model(law, scheme("C7") + rates + section("misc", "dco = 1"));
  // In C7 the states 2 and 3 exchange at constant rates, so that the bound fraction is a box of
  // 141 points of 0.1 nm, its half width taken as 14.1 nm. Neighbours 5.5 m away add the part of
  // the box beyond 5.5 m - 14.1: 22.7, 17.2, 11.7, 6.2 and 0.7 of 28.2 nm on either side.
  ASSERT_EQ(printed.rfind("bind_rescaling_factor = 5.1", 0), 0u) << printed;
  double const factor = 100.0 / wide.get_k(0.0, 2, 3);
  EXPECT_NEAR(factor, 1.0 + 2.0 * 58.5 / 28.2, 0.01);
  EXPECT_NEAR(std::stod(printed.substr(24)), factor, 1e-5 * factor);
  EXPECT_DOUBLE_EQ(narrow.get_k(0.0, 2, 3), 100.0);
  double const x = 0.3;  // within both reaches of states 4 and 8
  EXPECT_NEAR(narrow.get_k_exact(x, 0, 8) / wide.get_k_exact(x, 0, 8), factor, 1e-9);
  EXPECT_NEAR(narrow.get_k_exact(-7.0, 1, 7) / wide.get_k_exact(-7.0, 1, 7), factor, 1e-9);
  EXPECT_NEAR(narrow.get_k_exact(x, 1, 5) / wide.get_k_exact(x, 1, 5), factor, 1e-9);
  EXPECT_EQ(narrow.get_k_exact(x, 3, 4), wide.get_k_exact(x, 3, 4));
  EXPECT_EQ(narrow.get_k_exact(-7.0, 2, 6), wide.get_k_exact(-7.0, 2, 6));
}

/// With K = 2 kT the look-up of C6 is Dawson's integral itself, and C6 the diffusion over a
/// barrier.
TEST(NineStateModel, C6StrokesOverTheBarrierOfItsLaw) {
  XB_ConstantStiffness law("");
  law.k = 8.0;
  ModelTolen9_C3 const model = make_model(law, scheme("C6", "dx = 0.5;interpolation = Exact") +
                                                   section("rates", "k_45 = 70;k_57 = 60"));
  auto const energy = [](double p) { return 4.0 * p * p; };
  for (double const x : {-6.0, -4.0, -1.7, -0.3}) {
    auto const resistance = [&](double u) { return std::exp((energy(x + u) - energy(x)) / 4.0); };
    double const k = 70.0 * 3.5 / integral(resistance, 0.0, 3.5);
    EXPECT_NEAR(model.get_k(x, 3, 4), std::min(k, 4000.0), 2e-3 * k) << x;
    double const balance = std::exp(-(energy(x + 7.5) - energy(x + 3.5)) / 4.0) * 60.0 / 100.0;
    double const forward = model.get_k(x, 4, 6);
    if (forward < 4000.0) {
      EXPECT_NEAR(forward / model.get_k(x, 6, 4) / balance, 1.0, 1e-9) << x;
    }
    double const end = std::exp(-(energy(x + 8.5) - energy(x + 7.5)) / 4.0);
    EXPECT_NEAR(model.get_k(x, 7, 0), 2.0 * 5000.0 * end / (end + 1.0), 1e-6) << x;
  }
  EXPECT_EQ(model.get_k(-6.1, 3, 2), 90.0);
  EXPECT_EQ(model.get_k(5.1, 3, 2), 70.0);
}

TEST(NineStateModel, RefusesWhatHasNoRates) {
  CountedSpring law;
  TestSpring without_table(1.0);
  EXPECT_EXIT(make_model(without_table, ""), testing::ExitedWithCode(1), "integral table");
  struct {
    char const *name, *settings, *message;
  } const cases[] = {
      {"numerics", "dx = 0", "dx is '0'"},       {"numerics", "xe = -20", "xe is '-20"},
      {"numerics", "dx = 1e-9", "dx is '1e-9'"}, {"powerstroke", "h = 0", "h is '0'"},
      {"powerstroke", "hd = -1", "hd is '-1'"},  {"misc", "eta3 = -1", "eta3 is '-1'"},
      {"misc", "dco = -1", "dco is '-1'"},       {"rates", "k_45 = -1", "k_45 is '-1'"}};
  for (auto const& c : cases) {
    EXPECT_EXIT(make_model(law, section(c.name, c.settings)), testing::ExitedWithCode(1), c.message)
        << c.settings;
  }
  EXPECT_EXIT(make_model(law, section("numerics", "xs = 1e17;xe = 1.00000000001e17;dx = 5")),
              testing::ExitedWithCode(1), "no end");
  EXPECT_EXIT(make_model(law, section("tolen", "model = C5")), testing::ExitedWithCode(1),
              "ha is '0.0'");
  EXPECT_EXIT(make_model(law, section("tolen", "model = C3") + section("powerstroke", "ht = 0")),
              testing::ExitedWithCode(1), "ht is '0'");
  CountedSpring slack(0.0);
  EXPECT_EXIT(make_model(slack, ""), testing::ExitedWithCode(1), "stiffness of the crossbridge");
}

}  // namespace
