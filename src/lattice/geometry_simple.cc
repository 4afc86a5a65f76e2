#include "lattice/geometry_simple.h"

#include "base/parameter_file.h"
#include "lattice/geometry_tools.h"
#include "records/filament_data.h"

REGISTER_GEOMETRY(GeometrySimple, "Simple");

namespace {

constexpr char const* parameter_file = "geom_simple.prm";

}  // namespace

GeometrySimple::GeometrySimple(GeometryParameter_s const&) {
  load_parameters(*this, parameter_file);
}

void GeometrySimple::declare_parameters(dealii::ParameterHandler& handler) {
  {
    ParameterSection const myosin(handler, "myosin");
    declare_thick_filament(myosin, "myosin_heads", "49", "14.3", "3.25e3", "5.0");
  }
  {
    ParameterSection const actin(handler, "actin");
    actin.declare_double("dx_actin", "2.77");
    actin.declare_double("length_actin", "1050.0");
    actin.declare_double("e_actin", "1.27e3");
    actin.declare_double("a_actin", "5.04");
  }
  {
    ParameterSection const numerics(handler, "numerics");
    numerics.declare_double("xamax", "20.0");
  }
  declare_optional_see(handler);
}

void GeometrySimple::get_parameters(dealii::ParameterHandler& handler) {
  {
    ParameterSection const myosin(handler, "myosin", parameter_file);
    n_myosin_nodes = get_thick_filament(myosin, "myosin_heads");
  }
  {
    ParameterSection const actin(handler, "actin", parameter_file);
    dx_actin = actin.length("dx_actin");
    get_actin_length(actin);
    e.push_back(actin.positive("e_actin"));
    a.push_back(actin.positive("a_actin"));
  }
  {
    ParameterSection const numerics(handler, "numerics", parameter_file);
    xamax = numerics.length("xamax");
  }
  get_see(handler, parameter_file);
}

void GeometrySimple::initialize_filament(FilamentData& data) const {
  data.initialize({n_myosin_nodes, n_actin_nodes});
  place_nodes(data.x[0], 1, myosin_offset, dx_myosin);
  place_nodes(data.x[1], 0, myosin_offset, dx_actin);
  for (unsigned node = 1; node < n_myosin_nodes; ++node) add_crown(data, node, 0, {0, 0, 0});
}

double GeometrySimple::weight_bound(FilamentData const& data, MyosinHead_s const&) const {
  return data.most_sites_in_reach;
}

void GeometrySimple::get_binding_sites(FilamentData const& data, MyosinHead_s const& head,
                                       std::vector<BindingSite_s>& candidates) const {
  candidates.reserve(20);
  double const centre = data.position(head.fibre)[head.node];
  auto const [first, end] = axial_reach(data.position(1), centre, xamax);
  for (unsigned site = first; site < end; ++site) {
    double const k_on_factor = data.sites[1][site].k_on_factor;
    if (data.bound_count[1][site] == 0 && k_on_factor > 0.0) {
      candidates.push_back({k_on_factor, site, 1});
    }
  }
}
