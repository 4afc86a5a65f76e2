// Would catch: a wrong lever, length or saturation in any scheme, a stroke that is not diffusion
// over the spring's barrier, a cycle that does work for nothing, a reach, range or cap at the wrong
// strain, a wrong end of the cycle, an entry changed that no law names.

#include "kinetics/pphis.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "support/quadrature.h"

namespace {

constexpr double kT = 4.0;
constexpr double h = 3.5, hd = 4.5, hh = h + hd, ht = 1.5, ha = 0.75, hb = 0.5;

constexpr double eta1 = 0.5, eta2 = 2.0, eta3 = 10.0, eta4 = 5.0, eta5 = 3.0;

struct Binding {
  int a, b;
  double eta;
};

using Pairs = std::vector<std::pair<int, int>>;

struct Scheme {
  std::string name;
  RateRoutine* routine;
  bool is_one_sided;           ///< `ccm` holds under negative tension
  std::vector<double> levers;  ///< of states 4 to 9
  std::vector<Binding> bindings;
  Pairs strokes;  ///< each by the difference of the levers
  Pairs limits;
  std::vector<std::vector<int>> cycles;
  Pairs others;  ///< further entries that are no constants

  double lever(int state) const { return levers[state - 4]; }
  /// From state 3 the reach of C5 is that of the state behind the one it binds to.
  double reach_lever(int a, int b) const {
    return lever(name == "C5" && a == 3 && b > 4 ? b + 1 : b);
  }
};

Scheme const c3 = {"C3",
                   xratesc_,
                   false,
                   {0, h, h, hh, hh, 0},
                   {{1, 9, eta1}, {3, 4, eta3}, {2, 6, eta2}, {2, 8, eta2}},
                   {{4, 5}, {5, 7}, {6, 8}},
                   {{4, 3}, {5, 3}, {6, 2}, {7, 3}, {8, 2}, {9, 1}},
                   {{5, 7, 8, 6}, {2, 6, 8}, {1, 9, 4, 3}},
                   {{8, 1}, {5, 3}, {7, 3}}};

Scheme const c4 = {"C4",      xratesc4_,   false,
                   c3.levers, c3.bindings, c3.strokes,
                   c3.limits, c3.cycles,   {{8, 1}, {1, 8}, {5, 3}, {7, 3}}};

Scheme const c5 = {
    "C5",
    xratesc5_,
    true,
    {0, h, h + ha, hh, hh + hb, 0},
    {{1, 9, eta1}, {3, 4, eta3}, {2, 6, eta2}, {2, 8, eta2}, {3, 5, eta3}, {3, 7, eta3}},
    {{4, 5}, {5, 7}, {6, 8}, {5, 6}, {7, 8}},
    c3.limits,
    {{3, 4, 5, 7}, {2, 6, 5, 4, 3}, {1, 9, 4, 3}, {5, 6, 8, 7}, {3, 5, 6, 2}},
    {{8, 1}, {1, 8}}};

Scheme const c7 = {"C7",
                   xratesc7_,
                   true,
                   {0, 0, h, hh, hh, 0},
                   {{1, 9, eta1}, {2, 8, eta2}, {3, 7, eta3}, {4, 5, eta4}, {3, 6, eta3}},
                   {{5, 6}, {6, 7}},
                   {{5, 4}, {6, 3}, {7, 3}, {8, 2}, {9, 1}},
                   {{3, 4, 5, 6}, {3, 6, 7}, {2, 8, 7, 3}, {1, 8, 2, 3}},
                   {{7, 8}, {8, 7}, {8, 1}, {1, 8}}};

std::vector<Scheme> const schemes = {c3, c4, c5, c7};

/// Nothing limits: no range, no cap, no slow step at the end of the cycle.
RateBlock_s free_block() {
  RateBlock_s b;
  for (int i = 0; i < 9; ++i) {
    b.cc[i] = 0.3 + 0.1 * i;
    b.ccm[i] = 0.2 + 0.05 * i;
    b.dm[i] = b.dp[i] = 1e3;
    b.gm[i] = 1e4 + i;
    b.gp[i] = 2e4 + i;
  }
  b.gmax = 3e4;
  b.eta1 = eta1, b.eta2 = eta2, b.eta3 = eta3, b.eta4 = eta4, b.eta5 = eta5;
  b.h = h, b.hd = hd, b.ht = ht, b.ha = ha, b.hb = hb;
  b.g1 = b.g2 = b.g3 = 1e300;
  b.lambda = 1.0;
  b.kmax = 1e300;
  b.K = 1.3;
  return b;
}

/// Constants that name their pair.
double constant(int i, int j) { return i == j ? 0.0 : 10.0 * i + j; }

class Rates {
 public:
  Rates(Scheme const& scheme, RateBlock_s const& block, double x, double dco = 1e3) {
    for (int i = 1; i <= 9; ++i) {
      for (int j = 1; j <= 9; ++j) rk[(j - 1) * 9 + i - 1] = constant(i, j);
    }
    int const n = 9;
    EXPECT_EQ(scheme.routine(block, &x, rk, nullptr, &dco, nullptr, &n, nullptr), 0);
  }
  double operator()(int i, int j) const { return rk[(j - 1) * 9 + i - 1]; }

 private:
  double rk[81];
};

double energy(RateBlock_s const& b, double p) { return 0.5 * b.K * p * p; }

/// Rate of diffusion from q over the spring's energy to q + L, where a flat energy gives 1.
double over_barrier(RateBlock_s const& b, double q, double L) {
  auto const resistance = [&](double u) {
    return std::exp((energy(b, q + u) - energy(b, q)) / kT);
  };
  return L / integral(resistance, 0.0, L);
}

double const strains[] = {-11.3, -9.0, -8.0, -6.1, -3.5, -1.0, 0.0, 0.4, 2.7, 6.3};

TEST(RateIntegrals, BindingFollowsLoadEnergySaturationAndReach) {
  RateBlock_s const b = free_block();
  for (Scheme const& scheme : schemes) {
    for (double const x : strains) {
      Rates const rate(scheme, b, x, 6.0);
      for (auto const& [s0, s1, eta] : scheme.bindings) {
        double const p = x + scheme.lever(s1), t = b.K * p;
        double const c = scheme.is_one_sided && t < 0.0 ? b.ccm[s1 - 1] : b.cc[s1 - 1];
        double const release = constant(s1, s0) * std::exp(c * std::abs(t) / kT) * (eta + 1.0) /
                               (eta * std::exp((c * std::abs(t) - energy(b, p)) / kT) + 1.0);
        // Detailed balance with the spring's energy, whatever load and saturation do.
        bool const in_reach = std::abs(x + scheme.reach_lever(s0, s1)) <= 6.0;
        double const binding = release * constant(s0, s1) / constant(s1, s0) *
                               (in_reach ? std::exp(-energy(b, p) / kT) : 0.0);
        EXPECT_NEAR(rate(s1, s0), release, 1e-12 * release) << scheme.name << s0 << s1 << ' ' << x;
        EXPECT_NEAR(rate(s0, s1), binding, 1e-12 * binding) << scheme.name << s0 << s1 << ' ' << x;
      }
    }
  }
  for (Scheme const& scheme : {c3, c4}) {
    for (int const s : {5, 7}) {  // release alone
      double const t = b.K * (1.0 + (s == 5 ? h : hh));
      EXPECT_NEAR(Rates(scheme, b, 1.0)(s, 3), constant(s, 3) * std::exp(b.cc[s - 1] * t / kT),
                  1e-9);
    }
  }
}

TEST(RateIntegrals, StrokesAreDiffusionOverTheBarrierOfTheSpring) {
  RateBlock_s const b = free_block();
  for (Scheme const& scheme : schemes) {
    for (double const x : strains) {
      Rates const rate(scheme, b, x);
      for (auto const& [s0, s1] : scheme.strokes) {
        double const q = x + scheme.lever(s0), length = scheme.lever(s1) - scheme.lever(s0);
        double const there = constant(s0, s1) * over_barrier(b, q, length);
        double const back = constant(s1, s0) * over_barrier(b, q + length, -length);
        EXPECT_NEAR(rate(s0, s1) / there, 1.0, 1e-5) << scheme.name << s0 << s1 << ' ' << x;
        EXPECT_NEAR(rate(s1, s0) / back, 1.0, 1e-5) << scheme.name << s0 << s1 << ' ' << x;
      }
    }
  }
}

TEST(RateIntegrals, CyclesGainNothingFromTheStrain) {
  RateBlock_s const b = free_block();
  for (Scheme const& scheme : schemes) {
    for (auto const& cycle : scheme.cycles) {
      for (double const x : strains) {
        Rates const rate(scheme, b, x);
        double affinity = 1.0;  // Kolmogorov: that of the constants, at every strain
        for (std::size_t i = 0; i < cycle.size(); ++i) {
          int const s0 = cycle[i], s1 = cycle[(i + 1) % cycle.size()];
          affinity *= rate(s0, s1) / rate(s1, s0) * constant(s1, s0) / constant(s0, s1);
        }
        EXPECT_NEAR(affinity, 1.0, 1e-9) << scheme.name << " from " << cycle[0] << " at " << x;
      }
    }
  }
}

TEST(RateIntegrals, LimitsReplaceTheReleaseBeyondARange) {
  RateBlock_s b = free_block();
  for (int i = 0; i < 9; ++i) b.dm[i] = 2.0 + 0.3 * i, b.dp[i] = 1.0 + 0.2 * i;
  for (Scheme const& scheme : schemes) {
    bool const is_c5 = scheme.name == "C5", is_c7 = scheme.name == "C7";
    for (auto const& [state, to] : scheme.limits) {
      bool const by_size = is_c5 && state == 9;
      double const low = -b.dm[state - 1] - scheme.lever(is_c5 && state == 8 ? 7 : state);
      double const high = (by_size ? b.dm : b.dp)[state - 1] - scheme.lever(state);
      double const below = is_c7 ? b.gm[state - 1] : b.gmax;
      double const above = is_c7 ? b.gp[state - 1] : b.gmax;
      EXPECT_EQ(Rates(scheme, b, low - 1e-9)(state, to), below) << scheme.name << state;
      EXPECT_EQ(Rates(scheme, b, high + 1e-9)(state, to), above) << scheme.name << state;
      for (double const x : {low + 1e-9, high - 1e-9}) {
        EXPECT_EQ(Rates(scheme, b, x)(state, to), Rates(scheme, free_block(), x)(state, to))
            << scheme.name << state;
      }
    }
  }
}

TEST(RateIntegrals, CapHoldsEveryRate) {
  RateBlock_s const b = free_block();
  RateBlock_s capped = b;
  capped.kmax = 50.0;
  for (Scheme const& scheme : schemes) {
    Rates const rate(scheme, b, -2.0), held(scheme, capped, -2.0);
    for (int i = 1; i <= 9; ++i) {
      for (int j = 1; j <= 9; ++j) EXPECT_EQ(held(i, j), std::min(rate(i, j), 50.0));
    }
  }
}

TEST(RateIntegrals, WhatNoLawNamesKeepsItsConstant) {
  for (Scheme const& scheme : schemes) {
    std::set<std::pair<int, int>> named(scheme.others.begin(), scheme.others.end());
    for (auto const& [s0, s1, eta] : scheme.bindings) named.insert({{s0, s1}, {s1, s0}});
    for (auto const& [s0, s1] : scheme.strokes) named.insert({{s0, s1}, {s1, s0}});
    Rates const rate(scheme, free_block(), 1.3);
    for (int i = 1; i <= 9; ++i) {
      for (int j = 1; j <= 9; ++j) {
        if (named.count({i, j}) == 0) {
          EXPECT_EQ(rate(i, j), constant(i, j)) << scheme.name << i << j;
        }
      }
    }
  }
}

TEST(RateIntegrals, EndOfTheCycle) {
  RateBlock_s b = free_block();
  b.g1 = 300.0, b.g2 = 600.0, b.g3 = 400.0, b.lambda = 0.8;
  for (double const x : strains) {
    double const end = constant(8, 1) * over_barrier(b, x + hh, ht);
    EXPECT_NEAR(Rates(c3, b, x)(8, 1) / end, 1.0, 1e-5);
    EXPECT_EQ(Rates(c3, b, x)(1, 8), constant(1, 8));

    for (Scheme const& scheme : {c4, c5}) {
      bool const is_c4 = scheme.name == "C4";
      double const q = x + hh + (is_c4 ? 0.0 : hb);
      double const s = constant(8, 1) * over_barrier(b, q, ht);
      double const m = constant(1, 8) * over_barrier(b, q + ht, -ht);
      Rates const rate(scheme, b, x), free(scheme, free_block(), x);
      EXPECT_EQ(rate(1, 8), 0.0);
      // The stroke, pulled back at m against g2, then the step at g1.
      EXPECT_NEAR(rate(8, 1) * (1.0 / b.g1 + (1.0 + m / b.g2) / s), 1.0, 1e-5);
      double const f =
          is_c4 ? 0.8 * (1.0 - rate(8, 1) / 300.0 + rate(8, 1) / 400.0) : 1.0 - rate(8, 1) / 300.0;
      for (int const to : {7, 6, 2}) {
        double const factor = is_c4 && to == 2 ? 1.0 : f;
        EXPECT_NEAR(rate(8, to) / free(8, to), factor, 1e-9) << scheme.name << to;
      }
    }
  }
}

TEST(RateIntegrals, EndOfTheCycleOfC7SaturatesAtItsOwnBarrier) {
  double const x = -6.5;
  RateBlock_s b = free_block();
  double const energy_8 = energy(b, x + hh);
  double const drop_7 = energy(b, x + hh + ht) - energy_8;
  double const drop_8 = energy(b, x + hh + ha) - energy_8;
  EXPECT_NEAR(Rates(c7, b, x)(7, 8), constant(7, 8) * std::exp(-drop_7 / kT), 1e-9);
  EXPECT_NEAR(Rates(c7, b, x)(8, 7), constant(8, 7) * std::exp(-drop_7 / kT), 1e-9);
  EXPECT_EQ(Rates(c7, b, x, 1.4)(1, 8), 0.0);  // 1.5 nm from the site
  EXPECT_GT(Rates(c7, b, x, 1.6)(1, 8), 0.0);
  b.eta5 = 1e12;
  EXPECT_NEAR(Rates(c7, b, x)(8, 1), constant(8, 1) * std::exp(-drop_8 / kT), 1e-6);
  b.eta5 = b.eta1 = 0.0;
  double const load = std::exp(b.cc[7] * b.K * (x + hh) / kT);
  EXPECT_NEAR(Rates(c7, b, x)(8, 1), constant(8, 1) * load, 1e-9);
  EXPECT_NEAR(Rates(c7, b, x)(1, 8), constant(1, 8) * load * std::exp(-energy_8 / kT), 1e-9);
}

}  // namespace
