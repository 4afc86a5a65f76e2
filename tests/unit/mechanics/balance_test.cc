// Would catch: a force of chain, bond, titin or series element that does not balance, a tie with
// the wrong factor or partner, a held end that moves, a load or an element counted for the wrong
// number of filaments, force of a pending head, a lever on a protein-C bond.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <utility>

#include "elastic/create_law.h"
#include "support/small_lattice.h"
#include "support/work_dir.h"

namespace {

constexpr auto length = Prescribed::Quantity::length;
constexpr auto force = Prescribed::Quantity::force;

// Equilibrium: no way that is left to the lattice changes its energy by other than the outer work

/// What has a displacement: a knot of a fibre, or the outer end of the series elastic element.
struct Place {
  double at() const { return fibre ? (*fibre)[node] : *end; }
  void move(double h) const {
    fibre ? fibre->move_knot(fibre->knot_before(node), h) : void(*end += h);
  }
  FibreDisplacement* fibre;
  unsigned node;
  double* end;
};

/// Displacements that move together, each with its factor.
using Direction = std::vector<std::pair<Place, double>>;

double square(double x) { return x * x; }

/// The bent law of the test: F(-1) = -1, slope 0.05 to the left and 2.5 to the right.
double bent_energy(double X) {
  double const d = X + 1.0;
  return -d + 0.5 * (d < 0.0 ? 0.05 : 2.5) * square(d);
}

std::set<unsigned> mesh(FilamentData const& data, unsigned fibre) {
  std::set<unsigned> nodes{0, static_cast<unsigned>(data.x[fibre].size()) - 1};
  for (MyosinHead_s const* head : data.attached) {
    if (fibre == 0) nodes.insert(head->node);
    if (fibre == head->actin_fibre) nodes.insert(head->actin_site);
  }
  return nodes;
}

double chain_energy(FilamentData const& data, unsigned fibre) {
  auto const& x = data.x[fibre];
  auto const& u = data.u[fibre];
  double energy = 0.0;
  unsigned a = 0;
  for (unsigned const b : mesh(data, fibre)) {
    if (b > a) energy += 0.5 * SmallLattice::EA[fibre] * square(u[b] - u[a]) / (x[b] - x[a]);
    a = b;
  }
  return energy;
}

double bond_energy(FilamentData const& data, MyosinHead_s const& head, bool bent) {
  if (head.detach_pending == 1) return 0.0;
  auto const at = [&data](unsigned f, unsigned node) { return data.x[f][node] + data.u[f][node]; };
  unsigned const model = head.model_index;
  double const stroke = model < 2 && head.state == 2 ? SmallLattice::strokes[model] : 0.0;
  double const X = at(head.actin_fibre, head.actin_site) - at(0, head.node) + stroke;
  return bent && model == 0 ? bent_energy(X) : 0.5 * SmallLattice::bond_k[model] * square(X);
}

/// Chains, bonds, titin, and the N parallel springs and (for a step of given length) dampers.
double total_energy(SmallLattice& lattice, double extension_before, bool bent) {
  LatticeSettings const& s = lattice.settings;
  double const x = lattice.see.displacement - lattice.filament(0).data.u[1][19];
  double energy = 0.5 * s.filaments *
                  (s.see_stiffness * square(x) +
                   s.see_damping / SmallLattice::step * square(x - extension_before));
  for (unsigned f = 0; f < s.filaments; ++f) {
    FilamentData const& data = lattice.filament(f).data;
    for (unsigned fibre = 0; fibre < 3; ++fibre) energy += chain_energy(data, fibre);
    for (MyosinHead_s const* head : data.attached) energy += bond_energy(data, *head, bent);
    double const titin = data.u[1][19] - data.u[0][6] + SmallLattice::titin_rest;
    energy += 0.5 * s.titin_stiffness * square(titin);
  }
  return energy;
}

/// Bonds on both thin filaments, of all models and states, one pending; no two filaments alike.
void bind_many(SmallLattice& lattice) {
  for (unsigned f = 0; f < lattice.settings.filaments; ++f) {
    lattice.bind(f, 0, 1, 3 + f % 3);
    lattice.bind(f, 4, 2, 6, 2, 1);
    lattice.bind(f, 5, 2, 7 + f % 2, 2);
    lattice.bind(f, 9, 1, 10, 1, 2);
    lattice.bind(f, 11, 2, 11, 2, 2);  // protein-C: its model has a stroke that must not count
    MyosinHead_s& pending = lattice.bind(f, 12, 1, 13, 1, 1);
    pending.detach_pending = 1;
    pending.state = 0;
    if (f % 2 == 0) lattice.bind(f, 15, 1, 15);  // the last thick node
  }
}

/// The points that half-sarcomeres share, from the first actin end (0) over the first middle (1) to
/// the far end. A point moves in space as its nodes do in a half-sarcomere that looks ahead, and
/// against them in a mirrored one. A single half-sarcomere is a row of one.
std::vector<Direction> shared_points(SmallLattice& lattice) {
  unsigned const n = std::max(1u, 2 * lattice.settings.full_sarcomer);
  std::vector<Direction> points(n + 1);
  for (unsigned f = 0; f < lattice.settings.filaments; ++f) {
    auto& u = lattice.filament(f).data.u;
    unsigned const pos = f % n;
    double const sense = pos % 2 == 0 ? 1.0 : -1.0;
    points[pos + 1 - pos % 2].emplace_back(Place{&u[0], 0, nullptr}, sense);
    for (unsigned fibre : {1, 2})
      points[pos + pos % 2].emplace_back(Place{&u[fibre], 19, nullptr}, sense);
  }
  return points;
}

std::vector<Direction> inner_nodes(SmallLattice& lattice) {
  std::vector<Direction> nodes;
  for (unsigned f = 0; f < lattice.settings.filaments; ++f) {
    FilamentData& data = lattice.filament(f).data;
    for (unsigned fibre = 0; fibre < 3; ++fibre) {
      for (unsigned const node : mesh(data, fibre)) {
        if (node != (fibre == 0 ? 0 : 19))
          nodes.push_back({{{&data.u[fibre], node, nullptr}, 1.0}});
      }
    }
  }
  return nodes;
}

struct Case {
  char const* name;
  Prescribed::Quantity quantity;
  LatticeSettings settings;
  bool bent;
};

void PrintTo(Case const& c, std::ostream* os) { *os << c.name; }

class Balance : public testing::TestWithParam<Case> {
 protected:
  Balance() : lattice(GetParam().settings) {
    write_parameters("bent_ThreeLinearForce.prm", "ThreeLinearForce",
                     {"y1 = -6", "t1 = -101", "y2 = -5.95", "T1 = -100", "y3 = -1", "T2 = -1",
                      "y4 = 24", "t3 = 9"});
    if (GetParam().bent) lattice.slow.xb_model = create_elastic_law("ThreeLinearForce", "bent_");
  }

  /// Central differences; forces of 1e-6 pN may be left at each of some places.
  void expect_force(Direction const& direction, double outer_force) {
    auto const energy_at = [&](double h) {
      for (auto const& [place, factor] : direction) place.move(factor * h);
      double const energy = total_energy(lattice, extension_before, GetParam().bent);
      for (auto const& [place, factor] : direction) place.move(-factor * h);
      return energy;
    };
    EXPECT_NEAR((energy_at(1e-3) - energy_at(-1e-3)) / 2e-3, outer_force, 2e-5);
  }

  void expect_at(Direction const& direction, double x) {
    for (auto const& [place, factor] : direction) EXPECT_NEAR(place.at() / factor, x, 1e-6);
  }

  SmallLattice lattice;
  double extension_before = 0.0;
};

// Two steps, so that the second starts from a lattice that is out of place.
TEST_P(Balance, EnergyIsStationaryUnderTheOuterForce) {
  bool const is_length = GetParam().quantity == length;
  bool const is_series = lattice.filaments.is_series();
  SeriesElasticElement& see = lattice.see;
  bind_many(lattice);
  for (double const value : {3.0, -8.0}) {
    extension_before = see.displacement - lattice.filaments.get_last_actin_displacement();
    lattice.solve(GetParam().quantity, value);
    double const target = value + see.initial_displacement;
    for (Direction const& node : inner_nodes(lattice)) expect_force(node, 0.0);
    std::vector<Direction> const points = shared_points(lattice);
    for (Direction const& point : points) expect_at(point, point[0].first.at() / point[0].second);
    expect_at(points.back(), 0.0);
    for (std::size_t i = 1; i + 1 < points.size(); ++i) expect_force(points[i], 0.0);
    Direction const outer_end{{{nullptr, 0, &see.displacement}, 1.0}};
    Direction const& near_end = is_series ? points[0] : outer_end;
    if (is_length) {
      expect_at(near_end, target);
    } else {
      expect_force(near_end, value);
    }
    expect_force(is_series ? outer_end : points[0], 0.0);
  }
}

// Settings: filaments, sarcomeres in series, elastic element, its damping, titin.
INSTANTIATE_TEST_SUITE_P(
    Modes, Balance,
    testing::Values(Case{"length", length, {3, 0, 30, 0, 0}, false},
                    Case{"length_bent", length, {2, 0, 30, 2, 0.6}, true},
                    Case{"force", force, {3, 0, 30, 0, 0.6}, false},
                    Case{"force_bent", force, {2, 0, 30, 2, 0}, true},
                    Case{"series_length", length, {8, 2, 30, 0, 0}, false},
                    Case{"series_length_bent", length, {8, 2, 30, 2, 0.6}, true},
                    Case{"series_force", force, {8, 2, 30, 0, 0.6}, false},
                    Case{"series_force_bent", force, {4, 1, 30, 0, 0}, true}),
    [](auto const& each) { return each.param.name; });

}  // namespace
