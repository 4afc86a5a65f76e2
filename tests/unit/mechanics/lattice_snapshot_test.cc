// Would catch: half-sarcomeres of a series at wrong places or not mirrored, a displacement left
// out, a head that has let go taken for a bond, a strain without its lever, a file without its
// whole contents or under another name.

#include "mechanics/lattice_snapshot.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/small_lattice.h"
#include "support/work_dir.h"

namespace {

TEST(LatticeSnapshot, TellsOfEveryFilamentHeadBondAndSite) {
  SmallLattice lattice({4, 2});    // four half-sarcomeres in series
  lattice.bind(1, 7, 2, 9, 2, 1);  // 40 to 45 nm, fast, stroke 7
  lattice.bind(1, 13, 1, 12, 1);   // lets go
  lattice.filament(1).data.attached[1]->detach_pending = 1;
  lattice.filament(1).data.u[2].fill(0.5);
  lattice.filament(1).data.sites[2][9].state = 2;
  write_lattice_snapshot(lattice.filaments, 0.12345678);

  // Thin filaments end at 95 nm, where those of the second and of the third meet; each stands at
  // three corners.
  auto const filaments = read_lines("lattice_filaments_0.12345678.csv");
  ASSERT_EQ(filaments.size(), 1u + 4 * 7);
  EXPECT_EQ(filaments[1], "0,0,1,0.000000,0,0,0.000000,70.000000,0.000000,0.000000,7.000000");
  EXPECT_EQ(filaments[13], "1,1,-1,0.000000,2,1,0.500000,95.500000,0.000000,30.000000,3.500000");
  EXPECT_EQ(filaments[15].substr(0, 26), "2,2,1,-190.000000,0,0,0.00");
  EXPECT_EQ(filaments[22].substr(0, 27), "3,3,-1,-190.000000,0,0,0.00");

  auto const heads = read_lines("lattice_heads_0.12345678.csv");
  ASSERT_EQ(heads.size(), 1u + 4 * 18);
  EXPECT_EQ(heads[1 + 18 + 7].substr(0, 22), "1,7,2,1,1,2,40.000000,");

  // 5.5 nm and the lever's 7, a spring of 2.5 pN/nm.
  auto const bonds = read_lines("lattice_bonds_0.12345678.csv");
  ASSERT_EQ(bonds.size(), 2u);
  EXPECT_EQ(bonds[1].substr(0, 57), "1,7,2,9,5.500000,12.500000,2.500000,31.250000,195.312500,");

  auto const sites = read_lines("lattice_sites_0.12345678.csv");
  ASSERT_EQ(sites.size(), 1u + 4 * 2 * 20);
  EXPECT_EQ(sites[1 + 40 + 20 + 9].substr(0, 27), "1,2,9,2,1.000000,45.500000,");
  for (auto const& entry : std::filesystem::directory_iterator(".")) {
    EXPECT_NE(entry.path().extension(), ".part");
  }
}

}  // namespace
