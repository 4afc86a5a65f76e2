// Would catch: a wrong or shifted entry of the weight tables, candidates out of reach, out of order
// or at closed sites, random draws in another order, heads laid out on the wrong crown.

#include "lattice/geometry_vertebrae.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

#include "support/lattice_records.h"
#include "support/work_dir.h"
#include "support/scripted_rand.h"
#include "support/stdout_to_stderr.h"

namespace {

/// A lattice with default parameters but for those of one or more "section: key = value" settings.
struct Lattice : GeometryVertebrae {
  explicit Lattice(std::vector<std::string> const& settings = {})
      : GeometryVertebrae((write_settings("geom_vertebrae.prm", settings), GeometryParameter_s{})) {
  }

  FilamentData filament() const { return filament_of(*this); }

  using Angles = decltype(&GeometryVertebrae::get_angles);

  /// Weight of one pair from the table, or its unscaled one; 0 where there is none.
  double weight(unsigned crown, unsigned head, unsigned site, unsigned fibre,
                Angles angles = &GeometryVertebrae::get_angles_cached) const {
    std::vector<BindingSite_s> out;
    (this->*angles)(head, crown, site, fibre, out);
    return out.empty() ? 0.0 : out.at(0).weight;
  }
  double raw_weight(unsigned crown, unsigned head, unsigned site, unsigned fibre) const {
    return weight(crown, head, site, fibre, &GeometryVertebrae::get_angles);
  }
};

bool listed(std::string const& lines) { return listing_text().find(lines) != std::string::npos; }

TEST(GeometryVertebrae, LaysOutNodesAndHeads) {
  Lattice const lattice({"actin: a_offset = 30", "actin: e_actin2 = 7", "myosin: e_mysoin = 4e3"});
  FilamentData const data = lattice.filament();
  ASSERT_EQ(data.x[0].size(), 51u);
  EXPECT_EQ(data.x[1].size(), 379u);
  ASSERT_EQ(data.x[2].size(), 379u);
  EXPECT_EQ(data.x[0][0], 0.0);
  EXPECT_EQ(data.x[0][1], 125.0);
  EXPECT_DOUBLE_EQ(data.x[0][50], 825.7);
  EXPECT_EQ(data.x[1][0], 30.0);
  EXPECT_DOUBLE_EQ(data.x[2][378], 30.0 + 378 * 2.77);
  for (unsigned fibre : {0u, 1u, 2u}) {
    EXPECT_TRUE((data.position[fibre] == data.x[fibre]).min());
    EXPECT_EQ(lattice.is_actin(fibre), fibre != 0);
  }
  EXPECT_TRUE(listed("\tmyosin_crowns:\t\t\t51\n"));  // the listing shows nodes
  EXPECT_TRUE(listed("\tlength_actin:\t\t1049.8300000000\n\tactin_period:\t\t\t13\n"));
  ASSERT_EQ(data.heads.size(), 150u);
  for (unsigned i = 0; i < 150; ++i) {
    MyosinHead_s const& head = data.heads[i];
    EXPECT_EQ(head.node, i / 3 + 1);
    EXPECT_EQ(head.crown_code, i / 3 % 3 * 16 + i % 3);
    EXPECT_EQ(head.fibre + head.state + head.detach_pending, 0u);
    EXPECT_EQ(head.actin_site, 99999999u);
    EXPECT_EQ(head.actin_fibre, 99999999u);
  }
  EXPECT_DOUBLE_EQ(lattice.actin_end, 1080.0);
  EXPECT_DOUBLE_EQ(lattice.titin_extension, 1080.0 - 826.7);
  EXPECT_DOUBLE_EQ(lattice.myosin_stiffness, 200000.0 / 825.7);
  double const stiffness[][2] = {{4e3, 50.0}, {1.27e3, 50.4}, {7.0, 50.4}, {0.0, 0.0}};
  for (unsigned fibre = 0; fibre < 4; ++fibre) {
    double e = -1.0, a = -1.0;
    lattice.get_fibre_stiffness(fibre, e, a);
    EXPECT_EQ(e, stiffness[fibre][0]);
    EXPECT_EQ(a, stiffness[fibre][1]);
  }
}

TEST(GeometryVertebrae, SitesWindInTwoStrands) {
  Lattice const lattice;
  double const step = 2.0 * M_PI / 13.0;
  EXPECT_NEAR(lattice.get_actin_angle(0), M_PI, 1e-14);
  EXPECT_NEAR(lattice.get_actin_angle(1), 0.0, 1e-14);
  EXPECT_NEAR(lattice.get_actin_angle(2), M_PI + step, 1e-14);
  EXPECT_NEAR(lattice.get_actin_angle(3), step, 1e-14);
  EXPECT_NEAR(lattice.get_actin_angle(14), step / 2.0, 1e-14);  // past a full turn
  for (unsigned site = 0; site < 26; ++site) {
    EXPECT_EQ(lattice.get_actin_angle(site + 26), lattice.get_actin_angle(site));
  }
}

TEST(GeometryVertebrae, WeightTablesHoldTheKnownValues) {
  Lattice const lattice;
  unsigned count = 0;
  double sum = 0.0;
  for (unsigned site = 0; site < 26; ++site) {
    for (unsigned crown = 0; crown < 3; ++crown) {
      for (unsigned head = 0; head < 3; ++head) {
        for (unsigned fibre : {1u, 2u}) {
          double const weight = lattice.weight(crown, head, site, fibre);
          double const raw = lattice.raw_weight(crown, head, site, fibre);
          EXPECT_NEAR(weight, raw / 0.7486354, 1e-7 * weight);
          EXPECT_EQ(lattice.weight(crown, head, site + 52, fibre), weight);
          count += weight > 0.0;
          EXPECT_FALSE(crown == 0 && fibre == 2 && weight > 0.0);
          sum += raw;
        }
      }
    }
  }
  EXPECT_EQ(count, 195u);
  EXPECT_NEAR(sum / count, 0.7486354, 0.5e-7);
  // Face to face both cosines are 1: the raw weight is 4.
  EXPECT_NEAR(lattice.raw_weight(0, 0, 1, 1), 4.0, 1e-12);
  EXPECT_NEAR(lattice.weight(0, 0, 1, 1), 5.343, 0.5e-3);
  EXPECT_NEAR(lattice.weight(1, 0, 1, 1), 0.251, 0.5e-3);
  EXPECT_NEAR(lattice.weight(1, 1, 0, 2), 1.912, 0.5e-3);
  EXPECT_EQ(lattice.weight(0, 0, 0, 1), 0.0);
  // In the mirror crown class 1 becomes class 2, and its heads go the other way round.
  for (unsigned site = 0; site < 26; ++site) {
    unsigned const mirrored = (site % 2 == 0 ? 26 - site : 28 - site) % 26;
    for (unsigned head = 0; head < 3; ++head) {
      for (unsigned fibre : {1u, 2u}) {
        EXPECT_NEAR(lattice.weight(2, 2 - head, mirrored, fibre),
                    lattice.weight(1, head, site, fibre), 1e-12);
      }
    }
  }
}

/// Every pair of head and site looked at in turn, without any search.
void expect_complete_candidates(Lattice const& lattice, FilamentData const& data, double xamax) {
  std::size_t offered = 0;
  for (MyosinHead_s const& head : data.heads) {
    unsigned const crown = head.crown_code / 16;
    double const centre = data.position[0][head.node];
    std::vector<BindingSite_s> expected;
    for (unsigned fibre = 1; fibre <= 2; ++fibre) {
      double const limit = data.nebulin_limit.empty() ? -1e9 : data.nebulin_limit[fibre - 1];
      for (unsigned site = 0; site < data.x[fibre].size(); ++site) {
        double const weight = lattice.weight(crown, head.crown_code % 16, site, fibre);
        if (std::abs(data.position[fibre][site] - centre) <= xamax && weight > 0.0 &&
            data.bound_count[fibre][site] == 0 && data.sites[fibre][site].k_on_factor > 0.0 &&
            data.x[fibre][site] >= limit && (crown != 0 || fibre == 1)) {
          expected.push_back({weight, site, fibre});
        }
      }
    }
    std::vector<BindingSite_s> candidates;
    lattice.get_binding_sites(data, head, candidates);
    EXPECT_TRUE(std::equal(candidates.begin(), candidates.end(), expected.begin(), expected.end(),
                           [](BindingSite_s const& a, BindingSite_s const& b) {
                             return a.weight == b.weight && a.site == b.site && a.fibre == b.fibre;
                           }))
        << "head " << head.crown_code << " at node " << head.node;
    offered += candidates.size();
  }
  EXPECT_GT(offered, 100u);
}

void displace(FilamentData& data) {
  data.position[0] += 5.25;
  for (unsigned fibre = 1; fibre <= 2; ++fibre) {
    for (unsigned i = 0; i < data.x[fibre].size(); ++i) {
      data.position[fibre][i] += fibre * 7.5 + 0.004 * i;
    }
  }
}

TEST(GeometryVertebrae, OffersEveryFreeSiteInReachInOrder) {
  // Thin filaments that begin among the crowns: some reaches are cut, some are empty.
  // Filaments so thick that crowns of class 0 would find sites on fibre 2.
  Lattice const lattice(
      {"actin: a_offset = 200", "numerics: xamax = 21", "axial: radius_actin = 12"});
  EXPECT_GT(lattice.weight(0, 0, 1, 2) + lattice.weight(0, 1, 1, 2) + lattice.weight(0, 2, 1, 2),
            0.0);
  FilamentData data = lattice.filament();
  expect_complete_candidates(lattice, data, 21.0);
  displace(data);
  for (unsigned site = 0; site < 379; ++site) {
    if (site % 5 == 0) data.bound_count[1][site] = 1;
    if (site % 7 == 0) data.sites[2][site].k_on_factor = 0.0;
    if (site % 7 == 1) data.sites[1][site].k_on_factor = 0.25;  // gates, does not scale
    data.sites[1][site].state = 2;                              // without a part in it
  }
  expect_complete_candidates(lattice, data, 21.0);
}

double const full_length = 2.77 * 379;

TEST(GeometryVertebrae, NebulinLimitsFollowTheirDistributions) {
  auto const limits = [](char const* kind, std::vector<double> const& variates) {
    Lattice const lattice(
        {std::string("nebulin: nebulinDeficiency = ") + kind, "actin: a_offset = 30"});
    ScriptedRand::script(variates);
    return lattice.filament().nebulin_limit;
  };
  // Exponential: the lost part is 134 ln((1 - r) / (exp(-L/134) + r)), all at r = 0, never below 0.
  std::vector<double> limit = limits("1", {0.0, 0.25});
  EXPECT_NEAR(limit.at(0), 30.0 + full_length, 1e-9);
  double const tail = std::exp(-full_length / 134.0);
  EXPECT_NEAR(limit.at(1), 30.0 + 134.0 * std::log(0.75 / (tail + 0.25)), 1e-5);
  limit = limits("1", {0.75, 1.0});
  EXPECT_NEAR(limit.at(0), 30.0, 1e-9);
  EXPECT_NEAR(limit.at(1), 30.0, 1e-9);
  // Lengths from 562.4 with a density that grows linearly: the square root of r.
  limit = limits("2", {0.25, 1.0});
  EXPECT_NEAR(limit.at(0), 30.0 + (full_length - 562.4) / 2.0, 1e-5);
  EXPECT_NEAR(limit.at(1), 30.0, 1e-9);
  limit = limits("3", {0.5, 0.5});
  EXPECT_NEAR(limit.at(0), 30.0 + full_length, 1e-9);
}

TEST(GeometryVertebrae, SitesBelowTheNebulinLimitAreNeverOffered) {
  Lattice const lattice({"nebulin: nebulinDeficiency = 2"});
  ScriptedRand::script({0.25, 0.49});
  FilamentData data = lattice.filament();
  expect_complete_candidates(lattice, data, 15.0);
  displace(data);  // the limit goes by rest coordinates
  expect_complete_candidates(lattice, data, 15.0);
  data.nebulin_limit[0] = data.x[1][100];  // a site on the limit is kept
  expect_complete_candidates(lattice, data, 15.0);
}

TEST(GeometryVertebrae, DrawsLengthsFirstThenOncePerCrown) {
  Lattice const lattice({"nebulin: nebulinDeficiency = 2", "myosin: slowHeads_percent = 30",
                         "myosin: fastHeads_percent = 70"});
  std::vector<double> variates = {0.9, 0.1};
  for (int i = 0; i < 50; ++i) variates.push_back(i % 7 == 0 ? 0.2999 : 0.3001);
  ScriptedRand::reset();
  ScriptedRand::script(variates);
  FilamentData const data = lattice.filament();
  EXPECT_EQ(ScriptedRand::draws(), 52u);
  EXPECT_LT(data.nebulin_limit.at(0), data.nebulin_limit.at(1));  // fibre 1 has drawn 0.9
  for (unsigned i = 0; i < 150; ++i) EXPECT_EQ(data.heads[i].model_index, i / 3 % 7 == 0 ? 0u : 1u);
  ScriptedRand::script({0.0});  // a draw equal to the share, here 0, still gives slow heads
  EXPECT_EQ(Lattice().filament().heads[2].model_index, 0u);
}

TEST(GeometryVertebrae, ProteinCSitsBehindTheHeadsOfEveryThirdCrown) {
  std::set<unsigned> const carriers = {15, 18, 21, 24, 27, 30, 33};
  Lattice const lattice({"protein-C: proteinCIndicator = 1"});
  ScriptedRand::reset();
  FilamentData const data = lattice.filament();
  EXPECT_EQ(ScriptedRand::draws(), 50u);
  ASSERT_EQ(data.heads.size(), 171u);
  unsigned next = 0;
  for (unsigned crown = 0; crown < 50; ++crown) {
    bool const carries = carriers.count(crown) == 1;
    for (unsigned record = 0; record < (carries ? 6 : 3); ++record, ++next) {
      MyosinHead_s const& head = data.heads[next];
      EXPECT_EQ(head.node, crown + 1);
      EXPECT_EQ(head.crown_code, crown % 3 * 16 + (carries ? record / 2 : record));
      EXPECT_EQ(head.model_index, carries && record % 2 == 1 ? 2u : 1u);
      EXPECT_EQ(head.actin_site, 99999999u);
    }
  }
  EXPECT_EQ(next, 171u);
  EXPECT_TRUE(listed("\tproteinCStartPosition:\t\t\t15\n\tproteinCNumber:\t\t\t7\n\n"));
}

TEST(GeometryVertebrae, ChainsAreTheTwoStrandsOfEachThinFilament) {
  Lattice const lattice;
  ASSERT_EQ(lattice.n_actin_chains(), 4u);
  std::vector<unsigned> segments(4, 0);
  lattice.n_actin_segments(10, segments);
  EXPECT_EQ(segments, (std::vector<unsigned>{19, 19, 19, 19}));
  lattice.n_actin_segments(27, segments);  // 190 even sites, 189 = 7 * 27 odd ones
  EXPECT_EQ(segments, (std::vector<unsigned>{8, 7, 8, 7}));
  std::set<std::pair<unsigned, unsigned>> places;
  for (unsigned chain = 0; chain < 4; ++chain) {
    for (unsigned segment = 0; segment < segments[chain]; ++segment) {
      for (unsigned index = 0; index < 27; ++index) {
        unsigned const fibre = lattice.get_fibre(27, chain, segment, index);
        unsigned const site = lattice.get_site(27, chain, segment, index);
        EXPECT_EQ(fibre, chain / 2 + 1);
        EXPECT_EQ(site % 2, chain % 2);
        if (site >= 379) continue;
        EXPECT_TRUE(places.emplace(fibre, site).second);
      }
    }
  }
  EXPECT_EQ(places.size(), std::size_t{2 * 379});
  EXPECT_EQ(lattice.get_site(10, 3, 2, 4), 49u);
}

TEST(GeometryVertebrae, RefusesWhatHasNoSense) {
  Lattice({"protein-C: proteinCIndicator = 1", "protein-C: proteinCNumber = 12"});
  Lattice({"protein-C: proteinCNumber = 13"});  // not enabled: without effect
  std::vector<std::pair<std::vector<std::string>, std::string>> const cases = {
      {{"myosin: slowHeads_percent = 30", "myosin: fastHeads_percent = 60"},
       "Error: sum of slow and fast myosin heads must be equal to 100 \\[%\\]\n"},
      {{"myosin: dx_myosin = 0"}, "geom_vertebrae\\.prm, section myosin: dx_myosin is '0'"},
      {{"actin: dx_actin = nan"}, "geom_vertebrae\\.prm.*nan"},
      {{"actin: actin_period = 0"}, "actin_period is '0'"},
      {{"myosin: myosin_crowns = -3"}, "myosin_crowns is '-3'"},
      {{"axial: radius_actin = -1"}, "radius_actin is '-1'"},
      {{"protein-C: proteinCIndicator = 1", "protein-C: proteinCNumber = 13"},
       "proteinCNumber is '13'.*12"}};
  for (auto const& [settings, message] : cases) {
    EXPECT_EXIT((stdout_to_stderr(), Lattice(settings)), testing::ExitedWithCode(1), message)
        << settings[0];
  }
}

}  // namespace
