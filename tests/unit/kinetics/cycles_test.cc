// Would catch: in the cycles that go back to Duke's a reverse rate out of balance, work gained from
// nothing, a stiffness taken at the stretched length, a step with a wrong work, a cap at a wrong
// strain, binding that saturates or widens wrongly, a rescaling where there is nothing to rescale,
// tables over the strain that end early or name other columns.

#include <cmath>
#include <sstream>
#include <utility>

#include "base/logger.h"
#include "support/kinetic_model.h"

namespace {

/// Stiffer the further it is stretched, and so stiff that a head reaches one site only.
struct StiffeningLaw : XB_Model {
  double GetStiffness(double x) const override { return 25.0 + 0.024 * x * x; }
  double GetForce(double x) const override { return 25.0 * x + 0.008 * x * x * x; }
  double GetEnergy(double x) const override { return 12.5 * x * x + 0.002 * x * x * x * x; }
  bool IsNonLinear() const override { return true; }
};

StiffeningLaw law;
constexpr double kBT = 4.14;
constexpr double D = 10.5, delta = 1.0;  // of all cycles but Rombel's [nm]

/// Energy of the law in kBT, stretched to y: its own, or as if it were linear around the strain x.
double exact(double, double y) { return law.GetEnergy(y) / kBT; }
double linear(double x, double y) { return 0.5 * law.GetStiffness(x) * y * y / kBT; }

constexpr double unstrained = 99.0;

/// States along a cycle, each in balance with the next; the last may be its end, state 0 again.
struct Balance {
  char const* model;
  double (*spring)(double x, double y);
  std::vector<double> levels;  ///< free energies without strain [kBT]
  std::vector<double> levers;  ///< [nm]

  double G(std::size_t s, double x) const {
    return levels[s] + (levers[s] == unstrained ? 0.0 : spring(x, x + levers[s]));
  }
};

Balance const balances[] = {
    {"Duke", exact, {0, -3.63, -3.63 - 15}, {unstrained, 0, D}},
    {"DukeMyBPC", exact, {0, -3.63}, {unstrained, 0}},
    {"Rombel", exact, {0, -4.3, -4.3 - 6.423, -24.155}, {unstrained, 0, 7, unstrained}},
    {"Vorn", linear, {0, -3.63, -3.63 - 15, -3.63 - 39}, {unstrained, 0, D, D + delta}},
    {"BrekAtpaseFiber",
     linear,
     {0, -3.63, -17.59, -41.59, -17.59},
     {unstrained, 0, D, 11.5, 11.5}}};

TEST(Cycles, ForwardOverReverseIsTheExponentialOfTheFreeEnergyDifference) {
  for (Balance const& balance : balances) {
    auto const model = make_model(balance.model, law);
    for (unsigned s = 0; s < 3 && s + 1 < balance.levels.size(); ++s) {
      unsigned const next = (s + 1) % model->n_states();
      for (double const x : {-4.0, -2.1, -0.4, 0.1, 0.3, 1.7, 3.0}) {
        double const ratio = model->get_k(x, s, next) / model->get_k(x, next, s);
        // Exponents of up to a few hundred enlarge their rounding.
        EXPECT_NEAR(ratio / std::exp(balance.G(s, x) - balance.G(s + 1, x)), 1.0, 1e-12)
            << balance.model << ' ' << s << " at " << x;
      }
    }
  }
}

/// Cycles whose stroke falls beyond a threshold, with defaults that differ.
struct DukeLike {
  char const *model, *section;
  double GStroke, k_12, k_21_cap;
  double (*spring)(double x, double y);
  double (*work)(double x, double d);  ///< of the stroke beyond that at the threshold x - d
  unsigned after_release;              ///< of ADP, from state 2 on
  bool reverse_binding_is_as_read;
};

double own_work(double, double d) { return exact(0, D + d) - exact(0, d) - exact(0, D); }
double linear_work(double x, double d) { return law.GetStiffness(x) * D * d / kBT; }

DukeLike const duke_like[] = {
    {"Duke", "duke", 15.0, 1000.0, 100.0, exact, own_work, 0, false},
    {"Vorn", "vorn", 15.0, 1000.0, 100.0, linear, linear_work, 3, true},
    {"BrekAtpaseFiber", "brek_atpase_fiber", 13.96, 1e4, 1000.0, linear, linear_work, 3, true}};

TEST(Cycles, StrokeAndReleaseOfAdpFallByTheirWork) {
  for (DukeLike const& c : duke_like) {
    auto const model = make_model(c.model, law);
    double x_cap = -20.0, beyond = 20.0;
    while (beyond - x_cap > 1e-12) {
      double const x = 0.5 * (x_cap + beyond);
      (model->get_k(x, 1, 2) == c.k_12 ? x_cap : beyond) = x;
    }
    for (double const d : {0.01, 0.5, 2.0}) {
      double const stroke = c.k_12 * std::exp(-c.work(x_cap + d, d));
      EXPECT_NEAR(model->get_k(x_cap + d, 1, 2) / stroke, 1.0, 1e-9) << c.model << ' ' << d;
    }
    for (double const x : {-12.0, -11.3, -9.0, 3.0}) {
      double const work = c.spring(x, x + D + delta) - c.spring(x, x + D);
      double const release = 51.0 * std::exp(-work);
      EXPECT_NEAR(model->get_k(x, 2, c.after_release) / release, 1.0, 1e-11) << c.model << ' ' << x;
    }
  }
}

TEST(Cycles, ReverseStrokeMeetsItsCapWhereTheStrokeBeginsToFall) {
  Spring spring(1.25);
  for (DukeLike const& c : duke_like) {
    auto const model = make_model(c.model, spring);
    // The work of a stroke, k D (x + D / 2), leaves GStroke - ln(k_12 / cap) thermal units.
    double const x_cap = kBT * (c.GStroke - std::log(c.k_12 / c.k_21_cap)) / (1.25 * D) - D / 2;
    EXPECT_EQ(model->get_k(x_cap - 1e-6, 1, 2), c.k_12) << c.model;
    EXPECT_EQ(model->get_k(-20.0, 1, 2), c.k_12) << c.model;
    EXPECT_LT(model->get_k(x_cap + 1e-6, 1, 2), c.k_12) << c.model;
    EXPECT_NEAR(model->get_k(x_cap - 1.0, 2, 1) / c.k_21_cap, std::exp(-1.25 * D / kBT), 1e-9);
    for (double const beyond : {0.0, 0.5, 4.0, 15.0}) {
      EXPECT_NEAR(model->get_k(x_cap + beyond, 2, 1) / c.k_21_cap, 1.0, 1e-9) << c.model;
    }
  }
}

TEST(Cycles, BindingSaturatesWithEtaAndWidensWherePulled) {
  for (DukeLike const& c : duke_like) {
    for (double const eta : {0.0, 3.0}) {
      for (double const multiplier : {1.0, 4.0}) {
        std::string settings = c.section + (": GBind=-20 eta=" + std::to_string(eta));
        if (c.model == std::string("Duke") && multiplier != 1.0) continue;
        if (multiplier != 1.0) settings += " detachment_multiplier=4";
        auto const model = make_model(c.model, law, settings);
        for (double const x : {-0.7, -0.2, 0.0, 0.4, 1.1}) {
          double const e = std::exp(-exact(x, x) / (x > 0.0 ? multiplier : 1.0));
          EXPECT_NEAR(model->get_k(x, 0, 1), 170.0 * (1.0 + eta) * e / (1.0 + eta * e), 1e-10)
              << c.model << ", eta " << eta << ", multiplier " << multiplier << " at " << x;
        }
      }
    }
  }
}

TEST(Cycles, BindingIsRescaledOnlyWhereAHeadReachesSeveralSites) {
  Spring soft_spring(0.3);
  for (DukeLike const& c : duke_like) {
    EXPECT_EQ(make_model(c.model, law)->get_k(0.0, 0, 1), 170.0) << c.model;
    auto const soft = make_model(c.model, soft_spring);
    double const factor = soft->get_k(0.0, 0, 1) / 170.0;
    EXPECT_LT(factor, 0.7) << c.model;
    double const reverse = soft->get_k(0.0, 1, 0) * std::exp(3.63) / 170.0;
    EXPECT_NEAR(reverse, c.reverse_binding_is_as_read ? 1.0 : factor, 1e-12) << c.model;
  }
}

/// The strain and what else stands in its row of a file, which ends with rows from -10 to 10 nm.
void expect_row(std::string const& file, std::size_t n_lines, double x, std::vector<double> row) {
  std::vector<std::string> const lines = read_lines(file);
  ASSERT_EQ(lines.size(), n_lines) << file;
  row.insert(row.begin(), x);
  std::istringstream cells(lines[n_lines - 1001 + static_cast<std::size_t>(x * 100.0)]);
  std::string cell;
  for (double const value : row) {
    std::getline(cells, cell, ',');
    EXPECT_NEAR(std::stod(cell), value, 1e-6 * (1.0 + std::abs(value))) << file;
  }
  EXPECT_FALSE(std::getline(cells, cell, ',')) << file << cell;
}

TEST(Cycles, TabulateEnergiesAndRatesOverTheStrain) {
  if (Logger::model_vorn_rates) std::fclose(std::exchange(Logger::model_vorn_rates, nullptr));
  auto const vorn = make_model("Vorn", law);
  auto const fiber = make_model("BrekAtpaseFiber", law, "brek_atpase_fiber: k_61=7");
  EXPECT_EQ(read_lines("rates.csv").at(0).substr(0, 32), "x[nm]/rates,0 -> 1,0 -> 7,1 -> 0");
  for (double const x : {0.0, 1.0}) {
    auto const k = [&](unsigned from, unsigned to) { return vorn->get_k(x, from, to); };
    expect_row("model_vorn_rates.csv", 2001, x, {k(0, 1), k(1, 0), k(1, 2), k(2, 1)});
    std::vector<double> rates;
    for (unsigned pair = 0; pair < 64; ++pair) {
      if (!fiber->transitions[pair / 8][pair % 8]) continue;
      rates.push_back(fiber->get_k(x, pair / 8, pair % 8));
    }
    expect_row("rates.csv", 2002, x, rates);
    std::vector<double> energies(8, 0.0);
    for (unsigned s = 1; s <= 4; ++s) energies[s] = kBT * balances[4].G(s, x);
    expect_row("energy.csv", 2002, x, energies);
  }
}

}  // namespace
