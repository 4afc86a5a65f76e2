// Would catch: a fibre that begins at the wrong place, a count off by one, a reach open at an end,
// a site factor that gates instead of weighing.

#include "lattice/geometry_simple.h"

#include <gtest/gtest.h>

#include "support/lattice_records.h"
#include "support/work_dir.h"

namespace {

GeometrySimple simple(std::vector<std::string> const& settings) {
  write_settings("geom_simple.prm", settings);
  return GeometrySimple({});
}

TEST(GeometrySimple, SetsBothFibresLevelWithTheFirstCrown) {
  GeometrySimple const lattice = simple({"myosin: myosin_offset = 80", "actin: a_actin = 7"});
  FilamentData const data = filament_of(lattice);
  ASSERT_EQ(data.x[0].size(), 49u);  // the end node included: 48 crowns
  EXPECT_EQ(data.x[0][0], 0.0);
  EXPECT_EQ(data.x[0][1], 80.0);
  EXPECT_DOUBLE_EQ(data.x[0][48], 80.0 + 47 * 14.3);
  EXPECT_EQ(data.x[1][0], 80.0);
  EXPECT_DOUBLE_EQ(data.x[1][378], 80.0 + 378 * 2.77);
  EXPECT_EQ(data.heads.size(), 144u);
  for (MyosinHead_s const& head : data.heads) EXPECT_EQ(head.crown_code + head.model_index, 0u);
  double e, a;
  lattice.get_fibre_stiffness(0, e, a);
  EXPECT_EQ(e * a, 3.25e3 * 5.0);
  lattice.get_fibre_stiffness(1, e, a);
  EXPECT_EQ(e * a, 1.27e3 * 7.0);
  EXPECT_EQ(lattice.n_actin_chains(), 0u);
}

TEST(GeometrySimple, OneNodeHasNoHeads) {
  FilamentData const data = filament_of(simple({"myosin: myosin_heads = 1"}));
  EXPECT_EQ(data.x[0].size(), 1u);
  EXPECT_TRUE(data.heads.empty());
}

TEST(GeometrySimple, WeighsSitesByTheirFactorUpToBothEndsOfTheReach) {
  // Spacings that are exact in binary: node 3 stands at 112, and sites at 80, 84, 88 ..
  GeometrySimple const lattice = simple({"myosin: myosin_offset = 80", "myosin: dx_myosin = 16",
                                         "actin: dx_actin = 4", "numerics: xamax = 8"});
  FilamentData data = filament_of(lattice);
  data.sites[1][7].k_on_factor = 0.5;
  data.bound_count[1][8] = 1;
  data.sites[1][9].k_on_factor = 0.0;
  for (unsigned head : {6u, 7u, 8u}) {
    auto const candidates = candidates_of(lattice, data, data.heads[head]);
    ASSERT_EQ(candidates.size(), 3u);
    EXPECT_EQ(candidates[0].site, 6u);  // 8 nm before the head
    EXPECT_EQ(candidates[0].weight, 1.0);
    EXPECT_EQ(candidates[1].site, 7u);
    EXPECT_EQ(candidates[1].weight, 0.5);
    EXPECT_EQ(candidates[2].site, 10u);  // 8 nm behind
    EXPECT_EQ(candidates[2].fibre, 1u);
  }
}

}  // namespace
