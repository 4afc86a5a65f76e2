// Would catch: in any registered model a rate that is negative or not finite, an attached state 0,
// a lever in a wrong state, two forms of a rate that differ, a start without occupancies, a value
// without sense that is taken; in the models of the tables a closed form with a wrong branch, a
// constant on the transition of a neighbouring key, binding that is shared
// among other sites than those in reach, a site factor on a wrong transition, calcium
// that doesn't follow the clock, the parameter file of another model.

#include <cmath>
#include <sstream>

#include "base/run_state.h"
#include "kinetics/model_util.h"
#include "records/filament_data.h"
#include "support/expect_refusal.h"
#include "support/kinetic_model.h"

namespace {

std::string pair_name(unsigned from, unsigned to) {
  return std::to_string(from) + std::to_string(to);
}

bool has(std::string const& words, std::string const& word) {
  return words.find(word) != std::string::npos;
}

void expect_common_rules(ActiveModel const& model, double largest_rate) {
  EXPECT_FALSE(model.attached[0]);
  unsigned const n = model.n_states();
  double detached_sum = 0.0;
  std::vector<double> p;
  ModelUtil::get_detached_states(model, p);
  for (double const p_s : p) {
    EXPECT_GE(p_s, 0.0);
    detached_sum += p_s;
  }
  EXPECT_NEAR(detached_sum, 1.0, 1e-12);
  for (double x = -20.0; x <= 20.0; x += 0.25) {
    for (unsigned from = 0; from < n; ++from) {
      for (unsigned to = 0; to < n; ++to) {
        if (!model.transitions[from][to]) continue;
        double const k = model.get_k(x, from, to);
        ASSERT_TRUE(k >= 0.0 && k <= largest_rate) << pair_name(from, to) << ' ' << x << ": " << k;
        ASSERT_EQ(model.get_k(x, from, to, ActinSite_s{}), k);
      }
    }
  }
}

TEST(KineticModels, KeepTheCommonRules) {
  Spring spring(1.25);
  for (auto const& type : Factory<Model, ModelParameter_s>::instance().types()) {
    SCOPED_TRACE(type.first);
    expect_common_rules(*make_model(type.first, spring), 1e300);
  }
  for (char const* const scheme : {"C3", "C4", "C5", "C7"}) {
    SCOPED_TRACE(scheme);
    // Lines between the strains of the grid may reach below 0. The limit is kmax.
    auto const exact = nine_states(scheme) + "; numerics: interpolation=Exact";
    expect_common_rules(*make_model("Tolen9", spring, exact), 1e6);
  }
}

TEST(KineticModels, MoveTheirLeversInTheStatesBehindAStroke) {
  struct {
    char const* model;
    std::string settings, bound, after_a_stroke;  // states
    std::vector<double> levers;
  } const cases[] = {
      {"Huxley", "", "1", "", {0, 0}},
      {"HuxleyMyBPC", "", "1", "", {0, 0}},
      {"Duke", "duke: D=6", "12", "2", {0, 0, 6}},
      {"DukeMyBPC", "duke: D=6", "12", "2", {0, 0, 6}},
      {"Rombel", "rombel: D=6", "12", "2", {0, 0, 6}},
      {"Vorn", "vorn: D=6 delta=2", "123", "23", {0, 0, 6, 8, 0, 0}},
      {"BrekAtpaseFiber",
       "brek_atpase_fiber: D=6 delta=2",
       "123456",
       "23456",
       {0, 0, 6, 8, 8, 8, 8, 0}},
      {"Tolen9", nine_states("C3"), "345678", "4567", {0, 0, 0, 0, 3.5, 3.5, 7.5, 7.5, 0}},
      {"Tolen9", nine_states("C4"), "345678", "4567", {0, 0, 0, 0, 3.5, 3.5, 7.5, 7.5, 0}},
      {"Tolen9", nine_states("C5"), "345678", "4567", {0, 0, 0, 0, 3.5, 4.25, 7.5, 8.0, 8.5}},
      {"Tolen9", nine_states("C7"), "45678", "4567", {0, 0, 0, 0, 0, 3.5, 7.5, 7.5, 0}}};
  Spring spring(1.25);
  for (auto const& c : cases) {
    auto const model = make_model(c.model, spring, c.settings);
    ASSERT_EQ(model->n_states(), c.levers.size()) << c.model;
    for (unsigned s = 0; s < c.levers.size(); ++s) {
      EXPECT_EQ(model->attached[s], has(c.bound, std::to_string(s))) << c.model << ' ' << s;
      EXPECT_EQ(model->IsPowerStrokeState(static_cast<int>(s)),
                has(c.after_a_stroke, std::to_string(s)));
      EXPECT_EQ(model->power_stroke(s), c.levers[s]) << c.model << ' ' << s;
    }
  }
}

TEST(KineticModels, RatesAreClosedFormsOfTheStrain) {
  std::string const huxley =
      "huxley: f1=40 g1=10 g2=200 g3=3 h=5";  // one site in reach: f1 as read
  std::string const link = "huxley: f=40 g0=3 g1=10 h=8";
  std::string const rombel = "rombel: k_bind=300 kBT=4";  // 300 over all strains
  double const thermal = 300 * std::sqrt(1.25 / (8 * M_PI)) * std::exp(-0.625);
  struct {
    char const* model;
    std::string const& settings;
    unsigned from, to;
    std::vector<std::pair<double, double>> rates;  // strain, rate
  } const cases[] = {
      {"Huxley", huxley, 0, 1, {{-0.1, 0}, {0, 0}, {2.5, 20}, {5, 0}}},
      {"Huxley", huxley, 1, 0, {{-7, 200}, {0, 0}, {2.5, 5}, {5, 30}, {10, 60}}},  // g3 from h on
      {"HuxleyMyBPC", link, 0, 1, {{0, 40}, {7.999, 40}, {-7.999, 40}, {8, 0}, {-8, 0}}},
      {"HuxleyMyBPC", link, 1, 0, {{4, 8}, {-4, 8}, {-16, 23}}},
      {"Rombel", rombel, 0, 1, {{2, thermal}, {-2, thermal}}},
      {"Rombel", rombel, 1, 2, {{std::log(5.0), 2000}}},
      {"Rombel", rombel, 2, 0, {{0, 0}, {1.5, 3}, {-1.5, 150}}}};
  Spring spring(1.25);
  for (auto const& c : cases) {
    auto const model = make_model(c.model, spring, c.settings);
    for (auto const& [x, k] : c.rates) {
      EXPECT_DOUBLE_EQ(model->get_k(x, c.from, c.to), k) << c.model << c.from << c.to << ' ' << x;
    }
  }
}

/// What f1 was divided by.
double huxley_rescaling(std::string const& h) {
  Spring spring(1.0);
  auto const model = make_model("Huxley", spring, "huxley: f1=40 h=" + h);
  return 40.0 / (std::stod(h) * model->get_k(1.0, 0, 1));
}

TEST(KineticModels, BindingOfHuxleyIsSharedAmongTheSitesInReach) {
  EXPECT_EQ(huxley_rescaling("5.5"), 1.0);
  // The sites 5.5 m away on both sides add 2 (1 - 5.5 m / h) to the flux of one.
  EXPECT_NEAR(huxley_rescaling("8"), 1.625, 0.01);  // sums of 0.1 nm steps
  EXPECT_NEAR(huxley_rescaling("12"), 2.25, 0.02);
  EXPECT_NEAR(huxley_rescaling("30"), 5.5, 0.02);
  // By hand: strains 0, 0.1 .. 6.0 give 183; a neighbour stands where a step ends at or beyond
  // 5.5 (5.5 to 6.0: 34.5; 55 steps of 0.1 end just below it) or up to 0.55 (0 to 0.4: 1.0).
  EXPECT_NEAR(huxley_rescaling("6.05"), 1.0 + 35.5 / 183.0, 1e-12);
}

TEST(KineticModels, ConstantRatesStandOnTheTransitionsOfTheirNames) {
  std::string const behind = "34 43 45 54 56 65 67 76 70 07 16 61";
  struct {
    char const *model, *section;
    unsigned first;         // number of the first state in the keys
    std::string constants;  // named by their states
    std::string pairs;      // that the stepper looks at
  } const cases[] = {
      {"Vorn", "vorn", 1, "45 51 15 16", "01 04 05 10 12 21 23 32 34 40 50"},
      {"BrekAtpaseFiber", "brek_atpase_fiber", 0, behind, "01 10 12 21 23 32 " + behind}};
  Spring spring(25.0);
  for (auto const& c : cases) {
    std::string settings = c.section + std::string(": "), pair;
    for (std::istringstream words(c.constants); words >> pair;) {
      settings += "k_" + pair + '=' + pair + ' ';
    }
    auto const model = make_model(c.model, spring, settings);
    for (std::istringstream words(c.constants); words >> pair;) {
      unsigned const from = pair[0] - '0' - c.first, to = pair[1] - '0' - c.first;
      EXPECT_EQ(model->get_k(2.5, from, to), std::stod(pair)) << c.model << ' ' << pair;
    }
    unsigned const n = model->n_states();
    for (unsigned i = 0; i < n * n; ++i) {
      bool const exists = has(c.pairs, pair_name(i / n, i % n));
      EXPECT_EQ(model->transitions[i / n][i % n], exists) << c.model << pair_name(i / n, i % n);
    }
  }
}

TEST(KineticModels, SiteFactorsStandOnTheirTransitionsAlone) {
  struct {
    char const* model;
    std::string on, stroke, off;  // transitions that each factor of the site stands on
    std::string others;           // that have a rate without one; "" for all
    bool blocked_site_stops;
  } const schemes[] = {{"Huxley", "01", "", "10", "-", false},
                       {"HuxleyMyBPC", "01", "", "10", "-", false},
                       {"Duke", "01", "12", "10 20 21", "-", true},
                       {"DukeMyBPC", "01", "", "10", "-", true},
                       {"Rombel", "01", "12", "10 20 21", "02", true},
                       {"Vorn", "01", "12", "10 21 34", "04 05 23 32 40 50", true},
                       {"Tolen9", "08 15 17 23", "", "", "", false},
                       {"BrekAtpaseFiber", "01", "12", "10 67", "", true}};
  ActinSite_s const site = {2, 2.0, 3.0, 5.0, nullptr};
  ActinSite_s const blocked = {1, 2.0, 3.0, 5.0, nullptr};
  Spring spring(1.25);
  for (auto const& scheme : schemes) {
    auto const model = make_model(scheme.model, spring);
    unsigned const n = model->n_states();
    for (unsigned i = 0; i < n * n; ++i) {
      unsigned const from = i / n, to = i % n;
      std::string const pair = pair_name(from, to);
      double const factor = has(scheme.on, pair)       ? 2.0
                            : has(scheme.stroke, pair) ? 3.0
                            : has(scheme.off, pair)    ? 5.0
                                                       : 1.0;
      double const k = factor * model->get_k(1.3, from, to);
      EXPECT_EQ(model->get_k(1.3, from, to, site), k) << scheme.model << ' ' << pair;
      EXPECT_EQ(model->get_k(1.3, from, to, blocked), scheme.blocked_site_stops ? 0.0 : k)
          << scheme.model << ' ' << pair;
      if (scheme.others.empty()) continue;
      bool const has_rate = factor != 1.0 || has(scheme.others, pair);
      EXPECT_EQ(k > 0.0, has_rate) << scheme.model << ' ' << pair;
    }
  }
}

TEST(KineticModels, CalciumEmptiesTheParkedStateOfVornInTheTimeOfTheFirstRow) {
  write_file("ca.dat", "0 0\n1 2e-6\n2 2e-6\n");
  write_file("ca_protocol.dat", "0 1 0 999 ca.dat\n1 1 0 0 5\n");
  Spring spring(25.0);
  auto const model = make_model("Vorn", spring, "vorn: b_param=3");
  // The floor 10, and 490 above it times a share of 0 without calcium and 1/2 at ca_50 = 1e-6.
  std::pair<double, double> const shares[] = {{0, 0}, {0.5, 0.5}, {0.25, 1 / 9.0}, {1.5, 8 / 9.0}};
  for (auto const& [time, share] : shares) {
    timeForAll = time;
    EXPECT_NEAR(model->get_k(4.0, 5, 0), 10.0 + 490.0 * share, 1e-9) << time;
  }
  timeForAll = 0.0;
  write_file("ca_protocol.dat", "0 1 0 0 -1e-7\n");
  expect_refusal([&] { read_model("Vorn", spring, "vorn: b_param=0.5")->get_k(0.0, 5, 0); },
                 "ca_protocol.dat: the calcium concentration at time 0");
}

TEST(KineticModels, RefuseValuesWithoutSense) {
  struct {
    char const *model, *section, *settings;
  } const cases[] = {
      {"Huxley", "huxley", "h=-1 h=0 f1=-1 g1=-1 g2=-1 g3=-1"},
      {"HuxleyMyBPC", "huxley", "f=-1 g0=-1 g1=-1 h=0"},
      {"Duke", "duke", "kBT=0 D=0 k_bind=-1 k_12=0 k_21_cap=0 k_adp=-1 eta=-1"},
      {"Rombel", "rombel", "kBT=0 D=-7 k_bind=-1"},
      {"Vorn", "vorn",
       "kBT=0 D=0 k_bind=-1 k_12=0 k_21_cap=0 k_adp=-1 eta=-1 detachment_multiplier=0 k_45=-1 "
       "k_51=-1 k_15=-1 k_16=-1 k_ps_0=-1 k_ps_max=-1 ca_50=0 b_param=-1"},
      {"BrekAtpaseFiber", "brek_atpase_fiber",
       "kBT=0 D=0 k_bind=-1 k_12=0 k_21_cap=0 k_adp=-1 eta=-1 detachment_multiplier=0 k_34=-1"},
      {"Tolen9", "numerics", "dx=0 xe=-20 dx=1e-9"},
      {"Tolen9", "powerstroke", "h=0 hd=-1"},
      {"Tolen9", "misc", "eta3=-1 dco=-1"},
      {"Tolen9", "rates", "k_45=-1"}};
  Spring spring(1.25);
  for (auto const& c : cases) {
    std::istringstream words(c.settings);
    for (std::string setting; words >> setting;) {
      std::string const key = setting.substr(0, setting.find('='));
      expect_refusal([&] { read_model(c.model, spring, c.section + (": " + setting)); },
                     parameter_file_of(c.model) + ", section " + c.section + ": " + key + " is '");
    }
  }
  XB_SigmoidalStiffness sigmoidal("");
  Spring slack(0.0);
  struct {
    char const* model;
    XB_Model& law;
    char const *settings, *message;
  } const others[] = {{"Duke", sigmoidal, "", "SigmoidalStiffness has no energy"},
                      {"Tolen9", sigmoidal, "", "integral table"},
                      {"Tolen9", slack, "", "stiffness of the crossbridge"},
                      {"Tolen9", spring, "tolen: model=C5", "ha is '0.0'"},
                      {"Tolen9", spring, "tolen: model=C3; powerstroke: ht=0", "ht is '0'"},
                      {"Tolen9", spring, "numerics: xs=1e17 xe=1.00000000001e17 dx=5", "no end"}};
  for (auto const& c : others) {
    expect_refusal([&] { read_model(c.model, c.law, c.settings); }, c.message);
  }
  write_file("ca_protocol.dat", "");
  expect_refusal([&] { read_model("Vorn", spring, "vorn: kBT=0"); }, "ca_protocol.dat");
}

}  // namespace
