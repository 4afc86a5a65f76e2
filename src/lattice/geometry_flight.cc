#include "lattice/geometry_flight.h"

#include <deal.II/base/point.h>

#include <cmath>

#include "base/parameter_file.h"
#include "lattice/geometry_tools.h"
#include "records/filament_data.h"

REGISTER_GEOMETRY(GeometryFlight, "Flight");

namespace {

constexpr char const* parameter_file = "geom_flight.prm";

constexpr unsigned crown_classes = 2;
constexpr unsigned heads_per_crown = 4;
constexpr unsigned thin_filaments = 3;
/// Of the bearing of a site in the steric weight.
constexpr double bearing_factor = 3.0;

/// Centre of a thin filament at distance d, the thick filament's being the origin.
Point2 actin_centre(unsigned fibre, unsigned crown, double d) {
  if (fibre == 1) return {d, 0.0};
  if (fibre == 2) return {0.5000000000000001 * d, 0.8660254037844386 * d};
  if (crown == 0) return {-0.4999999999999998 * d, 0.8660254037844387 * d};
  return {0.4999999999999998 * d, -0.8660254037844387 * d};
}

}  // namespace

GeometryFlight::GeometryFlight(GeometryParameter_s const&) {
  load_parameters(*this, parameter_file);
  weights = StericWeights(
      {actin_period, crown_classes, heads_per_crown, thin_filaments},
      [this](unsigned head, unsigned crown, unsigned site, unsigned fibre,
             std::vector<BindingSite_s>& out) { get_angles(head, crown, site, fibre, out); },
      "Flight", parameter_file);
}

void GeometryFlight::declare_parameters(dealii::ParameterHandler& handler) {
  {
    ParameterSection const myosin(handler, "myosin");
    declare_thick_filament(myosin, "myosin_heads", "49", "14.5", "3.52e3", "50.0");
  }
  {
    ParameterSection const actin(handler, "actin");
    declare_thin_filaments(actin, thin_filaments);
  }
  {
    ParameterSection const axial(handler, "axial");
    axial.declare_double("radius_actin", "3.5");
    axial.declare_double("radius_myosin", "7.0");
    axial.declare_double("d_actin_myosin", "30.0");
  }
  {
    ParameterSection const numerics(handler, "numerics");
    numerics.declare_double("xamax", "15.0");
  }
  declare_optional_see(handler);
}

void GeometryFlight::get_parameters(dealii::ParameterHandler& handler) {
  {
    ParameterSection const myosin(handler, "myosin", parameter_file);
    n_myosin_nodes = get_thick_filament(myosin, "myosin_heads");
  }
  {
    ParameterSection const actin(handler, "actin", parameter_file);
    get_thin_filaments(actin, thin_filaments);
  }
  {
    ParameterSection const axial(handler, "axial", parameter_file);
    radius_actin = axial.length("radius_actin");
    radius_myosin = axial.length("radius_myosin");
    d_actin_myosin = axial.length("d_actin_myosin");
  }
  {
    ParameterSection const numerics(handler, "numerics", parameter_file);
    xamax = numerics.length("xamax");
  }
  get_see(handler, parameter_file);
}

// Steric weights

double GeometryFlight::site_azimuth(unsigned site) const {
  return site % actin_period * 2.0 * M_PI / actin_period;
}

EndOnView_s GeometryFlight::end_on(unsigned head, unsigned crown, unsigned site, unsigned fibre,
                                   unsigned face) const {
  constexpr double head_azimuths[] = {0.0, M_PI_2, 0.0, M_PI_2};
  constexpr double crown_azimuths[] = {0.0, -M_PI_4};
  constexpr double faces[][heads_per_crown] = {{0.0, M_PI, M_PI, 0.0}, {M_PI, 0.0, 0.0, M_PI}};

  Point2 const actin = actin_centre(fibre, crown, d_actin_myosin);
  return {actin[0],
          actin[1],
          site_azimuth(site) + faces[face][head],
          head_azimuths[head] + crown_azimuths[crown],
          {radius_actin, radius_myosin}};
}

void GeometryFlight::get_angles(unsigned head, unsigned crown, unsigned site, unsigned fibre,
                                std::vector<BindingSite_s>& out) const {
  for (unsigned const face : {0u, 1u}) {
    auto const weight = steric_weight(end_on(head, crown, site, fibre, face), bearing_factor);
    if (weight) out.push_back({*weight, site, fibre});
  }
}

double GeometryFlight::weight_bound(FilamentData const& data, MyosinHead_s const& head) const {
  double sum = 0.0;
  for (unsigned fibre = 1; fibre <= thin_filaments; ++fibre) {
    sum +=
        weights.most(head.number_in_crown(), head.crown_class(), fibre, data.most_sites_in_reach);
  }
  return sum;
}

void GeometryFlight::get_binding_sites(FilamentData const& data, MyosinHead_s const& head,
                                       std::vector<BindingSite_s>& candidates) const {
  candidates.reserve(20);
  unsigned const crown = head.crown_class();
  unsigned const number = head.number_in_crown();
  double const centre = data.position(head.fibre)[head.node];
  for (unsigned fibre = 1; fibre <= thin_filaments; ++fibre) {
    auto const [first, end] = axial_reach(data.position(fibre), centre, xamax);
    weights.for_each_seen(number, crown, fibre, first, end, [&](unsigned site, double weight) {
      if (data.bound_count[fibre][site] != 0) return;
      double const k_on_factor = data.sites[fibre][site].k_on_factor;
      if (k_on_factor > 0.0) candidates.push_back({weight * k_on_factor, site, fibre});
    });
  }
}

unsigned GeometryFlight::bound_face(MyosinHead_s const& head) const {
  // A bond is to the face that the head sees; the other is half a turn on.
  return steric_weight(view_of_bond(head, 0), bearing_factor) ? 0 : 1;
}

EndOnView_s GeometryFlight::view_of_bond(MyosinHead_s const& head, unsigned face) const {
  return end_on(head.number_in_crown(), head.crown_class(), head.actin_site, head.actin_fibre,
                face);
}

std::optional<BondEnds_s> GeometryFlight::bond_ends(MyosinHead_s const& head) const {
  unsigned const face = bound_face(head);
  return ends_in_muscle(view_of_bond(head, face), site_azimuth(head.actin_site) + face * M_PI);
}

std::optional<Facing_s> GeometryFlight::facing(MyosinHead_s const& head, unsigned fibre) const {
  return facing_in_muscle(end_on(head.number_in_crown(), head.crown_class(), 0, fibre, 0),
                          site_azimuth(0));
}

std::optional<double> GeometryFlight::azimuth_of_site(unsigned site) const {
  return site_azimuth(site);
}

std::optional<CrossSection_s> GeometryFlight::cross_section() const {
  return CrossSection_s{radius_myosin, radius_actin, d_actin_myosin};
}

// Layout

void GeometryFlight::initialize_filament(FilamentData& data) const {
  data.initialize({n_myosin_nodes, n_actin_nodes, n_actin_nodes, n_actin_nodes});
  place_nodes(data.x[0], 1, myosin_offset, dx_myosin);
  for (unsigned fibre = 1; fibre <= thin_filaments; ++fibre) {
    place_nodes(data.x[fibre], 0, myosin_offset, dx_actin);
  }
  for (unsigned i = 0; i + 1 < n_myosin_nodes; ++i) {
    add_crown(data, i + 1, i % crown_classes, {0, 1, 2, 3});
  }
}

// Diagnostics

void GeometryFlight::get_angles_cached(unsigned head, unsigned crown, unsigned site, unsigned fibre,
                                       std::vector<BindingSite_s>& out, double factor) const {
  double const weight = weights.of(head, crown, site, fibre);
  if (weight > 0.0) out.push_back({weight * factor, site, fibre});
}
