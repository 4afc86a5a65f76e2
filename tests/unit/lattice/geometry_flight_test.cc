// Would catch: a wrong or shifted entry of the weight tables, a crown class that sees the wrong
// thin filament, a fibre that is never searched, a site factor that gates instead of weighing.

#include "lattice/geometry_flight.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "support/lattice_records.h"
#include "support/work_dir.h"
#include "support/stdout_to_stderr.h"

namespace {

struct Flight : GeometryFlight {
  explicit Flight(std::vector<std::string> const& settings = {})
      : GeometryFlight((write_settings("geom_flight.prm", settings), GeometryParameter_s{})) {}

  double weight(unsigned crown, unsigned head, unsigned site, unsigned fibre,
                double factor = 1.0) const {
    std::vector<BindingSite_s> out;
    get_angles_cached(head, crown, site, fibre, out, factor);
    return out.empty() ? 0.0 : out.at(0).weight;
  }

  /// Calls `function(head, crown, phase, fibre)` for each entry of the tables.
  template <class Function>
  static void for_each_entry(Function function) {
    for (unsigned phase = 0; phase < 13; ++phase) {
      for (unsigned crown : {0u, 1u}) {
        for (unsigned head = 0; head < 4; ++head) {
          for (unsigned fibre : {1u, 2u, 3u}) function(head, crown, phase, fibre);
        }
      }
    }
  }
};

TEST(GeometryFlight, LaysOutFourFibresAndTwoCrownClasses) {
  Flight const lattice({"actin: e_actin3 = 9"});
  FilamentData const data = filament_of(lattice);
  ASSERT_EQ(data.x[0].size(), 49u);
  EXPECT_DOUBLE_EQ(data.x[0][48], 125.0 + 47 * 14.5);
  for (unsigned fibre : {1u, 2u, 3u}) {
    EXPECT_EQ(data.x[fibre][0], 125.0);
    EXPECT_DOUBLE_EQ(data.x[fibre][378], 125.0 + 378 * 2.77);
  }
  for (unsigned i = 0; i < data.heads.size(); ++i) {
    EXPECT_EQ(data.heads[i].crown_code, i / 4 % 2 * 16 + i % 4);
    EXPECT_EQ(data.heads[i].model_index, 0u);
  }
  double e, a;
  lattice.get_fibre_stiffness(3, e, a);
  EXPECT_EQ(e, 9.0);
  EXPECT_EQ(a, 50.4);
  EXPECT_EQ(lattice.n_actin_chains(), 0u);
}

TEST(GeometryFlight, WeightTablesHoldTheKnownValues) {
  Flight const lattice;
  int count = 0;
  double sum = 0.0;
  std::set<unsigned> seen_by_class[2];
  Flight::for_each_entry([&](unsigned head, unsigned crown, unsigned phase, unsigned fibre) {
    std::vector<BindingSite_s> raw;
    lattice.get_angles(head, crown, phase, fibre, raw);
    ASSERT_LE(raw.size(), 1u);
    double const weight = lattice.weight(crown, head, phase, fibre);
    EXPECT_EQ(lattice.weight(crown, head, phase + 26, fibre), weight);
    EXPECT_EQ(weight > 0.0, !raw.empty());
    if (raw.empty()) return;
    EXPECT_NEAR(weight, raw[0].weight / 0.9790865, 1e-6);
    sum += raw[0].weight;
    ++count;
    seen_by_class[crown].insert(fibre);
  });
  EXPECT_EQ(count, 166);
  EXPECT_NEAR(sum / count, 0.9790865, 0.5e-7);
  // Face to face both cosines are 1, and the raw weight is 4.
  EXPECT_NEAR(lattice.weight(0, 0, 0, 1), 4.0 / 0.9790865, 1e-6);
  EXPECT_NEAR(lattice.weight(1, 1, 2, 2), 2.892, 0.5e-3);
  // Fibres stand at 0, 60 and, for class 0, 120 degrees, for class 1 at -60 degrees; its heads at
  // -45 and +45 degrees. A head sees up to 60 degrees to each side.
  for (auto const& seen : seen_by_class) EXPECT_EQ(seen, (std::set<unsigned>{1, 2, 3}));
  EXPECT_EQ(lattice.weight(0, 0, 0, 1, 0.25), 0.25 * lattice.weight(0, 0, 0, 1));
  EXPECT_EQ(lattice.weight(0, 0, 0, 4), 0.0);
  EXPECT_EQ(lattice.weight(0, 0, 0, 0), 0.0);
}

TEST(GeometryFlight, MirrorsItsHeadsWhereTheLatticeHasAMirror) {
  // Class 1 has heads at -45 and +45 degrees with fibre 1 between them. The mirror that exchanges
  // them sends phase s to -s, and leaves the faces as they are: those of heads 0 and 1 are half a
  // turn apart, and each site has both.
  Flight const lattice;
  for (unsigned phase = 0; phase < 13; ++phase) {
    EXPECT_NEAR(lattice.weight(1, 0, phase, 1), lattice.weight(1, 1, (13 - phase) % 13, 1), 1e-12);
  }
}

TEST(GeometryFlight, SearchesAllThreeThinFilaments) {
  Flight const lattice;
  FilamentData data = filament_of(lattice);
  for (unsigned site = 0; site < 379; ++site) {
    data.sites[2][site].k_on_factor = 0.5;
    if (site % 3 == 0) data.bound_count[3][site] = 1;
    if (site % 4 == 0) data.sites[1][site].k_on_factor = 0.0;
  }
  for (MyosinHead_s const& head : data.heads) {
    std::vector<BindingSite_s> expected;  // each site looked at in turn
    for (unsigned fibre : {1u, 2u, 3u}) {
      for (unsigned site = 0; site < 379; ++site) {
        double const away = data.x[fibre][site] - data.x[0][head.node];
        double const factor = data.sites[fibre][site].k_on_factor;
        double const weight =
            lattice.weight(head.crown_code / 16, head.crown_code % 16, site, fibre, factor);
        if (std::abs(away) <= 15.0 && data.bound_count[fibre][site] == 0 && weight > 0.0) {
          expected.push_back({weight, site, fibre});
        }
      }
    }
    auto const found = candidates_of(lattice, data, head);
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
      EXPECT_EQ(found[i].weight, expected[i].weight);
      EXPECT_EQ(found[i].site, expected[i].site);
      EXPECT_EQ(found[i].fibre, expected[i].fibre);
    }
  }
}

TEST(GeometryFlight, RefusesFilamentsThatSeeNothing) {
  EXPECT_EXIT((stdout_to_stderr(), Flight({"axial: d_actin_myosin = 1e-3"})),
              testing::ExitedWithCode(1), "geom_flight\\.prm: .*no head can see any site");
}

}  // namespace
