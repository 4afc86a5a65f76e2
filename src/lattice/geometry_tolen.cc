#include "lattice/geometry_tolen.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "base/parameter_file.h"
#include "lattice/geometry_tools.h"
#include "records/filament_data.h"

REGISTER_GEOMETRY(GeometryTolen, "Tolen");

namespace {

constexpr char const* parameter_file = "geom_tolen.prm";

constexpr unsigned thin_filaments = 2;
constexpr unsigned crown_classes = 3;
constexpr unsigned head_numbers = 3;
constexpr double third_of_turn = 2.0943951023931953;
constexpr double degrees25 = 0.4363323129985824;
constexpr double degrees20 = 0.3490658503988659;
constexpr double beyond_limit = -99.0;

}  // namespace

GeometryTolen::GeometryTolen(GeometryParameter_s const&) {
  load_parameters(*this, parameter_file);
  create_umap();
  tabulate_distances();
}

void GeometryTolen::declare_parameters(dealii::ParameterHandler& handler) {
  {
    ParameterSection const myosin(handler, "myosin");
    declare_thick_filament(myosin, "myosin_heads", "49", "14.3", "3.52e3", "50.0");
  }
  {
    ParameterSection const actin(handler, "actin");
    declare_thin_filaments(actin, thin_filaments);
  }
  {
    ParameterSection const numerics(handler, "numerics");
    numerics.declare_double("xamax", "15.0");
    numerics.declare_selection("model", "C4", "C3|C4");
  }
  declare_optional_see(handler);
}

void GeometryTolen::get_parameters(dealii::ParameterHandler& handler) {
  {
    ParameterSection const myosin(handler, "myosin", parameter_file);
    n_myosin_nodes = get_thick_filament(myosin, "myosin_heads");
  }
  {
    ParameterSection const actin(handler, "actin", parameter_file);
    get_thin_filaments(actin, thin_filaments);
  }
  {
    ParameterSection const numerics(handler, "numerics", parameter_file);
    xamax = numerics.length("xamax");
    model_c4 = numerics.text("model") == "C4" ? 1 : 0;
  }
  get_see(handler, parameter_file);
}

// Angles

void GeometryTolen::create_umap() {
  create_head_azimuths();
  for (unsigned fibre = 0; fibre < thin_filaments; ++fibre) {
    for (unsigned crown = 0; crown < crown_classes; ++crown) {
      for (unsigned head = 0; head < head_numbers; ++head) {
        for (unsigned k = 0; k < 3; ++k) {
          double const target = M_PI + crown * third_of_turn / 3.0 + k * third_of_turn;
          if (angular_distance(target, head_azimuth[head][fibre]) < degrees25) {
            umap[fibre][crown][head] = k + 1.0;
          }
        }
      }
    }
  }
  for (unsigned fibre = 0; fibre < thin_filaments; ++fibre) {
    std::printf("Actin %i \n", static_cast<int>(fibre));
    for (unsigned head = 0; head < head_numbers; ++head) {
      for (auto const& crown : umap[fibre]) std::printf("%e ", crown[head]);
      std::printf("\n");
    }
  }
}

void GeometryTolen::create_head_azimuths() {
  for (unsigned head = 0; head < head_numbers; ++head) {
    double const azimuth = head * third_of_turn;
    head_azimuth[head][0] = normalise_angle(azimuth);
    head_azimuth[head][1] = normalise_angle(azimuth + M_PI);
    std::printf("%i %f %f\n", static_cast<int>(head), head_azimuth[head][0], head_azimuth[head][1]);
  }
}

double GeometryTolen::get_actin_angle(unsigned site) const {
  double const n = actin_period;
  if (model_c4 != 0) {
    double const phi = normalise_angle(site % actin_period * (n - 1.0) * -M_PI / n);
    return phi < 0.0 ? phi + 2.0 * M_PI : phi;
  }
  double phi = site / 2 % actin_period * (2.0 * M_PI) / n;
  if (site % 2 == 1) phi += M_PI;
  return phi > 2.0 * M_PI ? phi - 2.0 * M_PI : phi;
}

double GeometryTolen::distance(unsigned head, unsigned site, unsigned fibre) const {
  double const limit = model_c4 != 0 ? degrees25 : degrees20;
  double const found = angular_distance(get_actin_angle(site), head_azimuth[head][fibre - 1]);
  return found < limit ? found : beyond_limit;
}

std::optional<Facing_s> GeometryTolen::facing(MyosinHead_s const& head, unsigned fibre) const {
  unsigned const number = head.number_in_crown();
  unsigned const crown = head.crown_class();
  // The targets of a crown class are azimuths of thin filaments that face it, and so opposite.
  double k = 0.0;
  for (auto const& map : umap) k = std::max(k, map[crown][number] - 1.0);
  double const azimuth = crown * third_of_turn / 3.0 + k * third_of_turn;
  return Facing_s{azimuth, head_azimuth[number][fibre - 1] + M_PI};
}

std::optional<double> GeometryTolen::azimuth_of_site(unsigned site) const {
  return get_actin_angle(site);
}

void GeometryTolen::tabulate_distances() {
  for (unsigned fibre = 1; fibre <= thin_filaments; ++fibre) {
    for (unsigned head = 0; head < head_numbers; ++head) {
      auto& table = distances[fibre - 1][head];
      table.resize(n_actin_nodes);
      for (unsigned site = 0; site < n_actin_nodes; ++site) {
        table[site] = distance(head, site, fibre);
      }
    }
  }
}

void GeometryTolen::get_binding_sites(FilamentData const& data, MyosinHead_s const& head,
                                      std::vector<BindingSite_s>& candidates) const {
  unsigned const number = head.number_in_crown();
  double const centre = data.position(head.fibre)[head.node];
  BindingSite_s best = {2.0 * M_PI, 0, 0};
  for (unsigned fibre = 1; fibre <= thin_filaments; ++fibre) {
    if (!faces(number, head.crown_class(), fibre)) continue;
    auto const& table = distances[fibre - 1][number];
    auto const [first, end] = axial_reach(data.position(fibre), centre, xamax);
    for (unsigned site = first; site < end; ++site) {
      // The first of equals stands.
      if (table[site] >= 0.0 && table[site] < best.weight) best = {table[site], site, fibre};
    }
  }
  if (best.fibre == 0) return;
  candidates.reserve(3);
  auto const& sites = data.sites[best.fibre];
  for (unsigned from_strand : {0u, 2u, 4u}) {
    if (best.site + from_strand < 2) continue;
    unsigned const site = best.site + from_strand - 2;
    if (site >= sites.size() || data.bound_count[best.fibre][site] != 0) continue;
    if (sites[site].k_on_factor > 0.0) candidates.push_back({1.0, site, best.fibre});
  }
}

// Layout

void GeometryTolen::initialize_filament(FilamentData& data) const {
  data.initialize({n_myosin_nodes, n_actin_nodes, n_actin_nodes});
  place_nodes(data.x[0], 1, myosin_offset, dx_myosin);
  for (unsigned fibre = 1; fibre <= thin_filaments; ++fibre) {
    place_nodes(data.x[fibre], 0, 0.0, dx_actin);
  }
  for (unsigned node = 1; node < n_myosin_nodes; ++node) {
    add_crown(data, node, node % crown_classes, {0, 1, 2, 0, 1, 2});
  }
}

// Diagnostics

void GeometryTolen::get_angles(unsigned head, unsigned crown, unsigned site, unsigned fibre,
                               std::vector<BindingSite_s>& out) const {
  if (faces(head, crown, fibre)) out.push_back({distance(head, site, fibre), site, fibre});
}
