// Would catch: a helix rule with a wrong turn or strand, a head that faces the wrong thin filament,
// a best site that isn't, the last in place of the first of equals, a lost or an invented
// neighbour, a limit that includes itself.

#include "lattice/geometry_tolen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "lattice/geometry_tools.h"
#include "support/lattice_records.h"
#include "support/work_dir.h"

namespace {

constexpr double turn = 2.0 * M_PI;

struct Tolen : GeometryTolen {
  explicit Tolen(std::vector<std::string> const& settings = {})
      : GeometryTolen((write_settings("geom_tolen.prm", settings),
                       testing::internal::CaptureStdout(), GeometryParameter_s{})),
        printed(testing::internal::GetCapturedStdout()) {}

  std::vector<BindingSite_s> angles(unsigned head, unsigned crown, unsigned site,
                                    unsigned fibre) const {
    std::vector<BindingSite_s> out;
    get_angles(head, crown, site, fibre, out);
    return out;
  }

  std::string printed;
};

std::vector<unsigned> sites_of(std::vector<BindingSite_s> const& candidates) {
  std::vector<unsigned> sites;
  for (auto const& candidate : candidates) sites.push_back(candidate.site);
  return sites;
}

TEST(GeometryTolen, LaysOutCrownsOfSixByNodeNumber) {
  Tolen const lattice;
  FilamentData const data = filament_of(lattice);
  ASSERT_EQ(data.x[0].size(), 49u);
  EXPECT_DOUBLE_EQ(data.x[0][48], 125.0 + 47 * 14.3);
  EXPECT_EQ(data.x[1][0], 0.0);
  EXPECT_DOUBLE_EQ(data.x[2][378], 378 * 2.77);
  ASSERT_EQ(data.heads.size(), 288u);
  for (unsigned i = 0; i < 288; ++i) {
    EXPECT_EQ(data.heads[i].crown_code, (i / 6 + 1) % 3 * 16 + i % 3);
    EXPECT_EQ(data.heads[i].model_index, 0u);
  }
  EXPECT_EQ(lattice.n_actin_chains(), 0u);
}

TEST(GeometryTolen, PrintsWhichHeadsFaceWhichThinFilament) {
  // Heads stand 120 degrees apart, those of fibre 2 opposite to those of fibre 1. Targets stand at
  // 180 + 40 class + 120 k: class 0 meets the heads of fibre 2 exactly, classes 1 and 2 miss those
  // of fibre 1 by 20 degrees, all other pairs by more than 25.
  EXPECT_EQ(Tolen().printed,
            "0 0.000000 3.141593\n1 2.094395 -1.047198\n2 -2.094395 1.047198\n"
            "Actin 0 \n"
            "0.000000e+00 2.000000e+00 2.000000e+00 \n"
            "0.000000e+00 3.000000e+00 3.000000e+00 \n"
            "0.000000e+00 1.000000e+00 1.000000e+00 \n"
            "Actin 1 \n"
            "1.000000e+00 0.000000e+00 0.000000e+00 \n"
            "2.000000e+00 0.000000e+00 0.000000e+00 \n"
            "3.000000e+00 0.000000e+00 0.000000e+00 \n");
}

TEST(GeometryTolen, SitesWindByEitherRule) {
  Tolen const c4;
  for (unsigned site = 0; site < 40; ++site) {
    // Half a circle but 1/26 of a turn.
    double const expected = turn - std::fmod(site % 13 * 12.0 * M_PI / 13.0, turn);
    EXPECT_NEAR(angular_distance(c4.get_actin_angle(site), expected), 0.0, 1e-13);
    EXPECT_GE(c4.get_actin_angle(site), 0.0);
  }
  EXPECT_NEAR(c4.get_actin_angle(1), 3.383, 0.5e-3);
  EXPECT_NEAR(c4.get_actin_angle(2), 0.483, 0.5e-3);
  Tolen const c3({"numerics: model = C3"});
  for (unsigned site : {0u, 1u, 2u, 3u, 24u, 25u}) {
    double const expected = site / 2 * turn / 13.0 + (site % 2 == 1 ? M_PI : 0.0);
    EXPECT_NEAR(c3.get_actin_angle(site), std::fmod(expected, turn), 1e-13) << site;
    EXPECT_EQ(c3.get_actin_angle(site + 26), c3.get_actin_angle(site));
  }
}

TEST(GeometryTolen, WeighsByTheDistanceUpToALimit) {
  Tolen const c4;
  EXPECT_TRUE(c4.angles(0, 0, 0, 1).empty());  // class 0 doesn't face fibre 1
  EXPECT_TRUE(c4.angles(0, 1, 0, 2).empty());
  ASSERT_EQ(c4.angles(0, 1, 0, 1).size(), 1u);
  EXPECT_EQ(c4.angles(0, 1, 0, 1)[0].weight, 0.0);
  EXPECT_NEAR(c4.angles(0, 0, 1, 2)[0].weight, M_PI / 13.0, 1e-13);
  EXPECT_EQ(c4.angles(0, 1, 1, 1)[0].weight, -99.0);
  EXPECT_EQ(c4.angles(0, 1, 2, 1)[0].weight, -99.0);  // 27.7 degrees
  // A period of 17: 4 of 17 half turns are 42.4, 2 are 21.2 degrees; within 25 but not 20.
  for (std::string const model : {"C4", "C3"}) {
    Tolen const lattice({"actin: actin_period = 17", "numerics: model = " + model});
    double const weight = lattice.angles(0, 1, 2, 1)[0].weight;
    EXPECT_NEAR(weight, model == "C4" ? turn / 17.0 : -99.0, 1e-13);
  }
}

/// A head of each kind at node 6, with the sites of both fibres as they come.
TEST(GeometryTolen, OffersTheBestSiteAndItsStrandNeighbours) {
  for (std::string const model : {"C3", "C4"}) {
    Tolen const lattice({"numerics: model = " + model});
    FilamentData data = filament_of(lattice);
    data.sites[1][60].k_on_factor = 0.5;  // weighs nothing here
    for (MyosinHead_s const& head : data.heads) {
      double const centre = data.position[0][head.node];
      unsigned const crown = head.crown_class();
      unsigned const fibre = crown == 0 ? 2 : 1;
      double const faced = head.number_in_crown() * turn / 3.0 + (fibre == 2 ? M_PI : 0.0);
      // The best by a sort instead of a walk; no two sites within one period stand alike.
      std::vector<std::pair<double, unsigned>> ranking;
      for (unsigned site = 0; site < 379; ++site) {
        if (std::abs(data.x[fibre][site] - centre) > 15.0) continue;
        ranking.emplace_back(angular_distance(lattice.get_actin_angle(site), faced), site);
      }
      std::sort(ranking.begin(), ranking.end());
      auto const found = candidates_of(lattice, data, head);
      if (ranking[0].first > (model == "C4" ? 25.0 : 20.0) * M_PI / 180.0) {
        EXPECT_TRUE(found.empty());
        continue;
      }
      unsigned const best = ranking[0].second;
      EXPECT_EQ(sites_of(found), (std::vector<unsigned>{best - 2, best, best + 2}));
      for (auto const& candidate : found) {
        EXPECT_EQ(candidate.weight, 1.0);
        EXPECT_EQ(candidate.fibre, fibre);
      }
    }
  }
}

/// A thin filament of evenly spaced sites, one head of class 1 (or 2) and number 0 beside it.
struct Corner {
  explicit Corner(std::vector<std::string> settings, double centre)
      : lattice(
            (settings.insert(settings.end(), {"actin: dx_actin = 1", "actin: length_actin = 40"}),
             settings)),
        data(filament_of(lattice)) {
    data.position[0][1] = centre;
  }
  std::vector<unsigned> sites() const {
    return sites_of(candidates_of(lattice, data, {1, 0, 0, unbound, unbound, 16, 0, 0}));
  }
  Tolen lattice;
  FilamentData data;
};

TEST(GeometryTolen, FirstOfEqualSitesWins) {
  // With a period of 12 the sites 0, 12, 24 all stand at 0 exactly.
  Corner corner({"actin: actin_period = 12", "numerics: xamax = 12"}, 12.0);
  EXPECT_EQ(corner.sites(), (std::vector<unsigned>{0, 2}));  // 0, 12 and 24; no site before 0
  corner.data.position[0][1] = 12.5;
  EXPECT_EQ(corner.sites(), (std::vector<unsigned>{10, 12, 14}));
  // The site of a tie is the first even where both its neighbours and itself are taken.
  for (unsigned site : {10u, 12u, 14u}) corner.data.bound_count[1][site] = 1;
  EXPECT_TRUE(corner.sites().empty());
}

TEST(GeometryTolen, FreeNeighboursOfATakenSiteAreOffered) {
  Corner corner({"numerics: xamax = 6"}, 13.0);
  EXPECT_EQ(corner.sites(), (std::vector<unsigned>{11, 13, 15}));
  corner.data.bound_count[1][13] = 1;
  EXPECT_EQ(corner.sites(), (std::vector<unsigned>{11, 15}));
  corner.data.sites[1][11].k_on_factor = 0.0;
  EXPECT_EQ(corner.sites(), (std::vector<unsigned>{15}));
  corner.data.bound_count[1][15] = 1;
  EXPECT_TRUE(corner.sites().empty());
}

TEST(GeometryTolen, NeighboursLieOnTheFibreButNotAlwaysInReach) {
  Corner corner({"numerics: xamax = 0.5"}, 26.0);
  EXPECT_EQ(corner.sites(), (std::vector<unsigned>{24, 26, 28}));
  corner.data.position[0][1] = 39.0;
  EXPECT_EQ(corner.sites(), (std::vector<unsigned>{37, 39}));  // the last site of the fibre
  corner.data.position[0][1] = 27.0;  // faces away: raw entries, no candidate
  EXPECT_EQ(corner.lattice.angles(0, 1, 27, 1)[0].weight, -99.0);
  EXPECT_TRUE(corner.sites().empty());
}

}  // namespace
