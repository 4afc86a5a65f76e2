// Would catch: an end that is held, tied, driven or mirrored otherwise than in the reference, a
// spring in the wrong filament, a mesh or a stiffness that is kept although it changed.

#include "mechanics/lattice_system.h"

#include <gtest/gtest.h>

#include <cmath>

#include "mechanics/pivoting_solver.h"
#include "support/small_lattice.h"

namespace {

using Vector = dealii::Vector<double>;

struct Case {
  char const* name;
  Prescribed prescribed;
  LatticeSettings settings;
};

constexpr auto length = Prescribed::Quantity::length;
constexpr auto force = Prescribed::Quantity::force;

class LatticeSystems : public testing::TestWithParam<Case> {};

void expect_agreement(LatticeSystem& system, Ends const& ends, unsigned n) {
  Vector forces(n), fast(n), reference(n);
  for (unsigned i = 0; i < n; ++i) forces[i] = std::sin(1.0 + 7.0 * i);
  ASSERT_TRUE(system.solve(ends, forces, fast));
  ASSERT_TRUE(solve_with_pivoting(system.all_springs(), ends, forces, reference));
  double const size = reference.linfty_norm();
  for (unsigned i = 0; i < n; ++i) EXPECT_NEAR(fast[i], reference[i], 1e-9 * size) << i;
}

// The same system serves all rounds, in which bonds come, and laws soften where they bend. Every
// third filament has bonds of a linear law alone, whose springs are kept.
TEST_P(LatticeSystems, AgreeWithTheSolverThatPivots) {
  SmallLattice lattice(GetParam().settings);
  LatticeSystem system(lattice.filaments, lattice.see);
  for (unsigned round = 0; round < 6; ++round) {
    for (unsigned f = 0; f < lattice.filaments.size(); ++f) {
      if (round == 0 || (f + round) % 2 == 0)
        lattice.bind(f, 3 * round + f % 3, 1 + f % 2, 3 * round, 1, f % 3 == 1 ? 1 : 0);
    }
    lattice.slow_law.told = round < 4 ? 1.0 + round : -0.4;  // of bonds that bend, then soften
    unsigned const n = lattice.filaments.number_dofs();
    lattice.see.outer_dof = n - 1;
    lattice.boundary.set_boundary_mode(GetParam().prescribed);
    Ends ends = lattice.boundary.create();
    system.set_ends(ends);
    system.set_springs();
    expect_agreement(system, ends, n);
    // On the same mesh the other quantity is prescribed, and then the first one again.
    Prescribed const given = ends.prescribed;
    ends.prescribed = given.is_length() ? Prescribed{force, -2.0} : Prescribed{length, 1.5};
    expect_agreement(system, ends, n);
    ends.prescribed = given;
    expect_agreement(system, ends, n);
  }
}

INSTANTIATE_TEST_SUITE_P(Modes, LatticeSystems,
                         testing::Values(Case{"length", {length, 3.0}, {3, 0, 30, 0, 0}},
                                         Case{"force", {force, 3.0}, {3, 0, 3e3, 0, 0.6}},
                                         Case{"series_length", {length, 3.0}, {8, 2, 30, 0, 0}},
                                         Case{"series_force", {force, 3.0}, {8, 2, 30, 0, 0.6}}),
                         [](auto const& each) { return each.param.name; });

}  // namespace
