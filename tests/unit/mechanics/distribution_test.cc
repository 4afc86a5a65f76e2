// Would catch: a strain column with the lever in it, force, stiffness or energy without it, a law
// of the wrong model, a row too many or too few with pending heads, a wrong file name.

#include "mechanics/distribution.h"

#include <gtest/gtest.h>

#include <sstream>

#include "support/small_lattice.h"
#include "support/work_dir.h"

namespace {

TEST(Distribution, SnapshotsOfBonds) {
  SmallLattice lattice({2});
  lattice.bind(0, 3, 1, 5, 2);       // 30 to 25 nm, slow, stroke 4
  lattice.bind(1, 7, 2, 9, 2, 1);    // 40 to 45 nm, fast, stroke 7
  lattice.bind(1, 13, 1, 12, 2, 2);  // 60 to 60 nm, protein-C, no stroke
  for (auto& fibre : {1, 2}) {
    lattice.filament(1).data.u[fibre] = 0.5;
    lattice.filament(1).data.position[fibre] += 0.5;
  }
  EXPECT_EQ(lattice.sarcomer->create_distributions(0.7), 0);
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
}

// As many rows as heads that hold, though the first entries may be pending.
TEST(Distribution, TakesTheFirstEntriesOfAttached) {
  SmallLattice lattice;
  for (unsigned head : {3u, 6u, 9u}) lattice.bind(0, head, 1, 5 + head);
  lattice.filament().data.attached[0]->detach_pending = 1;
  lattice.sarcomer->create_distributions(0.12345678);
  auto const lines = read_lines("x_ray_data_0.123457.csv");
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[1].substr(0, 8), "0,1,0,8,");
  EXPECT_EQ(lines[2].substr(0, 9), "0,1,1,11,");
  lattice.filament().data.attached.clear();
  lattice.sarcomer->create_distributions(0.12345679);  // the same name
  EXPECT_EQ(read_lines("x_ray_data_0.123457.csv").size(), 1u);
  EXPECT_EQ(read_file("distributions_0.123457.csv"), "X,Stiffness,Force,Energy,State\n");
}

TEST(Distribution, WritersOverFilaments) {
  SmallLattice lattice({2});
  for (unsigned f = 0; f < 2; ++f) lattice.bind(f, 3, 2, 5, 1 + f);
  lattice.filament(0).data.u[2] = 0.25;
  lattice.filament(1).data.position[2][19] += 0.5;
  std::vector<Filament*> const filaments{&lattice.filament(0), &lattice.filament(1)};
  auto const first = filaments.data();
  Distribution const writer;
  EXPECT_EQ(writer.create_distribution() + writer.create_bridge_distribution(), 0);
  auto const lines_of = [](std::ostringstream const& out) {
    write_file("written", out.str());
    return read_lines("written");
  };

  std::ostringstream spacing;
  writer.create_crowns_distribution(spacing, first, first + 2);
  auto const distances = lines_of(spacing);
  ASSERT_EQ(distances.size(), 2u * 2u * 19u);
  for (std::size_t i = 0; i < 75; ++i) EXPECT_EQ(distances[i], "5") << i;
  EXPECT_EQ(distances[75], "5.5");

  std::ostringstream positions;
  writer.create_xray_distribution(positions, first, first + 2);
  auto const heads = lines_of(positions);
  ASSERT_EQ(heads.size(), 2u * 18u);
  EXPECT_EQ(heads[3], "3 30 25.25 2 5");
  EXPECT_EQ(heads[4], "4 30 0 99999999 99999999");
  EXPECT_EQ(heads[18 + 3], "3 30 25 2 5");

  std::ostringstream states;
  writer.create_state_distribution(states, first, first + 2);
  auto const fractions = lines_of(states);
  ASSERT_EQ(fractions.size(), 18u);
  EXPECT_EQ(fractions[2], "2 1 0 0 ");
  EXPECT_EQ(fractions[3], "3 0 0.5 0.5 ");
}

TEST(Distribution, MeasuresOfABond) {
  SmallLattice lattice;
  Model const* const fast = &lattice.fast;  // k 2.5, stroke 7 in state 2
  testing::internal::CaptureStdout();
  EXPECT_EQ(DFuncStrain(3.0, 2, fast), 3.0);
  EXPECT_EQ(DFuncForce(3.0, 1, fast), 7.5);
  EXPECT_EQ(DFuncForce(3.0, 2, fast), 25.0);
  EXPECT_EQ(DFuncEnergy(3.0, 2, fast), 125.0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  lattice.fast_law.xbType = 3;
  testing::internal::CaptureStdout();
  EXPECT_EQ(DFuncForce(-7.0, 2, fast), 0.0);
  EXPECT_EQ(DFuncEnergy(-8.0, 2, fast), 1.25);
  std::string const warning = "Jedino je moguce pustiti proracun sa konstantnim stifnesom!\n";
  EXPECT_EQ(testing::internal::GetCapturedStdout(), warning + warning);
}

}  // namespace
