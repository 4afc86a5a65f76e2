// Would catch: a stiffness or force in a wrong row, a wrong sign of a mirrored degree of freedom, a
// lost tie, factors kept when they should not be, digits lost to a stiff series element.

#include "mechanics/spring_system.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using Vector = SpringSystem::Vector;

/// Four filaments of three fibres, with random springs, of negative stiffness, too. Unknown 0 joins
/// two ends of each filament, some mirrored; unknown 1 is a junction of the last two.
struct RandomSprings {
  static constexpr unsigned size = 18;
  static constexpr unsigned inner = 11;
  static constexpr unsigned outer = 4 * size;

  explicit RandomSprings(unsigned seed) : random(seed) {
    system.set_size(4, 2);
    system.set_series(series);
    for (unsigned b = 0; b < 4; ++b) {
      for (unsigned d = 0; d < size; ++d) dofs[b].push_back({d % 6 + uniform(0.0, 0.9), {}});
      dofs[b][0].motion = b < 2 ? Motion::held() : Motion::shared(1, b == 2 ? 1.0 : -1.0);
      dofs[b][inner].motion = Motion::shared(0, b == 0 ? 1.0 : -1.0);
      dofs[b][size - 1].motion = Motion::shared(0);
      system.block(b).set_dofs(dofs[b]);
      renew_springs(b);
    }
  }

  double uniform(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  }

  void renew_springs(unsigned b) {
    springs[b].clear();
    for (unsigned d = 1; d < size; ++d) {
      springs[b].push_back({d, d - 1, uniform(4.0, 40.0)});
      springs[b].push_back({static_cast<unsigned>(uniform(0.0, d)), d, uniform(-9.0, 9.0)});
    }
    system.block(b).set_springs(springs[b]);
  }

  /// What defines the solution: no force is left on an unknown, and what is held, tied or
  /// prescribed moves as it should.
  void expect_solution(Vector left, Vector const& u) const {
    double const rounding = 1e-11 * (40.0 * u.linfty_norm() + 1.0);  // of the largest forces
    auto const pull = [&](unsigned i, unsigned j, double k) {
      left[i] += k * (u[j] - u[i]);
      left[j] -= k * (u[j] - u[i]);
    };
    pull(inner, outer, series.k);
    for (unsigned b = 0; b < 4; ++b) {
      for (auto const& s : springs[b]) pull(b * size + s.i, b * size + s.j, s.k);
    }
    double forces[2] = {0.0, 0.0};
    double const shared[2] = {u[inner], u[2 * size]};
    for (unsigned i = 0; i < outer; ++i) {
      Motion const& motion = dofs[i / size][i % size].motion;
      if (motion.kind == Motion::Kind::shared) {
        EXPECT_EQ(u[i], motion.sign * shared[motion.unknown]);
        forces[motion.unknown] += motion.sign * left[i];
      } else {
        EXPECT_NEAR(motion.kind == Motion::Kind::own ? left[i] : u[i], 0.0, rounding);
      }
    }
    EXPECT_NEAR(std::isnan(step) ? forces[0] : shared[0] - step, 0.0, rounding);
    EXPECT_NEAR(forces[1], 0.0, rounding);
    EXPECT_NEAR(series.is_held ? u[outer] - series.u : left[outer], 0.0, rounding);
  }

  std::mt19937 random;
  std::vector<SpringDof> dofs[4];
  std::vector<Spring> springs[4];
  SeriesSpring series = {0, 7.0, true, 0.25};
  double step = NAN;  ///< of unknown 0, where prescribed
  SpringSystem system;
};

TEST(SpringSystem, BalancesRandomSpringsWithKeptFactorsAsWithFreshOnes) {
  for (unsigned seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    RandomSprings springs(seed);
    SpringSystem& system = springs.system;
    for (int change = 0; change < 4; ++change) {
      if (change == 1) springs.renew_springs(2);
      if (change == 2) system.set_series(springs.series = {0, 7.0, false, 0.0});
      if (change == 3) system.prescribe(0, springs.step = -0.5);
      Vector forces(RandomSprings::outer + 1);
      for (double& force : forces) force = springs.uniform(-1.0, 1.0);
      Vector u;
      ASSERT_TRUE(system.solve(forces, u));
      springs.expect_solution(forces, u);
      EXPECT_LT(system.residual(forces, u), 1e-11);
      for (unsigned b = 0; b < 4; ++b) system.block(b).set_dofs(springs.dofs[b]);
      Vector fresh;
      system.solve(forces, fresh);
      EXPECT_EQ(u, fresh);
      u[3] += 1e-6 * u.linfty_norm();
      EXPECT_GT(system.residual(forces, u), 1e-9);
    }
  }
}

/// A filament of one fibre with `n` springs, from dof 0 to dof n.
void set_chain(SpringBlock& block, unsigned n, double k, Motion first, Motion last) {
  std::vector<SpringDof> dofs;
  std::vector<Spring> springs;
  for (unsigned d = 0; d <= n; ++d) dofs.push_back({1.0 * d, {}});
  for (unsigned d = 0; d < n; ++d) springs.push_back({d, d + 1, k});
  dofs.front().motion = first;
  dofs.back().motion = last;
  block.set_dofs(dofs);
  block.set_springs(springs);
}

TEST(SpringSystem, ChainUnderItsWeightHangsDownAsFarAsItsSpringsCarry) {
  constexpr unsigned n = 200;
  SpringSystem system;
  system.set_size(1, 1);
  set_chain(system.block(0), n, 2.0, Motion::held(), Motion::shared(0));
  Vector forces(n + 2);
  forces = 1.0;
  system.set_series({0, 1e15, false, 0.0});
  Vector u;
  ASSERT_TRUE(system.solve(forces, u));
  double const end = (n * (n + 1) / 2 + n) / 2.0;
  EXPECT_NEAR(u[n], end, 1e-12 * end);
  EXPECT_NEAR(u[n + 1], end, 1e-12 * end);
}

// Every half takes 1 nm of the step, or under 1 pN.
TEST(SpringSystem, MirroredHalvesInSeriesMoveAlternately) {
  constexpr unsigned n = 40;
  SpringSystem system;
  system.set_size(n, n);
  for (unsigned place = 0; place < n; ++place) {
    Motion const near = Motion::shared(place, place == 0 ? 1.0 : -1.0);
    Motion const far = place == n - 1 ? Motion::held() : Motion::shared(place + 1);
    bool const is_mirrored = place % 2 == 1;
    set_chain(system.block(place), 3, 3.0, is_mirrored ? near : far, is_mirrored ? far : near);
  }
  system.set_series({0, 1.0, false, 0.0});
  Vector forces(4 * n + 1);
  Vector u;
  for (bool const is_length : {true, false}) {
    is_length ? system.prescribe(0, n) : system.release(0);
    forces[3] = is_length ? 0.0 : 1.0;
    ASSERT_TRUE(system.solve(forces, u));
    for (unsigned place = 0; place < n; ++place) {
      double const to_end = n - place;
      EXPECT_NEAR(u[4 * place], place % 2 == 1 ? -to_end : to_end - 1.0, 1e-11);
      EXPECT_NEAR(u[4 * place + 3], place % 2 == 1 ? 1.0 - to_end : to_end, 1e-11);
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
  for (double const k : {-2.0, std::nan(""), HUGE_VAL}) {
    system.block(0).set_springs({{0, 1, 2.0}, {1, 2, k}});
    EXPECT_FALSE(system.solve(forces, u));
  }
  system.block(0).set_springs({{0, 1, 2.0}, {1, 2, -1.0}});  // together: -2
  EXPECT_TRUE(system.solve(forces, u));
  EXPECT_NEAR(u[2], -1.0, 1e-15);
  system.set_series({0, 0.0, false, 0.0});
  EXPECT_FALSE(system.solve(forces, u));
}

}  // namespace
