// Would catch: a force of the wrong sign or end, displacements that don't add up, a series or a
// protein-C bond counted in the wrong mean, a pending head in the wrong count, a shifted column.

#include <deal.II/lac/vector.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>

#include "base/run_state.h"
#include "support/small_lattice.h"
#include "support/stdout_to_stderr.h"
#include "support/work_dir.h"

namespace {

using Vector = dealii::Vector<double>;

/// Two half-sarcomeres in series, in two rows. Each filament has 6 degrees of freedom, the two ends
/// of each fibre, so that those of the first in each row are 0 to 5 and 12 to 17.
struct TwoRows : SmallLattice {
  TwoRows() : SmallLattice({4, 1}), n(number()), du(n), rhs(n) {
    for (unsigned i = 0; i < n; ++i) {
      du[i] = i * i;
      rhs[i] = 1000.0 - 3.0 * i * i;
    }
  }
  unsigned n;
  Vector du, rhs;
};

TEST(Results, FirstOfEachRowShowsForceAndDisplacements) {
  TwoRows lattice;
  Sarcomer& sarcomer = *lattice.sarcomer;
  ASSERT_EQ(lattice.n, 25u);
  for (int call = 1; call <= 2; ++call) {
    sarcomer.CalculateResults(lattice.du, lattice.rhs);
    EXPECT_EQ(sarcomer.force, -(lattice.rhs[0] + lattice.rhs[12]) / 2.0);
    EXPECT_EQ(sarcomer.myosin_displacement, call * (1.0 + 13.0 * 13.0) / 2.0);
    EXPECT_EQ(sarcomer.actin_displacement, call * (25.0 + 17.0 * 17.0) / 2.0);
  }
}

TEST(Results, DisplacementsFollowTheNodesOverPassesAndSteps) {
  SmallLattice lattice({4, 1, 30.0, 0.0, 0.6});
  for (unsigned f = 0; f < 4; ++f) lattice.bind(f, 3 * f + 1, 1 + f % 2, 4 + f, 2);
  Sarcomer& sarcomer = *lattice.sarcomer;
  double held = 0.0;
  for (double const length : {4.0, -3.0}) {
    lattice.solve(2, length);
    auto const& a = lattice.filament(0).data.u;
    auto const& b = lattice.filament(2).data.u;
    EXPECT_NEAR(sarcomer.myosin_displacement, (a[0][6] + b[0][6]) / 2.0, 1e-9);
    EXPECT_NEAR(sarcomer.actin_displacement, (a[2][19] + b[2][19]) / 2.0, 1e-9);
    // The thick filament's tension between its held end and its first bond.
    held = SmallLattice::EA[0] * ((a[0][1] - a[0][0]) / 20.0 + (b[0][3] - b[0][0]) / 40.0) / 2.0;
    EXPECT_NEAR(sarcomer.force, -held, 1e-8);
  }
  double carried = 0.0;
  for (unsigned const f : {0u, 2u}) {
    auto const& u = lattice.filament(f).data.u;
    carried += lattice.filament(f).bond_force(0) + 0.6 * (u[1][19] + 20.0 - u[0][6]);
  }
  EXPECT_NEAR(carried / 2.0, held, 1e-5);  // bonds and titin of a filament pull at its held end
}

TEST(Results, BondsPerFilament) {
  TwoRows lattice;
  Sarcomer& sarcomer = *lattice.sarcomer;
  lattice.bind(0, 3, 1, 5);
  lattice.bind(0, 4, 2, 5).detach_pending = 1;
  lattice.bind(1, 3, 1, 5, 1, 1);
  lattice.bind(3, 3, 1, 5, 1, 2);
  lattice.bind(3, 6, 1, 9, 1, 2);
  sarcomer.CalculateResults(lattice.du, lattice.rhs);
  EXPECT_EQ(sarcomer.cb_per_filament, 4.0 / 4.0);
  EXPECT_EQ(sarcomer.cb_proteinC_per_filament, 0.0);
  for (unsigned f = 0; f < 4; ++f) lattice.filament(f).proteinC_enabled = 1;
  sarcomer.CalculateResults(lattice.du, lattice.rhs);
  EXPECT_EQ(sarcomer.cb_per_filament, 2.0 / 4.0);
  EXPECT_EQ(sarcomer.cb_proteinC_per_filament, 2.0 / 4.0);
}

TEST(Results, NoFilament) {
  SmallLattice lattice({0});
  Vector const none(1);
  EXPECT_EXIT((stdout_to_stderr(), lattice.sarcomer->CalculateResults(none, none)),
              testing::ExitedWithCode(1), "Nemamo ni jedan filament!\n");
  EXPECT_EQ(lattice.sarcomer->create_output(0.5), -1);
  std::fflush(lattice.sarcomer->result_file.get());
  EXPECT_EQ(read_lines("result.csv").at(1), "0.50000000000,");
  EXPECT_EQ(lattice.sarcomer->create_stiffness_output(none, none), -1);
  std::ostringstream out;
  lattice.sarcomer->create_displacement(out, 1.0);
  EXPECT_EQ(out.str(), "");
}

TEST(Results, RowsOfResultFile) {
  SmallLattice lattice;
  Sarcomer& sarcomer = *lattice.sarcomer;
  sarcomer.force = -12.5;
  sarcomer.myosin_displacement = 0.25;
  sarcomer.actin_displacement = -1234.5675;
  sarcomer.cb_per_filament = 31.0;
  sarcomer.cb_proteinC_per_filament = 3.0;
  EXPECT_EQ(sarcomer.create_output(0.7), 0);
  lattice.filament().proteinC_enabled = 1;
  sarcomer.create_output(12.0);
  auto const lines = read_lines("result.csv");  // flushed
  ASSERT_EQ(lines.size(), 3u);
  std::string const four = "  1.25000e+01,  2.50000e-01, -1.23457e+03,  3.10000e+01,";
  EXPECT_EQ(lines[1], "0.70000000000," + four);
  EXPECT_EQ(lines[2], "12.00000000000," + four + "  3.00000e+00,");
}

TEST(Results, StatePopulations) {
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
  lattice.sarcomer->write_cb_states(stream, 4);
  EXPECT_EQ(read_file("cb_states_file.csv"), "1,1,1,0,\n");
  EXPECT_EQ(read_file("Myosin_head_states.csv"), "34,1,1,0,\n");
  lattice.sarcomer.reset();
  SmallLattice next;  // a later run adds to the second file
  next.sarcomer->write_cb_states(stream, 3);
  EXPECT_EQ(read_file("cb_states_file.csv"), "1,1,1,0,\n0,0,0,\n");
  EXPECT_EQ(read_file("Myosin_head_states.csv"), "34,1,1,0,\n18,0,0,\n");
}

TEST(Results, SiteStates) {
  LatticeSettings settings;
  settings.filaments = 2;
  SmallLattice lattice(settings);
  lattice.filament(0).data.sites[1][0].state = 1;
  lattice.filament(1).data.sites[2][19].state = 2;
  lattice.sarcomer->create_actinSites_output();
  std::string expected = "Filament count, Actin per filament\n2,2\n";
  for (int filament = 1; filament <= 2; ++filament) {
    for (int fibre = 1; fibre <= 2; ++fibre) {
      expected += "Filament,Actin,Site count\n" + std::to_string(filament) + "," +
                  std::to_string(fibre) + ",20\nSite state (0-open;1-blocked;2-closed)\n";
      expected += filament == 1 && fibre == 1 ? "1\n" : "0\n";
      for (int site = 1; site < 19; ++site) expected += "0\n";
      expected += filament == 2 && fibre == 2 ? "2\n" : "0\n";
    }
  }
  EXPECT_EQ(read_file("actinSites.csv"), expected);
}

TEST(Results, StiffnessIsForceGainedPerDisplacement) {
  TwoRows lattice;
  Sarcomer& sarcomer = *lattice.sarcomer;
  sarcomer.force = 20.0;
  sarcomer.actin_displacement = 2.0;
  EXPECT_EQ(sarcomer.create_stiffness_output(lattice.du, lattice.rhs), 0);
  double const gained = -(lattice.rhs[0] + lattice.rhs[12]) / 2.0 - 20.0;
  double const moved = (3.0 * 3.0 + 15.0 * 15.0) / 2.0 - 2.0;  // last nodes of fibre 1
  double const written = std::stod(read_lines("stiffness.csv").at(1));
  EXPECT_NEAR(written, gained / moved, 1e-6 * std::abs(written));  // 7 digits
}

TEST(Results, ListingOfActinForces) {
  LatticeSettings settings;
  settings.filaments = 2;
  SmallLattice lattice(settings);
  unsigned const n = lattice.number();
  Vector du(n), rhs(n);
  rhs[3] = 1.0;
  rhs[5] = 2.0;
  rhs[9] = 3.0;
  rhs[11] = 6.0;
  t_timeStep = 69999;
  lattice.sarcomer->CalculateResults(du, rhs);
  EXPECT_FALSE(std::filesystem::exists("ActinForceListing.dat"));
  t_timeStep = 70000;
  lattice.sarcomer->CalculateResults(rhs, du);
  lattice.sarcomer->CalculateResults(du, rhs);  // the last pass stands
  EXPECT_EQ(read_file("ActinForceListing.dat"),
            "0: 1\n1: 2\n2: 3\n3: 6\nActin force middle: 3\n"
            "Actin force standard deviation: 1.87083\n");  // root of (4 + 1 + 0 + 9) / 4
}

TEST(Results, MonomersAndCrossbridgesAtTheirSteps) {
  LatticeSettings settings;
  settings.filaments = 2;
  SmallLattice lattice(settings);
  lattice.bind(0, 3, 1, 5);        // 1.5 * -5
  lattice.bind(1, 7, 2, 9, 2, 1);  // 2.5 * (5 + 7)
  lattice.filament(1).data.position[2][1] = 5.1234567890123;
  for (int const step : {1, 2, 70000}) {
    t_timeStep = step;
    testing::internal::CaptureStdout();
    lattice.sarcomer->PrintMonomerStatistics();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Stampam podatke o monomerima...\n");
    EXPECT_EQ(std::filesystem::exists("MonomerStats.dat"), step == 70000);
    EXPECT_EQ(std::filesystem::exists("CB_Listing_file.dat"), step == 70000);
  }
  auto const initial = read_lines("MonomerStatsInitial.dat");
  auto const present = read_lines("MonomerStats.dat");
  ASSERT_EQ(initial.size(), 4u);
  ASSERT_EQ(present.size(), 4u);
  EXPECT_EQ(initial[3].substr(0, 8), "0 5 10 1");
  EXPECT_EQ(initial[0].substr(initial[0].size() - 7), " 90 95 ");
  EXPECT_EQ(present[3].substr(0, 20), "0 5.1234567890123 10");
  // Forces -7.5 and 30: mean 11.25, each 18.75 away.
  EXPECT_EQ(read_file("CB_Listing_file.dat"),
            "Middle cb force = 11.25\nStandard deviation cb force = 18.75\n");
}

TEST(Results, DisplacementsOfTheFirstFilament) {
  SmallLattice lattice;
  lattice.filament().data.u[0][2] = 0.5;
  std::ostringstream out;
  lattice.sarcomer->create_displacement(out, 0.75);
  EXPECT_EQ(out.str().find("0.75\n0 0\n20 0\n30 0.5\n40 0\n"), 0u);
  std::string const text = out.str();
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1 + (7 + 1) + 2 * (20 + 1));
}

}  // namespace
