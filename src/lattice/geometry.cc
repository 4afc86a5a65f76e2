#include "lattice/geometry.h"

#include <limits>

#include "base/parameter_file.h"
#include "lattice/geometry_tools.h"
#include "records/filament_data.h"

void Geometry::get_binding_sites(FilamentData const&, MyosinHead_s const&,
                                 std::vector<BindingSite_s>&) const {}

std::optional<BondEnds_s> Geometry::bond_ends(MyosinHead_s const&) const { return std::nullopt; }

std::optional<Facing_s> Geometry::facing(MyosinHead_s const&, unsigned) const {
  return std::nullopt;
}

std::optional<double> Geometry::azimuth_of_site(unsigned) const { return std::nullopt; }

std::optional<CrossSection_s> Geometry::cross_section() const { return std::nullopt; }

double Geometry::weight_bound(FilamentData const&, MyosinHead_s const&) const {
  return std::numeric_limits<double>::infinity();
}

unsigned Geometry::most_sites_in_reach(double spacing) const {
  // One site more than the gaps that fit; the margin covers the rounding of positions.
  double const gaps = spacing > 0.0 ? 2.0 * xamax / spacing * (1.0 + 1e-9) : n_actin_nodes;
  return gaps < n_actin_nodes ? static_cast<unsigned>(gaps) + 1 : n_actin_nodes;
}

void Geometry::n_actin_segments(unsigned, std::vector<unsigned>&) const {}

unsigned Geometry::get_fibre(unsigned, unsigned, unsigned, unsigned) const { return 0; }

unsigned Geometry::get_site(unsigned, unsigned, unsigned, unsigned) const { return 0; }

void Geometry::get_fibre_stiffness(unsigned fibre, double& e_fibre, double& a_fibre) const {
  bool const known = fibre < e.size() && fibre < a.size();
  e_fibre = known ? e[fibre] : 0.0;
  a_fibre = known ? a[fibre] : 0.0;
}

void Geometry::declare_optional_see(dealii::ParameterHandler& handler) {
  ParameterSection const see(handler, "see");
  see.declare_selection("see_stiffness", "", std::string("|") + series_laws);
  see.declare_double("see_damping_factor", "0.0");
}

void Geometry::get_see(dealii::ParameterHandler& handler, std::string const& file_name) {
  parameter_file_name = file_name;
  ParameterSection const see(handler, "see", file_name);
  see_stiffness = see.text("see_stiffness");
  see_damping_factor = see.non_negative("see_damping_factor");
}

void Geometry::declare_thick_filament(ParameterSection const& myosin, std::string const& count_key,
                                      std::string const& count, std::string const& dx,
                                      std::string const& modulus, std::string const& area) {
  myosin.declare_double("myosin_offset", "125.0");
  myosin.declare_integer(count_key, count);
  myosin.declare_double("dx_myosin", dx);
  myosin.declare_double("e_mysoin", modulus);
  myosin.declare_double("a_mysoin", area);
}

unsigned Geometry::get_thick_filament(ParameterSection const& myosin,
                                      std::string const& count_key) {
  myosin_offset = myosin.length("myosin_offset");
  unsigned const count = get_count(myosin, count_key);
  dx_myosin = myosin.length("dx_myosin");
  e.push_back(myosin.positive("e_mysoin"));
  a.push_back(myosin.positive("a_mysoin"));
  return count;
}

void Geometry::declare_thin_filaments(ParameterSection const& actin, unsigned n) {
  actin.declare_double("dx_actin", "2.77");
  actin.declare_double("length_actin", "1050.0");
  actin.declare_integer("actin_period", "13");
  for (unsigned fibre = 1; fibre <= n; ++fibre) {
    actin.declare_double("e_actin" + std::to_string(fibre), "1.27e3");
    actin.declare_double("a_actin" + std::to_string(fibre), "50.4");
  }
}

double Geometry::get_thin_filaments(ParameterSection const& actin, unsigned n) {
  dx_actin = actin.length("dx_actin");
  double const length = get_actin_length(actin);
  actin_period = get_count(actin, "actin_period");
  for (unsigned fibre = 1; fibre <= n; ++fibre) {
    e.push_back(actin.positive("e_actin" + std::to_string(fibre)));
    a.push_back(actin.positive("a_actin" + std::to_string(fibre)));
  }
  return length;
}

double Geometry::get_actin_length(ParameterSection const& actin) {
  double const length = actin.length("length_actin");
  if (!(length / dx_actin >= 2.0 && length / dx_actin < 1e6)) {
    actin.refuse_value("length_actin", "2 to a million times dx_actin");
  }
  n_actin_nodes = static_cast<unsigned>(length / dx_actin);
  return length;
}

unsigned Geometry::get_count(ParameterSection const& section, std::string const& key) {
  unsigned const count = section.count(key, 1);
  if (count > 1000000) section.refuse_value(key, "1 to a million");
  return count;
}

void Geometry::place_nodes(std::valarray<double>& x, unsigned first, double start, double spacing) {
  for (unsigned i = first; i < x.size(); ++i) x[i] = start + (i - first) * spacing;
}

void Geometry::add_crown(FilamentData& data, unsigned node, unsigned crown_class,
                         std::initializer_list<unsigned> head_numbers) {
  for (unsigned const number : head_numbers) {
    data.heads.push_back({node, 0, 0, unbound, unbound, crown_class * 16 + number, 0, 0});
  }
}
