// Would catch: a force of the wrong sign or end, displacements that don't add up, a series or a
// protein-C bond counted in the wrong mean, a pending head in the wrong count, a shifted column.

#include <deal.II/lac/vector.h>
#include <gtest/gtest.h>

#include <fstream>

#include "base/run_state.h"
#include "mechanics/lattice_listings.h"
#include "mechanics/result_files.h"
#include "support/small_lattice.h"
#include "support/work_dir.h"

namespace {

using Vector = dealii::Vector<double>;

TEST(Measured, DisplacementsFollowTheNodesOverPassesAndSteps) {
  SmallLattice lattice({4, 1, 30.0, 0.0, 0.6});
  for (unsigned f = 0; f < 4; ++f) lattice.bind(f, 3 * f + 1, 1 + f % 2, 4 + f, 2);
  double held = 0.0;
  for (double const length : {4.0, -3.0}) {
    lattice.solve_length(length);
    auto const& a = lattice.filament(0).data.u;
    auto const& b = lattice.filament(2).data.u;
    EXPECT_NEAR(lattice.measured.myosin_displacement, (a[0][6] + b[0][6]) / 2.0, 1e-9);
    EXPECT_NEAR(lattice.measured.actin_displacement, (a[2][19] + b[2][19]) / 2.0, 1e-9);
    // The thick filament's tension between its held end and its first bond.
    held = SmallLattice::EA[0] * ((a[0][1] - a[0][0]) / 20.0 + (b[0][3] - b[0][0]) / 40.0) / 2.0;
    EXPECT_NEAR(lattice.measured.force, -held, 1e-8);
  }
  double carried = 0.0;
  for (unsigned const f : {0u, 2u}) {
    auto const& u = lattice.filament(f).data.u;
    carried += lattice.filament(f).bond_force(0) + 0.6 * (u[1][19] + 20.0 - u[0][6]);
  }
  EXPECT_NEAR(carried / 2.0, held, 1e-5);  // bonds and titin of a filament pull at its held end
}

TEST(Measured, ShownActinEndIsThatOfTheSecondThinFilament) {
  SmallLattice lattice({2});
  Vector du(lattice.filaments.number_dofs());
  du[lattice.filament(0).get_bnd_dof(1, 1)] = 7.0;
  du[lattice.filament(0).get_bnd_dof(1, 2)] = 3.0;
  lattice.measured.CalculateResults(lattice.filaments, du, Vector(du.size()));
  EXPECT_EQ(lattice.measured.actin_displacement, 3.0 / 2.0);
}

TEST(Measured, BondsPerFilament) {
  SmallLattice lattice({4, 1});
  Vector const none(lattice.filaments.number_dofs());
  lattice.bind(0, 3, 1, 5);
  lattice.bind(0, 4, 2, 5).detach_pending = 1;
  lattice.filament(0).prepare_nodes();
  lattice.bind(1, 3, 1, 5, 1, 1);
  lattice.bind(3, 3, 1, 5, 1, 2);
  lattice.bind(3, 6, 1, 9, 1, 2);
  lattice.measured.CalculateResults(lattice.filaments, none, none);
  EXPECT_EQ(lattice.measured.cb_per_filament, 4.0 / 4.0);
  EXPECT_EQ(lattice.measured.cb_proteinC_per_filament, 0.0);
  for (unsigned f = 0; f < 4; ++f) lattice.filament(f).proteinC_enabled = 1;
  lattice.measured.CalculateResults(lattice.filaments, none, none);
  EXPECT_EQ(lattice.measured.cb_per_filament, 2.0 / 4.0);
  EXPECT_EQ(lattice.measured.cb_proteinC_per_filament, 2.0 / 4.0);
}

TEST(Measured, StatePopulations) {
  LatticeSettings settings;
  settings.filaments = 2;
  settings.protein_c = true;
  SmallLattice lattice(settings);
  ASSERT_EQ(lattice.filament(0).data.heads.size(), 21u);  // 18 and 3 of protein-C
  ASSERT_EQ(lattice.filament(0).data.heads[1].model_index, 2u);
  lattice.bind(0, 0, 1, 3);
  lattice.bind(0, 1, 1, 5, 2, 2);
  lattice.bind(0, 6, 1, 7, 2);
  MyosinHead_s& pending = lattice.bind(1, 9, 2, 9, 1, 1);
  pending.detach_pending = 1;
  pending.state = 0;
  std::ofstream stream("cb_states_file.csv");
  ResultFiles().write_cb_states(lattice.filaments, stream, 4);
  EXPECT_EQ(read_file("cb_states_file.csv"), "1,1,1,0,\n");
  EXPECT_EQ(read_file("Myosin_head_states.csv"), "34,1,1,0,\n");
  ResultFiles().write_cb_states(SmallLattice().filaments, stream, 3);
  EXPECT_EQ(read_file("Myosin_head_states.csv"), "34,1,1,0,\n18,0,0,\n");  // of all runs
}

TEST(Measured, ListingOfActinForces) {
  LatticeSettings settings;
  settings.filaments = 2;
  SmallLattice lattice(settings);
  unsigned const n = lattice.filaments.number_dofs();
  Vector du(n), rhs(n);
  rhs[3] = 1.0;
  rhs[5] = 2.0;
  rhs[9] = 3.0;
  rhs[11] = 6.0;
  t_timeStep = 69999;
  write_actin_force_listing(lattice.filaments, rhs);
  EXPECT_FALSE(std::filesystem::exists("ActinForceListing.dat"));
  t_timeStep = 70000;
  write_actin_force_listing(lattice.filaments, du);
  write_actin_force_listing(lattice.filaments, rhs);  // the last pass stands
  EXPECT_EQ(read_file("ActinForceListing.dat"),
            "0: 1\n1: 2\n2: 3\n3: 6\nActin force middle: 3\n"
            "Actin force standard deviation: 1.87083\n");  // root of (4 + 1 + 0 + 9) / 4
}

}  // namespace
