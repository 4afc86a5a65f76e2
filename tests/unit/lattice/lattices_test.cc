// Would catch: in any registered lattice a candidate that is missed, out of reach, at an occupied
// or closed site, on a wrong fibre, with a wrong weight or out of order; fibres that begin or end
// at a wrong place, heads on a wrong node, crown or model, a modulus of another fibre; a draw too
// many; a series element that isn't taken over; a size without sense that is taken.

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <tuple>

#include "lattice/geometry_tolen.h"
#include "lattice/geometry_tools.h"
#include "support/expect_refusal.h"
#include "support/lattice.h"
#include "support/scripted_rand.h"
#include "support/table_weight.h"

namespace {

using Candidates = std::vector<std::tuple<unsigned, unsigned, double>>;  // fibre, site, weight

bool is_free(FilamentData const& data, unsigned fibre, unsigned site) {
  return data.bound_count[fibre][site] == 0 && data.sites[fibre][site].k_on_factor > 0.0;
}

bool in_reach(FilamentData const& data, MyosinHead_s const& head, unsigned fibre, unsigned site,
              double xamax) {
  return std::abs(data.position(fibre)[site] - data.position(0)[head.node]) <= xamax;
}

/// Weight that a head gives a free site in reach; 0 where it can't bind.
double weight_simple(Geometry const&, FilamentData const& data, MyosinHead_s const&, unsigned fibre,
                     unsigned site) {
  return data.sites[fibre][site].k_on_factor;
}

double weight_flight(Geometry const& lattice, FilamentData const& data, MyosinHead_s const& head,
                     unsigned fibre, unsigned site) {
  return table_weight(dynamic_cast<GeometryFlight const&>(lattice), head.crown_code / 16,
                      head.crown_code % 16, site, fibre) *
         data.sites[fibre][site].k_on_factor;
}

/// The site's factor gates and does not scale; crowns of class 0 don't look at fibre 2.
double weight_vertebrae(Geometry const& lattice, FilamentData const& data, MyosinHead_s const& head,
                        unsigned fibre, unsigned site) {
  bool const is_kept =
      data.nebulin_limit.empty() || data.x[fibre][site] >= data.nebulin_limit[fibre - 1];
  if (!is_kept || (head.crown_code / 16 == 0 && fibre == 2)) return 0.0;
  return table_weight(dynamic_cast<GeometryVertebrae const&>(lattice), head.crown_code / 16,
                      head.crown_code % 16, site, fibre);
}

/// Each site looked at in turn, without any search.
template <decltype(weight_simple) weight>
Candidates by_weight(Geometry const& lattice, FilamentData const& data, MyosinHead_s const& head,
                     double xamax) {
  Candidates expected;
  for (unsigned fibre = 1; fibre < data.x.size(); ++fibre) {
    for (unsigned site = 0; site < data.x[fibre].size(); ++site) {
      if (!in_reach(data, head, fibre, site, xamax) || !is_free(data, fibre, site)) continue;
      double const w = weight(lattice, data, head, fibre, site);
      if (w > 0.0) expected.emplace_back(fibre, site, w);
    }
  }
  return expected;
}

/// The best site by a sort instead of a walk, taken or not, and its neighbours on the strand.
Candidates by_rank(Geometry const& lattice, FilamentData const& data, MyosinHead_s const& head,
                   double xamax) {
  auto const& tolen = dynamic_cast<GeometryTolen const&>(lattice);
  unsigned const fibre = head.crown_code / 16 == 0 ? 2 : 1;
  double const faced = tolen.get_head_azimuth(head.crown_code % 16, fibre);
  std::vector<std::pair<double, unsigned>> ranking;
  for (unsigned site = 0; site < data.x[fibre].size(); ++site) {
    double const off = angular_distance(tolen.get_actin_angle(site), faced);
    if (in_reach(data, head, fibre, site, xamax)) ranking.emplace_back(off, site);
  }
  std::sort(ranking.begin(), ranking.end());
  bool const is_c3 = std::abs(tolen.get_actin_angle(1) - M_PI) < 1e-9;
  Candidates expected;
  if (ranking.empty() || ranking[0].first > (is_c3 ? 20.0 : 25.0) * M_PI / 180.0) return {};
  int const best = static_cast<int>(ranking[0].second);
  for (int const site : {best - 2, best, best + 2}) {
    bool const exists = site >= 0 && site < static_cast<int>(data.x[fibre].size());
    auto const i = static_cast<unsigned>(site);
    if (exists && is_free(data, fibre, i)) expected.emplace_back(fibre, i, 1.0);
  }
  return expected;
}

struct Shape {
  unsigned crowns, heads_per_crown;
  unsigned crown_classes, first_class, head_numbers;
  unsigned thin_filaments, draws, model_index;
  double dx_myosin, actin_start, xamax;
  std::string see;  ///< default law of the series elastic element
  decltype(by_rank)* expected;
};

/// A new lattice adds its line.
std::map<std::string, Shape> const shapes = {
    {"Simple", {48, 3, 1, 0, 1, 1, 0, 0, 14.3, 125, 20, "", by_weight<weight_simple>}},
    {"Flight", {48, 4, 2, 0, 4, 3, 0, 0, 14.5, 125, 15, "", by_weight<weight_flight>}},
    {"Tolen", {48, 6, 3, 1, 3, 2, 0, 0, 14.3, 0, 15, "", by_rank}},
    {"Vertebrae",
     {50, 3, 3, 0, 3, 2, 50, 1, 14.3, 0, 15, "ConstantStiffness", by_weight<weight_vertebrae>}}};

void expect_nodes(std::valarray<double> const& x, double start, double spacing) {
  for (unsigned i = 0; i < x.size(); ++i) EXPECT_DOUBLE_EQ(x[i], start + i * spacing);
}

TEST(Lattices, LayOutFibresAndHeads) {
  for (auto const& type : Factory<Geometry, GeometryParameter_s>::instance().types()) {
    SCOPED_TRACE(type.first);
    Shape const& shape = shapes.at(type.first);
    // Fibre f has the modulus 10 + f, and the area 2 + f.
    std::string settings = "myosin: e_mysoin=10 a_mysoin=2; actin:";
    for (unsigned f = 1; f <= shape.thin_filaments; ++f) {
      std::string const number = type.first == "Simple" ? "" : std::to_string(f);
      settings += " e_actin" + number + "=1" + std::to_string(f) + " a_actin" + number + '=' +
                  std::to_string(2 + f);
    }
    auto const lattice = make_lattice(type.first, settings);
    ScriptedRand::reset();
    FilamentData const data = filament_of(*lattice);
    EXPECT_EQ(ScriptedRand::draws(), shape.draws);
    EXPECT_EQ(lattice->n_actin_nodes, 379u);
    EXPECT_EQ(lattice->n_myosin_nodes, shape.crowns + 1);
    EXPECT_EQ(data.nebulin_limit.size() + lattice->titin_enabled + lattice->proteinC_enabled, 0u);
    EXPECT_EQ(lattice->see_stiffness, shape.see);
    EXPECT_EQ(lattice->n_actin_chains(), type.first == "Vertebrae" ? 4u : 0u);
    ASSERT_EQ(data.x.size(), shape.thin_filaments + 1);
    ASSERT_EQ(data.x[0].size(), shape.crowns + 1);
    EXPECT_EQ(data.x[0][0], 0.0);
    expect_nodes(data.x[0][std::slice(1, shape.crowns, 1)], 125.0, shape.dx_myosin);
    double e = -1.0, a = -1.0;
    lattice->get_fibre_stiffness(shape.thin_filaments + 1, e, a);
    EXPECT_EQ(e + a, 0.0);
    for (unsigned fibre = 0; fibre < data.x.size(); ++fibre) {
      EXPECT_EQ(lattice->is_actin(fibre), fibre != 0);
      lattice->get_fibre_stiffness(fibre, e, a);
      EXPECT_EQ(e, 10.0 + fibre);
      EXPECT_EQ(a, 2.0 + fibre);
      if (fibre == 0) continue;
      EXPECT_EQ(data.x[fibre].size(), 379u);
      expect_nodes(data.x[fibre], shape.actin_start, 2.77);
    }
    ASSERT_EQ(data.heads.size(), shape.crowns * shape.heads_per_crown);
    for (unsigned i = 0; i < data.heads.size(); ++i) {
      MyosinHead_s const& head = data.heads[i];
      unsigned const crown = i / shape.heads_per_crown;
      EXPECT_EQ(head.node, crown + 1);
      unsigned const crown_class = (crown + shape.first_class) % shape.crown_classes;
      EXPECT_EQ(head.crown_code, crown_class * 16 + i % shape.head_numbers);
      EXPECT_EQ(head.model_index, shape.model_index);
      EXPECT_EQ(head.fibre + head.state + head.detach_pending, 0u);
      EXPECT_EQ(head.actin_site, 99999999u);
      EXPECT_EQ(head.actin_fibre, 99999999u);
    }
  }
}

void expect_candidates(Geometry const& lattice, FilamentData& data, Shape const& shape,
                       double xamax, std::set<unsigned>& fibres) {
  double spacing = std::numeric_limits<double>::infinity();
  for (unsigned fibre = 1; fibre < data.x.size(); ++fibre) {
    for (unsigned i = 1; i < data.x[fibre].size(); ++i) {
      spacing = std::min(spacing, data.position(fibre)[i] - data.position(fibre)[i - 1]);
    }
  }
  data.most_sites_in_reach = lattice.most_sites_in_reach(spacing);
  for (MyosinHead_s const& head : data.heads) {
    std::vector<BindingSite_s> found;
    lattice.get_binding_sites(data, head, found);
    Candidates candidates;
    double sum = 0.0;
    for (BindingSite_s const& c : found) {
      candidates.emplace_back(c.fibre, c.site, c.weight);
      sum += c.weight;
    }
    EXPECT_GE(lattice.weight_bound(data, head), sum);
    ASSERT_EQ(candidates, shape.expected(lattice, data, head, xamax))
        << "head " << head.crown_code << " at node " << head.node;
    for (BindingSite_s const& c : found) fibres.insert(c.fibre);
  }
}

/// Short filaments, so that some heads stand beside their ends, with distances exact in binary, so
/// that some sites lie just at the end of a reach.
std::string const short_filaments =
    "myosin: myosin_offset=80 dx_myosin=16; actin: dx_actin=4 length_actin=400";

TEST(Lattices, OfferEveryFreeSiteInReachInOrder) {
  struct {
    std::string lattice, settings;
  } const cases[] = {{"Simple", ""},
                     {"Simple", short_filaments},
                     {"Flight", ""},
                     {"Flight", short_filaments},
                     {"Tolen", ""},
                     {"Tolen", short_filaments},
                     {"Tolen", "numerics: model=C3"},
                     {"Tolen", "actin: actin_period=7"},  // equal sites in one reach
                     {"Vertebrae", ""},
                     {"Vertebrae", short_filaments},
                     // So thick that crowns of class 0 would find sites on fibre 2.
                     {"Vertebrae", "actin: a_offset=200; axial: radius_actin=12"},
                     {"Vertebrae", "nebulin: nebulinDeficiency=2"}};
  std::set<std::string> lattices;
  for (auto const& c : cases) {
    SCOPED_TRACE(c.lattice + ", " + c.settings);
    lattices.insert(c.lattice);
    Shape const& shape = shapes.at(c.lattice);
    double const xamax = c.settings == short_filaments ? 16.0 : shape.xamax;
    auto const lattice =
        make_lattice(c.lattice, "numerics: xamax=" + std::to_string(xamax) + "; " + c.settings);
    FilamentData data = filament_of(*lattice);
    std::set<unsigned> fibres;
    expect_candidates(*lattice, data, shape, xamax, fibres);
    EXPECT_EQ(fibres.size(), shape.thin_filaments);  // each thin filament is of use to somebody
    // Filaments that have slid and stretched, with sites taken, switched off or less available.
    for (unsigned fibre = 1; fibre < data.x.size(); ++fibre) {
      std::valarray<double> const& x = data.x[fibre];
      auto const displacement = [&](double at) { return 0.004 * (at - 200.0) - 3.0 * fibre; };
      data.u[fibre].move_knot(0, displacement(x[0]));
      data.u[fibre].move_knot(1, displacement(x[x.size() - 1]));
      data.u[fibre].straighten();
      for (unsigned site = 0; site < data.x[fibre].size(); ++site) {
        data.bound_count[fibre][site] = site % 5 == fibre ? 1 : 0;
        data.sites[fibre][site].k_on_factor = site % 7 == 0 ? 0.0 : site % 7 == 1 ? 0.25 : 1.0;
        data.sites[fibre][site].state = 2;  // without a part in it
      }
    }
    if (!data.nebulin_limit.empty()) data.nebulin_limit[0] = data.x[1][100];  // is kept
    expect_candidates(*lattice, data, shape, xamax, fibres);
    for (double const shift : {-90.0, 5000.0, -10000.0}) {  // beside the first sites; far from all
      data.x[0] += shift;
      expect_candidates(*lattice, data, shape, xamax, fibres);
    }
  }
  EXPECT_EQ(lattices.size(), shapes.size());
}

TEST(Lattices, RefuseSizesWithoutSenseAndTakeTheSeriesElement) {
  struct {
    std::string lattices;  // by their initials; a new one chooses its own rows
    std::string settings, message;
  } const cases[] = {
      {"SFTV", "myosin: myosin_offset=0", "section myosin: myosin_offset is '0'"},
      {"SFTV", "myosin: dx_myosin=-14.3", "section myosin: dx_myosin is '-14\\.3'"},
      {"SFTV", "myosin: a_mysoin=0", "a_mysoin is '0'"},
      {"SFTV", "myosin: e_mysoin=nan", "e_mysoin"},
      {"SFTV", "actin: dx_actin=0", "section actin: dx_actin is '0'"},
      {"SFTV", "actin: length_actin=3",
       "length_actin is '3'; accepted: 2 to a million times dx_actin"},
      {"SFTV", "actin: length_actin=inf", "length_actin"},
      {"SFTV", "numerics: xamax=0", "xamax is '0'"},
      {"SFTV", "see: see_damping_factor=-1", "see_damping_factor is '-1'"},
      {"SFTV", "see: see_stiffness=ThreeLinearForce", "ThreeLinearForce"},
      {"SFT", "myosin: myosin_heads=0", "myosin_heads is '0'; accepted: a whole number"},
      {"SFT", "myosin: myosin_heads=2000000000", "accepted: 1 to a million"},
      {"FTV", "actin: actin_period=0", "actin_period is '0'"},
      {"FTV", "actin: actin_period=2000000000", "accepted: 1 to a million"},
      {"FTV", "actin: e_actin2=-1", "e_actin2 is '-1'"},
      {"FV", "axial: radius_actin=-1", "radius_actin is '-1'"},
      {"FV", "axial: d_actin_myosin=1e-3", "no head can see any site"},
      {"V", "myosin: myosin_crowns=-3", "myosin_crowns is '-3'"},
      {"V", "myosin: slowHeads_percent=30 fastHeads_percent=60",
       "slowHeads_percent is '30' and fastHeads_percent '60'"},
      {"V", "protein-C: proteinCIndicator=1 proteinCNumber=13", "proteinCNumber is '13'.*12"}};
  for (auto const& shape : shapes) {
    for (auto const& [lattices, settings, message] : cases) {
      if (lattices.find(shape.first[0]) == std::string::npos) continue;
      expect_refusal([&, &s = settings] { read_lattice(shape.first, s); },
                     parameter_file_of(shape.first) + ".*" + message);
    }
    auto const lattice =
        make_lattice(shape.first, "see: see_stiffness=StiffnessFunction see_damping_factor=2.5");
    EXPECT_EQ(lattice->see_stiffness, "StiffnessFunction");
    EXPECT_EQ(lattice->see_damping_factor, 2.5);
  }
}

// Heads of a crown stand evenly round the thick filament, and every site on one of the thin
// filaments at the corners of a hexagon, to which its head looks.
TEST(Lattices, EndsOfABondStandInOneHexagon) {
  for (auto const& [name, turn] : {std::pair{"Vertebrae", 2 * M_PI / 3}, {"Flight", M_PI / 2}}) {
    auto const lattice = make_lattice(name);
    FilamentData data = filament_of(*lattice);
    std::map<unsigned, double> phases;  // azimuths of a crown class, whole turns left out
    for (unsigned i = 0; i < 60; ++i) {
      MyosinHead_s& head = data.heads[i];
      std::vector<BindingSite_s> seen;
      lattice->get_binding_sites(data, head, seen);
      for (BindingSite_s const& candidate : seen) {
        head.actin_fibre = candidate.fibre;
        head.actin_site = candidate.site;
        BondEnds_s const ends = *lattice->bond_ends(head);
        double const azimuth = std::atan2(ends.head_z, ends.head_y);
        double const phase = phases.try_emplace(head.crown_class(), azimuth).first->second;
        EXPECT_NEAR(std::remainder(azimuth - phase, turn), 0.0, 1e-9);
        double const corner =
            std::round(std::atan2(ends.site_z, ends.site_y) * 3 / M_PI) * M_PI / 3;
        EXPECT_NEAR(
            std::hypot(ends.site_y - 30 * std::cos(corner), ends.site_z - 30 * std::sin(corner)),
            3.5, 1e-9);
        EXPECT_LT(angular_distance(corner, azimuth), M_PI / 2);
        Facing_s const facing = *lattice->facing(head, head.actin_fibre);
        EXPECT_NEAR(angular_distance(facing.azimuth, azimuth), 0.0, 1e-9);
        EXPECT_NEAR(angular_distance(facing.bearing, corner), 0.0, 1e-9);
        double const face =
            *lattice->azimuth_of_site(head.actin_site) + lattice->bound_face(head) * M_PI;
        EXPECT_NEAR(30 * std::sin(corner) + 3.5 * std::sin(face), ends.site_z, 1e-9);
      }
    }
  }
  EXPECT_FALSE(make_lattice("Tolen")->bond_ends({}));
}

// Three pairs of heads a third of a turn apart, each within 25 degrees of the corner of the hexagon
// on which stands the thin filament that it is offered; this one's other images are at every other
// corner.
TEST(Lattices, HeadsOfTolenFaceTheCornersOfAHexagon) {
  auto const lattice = make_lattice("Tolen");
  FilamentData data = filament_of(*lattice);
  std::map<unsigned, std::set<long>> corners;
  for (unsigned i = 0; i < 36; ++i) {
    MyosinHead_s const& head = data.heads[i];
    double const phase = lattice->facing(data.heads[i / 6 * 6], 1)->azimuth;
    double const azimuth = lattice->facing(head, 1)->azimuth;
    EXPECT_NEAR(std::remainder(azimuth - phase, 2 * M_PI / 3), 0.0, 1e-9);
    std::vector<BindingSite_s> seen;
    lattice->get_binding_sites(data, head, seen);
    for (BindingSite_s const& site : seen) {
      double const bearing = lattice->facing(head, site.fibre)->bearing;
      EXPECT_LT(angular_distance(bearing, azimuth), 25 * M_PI / 180);
      corners[site.fibre].insert(std::lround(normalise_angle(bearing - 0.1) * 3 / M_PI));
    }
  }
  EXPECT_EQ(corners[1], (std::set<long>{-1, 1, 3}));
  EXPECT_EQ(corners[2], (std::set<long>{-2, 0, 2}));
}

}  // namespace
