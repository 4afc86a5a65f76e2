#include "lattice/geometry_vertebrae.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "base/diagnostics.h"
#include "base/parameter_file.h"
#include "base/run_state.h"
#include "base/uniform_variate.h"
#include "lattice/geometry_tools.h"
#include "records/filament_data.h"

REGISTER_GEOMETRY(GeometryVertebrae, "Vertebrae");

namespace {

constexpr char const* parameter_file = "geom_vertebrae.prm";

constexpr unsigned crown_classes = 3;
constexpr unsigned heads_per_crown = 3;
constexpr unsigned thin_filaments = 2;

/// Heads of the first crown class see one thin filament only.
unsigned last_seen_fibre(unsigned crown) { return crown == 0 ? 1 : thin_filaments; }

/// Crowns that can carry protein-C: those of class 0 from the start position on.
unsigned qualifying_crowns(unsigned n_crowns, unsigned start) {
  unsigned const first = (start + crown_classes - 1) / crown_classes;
  unsigned const end = (n_crowns + crown_classes - 1) / crown_classes;
  return end > first ? end - first : 0;
}

}  // namespace

GeometryVertebrae::GeometryVertebrae(GeometryParameter_s const&) {
  load_parameters(*this, parameter_file);
  weights = StericWeights(
      {2 * actin_period, crown_classes, heads_per_crown, thin_filaments},
      [this](unsigned head, unsigned crown, unsigned site, unsigned fibre,
             std::vector<BindingSite_s>& out) { get_angles(head, crown, site, fibre, out); },
      "Vertebrae", parameter_file);
  WriteToTaveloOutput();
}

void GeometryVertebrae::declare_parameters(dealii::ParameterHandler& handler) {
  {
    ParameterSection const myosin(handler, "myosin");
    declare_thick_filament(myosin, "myosin_crowns", "50", "14.3", "3.52e3", "50.0");
    myosin.declare_double("slowHeads_percent", "0");
    myosin.declare_double("fastHeads_percent", "100");
  }
  {
    ParameterSection const actin(handler, "actin");
    declare_thin_filaments(actin, thin_filaments);
    actin.declare_double("a_offset", "0.0");
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
  {
    ParameterSection const nebulin(handler, "nebulin");
    nebulin.declare_integer("nebulinDeficiency", "0");
  }
  {
    ParameterSection const titin(handler, "titin");
    titin.declare_integer("titin_enabled", "0");
    titin.declare_selection("titin_stiffness", "ConstantStiffness", series_laws);
    titin.declare_double("titin_length", "1.0");
  }
  {
    ParameterSection const see(handler, "see");
    see.declare_selection("see_stiffness", "ConstantStiffness", series_laws);
    see.declare_double("see_damping_factor", "0.0");
  }
  {
    ParameterSection const proteinC(handler, "protein-C");
    proteinC.declare_integer("proteinCIndicator", "0");
    proteinC.declare_integer("proteinCStartPosition", "15");
    proteinC.declare_integer("proteinCNumber", "7");
  }
}

void GeometryVertebrae::get_parameters(dealii::ParameterHandler& handler) {
  get_myosin_parameters(handler);
  get_actin_parameters(handler);
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
  {
    ParameterSection const nebulin(handler, "nebulin", parameter_file);
    nebulinDeficiency = static_cast<unsigned>(nebulin.integer("nebulinDeficiency"));
  }
  {
    ParameterSection const titin(handler, "titin", parameter_file);
    titin_enabled = static_cast<unsigned>(titin.integer("titin_enabled"));
    titin_stiffness = titin.text("titin_stiffness");
    titin_length = titin.length("titin_length");
  }
  get_see(handler, parameter_file);
  get_proteinC_parameters(handler);

  double const last_crown = (n_myosin_nodes - 2) * dx_myosin + myosin_offset;
  titin_extension = actin_end - (titin_length + last_crown);
  myosin_stiffness = e[0] * a[0] / last_crown;
}

void GeometryVertebrae::get_myosin_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const myosin(handler, "myosin", parameter_file);
  n_myosin_nodes = get_thick_filament(myosin, "myosin_crowns") + 1;
  slow_percent = myosin.number("slowHeads_percent");
  fast_percent = myosin.number("fastHeads_percent");
  if (slow_percent + fast_percent != 100.0) {
    stop_with_message("Error: sum of slow and fast myosin heads must be equal to 100 [%]",
                      std::string(parameter_file) + ", section myosin: slowHeads_percent is '" +
                          shown(slow_percent) + "' and fastHeads_percent '" + shown(fast_percent) +
                          "'");
  }
  myosin.non_negative("slowHeads_percent");
  myosin.non_negative("fastHeads_percent");
  slow_fraction = slow_percent / 100.0;
}

void GeometryVertebrae::get_actin_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const actin(handler, "actin", parameter_file);
  double const length = get_thin_filaments(actin, thin_filaments);
  a_offset = actin.between("a_offset", -1e6, 1e6);
  actin_end = length + a_offset;
}

void GeometryVertebrae::get_proteinC_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const proteinC(handler, "protein-C", parameter_file);
  proteinC_enabled = static_cast<unsigned>(proteinC.integer("proteinCIndicator"));
  proteinCStartPosition = proteinC.count("proteinCStartPosition");
  proteinCNumber = proteinC.count("proteinCNumber");
  unsigned const fitting = qualifying_crowns(n_myosin_nodes - 1, proteinCStartPosition);
  if (proteinC_enabled != 0 && proteinCNumber > fitting) {
    proteinC.refuse_value("proteinCNumber",
                          "at most " + std::to_string(fitting) +
                              ", the number of every third crown from proteinCStartPosition on");
  }
}

// Steric weights

double GeometryVertebrae::get_actin_angle(unsigned site) const {
  double const dphi = M_PI / actin_period;
  double angle = site % (2 * actin_period) * dphi - dphi;
  if (site % 2 == 0) angle += dphi + M_PI;
  if (angle > 2.0 * M_PI) angle -= 2.0 * M_PI;
  return angle;
}

EndOnView_s GeometryVertebrae::end_on(unsigned head, unsigned crown, unsigned site,
                                      unsigned fibre) const {
  constexpr double head_angles[] = {3.141592653589793, 1.0471975511965976, 5.235987755982989};
  constexpr double crown_azimuths[] = {0.0, 0.6981317007977318, -0.6981317007977318};

  double const d = d_actin_myosin;
  double actin_x = fibre == 1 ? d : 0.5000000000000001 * d;
  double actin_y = fibre == 1 ? 0.0 : 0.8660254037844386 * d;
  unsigned facing = head;
  if (crown == 2) {
    // The third class sees fibre 2 mirrored, with its heads one place on.
    if (fibre != 1) actin_y = -actin_y;
    facing = (head + 1) % heads_per_crown;
  }
  return {actin_x,
          actin_y,
          get_actin_angle(site) + head_angles[facing],
          crown_azimuths[crown],
          {radius_actin, radius_myosin}};
}

void GeometryVertebrae::get_angles(unsigned head, unsigned crown, unsigned site, unsigned fibre,
                                   std::vector<BindingSite_s>& out) const {
  auto const weight = steric_weight(end_on(head, crown, site, fibre), 3.95);
  if (weight) out.push_back({*weight, site, fibre});
}

double GeometryVertebrae::weight_bound(FilamentData const& data, MyosinHead_s const& head) const {
  unsigned const crown = head.crown_class();
  double sum = 0.0;
  for (unsigned fibre = 1; fibre <= last_seen_fibre(crown); ++fibre) {
    sum += weights.most(head.number_in_crown(), crown, fibre, data.most_sites_in_reach);
  }
  return sum;
}

void GeometryVertebrae::get_binding_sites(FilamentData const& data, MyosinHead_s const& head,
                                          std::vector<BindingSite_s>& candidates) const {
  candidates.reserve(20);
  unsigned const crown = head.crown_class();
  unsigned const number = head.number_in_crown();
  double const centre = data.position(head.fibre)[head.node];
  for (unsigned fibre = 1; fibre <= last_seen_fibre(crown); ++fibre) {
    auto [first, end] = axial_reach(data.position(fibre), centre, xamax);
    if (nebulinDeficiency != 0) {
      first = std::max(first, first_not_below(data.x[fibre], data.nebulin_limit[fibre - 1]));
    }
    weights.for_each_seen(number, crown, fibre, first, end, [&](unsigned site, double weight) {
      bool const is_free = data.bound_count[fibre][site] == 0;
      if (is_free && data.sites[fibre][site].k_on_factor > 0.0)
        candidates.push_back({weight, site, fibre});
    });
  }
}

std::optional<BondEnds_s> GeometryVertebrae::bond_ends(MyosinHead_s const& head) const {
  EndOnView_s const view =
      end_on(head.number_in_crown(), head.crown_class(), head.actin_site, head.actin_fibre);
  return ends_in_muscle(view, get_actin_angle(head.actin_site));
}

std::optional<Facing_s> GeometryVertebrae::facing(MyosinHead_s const& head, unsigned fibre) const {
  return facing_in_muscle(end_on(head.number_in_crown(), head.crown_class(), 0, fibre),
                          get_actin_angle(0));
}

std::optional<double> GeometryVertebrae::azimuth_of_site(unsigned site) const {
  return get_actin_angle(site);
}

std::optional<CrossSection_s> GeometryVertebrae::cross_section() const {
  return CrossSection_s{radius_myosin, radius_actin, d_actin_myosin};
}

// Layout

void GeometryVertebrae::initialize_filament(FilamentData& data) const {
  data.initialize({n_myosin_nodes, n_actin_nodes, n_actin_nodes});
  place_nodes(data.x[0], 1, myosin_offset, dx_myosin);
  for (unsigned fibre = 1; fibre <= thin_filaments; ++fibre)
    place_nodes(data.x[fibre], 0, a_offset, dx_actin);
  if (nebulinDeficiency != 0) {
    double const longest = dx_actin * n_actin_nodes;
    for (unsigned fibre = 1; fibre <= thin_filaments; ++fibre) {
      data.nebulin_limit.push_back(longest - draw_actin_length() + a_offset);
    }
  }
  initialize_heads(data);
}

double GeometryVertebrae::draw_actin_length() const {
  double const longest = dx_actin * n_actin_nodes;
  double const r = uniform_variate();
  if (nebulinDeficiency == 1) {
    // Exponential distribution of the lost length, cut at the full length.
    constexpr double decay = 0.134;  // um
    double const quotient = (std::exp(-(longest / 1000.0) / decay) + r) / (1.0 - r);
    return std::min(std::log(quotient) * -decay * -1000.0 + longest, longest);
  }
  if (nebulinDeficiency == 2) return (longest - 562.4) * std::sqrt(r) + 562.4;
  return 0.0;
}

unsigned GeometryVertebrae::n_heads() const {
  unsigned const crowns = n_myosin_nodes + (proteinC_enabled != 0 ? proteinCNumber : 0);
  return crowns * heads_per_crown - heads_per_crown;
}

void GeometryVertebrae::initialize_heads(FilamentData& data) const {
  data.heads.assign(n_heads(), MyosinHead_s{});
  auto next = data.heads.begin();
  unsigned proteinC_left = proteinCNumber * heads_per_crown;
  for (unsigned i = 0; i + 1 < n_myosin_nodes; ++i) {
    // One draw a crown: all its heads are of one kind.
    HeadKind const kind = slow_fraction >= uniform_variate() ? HeadKind::slow : HeadKind::fast;
    unsigned const crown = i % crown_classes;
    bool const carries_proteinC = proteinC_enabled != 0 && i >= proteinCStartPosition && crown == 0;
    for (unsigned h = 0; h < heads_per_crown; ++h) {
      MyosinHead_s head = {i + 1, 0, 0, unbound, unbound, crown * 16 + h, 0, 0};
      head.set_kind(kind);
      *next++ = head;
      if (!carries_proteinC || proteinC_left == 0) continue;
      --proteinC_left;
      head.set_kind(HeadKind::protein_c);
      *next++ = head;
    }
  }
}

// Regulated chains

void GeometryVertebrae::n_actin_segments(unsigned segment_size,
                                         std::vector<unsigned>& segments) const {
  unsigned const even = (n_actin_nodes + 1) / 2;
  unsigned const odd = n_actin_nodes / 2;
  auto const segments_of = [&](unsigned sites) {
    return (sites + segment_size - 1) / segment_size;
  };
  segments = {segments_of(even), segments_of(odd), segments_of(even), segments_of(odd)};
}

unsigned GeometryVertebrae::get_fibre(unsigned, unsigned chain, unsigned, unsigned) const {
  return chain < 2 ? 1 : 2;
}

unsigned GeometryVertebrae::get_site(unsigned segment_size, unsigned chain, unsigned segment,
                                     unsigned index) const {
  return 2 * (index + segment * segment_size) + chain % 2;
}

// Listing

void GeometryVertebrae::WriteToTaveloOutput() const {
  FILE* const f = fOutputFile;
  auto const number = [f](char const* label, double value) {
    std::fprintf(f, "%s%15.10lf\n", label, value);
  };
  auto const integer = [f](char const* label, unsigned value) {
    std::fprintf(f, "%s%d\n", label, static_cast<int>(value));
  };
  auto const line = [f](char const* text) { std::fprintf(f, "%s\n", text); };

  line("\t*** Geometry VERTEBRAE ***************\n");
  line("\t\tMyosin");
  number("\tmyosin_offset:\t\t", myosin_offset);
  integer("\tmyosin_crowns:\t\t\t", n_myosin_nodes);
  number("\tdx_myosin:\t\t\t", dx_myosin);
  number("\te_mysoin:\t\t\t", e[0]);
  number("\ta_mysoin:\t\t\t", a[0]);
  std::fprintf(f, "\tSlowMyosinHeads:\t\t\t%d [%%]\n", static_cast<int>(slow_percent));
  std::fprintf(f, "\tFastMyosinHeads:\t\t\t%d [%%]\n\n", static_cast<int>(fast_percent));
  line("\t\tActin");
  number("\tdx_actin:\t\t\t", dx_actin);
  number("\tlength_actin:\t\t", n_actin_nodes * dx_actin);
  integer("\tactin_period:\t\t\t", actin_period);
  number("\te_actin1:\t\t\t", e[1]);
  number("\ta_actin1:\t\t\t", a[1]);
  number("\te_actin2:\t\t\t", e[2]);
  number("\ta_actin2:\t\t\t", a[2]);
  number("\ta_offset:\t\t\t", a_offset);
  line("\n\t\tAxial");
  number("\tradius_actin:\t\t\t", radius_actin);
  number("\tradius_myosin:\t\t\t", radius_myosin);
  number("\td_actin_myosin:\t\t\t", d_actin_myosin);
  line("\n\t\tNumerics - Sirina pretrage aktin sajtova");
  number("\txamax:\t\t\t", xamax);
  line("\n\t\tNebulin");
  integer("\tNebulinDeficiency:\t\t\t", nebulinDeficiency);
  line("\n\t\tTitin");
  integer("\ttitin_enabled:\t\t\t\t", titin_enabled);
  if (titin_enabled == 1) number("\ttitin_length:\t\t\t", titin_length);
  line("\n\t\tProtein-C");
  integer("\tproteinC_enabled:\t\t\t", proteinC_enabled);
  if (proteinC_enabled != 0) {
    integer("\tproteinCStartPosition:\t\t\t", proteinCStartPosition);
    integer("\tproteinCNumber:\t\t\t", proteinCNumber);
  }
  line("");
}

// Diagnostics

void GeometryVertebrae::get_angles_cached(unsigned head, unsigned crown, unsigned site,
                                          unsigned fibre, std::vector<BindingSite_s>& out) const {
  double const weight = weights.of(head, crown, site, fibre == 1 ? 1 : 2);
  if (weight > 0.0) out.push_back({weight, site, fibre});
}
