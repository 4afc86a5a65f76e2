// Would catch: a derived length with a wrong end, nebulin limits off their distributions, random
// draws in another order, protein-C on the wrong crowns, a chain with sites of another strand.

#include <cmath>
#include <set>

#include "support/lattice.h"
#include "support/scripted_rand.h"

namespace {

FilamentData filament(std::string const& settings = "") {
  return filament_of(*make_lattice("Vertebrae", settings));
}

TEST(GeometryVertebrae, LengthsBetweenItsEnds) {
  auto const lattice = make_lattice("Vertebrae", "actin: a_offset=30; titin: titin_length=2");
  for (unsigned fibre : {1u, 2u}) EXPECT_EQ(filament_of(*lattice).x[fibre][0], 30.0);
  EXPECT_DOUBLE_EQ(lattice->actin_end, 1080.0);
  EXPECT_DOUBLE_EQ(lattice->titin_extension, 1080.0 - 825.7 - 2.0);
  EXPECT_DOUBLE_EQ(lattice->myosin_stiffness, 3.52e3 * 50.0 / 825.7);
}

double const full_length = 2.77 * 379;

TEST(GeometryVertebrae, NebulinLimitsFollowTheirDistributions) {
  double const tail = std::exp(-full_length / 134.0);
  // 1, exponential: the lost part is 134 ln((1 - r) / (exp(-L/134) + r)), all at r = 0, never below
  // 0. 2: lengths from 562.4 with a density that grows linearly, the square root of r.
  struct {
    int kind;
    double variate, lost;
  } const cases[] = {{1, 0.0, full_length},
                     {1, 0.25, 134.0 * std::log(0.75 / (tail + 0.25))},
                     {1, 0.75, 0.0},
                     {1, 1.0, 0.0},
                     {2, 0.25, (full_length - 562.4) / 2.0},
                     {2, 1.0, 0.0},
                     {3, 0.5, full_length}};
  for (auto const& c : cases) {
    ScriptedRand::script({c.variate, 1.0});
    auto const data =
        filament("actin: a_offset=30; nebulin: nebulinDeficiency=" + std::to_string(c.kind));
    EXPECT_NEAR(data.nebulin_limit.at(0), 30.0 + c.lost, 1e-5) << c.kind << ' ' << c.variate;
  }
}

TEST(GeometryVertebrae, DrawsLengthsFirstThenOncePerCrown) {
  std::vector<double> variates = {0.9, 0.1};
  for (int i = 0; i < 50; ++i) variates.push_back(i % 7 == 0 ? 0.2999 : 0.3001);
  ScriptedRand::script(variates);
  FilamentData const data =
      filament("nebulin: nebulinDeficiency=2; myosin: slowHeads_percent=30 fastHeads_percent=70");
  EXPECT_EQ(ScriptedRand::draws(), 52u);
  EXPECT_LT(data.nebulin_limit.at(0), data.nebulin_limit.at(1));  // fibre 1 has drawn 0.9
  for (unsigned i = 0; i < 150; ++i) EXPECT_EQ(data.heads[i].model_index, i / 3 % 7 == 0 ? 0u : 1u);
  ScriptedRand::script({0.0});  // a draw equal to the share, here 0, still gives slow heads
  EXPECT_EQ(filament().heads[2].model_index, 0u);
}

TEST(GeometryVertebrae, ProteinCSitsBehindTheHeadsOfEveryThirdCrown) {
  // The default 7 crowns from crown 15 on, and as many as there is room for.
  for (unsigned const n : {7u, 12u}) {
    ScriptedRand::reset();
    FilamentData const data =
        filament("protein-C: proteinCIndicator=1 proteinCNumber=" + std::to_string(n));
    EXPECT_EQ(ScriptedRand::draws(), 50u);
    ASSERT_EQ(data.heads.size(), 150 + 3 * n);
    unsigned next = 0;
    for (unsigned crown = 0; crown < 50; ++crown) {
      bool const carries = crown >= 15 && crown < 15 + 3 * n && crown % 3 == 0;
      for (unsigned record = 0; record < (carries ? 6 : 3); ++record, ++next) {
        MyosinHead_s const& head = data.heads[next];
        EXPECT_EQ(head.node, crown + 1);
        EXPECT_EQ(head.crown_code, crown % 3 * 16 + (carries ? record / 2 : record));
        EXPECT_EQ(head.model_index, carries && record % 2 == 1 ? 2u : 1u);
        EXPECT_EQ(head.actin_site, 99999999u);
      }
    }
  }
  filament("protein-C: proteinCNumber=13");  // too many, but not enabled
}

TEST(GeometryVertebrae, ChainsAreTheTwoStrandsOfEachThinFilament) {
  auto const lattice = make_lattice("Vertebrae");
  std::vector<unsigned> segments(4, 0);
  lattice->n_actin_segments(10, segments);
  EXPECT_EQ(segments, (std::vector<unsigned>{19, 19, 19, 19}));
  lattice->n_actin_segments(27, segments);  // 190 even sites, 189 = 7 * 27 odd ones
  EXPECT_EQ(segments, (std::vector<unsigned>{8, 7, 8, 7}));
  for (unsigned chain = 0; chain < 4; ++chain) {
    // Place after place on every second site.
    for (unsigned place = 0; place < 27 * segments[chain]; ++place) {
      EXPECT_EQ(lattice->get_fibre(27, chain, place / 27, place % 27), chain / 2 + 1);
      EXPECT_EQ(lattice->get_site(27, chain, place / 27, place % 27), 2 * place + chain % 2);
    }
  }
}

}  // namespace
