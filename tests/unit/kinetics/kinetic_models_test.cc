// Would catch: in any registered model a rate that is negative or not finite, an attached state 0,
// a lever that is moved while detached, two forms of a rate that differ, a start without
// occupancies; in the models of the tables a site factor on a wrong transition, a reverse rate out
// of balance, a cycle that makes work from nothing, a cap met at a wrong strain, a rescaling of
// binding where there is nothing to rescale.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>

#include "elastic/XB_Models.h"
#include "kinetics/active_model.h"
#include "kinetics/model_util.h"
#include "records/filament_data.h"
#include "support/work_dir.h"

namespace {

using Models = Factory<Model, ModelParameter_s>;

/// A model on a spring of stiffness k [pN/nm], with the defaults of its class unless NAME.prm
/// exists. What it prints goes nowhere.
std::unique_ptr<ActiveModel> make_model(std::string const& name, double k) {
  static XB_ConstantStiffness spring("");
  spring.k = k;
  write_file("ca_protocol.dat", "0 0.001 0 0 0.5\n1 0.001 0 0 0.5\n");
  std::ofstream(name + ".prm", std::ios::app);
  testing::internal::CaptureStdout();
  Model* const model = Models::instance().create_type(name, {&spring, name + ".prm"});
  testing::internal::GetCapturedStdout();
  return std::unique_ptr<ActiveModel>(dynamic_cast<ActiveModel*>(model));
}

class KineticModels : public testing::TestWithParam<std::string> {};

TEST_P(KineticModels, KeepTheCommonRules) {
  auto const model = make_model(GetParam(), 1.25);
  ActiveModel const* const active = model.get();
  ASSERT_NE(active, nullptr);
  EXPECT_FALSE(model->attached[0]);
  unsigned const n = model->n_states();
  double detached_sum = 0.0;
  std::vector<double> p;
  ModelUtil::get_detached_states(*model, p);
  for (unsigned from = 0; from < n; ++from) {
    if (!model->attached[from]) {
      EXPECT_EQ(model->power_stroke(from), 0.0) << "state " << from;
    }
    EXPECT_GE(p[from], 0.0) << "state " << from;
    detached_sum += p[from];
    for (unsigned to = 0; to < n; ++to) {
      if (!model->transitions[from][to]) continue;
      for (double x = -20.0; x <= 20.0; x += 0.25) {
        double const k = model->get_k(x, from, to);
        ASSERT_TRUE(std::isfinite(k) && k >= 0.0)
            << from << " to " << to << " at " << x << ": " << k;
        ASSERT_EQ(active->get_k(x, from, to, ActinSite_s{}), k);
      }
    }
  }
  EXPECT_NEAR(detached_sum, 1.0, 1e-12);
}

std::vector<std::string> registered_names() {
  std::vector<std::string> names;
  for (auto const& type : Models::instance().types()) names.push_back(type.first);
  return names;
}

INSTANTIATE_TEST_SUITE_P(All, KineticModels, testing::ValuesIn(registered_names()),
                         [](auto const& name) { return name.param; });

/// Transitions "from to" that each factor of the site stands on.
struct SiteScheme {
  char const* model;
  std::string on, stroke, off;
  bool blocked_site_stops;
};

SiteScheme const site_schemes[] = {
    {"Huxley", "01", "", "10", false},        {"HuxleyMyBPC", "01", "", "10", false},
    {"Duke", "01", "12", "10 20 21", true},   {"DukeMyBPC", "01", "12", "10 20 21", true},
    {"Rombel", "01", "12", "10 20 21", true}, {"Vorn", "01", "12", "10 21 34", true},
    {"Tolen9", "08 15 17 23", "", "", false},
};

TEST(KineticModels, SiteFactorsStandOnTheirTransitionsAlone) {
  ActinSite_s const site = {2, 2.0, 3.0, 5.0, nullptr};
  ActinSite_s const blocked = {1, 2.0, 3.0, 5.0, nullptr};
  for (SiteScheme const& scheme : site_schemes) {
    auto const model = make_model(scheme.model, 1.25);
    for (unsigned from = 0; from < model->n_states(); ++from) {
      for (unsigned to = 0; to < model->n_states(); ++to) {
        std::string const pair = std::to_string(from) + std::to_string(to);
        auto const in = [&](std::string const& pairs) { return pairs.find(pair) + 1 > 0; };
        double const factor = in(scheme.on)       ? 2.0
                              : in(scheme.stroke) ? 3.0
                              : in(scheme.off)    ? 5.0
                                                  : 1.0;
        double const k = model->get_k(1.3, from, to);
        EXPECT_EQ(model->get_k(1.3, from, to, site), factor * k) << scheme.model << ' ' << pair;
        if (scheme.blocked_site_stops) {
          EXPECT_EQ(model->get_k(1.3, from, to, blocked), 0.0) << scheme.model << ' ' << pair;
        } else {
          EXPECT_EQ(model->get_k(1.3, from, to, blocked), factor * k) << scheme.model;
        }
      }
    }
  }
}

/// Free energy of a state at strain x in kBT, with `stiffness` of the spring below.
using Energy = std::function<double(unsigned state, double x)>;

constexpr double stiffness = 25.0;  // so stiff that a head reaches one site only
constexpr double kBT = 4.14;

double spring_energy(double x) { return 0.5 * stiffness * x * x / kBT; }

/// Pairs that balance, forward first. States from n on are ends of cycles: n stands for state 0.
struct Balance {
  char const* model;
  std::vector<std::pair<unsigned, unsigned>> pairs;
  Energy G;
};

Balance const balances[] = {
    {"Duke",
     {{0, 1}, {1, 2}},
     [](unsigned s, double x) {
       return s == 0   ? 0.0
              : s == 1 ? -3.63 + spring_energy(x)
                       : -3.63 - 15.0 + spring_energy(x + 10.5);
     }},
    {"DukeMyBPC", {{0, 1}}, [](unsigned s, double x) { return s * (-3.63 + spring_energy(x)); }},
    {"Rombel",
     {{0, 1}, {1, 2}, {2, 3}},
     [](unsigned s, double x) {
       return s == 0   ? 0.0
              : s == 1 ? -4.3 + spring_energy(x)
              : s == 2 ? -4.3 - 6.423 + spring_energy(x + 7.0)
                       : -24.155;
     }},
    {"Vorn",
     {{0, 1}, {1, 2}, {2, 3}},
     [](unsigned s, double x) {
       return s == 0   ? 0.0
              : s == 1 ? -3.63 + spring_energy(x)
              : s == 2 ? -3.63 - 15.0 + spring_energy(x + 10.5)
                       : -3.63 - 15.0 - 24.0 + spring_energy(x + 11.5);
     }},
    {"BrekAtpaseFiber",
     {{0, 1}, {1, 2}, {2, 3}},
     [](unsigned s, double x) {
       return s == 0   ? 0.0
              : s == 1 ? -3.63 + spring_energy(x)
              : s == 2 ? -3.63 - 13.96 + spring_energy(x + 10.5)
                       : -3.63 - 13.96 - 24.0 + spring_energy(x + 11.5);
     }},
};

TEST(KineticModels, ForwardOverReverseIsTheExponentialOfTheFreeEnergyDifference) {
  for (Balance const& balance : balances) {
    auto const model = make_model(balance.model, stiffness);
    for (auto const& [from, to] : balance.pairs) {
      for (double const x : {-4.0, -2.1, -0.4, 0.1, 0.3, 1.7, 3.0}) {
        unsigned const n = model->n_states();
        double const ratio = model->get_k(x, from % n, to % n) / model->get_k(x, to % n, from % n);
        double const difference = balance.G(from, x) - balance.G(to, x);
        // Exponents of up to a few hundred enlarge their rounding.
        EXPECT_NEAR(ratio / std::exp(difference), 1.0, 1e-12)
            << balance.model << ' ' << from << " to " << to << " at " << x;
      }
    }
  }
}

/// Models whose stroke falls beyond a threshold, with the energy of their stroke and the two rates.
struct Cap {
  char const* model;
  double GStroke, k_12, k_21_cap;
};

Cap const caps[] = {
    {"Duke", 15.0, 1000.0, 100.0},
    {"Vorn", 15.0, 1000.0, 100.0},
    {"BrekAtpaseFiber", 13.96, 10000.0, 1000.0},
};

TEST(KineticModels, ReverseStrokeMeetsItsCapWhereTheStrokeBeginsToFall) {
  for (Cap const& cap : caps) {
    auto const model = make_model(cap.model, 1.25);
    // The work of a stroke, k D (x + D / 2), leaves GStroke - ln(k_12 / cap) thermal units.
    double const D = 10.5;
    double const x_cap =
        kBT * (cap.GStroke - std::log(cap.k_12 / cap.k_21_cap)) / (1.25 * D) - D / 2;
    EXPECT_EQ(model->get_k(x_cap - 1e-6, 1, 2), cap.k_12) << cap.model;
    EXPECT_EQ(model->get_k(-20.0, 1, 2), cap.k_12) << cap.model;
    EXPECT_LT(model->get_k(x_cap + 1e-6, 1, 2), cap.k_12) << cap.model;
    EXPECT_NEAR(model->get_k(x_cap - 1.0, 2, 1), cap.k_21_cap * std::exp(-1.25 * D * 1.0 / kBT),
                1e-6)
        << cap.model;
    for (double const beyond : {0.0, 0.5, 4.0, 15.0}) {
      EXPECT_NEAR(model->get_k(x_cap + beyond, 2, 1) / cap.k_21_cap, 1.0, 1e-9) << cap.model;
    }
  }
}

/// Models that rescale binding, and whether the reverse rate keeps its constant as read.
std::vector<std::pair<char const*, bool>> const rescaled = {
    {"Duke", false}, {"DukeMyBPC", false}, {"Vorn", true}, {"BrekAtpaseFiber", true}};

TEST(KineticModels, BindingIsRescaledOnlyWhereAHeadReachesSeveralSites) {
  for (auto const& [name, reverse_as_read] : rescaled) {
    EXPECT_EQ(make_model(name, stiffness)->get_k(0.0, 0, 1), 170.0) << name;
    auto const soft = make_model(name, 0.3);
    EXPECT_LT(soft->get_k(0.0, 0, 1), 120.0) << name;
    double const as_read = 170.0 / std::exp(3.63);
    double const reverse = soft->get_k(0.0, 1, 0) / as_read;
    double const factor = soft->get_k(0.0, 0, 1) / 170.0;
    EXPECT_NEAR(reverse, reverse_as_read ? 1.0 : factor, 1e-12) << name;
  }
}

/// The longer cycles take a linear spring for granted; on one, their front is Duke's cycle.
TEST(KineticModels, LongerCyclesBeginAsDukesOnALinearSpring) {
  auto const duke = make_model("Duke", 1.25);
  write_parameters("BrekAtpaseFiber.prm", "brek_atpase_fiber",
                   {"GStroke = 15", "k_12 = 1000", "k_21_cap = 100"});  // the others' defaults
  for (char const* const name : {"Vorn", "BrekAtpaseFiber"}) {
    auto const model = make_model(name, 1.25);
    for (double x = -12.0; x < 8.0; x += 0.7) {
      EXPECT_NEAR(model->get_k(x, 0, 1) / duke->get_k(x, 0, 1), 1.0, 1e-12) << name;
      EXPECT_NEAR(model->get_k(x, 1, 2) / duke->get_k(x, 1, 2), 1.0, 1e-11) << name;
      EXPECT_NEAR(model->get_k(x, 2, 3) / duke->get_k(x, 2, 0), 1.0, 1e-11) << name;
    }
  }
}

}  // namespace
