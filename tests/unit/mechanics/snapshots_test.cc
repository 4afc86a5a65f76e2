// Would catch: a strain column with the lever in it, force, stiffness or energy without it, a law
// of the wrong model, a row too many or too few with pending heads, a wrong file name.

#include "mechanics/snapshots.h"

#include <gtest/gtest.h>

#include "support/small_lattice.h"
#include "support/work_dir.h"

namespace {

TEST(Snapshots, SnapshotsOfBonds) {
  SmallLattice lattice({2});
  lattice.bind(0, 3, 1, 5, 2);       // 30 to 25 nm, slow, stroke 4
  lattice.bind(1, 7, 2, 9, 2, 1);    // 40 to 45 nm, fast, stroke 7
  lattice.bind(1, 13, 1, 12, 2, 2);  // 60 to 60 nm, protein-C, no stroke
  for (auto& fibre : {1, 2}) lattice.filament(1).data.u[fibre].fill(0.5);
  write_snapshots(lattice.filaments, 0.7);
  // Energies 1.5 / 2, 2.5 / 2 * 12.5^2, 0.8 / 2 * 0.5^2.
  EXPECT_EQ(read_file("distributions_0.7.csv"),
            "X,Stiffness,Force,Energy,State\n"
            "-5.000000,1.500000,-1.500000,0.750000,2\n"
            "5.500000,2.500000,31.250000,195.312500,2\n"
            "0.500000,0.800000,0.400000,0.100000,2\n");
  EXPECT_EQ(read_file("x_ray_data_0.7.csv"),
            "Filament, Actin, Strained, Node, InitCoordinate, Coordinate, Force\n"
            "0,1,1,5,25.000000,25.000000,-1.500000\n"
            "1,2,1,9,45.000000,45.500000,31.250000\n"
            "1,1,0,12,60.000000,60.500000,0.400000\n");
  // The heads, counted from 0, in crowns of three.
  auto const places = read_lines("bonds_0.7.csv");
  ASSERT_EQ(places.size(), 4u);
  EXPECT_EQ(places[1].substr(0, 8), "3,1,0,0,");
  EXPECT_EQ(places[2].substr(0, 8), "7,2,1,1,");
  EXPECT_EQ(places[3].substr(0, 9), "13,4,1,2,");
}

// As many rows as heads that hold, though the first entries may be pending.
TEST(Snapshots, TakesTheFirstEntriesOfAttached) {
  SmallLattice lattice;
  for (unsigned head : {3u, 6u, 9u}) lattice.bind(0, head, 1, 5 + head);
  lattice.filament().data.attached[0]->detach_pending = 1;
  write_snapshots(lattice.filaments, 0.12345678);
  auto const lines = read_lines("x_ray_data_0.123457.csv");
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[1].substr(0, 8), "0,1,0,8,");
  EXPECT_EQ(lines[2].substr(0, 9), "0,1,1,11,");
  lattice.filament().data.attached.clear();
  write_snapshots(lattice.filaments, 0.12345679);  // the same name
  EXPECT_EQ(read_lines("x_ray_data_0.123457.csv").size(), 1u);
  EXPECT_EQ(read_file("distributions_0.123457.csv"), "X,Stiffness,Force,Energy,State\n");
}

}  // namespace
