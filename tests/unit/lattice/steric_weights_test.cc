// Would catch: a helix rule with a wrong turn or strand, a wrong or shifted entry of the weight
// tables, a crown class or a head that faces the wrong thin filament.

#include <cmath>

#include "lattice/geometry_tolen.h"
#include "support/lattice.h"
#include "support/table_weight.h"

namespace {

template <class Lattice>
std::unique_ptr<Lattice> make(std::string const& name, std::string const& settings = "") {
  return std::unique_ptr<Lattice>(dynamic_cast<Lattice*>(make_lattice(name, settings).release()));
}

/// The table against the weights that it scales to the mean 1, over `period` sites and repeated.
template <class Lattice>
void expect_table(Lattice const& lattice, unsigned crowns, unsigned heads, unsigned fibres,
                  unsigned period, int expected_count, double mean) {
  int count = 0;
  double sum = 0.0;
  for (unsigned site = 0; site < period; ++site) {
    for (unsigned crown = 0; crown < crowns; ++crown) {
      for (unsigned head = 0; head < heads; ++head) {
        for (unsigned fibre = 1; fibre <= fibres; ++fibre) {
          std::vector<BindingSite_s> out;
          lattice.get_angles(head, crown, site, fibre, out);
          double const raw = weight_of(out);
          double const weight = table_weight(lattice, crown, head, site, fibre);
          EXPECT_NEAR(weight, raw / mean, 1e-6);
          EXPECT_EQ(table_weight(lattice, crown, head, site + 2 * period, fibre), weight);
          count += raw > 0.0;
          sum += raw;
        }
      }
    }
  }
  EXPECT_EQ(count, expected_count);
  EXPECT_NEAR(sum / count, mean, 0.5e-7);
}

TEST(StericWeights, TablesHoldTheKnownValues) {
  auto const flight = make<GeometryFlight>("Flight");
  auto const vertebrae = make<GeometryVertebrae>("Vertebrae");
  expect_table(*flight, 2, 4, 3, 13, 166, 0.9790865);
  expect_table(*vertebrae, 3, 3, 2, 26, 195, 0.7486354);
  // Face to face both cosines are 1, and the weight before scaling is 4.
  EXPECT_NEAR(table_weight(*flight, 0, 0, 0, 1), 4.0 / 0.9790865, 1e-6);
  EXPECT_NEAR(table_weight(*flight, 1, 1, 2, 2), 2.892, 0.5e-3);
  for (unsigned const missing : {0, 4}) EXPECT_EQ(table_weight(*flight, 0, 0, 0, missing), 0.0);
  EXPECT_NEAR(table_weight(*vertebrae, 0, 0, 1, 1), 4.0 / 0.7486354, 1e-6);
  EXPECT_NEAR(table_weight(*vertebrae, 1, 0, 1, 1), 0.251, 0.5e-3);
  EXPECT_NEAR(table_weight(*vertebrae, 1, 1, 0, 2), 1.912, 0.5e-3);
  EXPECT_EQ(table_weight(*vertebrae, 0, 0, 0, 1), 0.0);
}

TEST(StericWeights, MirrorTheirHeadsWhereTheLatticeHasAMirror) {
  // Class 1 of Flight has heads at -45 and +45 degrees with fibre 1 between them. The mirror that
  // exchanges them sends phase s to -s, and leaves the faces as they are: those of heads 0 and 1
  // are half a turn apart, and each site has both.
  auto const flight = make<GeometryFlight>("Flight");
  for (unsigned phase = 0; phase < 13; ++phase) {
    EXPECT_NEAR(table_weight(*flight, 1, 0, phase, 1),
                table_weight(*flight, 1, 1, (13 - phase) % 13, 1), 1e-12);
  }
  // In the mirror class 1 of Vertebrae becomes class 2, and its heads go the other way round.
  auto const vertebrae = make<GeometryVertebrae>("Vertebrae");
  for (unsigned site = 0; site < 26; ++site) {
    unsigned const mirrored = (site % 2 == 0 ? 26 - site : 28 - site) % 26;
    for (unsigned head = 0; head < 3; ++head) {
      for (unsigned fibre : {1u, 2u}) {
        EXPECT_NEAR(table_weight(*vertebrae, 2, 2 - head, mirrored, fibre),
                    table_weight(*vertebrae, 1, head, site, fibre), 1e-12);
      }
    }
  }
}

/// Angles agree but for full turns.
void expect_angle(double angle, double expected) {
  EXPECT_NEAR(std::remainder(angle - expected, 2.0 * M_PI), 0.0, 1e-13);
}

TEST(SiteAngles, WindByTheRuleOfTheLattice) {
  double const step = 2.0 * M_PI / 13.0;
  auto const vertebrae = make<GeometryVertebrae>("Vertebrae");
  auto const two_strands = make<GeometryTolen>("Tolen", "numerics: model=C3");
  auto const one_strand = make<GeometryTolen>("Tolen");
  for (unsigned site = 0; site < 80; ++site) {
    // Two strands half a turn apart; in Vertebrae the even sites stand opposite.
    expect_angle(vertebrae->get_actin_angle(site), site / 2 * step + (site % 2 == 0 ? M_PI : 0.0));
    expect_angle(two_strands->get_actin_angle(site),
                 site / 2 * step + (site % 2 == 1 ? M_PI : 0.0));
    // Half a circle but 1/26 of a turn, backwards.
    expect_angle(one_strand->get_actin_angle(site), -(site * (M_PI - step / 2.0)));
  }
  for (unsigned head = 0; head < 3; ++head) {
    expect_angle(one_strand->get_head_azimuth(head, 1), head * 2.0 * M_PI / 3.0);
    expect_angle(one_strand->get_head_azimuth(head, 2), head * 2.0 * M_PI / 3.0 + M_PI);
  }
}

}  // namespace
