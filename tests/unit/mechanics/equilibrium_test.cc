// Would catch: springs in series that add up wrongly, a force of the wrong sign or counted for the
// wrong number of filaments, a wrong number of passes at a limit, a column of the log in the wrong
// place, an unstable system that is solved all the same.

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <utility>

#include "base/logger.h"
#include "base/run_state.h"
#include "mechanics/equilibrium.h"
#include "support/small_lattice.h"
#include "support/stdout_to_stderr.h"
#include "support/work_dir.h"

namespace {

using testing::ExitedWithCode;

/// Compliance of the bond from node `thick` to `site` of fibre 1, with what chains lie behind it.
double compliance(double thick_x, double site_x, double k) {
  return thick_x / SmallLattice::EA[0] + 1.0 / k + (95.0 - site_x) / SmallLattice::EA[1];
}

/// Two filaments with the same bond: from 30 nm to 25 nm, after a stroke of 4 nm.
struct OneBond : SmallLattice {
  explicit OneBond(LatticeSettings s = {}) : SmallLattice((s.filaments = 2, s)) {
    for (unsigned f = 0; f < 2; ++f) bind(f, 3, 1, 5, 2);
  }
  double const see_k = 30.0;
  double const chain = compliance(30.0, 25.0, bond_k[0]);
  double const start = -5.0 + strokes[0];  ///< strain without displacements
};

TEST(Equilibrium, OneBondUnderLengthAndUnderForce) {
  OneBond lattice;
  double const D = 3.0;
  lattice.solve_length(D);
  double F = (D + lattice.start) / (lattice.chain + 1.0 / lattice.see_k);
  EXPECT_NEAR(lattice.measured.force, -F, 1e-9);  // per filament
  EXPECT_NEAR(lattice.filaments.get_last_actin_displacement(), D - F / lattice.see_k, 1e-9);
  EXPECT_NEAR(lattice.filament(1).data.u[0][6], F * 30.0 / SmallLattice::EA[0], 1e-9);
  EXPECT_NEAR(lattice.filament(1).bond_force(0), F, 1e-9);
  // Time, force of the spring alone, velocity of its extension from 0.
  std::string const row = read_lines("SEE_velocity.csv").back();
  EXPECT_NEAR(std::stod(row.substr(9)), F, 1e-6);
  EXPECT_NEAR(std::stod(row.substr(row.rfind(',') + 1)), F / 30.0 / SmallLattice::step, 1e-6);

  F = 6.0;
  lattice.solve_force(2.0 * F);
  double const actin_end = F * lattice.chain - lattice.start;
  EXPECT_NEAR(lattice.filaments.get_last_actin_displacement(), actin_end, 1e-9);
  EXPECT_NEAR(lattice.see.displacement, actin_end + F / lattice.see_k, 1e-9);
  EXPECT_NEAR(lattice.measured.force, -F, 1e-9);
}

// The force is negative where the muscle pulls, and so is its change on a stretch.
TEST(Equilibrium, ProbeFindsTheStiffnessWithoutMoving) {
  OneBond lattice;
  lattice.solve_length(3.0);
  double const end = lattice.filaments.get_last_actin_displacement();
  lattice.boundary.set_boundary_mode({Prescribed::Quantity::length, 4.0});
  std::vector<double> found;
  lattice.equilibrium->probe_stiffness(lattice.measured, [&](double k) { found.push_back(k); });
  ASSERT_FALSE(found.empty());
  EXPECT_NEAR(found.front(), -1.0 / lattice.chain, 1e-9);
  EXPECT_EQ(lattice.filaments.get_last_actin_displacement(), end);
}

TEST(Equilibrium, PrescribedStepNeedsASecondPassAndEveryPassLogs) {
  if (Logger::convergence_data) std::fclose(std::exchange(Logger::convergence_data, nullptr));
  OneBond lattice;
  timeForAll = 0.25;
  lattice.solve_length(3.0);
  EXPECT_EQ(assemblies(), 3u);  // one before the first pass, one in each
  lattice.parameter.dispCBLimit = lattice.parameter.dispSqLimit = 100.0;
  lattice.solve_length(2.0);
  EXPECT_EQ(assemblies(), 5u);
  auto const lines = read_lines("convergence_data.csv");
  ASSERT_EQ(lines.size(), 3u);
  std::vector<double> fields;
  std::stringstream line(lines[0]);
  for (std::string field; std::getline(line, field, ',');) fields.push_back(std::stod(field));
  double const F = (3.0 + lattice.start) / (lattice.chain + 1.0 / lattice.see_k);
  double const end = 3.0 - F / lattice.see_k;
  // Time, pass, outer end, force on the middle of all and of the first thick filament; the actin
  // end carries the tension of its neighbour, too; corrections; largest force, largest correction.
  double const expected[] = {0.25, 1, 3, 2 * F, F, F, -2 * F, 0, end, 3, 0, 0, 3, 0, end};
  ASSERT_EQ(fields.size(), 15u);
  for (unsigned i = 0; i < 15; ++i) {
    if (i == 11 || i == 13) continue;  // places of the largest
    EXPECT_NEAR(fields[i], expected[i], 1e-6) << i;
  }
  EXPECT_EQ(fields[13], lattice.see.outer_dof);
}

/// The element tells a stiffness that is too high: under the force P it takes the way there in
/// parts, and after pass n the force P r^n is left at its two ends; pass n + 1 corrects for it.
struct Slow : OneBond {
  Slow() {
    parameter = {0, 1e9, 1e9, 1e9, 1e9};
    see_law.told = told;
  }
  unsigned passes() {
    solve_force(P);
    return assemblies() - 1;
  }
  static constexpr double r = 0.9;
  static constexpr double P = 50.0;
  static constexpr double n_dofs = 2 * 8 + 1;
  double const told = 30.0 / (1.0 - r);
};

TEST(Equilibrium, EachOfTheFourLimitsMustHold) {
  double SarcomerParameter_s::*const limits[] = {
      &SarcomerParameter_s::dispSqLimit, &SarcomerParameter_s::dispCBLimit,
      &SarcomerParameter_s::forceSqLimit, &SarcomerParameter_s::forceCBLimit};
  double const force = Slow::P * std::pow(Slow::r, 4.5);  // between passes 4 and 5
  double const correction = force / Slow::r / (2.0 * Slow().told);
  double const values[] = {correction / std::sqrt(Slow::n_dofs), correction,
                           force * std::sqrt(2.0 / Slow::n_dofs), force};
  for (unsigned i = 0; i < 4; ++i) {
    std::filesystem::remove("SEE_velocity.csv");
    Slow lattice;
    lattice.parameter.*limits[i] = values[i];
    EXPECT_EQ(lattice.passes(), 5u) << i;
  }
  std::filesystem::remove("SEE_velocity.csv");
  EXPECT_EQ(Slow().passes(), 1u);
}

TEST(Equilibrium, LastPassThatMaySucceedIsThe99th) {
  Slow lattice;
  lattice.parameter.forceCBLimit = Slow::P * std::pow(Slow::r, 98.5);
  EXPECT_EQ(lattice.passes(), 99u);
  Slow slower;
  slower.parameter.forceCBLimit = Slow::P * std::pow(Slow::r, 99.5);
  EXPECT_EXIT((stdout_to_stderr(), slower.passes()), ExitedWithCode(1), "No Convergence!\n");
}

TEST(Equilibrium, ForceNeedsABondThatHolds) {
  SmallLattice lattice;
  std::string const message = "Prescribed Force : NO CROSSBRIDGES -> displacement = inf\n";
  EXPECT_EXIT((stdout_to_stderr(), lattice.solve_force(1.0)), ExitedWithCode(1), message);
  lattice.bind(0, 3, 1, 5).detach_pending = 1;
  EXPECT_EXIT((stdout_to_stderr(), lattice.solve_force(1.0)), ExitedWithCode(1), message);
  lattice.solve_length(2.0);  // a length is no trouble
  EXPECT_NEAR(lattice.filaments.get_last_actin_displacement(), 2.0, 1e-9);
  EXPECT_NEAR(lattice.measured.force, 0.0, 1e-9);
}

// Pairs that share a point and have no bond in any row: thick filaments, then thin ones.
TEST(Equilibrium, FreePairInSeriesIsRefusedByName) {
  LatticeSettings settings;
  settings.filaments = 8;
  settings.full_sarcomer = 2;
  auto const length = Prescribed::Quantity::length;
  auto const force = Prescribed::Quantity::force;
  auto const solve = [&settings](std::vector<unsigned> const& bound,
                                 Prescribed::Quantity quantity) {
    SmallLattice lattice(settings);
    for (unsigned f : bound) lattice.bind(f, 3, 1, 5);
    timeForAll = 0.5;
    t_timeStep = 7;
    lattice.solve(quantity, 1.0);
    return lattice.measured.force;
  };
  // A loaded end is not held: with a gap, all on its side is free.
  EXPECT_EXIT(solve({0, 1, 4}, force), ExitedWithCode(1), "half-sarcomere 1 of row 1");
  std::string const start = "time 0.5.*, step 7: ";
  EXPECT_EXIT(solve({0, 1, 4}, length), ExitedWithCode(1),
              start + "the thick filament of half-sarcomere 3 of row 1");
  EXPECT_EXIT(solve({0, 3, 7}, length), ExitedWithCode(1),
              start + "a thin filament of half-sarcomere 2 of row 1");
  EXPECT_TRUE(std::isfinite(solve({0, 3, 5}, length)));  // a bond in the second row holds the pair
  settings.titin_stiffness = 0.5;
  EXPECT_TRUE(std::isfinite(solve({}, length)));  // and so does titin
}

}  // namespace
