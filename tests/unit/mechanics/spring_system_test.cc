// Would catch: a stiffness or force in a wrong row, a wrong sign of a mirrored degree of freedom, a
// tie or a prescribed end that is lost, factors kept when they should not be, digits lost to a
// stiff series element.

#include "mechanics/spring_system.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

using Vector = SpringSystem::Vector;

constexpr double none = std::numeric_limits<double>::quiet_NaN();

/// Filaments of random springs, of negative stiffness, too, with ends held, tied and mirrored.
struct RandomSprings {
  static constexpr unsigned n_blocks = 4;
  static constexpr unsigned per_fibre = 6;
  static constexpr unsigned per_block = 3 * per_fibre;
  static constexpr unsigned n = n_blocks * per_block + 1;

  explicit RandomSprings(unsigned seed) : random(seed) {
    for (unsigned b = 0; b < n_blocks; ++b) {
      double x = 0.0;
      for (unsigned d = 0; d < per_block; ++d) {
        x = d % per_fibre == 0 ? uniform(0.0, 5.0) : x + uniform(0.1, 5.0);
        dofs[b].push_back({x, {}});
      }
      double const sign = b == 0 ? 1.0 : -1.0;
      dofs[b][0].motion = b % 2 == 0 ? Motion::held() : Motion::shared(1);
      dofs[b][2 * per_fibre - 1].motion = Motion::shared(0, sign);
      dofs[b][3 * per_fibre - 1].motion = b == 3 ? Motion::shared(1, -1.0) : Motion::shared(0);
      renew_springs(b);
    }
  }

  double uniform(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  }

  void renew_springs(unsigned b) {
    springs[b].clear();
    for (unsigned d = 1; d < per_block; ++d) {
      auto const other = static_cast<unsigned>(uniform(0.0, d));
      springs[b].push_back({d, d - 1, uniform(4.0, 40.0)});
      springs[b].push_back({other, d, uniform(-9.0, 9.0)});
    }
  }

  /// Sets what has changed, in a system that may know the rest.
  void set(SpringSystem& system) const {
    for (unsigned b = 0; b < n_blocks; ++b) system.block(b).set_springs(springs[b]);
    for (unsigned p = 0; p < 2; ++p) {
      std::isnan(prescribed[p]) ? system.release(p) : system.prescribe(p, prescribed[p]);
    }
    system.set_series(series);
  }

  SpringSystem fresh() const {
    SpringSystem system;
    system.set_size(n_blocks, 2);
    for (unsigned b = 0; b < n_blocks; ++b) system.block(b).set_dofs(dofs[b]);
    set(system);
    return system;
  }

  /// What defines the solution: no force is left on any unknown, and what is held, tied or
  /// prescribed moves as it should.
  void expect_solution(Vector const& forces, Vector const& u) const {
    constexpr double tolerance = 1e-11;  // of forces and displacements about 1, as conditioned
    Vector left = forces;
    auto const pull = [&](unsigned i, unsigned j, double k) {
      left[i] += k * (u[j] - u[i]);
      left[j] -= k * (u[j] - u[i]);
    };
    for (unsigned b = 0; b < n_blocks; ++b) {
      for (auto const& s : springs[b]) pull(b * per_block + s.i, b * per_block + s.j, s.k);
    }
    pull(2 * per_fibre - 1, n - 1, series.k);
    double const scale = tolerance * (u.linfty_norm() * 40.0 + 1.0);
    double sums[2] = {0.0, 0.0};
    double values[2] = {u[2 * per_fibre - 1], u[per_block]};
    for (unsigned i = 0; i < n - 1; ++i) {
      Motion const& motion = dofs[i / per_block][i % per_block].motion;
      if (motion.kind == Motion::Kind::held) {
        EXPECT_EQ(u[i], 0.0);
      } else if (motion.kind == Motion::Kind::own) {
        EXPECT_NEAR(left[i], 0.0, scale);
      } else {
        sums[motion.unknown] += motion.sign * left[i];
        EXPECT_EQ(u[i], motion.sign * values[motion.unknown]);
      }
    }
    for (unsigned p = 0; p < 2; ++p) {
      bool const is_free = std::isnan(prescribed[p]);
      EXPECT_NEAR(is_free ? sums[p] : values[p], is_free ? 0.0 : prescribed[p], scale);
    }
    EXPECT_NEAR(series.is_held ? u[n - 1] : left[n - 1], series.is_held ? series.u : 0.0, scale);
  }

  std::mt19937 random;
  std::vector<SpringDof> dofs[n_blocks];
  std::vector<Spring> springs[n_blocks];
  double prescribed[2] = {none, none};
  SeriesSpring series = {0, 7.0, true, 0.5};
};

TEST(SpringSystem, BalancesRandomSpringsWithKeptFactorsAsWithFreshOnes) {
  for (unsigned seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    RandomSprings springs(seed);
    SpringSystem system = springs.fresh();
    Vector u;
    for (int change = 0; change < 5; ++change) {
      if (change == 1) springs.renew_springs(2);
      if (change == 2) springs.series = {0, 7.0, false, 0.0};
      if (change == 3) springs.prescribed[1] = 0.25;
      if (change == 4) springs.prescribed[0] = -0.5;
      springs.set(system);
      Vector forces(RandomSprings::n);
      for (double& force : forces) force = springs.uniform(-1.0, 1.0);
      ASSERT_TRUE(system.solve(forces, u));
      springs.expect_solution(forces, u);
      EXPECT_LT(system.residual(forces, u), 1e-11);
      Vector fresh;
      springs.fresh().solve(forces, fresh);
      EXPECT_EQ(u, fresh);
      u[3] += 1e-6 * u.linfty_norm();
      EXPECT_GT(system.residual(forces, u), 1e-9);
    }
  }
}

/// A fibre of `n` springs from dof 0 to dof n.
void set_chain(SpringBlock& block, unsigned n, double k, Motion first, Motion last) {
  std::vector<SpringDof> dofs(n + 1, SpringDof{});
  std::vector<Spring> springs;
  for (unsigned d = 0; d <= n; ++d) dofs[d].x = d;
  for (unsigned d = 0; d < n; ++d) springs.push_back({d, d + 1, k});
  dofs.front().motion = first;
  dofs.back().motion = last;
  block.set_dofs(dofs);
  block.set_springs(springs);
}

TEST(SpringSystem, EndOfAChainUnderItsWeightGivesWayAsFarAsAllItsSpringsCarry) {
  constexpr unsigned n = 200;
  for (double const k_series : {1.0, 1e15}) {
    SpringSystem system;
    system.set_size(1, 1);
    set_chain(system.block(0), n, 2.0, Motion::held(), Motion::shared(0));
    system.set_series({0, k_series, false, 0.0});
    Vector forces(n + 2);
    forces = 1.0;
    Vector u;
    ASSERT_TRUE(system.solve(forces, u));
    double const end = (n * (n + 1) / 2 + n) / 2.0;
    EXPECT_NEAR(u[n], end, 1e-12 * end);
    EXPECT_NEAR(u[n + 1], end + 1.0 / k_series, 1e-12 * end);
  }
}

// Junctions are numbered from the loaded end.
TEST(SpringSystem, MirroredHalvesInSeriesShareTheStepAlike) {
  constexpr unsigned n_halves = 40;
  SpringSystem system;
  system.set_size(n_halves, n_halves);
  for (unsigned place = 0; place < n_halves; ++place) {
    bool const is_mirrored = place % 2 == 1;
    unsigned const thick = is_mirrored ? place : place + 1;
    unsigned const actin = is_mirrored ? place + 1 : place;
    set_chain(system.block(place), 3, 3.0, Motion::shared(thick, is_mirrored ? -1.0 : 1.0),
              actin == n_halves ? Motion::held()
                                : Motion::shared(actin, is_mirrored || place == 0 ? 1.0 : -1.0));
  }
  system.set_series({0, 1.0, false, 0.0});
  Vector forces(4 * n_halves + 1);
  for (bool const is_length : {true, false}) {
    forces[3] = is_length ? 0.0 : 1.0;
    is_length ? system.prescribe(0, n_halves) : system.release(0);
    Vector u;
    ASSERT_TRUE(system.solve(forces, u));
    for (unsigned place = 0; place < n_halves; ++place) {
      double const near = n_halves - place;  // by as much its end that is nearer to the load moves
      bool const is_mirrored = place % 2 == 1;
      EXPECT_NEAR(u[4 * place + 3], is_mirrored ? 1.0 - near : near, 1e-11);
      EXPECT_NEAR(u[4 * place], is_mirrored ? -near : near - 1.0, 1e-11);
    }
  }
}

TEST(SpringSystem, RefusesWhatHasNoPivotAndGoesOnAfterwards) {
  SpringSystem system;
  system.set_size(1, 1);
  set_chain(system.block(0), 2, 2.0, Motion::held(), Motion::shared(0));
  system.set_series({0, 1.0, true, 1.0});
  Vector const forces(4);
  Vector u;
  for (double const k : {-2.0, none, std::numeric_limits<double>::infinity()}) {
    system.block(0).set_springs({{0, 1, 2.0}, {1, 2, k}});
    EXPECT_FALSE(system.solve(forces, u));
  }
  system.block(0).set_springs({{0, 1, 2.0}, {1, 2, -1.0}});  // one in series: -2
  EXPECT_TRUE(system.solve(forces, u));
  EXPECT_NEAR(u[2], -1.0, 1e-15);
  system.set_series({0, 0.0, false, 0.0});
  EXPECT_FALSE(system.solve(forces, u));
}

}  // namespace
