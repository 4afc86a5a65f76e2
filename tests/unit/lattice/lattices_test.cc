// Would catch: in any registered lattice a candidate out of reach, at an occupied or closed site,
// on a fibre that isn't actin, twice, without weight, or out of order; a head on a node that isn't
// there; fibres that don't ascend; a lattice that can't do without the law of a series element.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "support/lattice_records.h"
#include "support/work_dir.h"
#include "support/scripted_rand.h"
#include "support/stdout_to_stderr.h"

namespace {

using Lattices = Factory<Geometry, GeometryParameter_s>;

struct Shape {
  std::string file;
  unsigned fibres;
  unsigned heads_per_crown;
  unsigned crown_classes;
  double xamax;
  double beyond;  ///< how far behind the reach a candidate may lie [nm]
  unsigned draws_per_filament;
  std::string see;  ///< default law of the series elastic element
};

/// A new lattice adds its line.
std::map<std::string, Shape> const shapes = {
    {"Simple", {"geom_simple.prm", 2, 3, 1, 20.0, 0.0, 0, ""}},
    {"Vertebrae", {"geom_vertebrae.prm", 3, 3, 3, 15.0, 0.0, 50, "ConstantStiffness"}},
    {"Flight", {"geom_flight.prm", 4, 4, 2, 15.0, 0.0, 0, ""}},
    {"Tolen", {"geom_tolen.prm", 3, 6, 3, 15.0, 2 * 2.77, 0, ""}}};

class AllLattices : public testing::TestWithParam<std::string> {
 protected:
  Shape const& shape() const { return shapes.at(GetParam()); }
  std::unique_ptr<Geometry> lattice(std::vector<std::string> const& settings = {}) const {
    write_settings(shape().file, settings);
    testing::internal::CaptureStdout();
    std::unique_ptr<Geometry> made(Lattices::instance().create_type(GetParam(), {}));
    testing::internal::GetCapturedStdout();
    return made;
  }
};

TEST_P(AllLattices, LaysOutFibresAndHeads) {
  auto const made = lattice();
  ScriptedRand::reset();
  FilamentData const data = filament_of(*made);
  EXPECT_EQ(ScriptedRand::draws(), shape().draws_per_filament);
  ASSERT_EQ(data.x.size(), shape().fibres);
  EXPECT_EQ(made->n_actin_nodes, 379u);
  EXPECT_EQ(data.nebulin_limit.size() + made->titin_enabled + made->proteinC_enabled, 0u);
  for (unsigned fibre = 0; fibre < shape().fibres; ++fibre) {
    EXPECT_EQ(made->is_actin(fibre), fibre != 0);
    auto const& x = data.x[fibre];
    EXPECT_EQ(x.size(), fibre == 0 ? made->n_myosin_nodes : made->n_actin_nodes);
    EXPECT_TRUE(std::is_sorted(std::begin(x), std::end(x)));
    EXPECT_TRUE((data.position[fibre] == x).min());
    double e = 0.0, a = 0.0;
    made->get_fibre_stiffness(fibre, e, a);
    EXPECT_GT(e * a, 0.0);
  }
  double e = -1.0, a = -1.0;
  made->get_fibre_stiffness(shape().fibres, e, a);
  EXPECT_EQ(e + a, 0.0);
  unsigned const heads = shape().heads_per_crown;
  ASSERT_EQ(data.heads.size(), (made->n_myosin_nodes - 1) * heads);
  for (unsigned i = 0; i < data.heads.size(); ++i) {
    MyosinHead_s const& head = data.heads[i];
    EXPECT_EQ(head.node, i / heads + 1);
    EXPECT_LT(head.crown_class(), shape().crown_classes);
    EXPECT_EQ(head.fibre + head.state + head.detach_pending, 0u);
    EXPECT_EQ(head.actin_site, unbound);
    EXPECT_EQ(head.actin_fibre, unbound);
  }
}

TEST_P(AllLattices, OffersFreeSitesInReachInOrder) {
  auto const made = lattice();
  FilamentData data = filament_of(*made);
  // Filaments that have slid and stretched, with sites taken and sites switched off.
  for (unsigned fibre = 1; fibre < shape().fibres; ++fibre) {
    data.position[fibre] += 0.004 * (data.x[fibre] - 200.0) - 3.0 * fibre;
    for (unsigned site = fibre; site < 379; site += 5) data.bound_count[fibre][site] = 1;
    for (unsigned site = 0; site < 379; site += 7) data.sites[fibre][site].k_on_factor = 0.0;
  }
  std::size_t offered = 0;
  std::set<unsigned> fibres;
  for (MyosinHead_s const& head : data.heads) {
    auto const candidates = candidates_of(*made, data, head);
    std::pair<unsigned, unsigned> last = {0, 0};
    for (BindingSite_s const& c : candidates) {
      ASSERT_TRUE(c.fibre < shape().fibres && made->is_actin(c.fibre));
      ASSERT_LT(c.site, 379u);
      EXPECT_EQ(data.bound_count[c.fibre][c.site], 0u);
      EXPECT_GT(data.sites[c.fibre][c.site].k_on_factor, 0.0);
      EXPECT_TRUE(std::isfinite(c.weight) && c.weight > 0.0);
      double const away = data.position[c.fibre][c.site] - data.position[0][head.node];
      EXPECT_LE(std::abs(away), shape().xamax + 1.004 * shape().beyond);
      std::pair<unsigned, unsigned> const place = {c.fibre, c.site};
      EXPECT_LT(last, place) << "head " << head.crown_code << " at node " << head.node;
      last = place;
      fibres.insert(c.fibre);
    }
    offered += candidates.size();
  }
  EXPECT_GT(offered, 100u);
  EXPECT_EQ(fibres.size(), shape().fibres - 1);  // each thin filament is of use to somebody
}

TEST_P(AllLattices, FindNothingFarFromAllSites) {
  auto const made = lattice();
  FilamentData data = filament_of(*made);
  for (double const shift : {5000.0, -10000.0}) {
    data.position[0] += shift;
    EXPECT_TRUE(candidates_of(*made, data, data.heads.back()).empty());
  }
}

TEST_P(AllLattices, WriteTheirDefaultsWhereTheFileIsMissing) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  std::unique_ptr<Geometry> const made(Lattices::instance().create_type(GetParam(), {}));
  std::unique_ptr<Geometry> const again(Lattices::instance().create_type(GetParam(), {}));
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "tavelo: warning: parameter file " + shape().file +
                " was missing; it is written with the default values, which are used\n");
  EXPECT_EQ(again->n_actin_nodes, made->n_actin_nodes);
  EXPECT_EQ(again->see_stiffness, shape().see);
}

TEST_P(AllLattices, TakeTheSeriesElementFromTheirFile) {
  EXPECT_EQ(lattice()->see_stiffness, shape().see);
  auto const made =
      lattice({"see: see_stiffness = StiffnessFunction", "see: see_damping_factor = 2.5"});
  EXPECT_EQ(made->see_stiffness, "StiffnessFunction");
  EXPECT_EQ(made->see_damping_factor, 2.5);
}

TEST_P(AllLattices, RefuseSizesWithoutSense) {
  std::vector<std::pair<std::string, std::string>> cases = {
      {"myosin: myosin_offset = 0", "section myosin: myosin_offset is '0'"},
      {"myosin: dx_myosin = -14.3", "section myosin: dx_myosin is '-14\\.3'"},
      {"myosin: a_mysoin = 0", "a_mysoin is '0'"},
      {"myosin: e_mysoin = nan", "e_mysoin"},
      {"actin: dx_actin = 0", "section actin: dx_actin is '0'"},
      {"actin: length_actin = 3", "length_actin is '3'; accepted: 2 to a million times dx_actin"},
      {"actin: length_actin = inf", "length_actin"},
      {"numerics: xamax = 0", "xamax is '0'"},
      {"see: see_damping_factor = -1", "see_damping_factor is '-1'"},
      {"see: see_stiffness = ThreeLinearForce", "ThreeLinearForce"}};
  if (GetParam() != "Vertebrae") {
    cases.emplace_back("myosin: myosin_heads = 0", "myosin_heads is '0'; accepted: a whole number");
    cases.emplace_back("myosin: myosin_heads = 2000000000", "accepted: 1 to a million");
  }
  if (GetParam() != "Simple") {
    cases.emplace_back("actin: actin_period = 0", "actin_period is '0'");
    cases.emplace_back("actin: actin_period = 2000000000", "accepted: 1 to a million");
    cases.emplace_back("actin: e_actin2 = -1", "e_actin2 is '-1'");
  }
  for (auto const& [setting, message] : cases) {
    EXPECT_EXIT((stdout_to_stderr(), lattice({setting})), testing::ExitedWithCode(1),
                shape().file + ".*" + message)
        << setting;
  }
}

std::vector<std::string> registered_names() {
  std::vector<std::string> names;
  for (auto const& type : Lattices::instance().types()) names.push_back(type.first);
  return names;
}

INSTANTIATE_TEST_SUITE_P(Family, AllLattices, testing::ValuesIn(registered_names()),
                         [](auto const& name) { return name.param; });

}  // namespace
