#include "mechanics/equilibrium.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/diagnostics.h"
#include "base/logger.h"
#include "base/run_state.h"
#include "mechanics/filament_array.h"
#include "mechanics/lattice_listings.h"
#include "mechanics/measured.h"
#include "mechanics/series_elastic_element.h"

namespace {

using Vector = dealii::Vector<double>;

constexpr int most_passes = 100;

/// Largest absolute entry that is a number.
double peak(Vector const& v) {
  // In four rows: each comparison waits for the one before it in its row.
  std::array<double, 4> most = {};
  for (unsigned i = 0; i < v.size(); ++i) most[i % 4] = std::max(most[i % 4], std::abs(v[i]));
  return *std::max_element(most.begin(), most.end());
}

/// Index of its first occurrence, or of the first entry that is no number.
unsigned index_of_peak(Vector const& v, double peak) {
  auto const is_peak = [peak](double x) { return std::abs(x) == peak || std::isnan(x); };
  auto const at = std::find_if(v.begin(), v.end(), is_peak);
  return at == v.end() ? 0 : static_cast<unsigned>(at - v.begin());
}

/// Infinite where the squares would be: in Debug deal.II refuses their sum.
double rms(Vector const& v, double largest) {
  return largest < 1e150 ? std::sqrt(v.norm_sqr() / v.size()) : HUGE_VAL;
}

}  // namespace

/// What a pass left: its correction, and the forces that are still out of balance.
struct Equilibrium::Residual {
  Residual(Vector const& du, Vector const& rhs)
      : max_du(peak(du)), max_rhs(peak(rhs)), rms_du(rms(du, max_du)), rms_rhs(rms(rhs, max_rhs)) {}

  double max_du;
  double max_rhs;
  double rms_du;  ///< not a number if an entry is none
  double rms_rhs;
};

Equilibrium::Equilibrium(SarcomerParameter_s const& parameter, FilamentArray const& array,
                         SeriesElasticElement& element, Boundary const& ends)
    : limits(parameter), filaments(array), see(element), boundary(ends), system(array, element) {}

void Equilibrium::find(Measured& measured) {
  auto const measure = [&] {
    measured.CalculateResults(filaments, du, rhs);
    write_actin_force_listing(filaments, rhs);
  };
  iterate(true, measure);
}

void Equilibrium::probe_stiffness(Measured const& measured,
                                  std::function<void(double)> const& report) {
  Vector unapplied;
  auto const measure = [&] {
    if (unapplied.size() == 0) unapplied.reinit(rhs.size());
    unapplied += du;
    Vector displacement = unapplied;
    for (auto const& filament : filaments) {
      displacement[filament->get_bnd_dof(1, 1)] += filament->get_last_actin_displacement();
    }
    report(measured.stiffness(filaments, displacement, reaction(unapplied)));
  };
  iterate(false, measure);
}

/// The forces that a correction leaves in the linearised system.
Equilibrium::Vector Equilibrium::reaction(Vector const& correction) const {
  Vector forces = rhs;
  for (Spring const& spring : system.all_springs()) {
    double const f = spring.k * (correction[spring.j] - correction[spring.i]);
    forces[spring.i] += f;
    forces[spring.j] -= f;
  }
  return forces;
}

template <class Report>
void Equilibrium::iterate(bool moves, Report report) {
  Ends ends = begin();
  for (int pass = 1;; ++pass) {
    if (!system.solve(ends, rhs, du)) {
      stop("singular system" + at_step() + ": the forces determine no displacements");
    }
    // The prescribed step has been taken: from now on its end stays where it is.
    if (ends.prescribed.is_length()) ends.prescribed.value = 0.0;
    ++run_facts.passes;
    assemble_rhs(ends, moves ? &du : nullptr);
    report();
    log_pass(pass);
    system.condense(rhs);
    Residual const residual(du, rhs);
    log_residual(residual);
    if (pass == most_passes) stop_without_convergence(residual);
    if (is_balanced(residual)) break;
    system.set_springs();
  }
  // Rows of all passes, in one write.
  Logger::Flush(Log::convergence_data);
  see.flush();
}

Ends Equilibrium::begin() {
  see.begin_step();
  see.outer_dof = filaments.number_dofs() - 1;
  Ends ends = boundary.create();
  if (!ends.prescribed.is_length() && filaments.n_attached() == 0) {
    stop_with_message("Prescribed Force : NO CROSSBRIDGES -> displacement = inf",
                      "no head is bound" + at_step() + "; begin with a row of length control");
  }
  system.set_ends(ends);
  system.set_springs();
  assemble_rhs(ends, nullptr);
  refuse_floating(ends);
  return ends;
}

// What is done to one filament is done at once: the data of many filaments don't fit the cache.

void Equilibrium::assemble_rhs(Ends const& ends, Vector const* correction) {
  rhs.reinit(see.outer_dof + 1);
  if (!ends.prescribed.is_length()) rhs[ends.driven] = ends.prescribed.value;
  if (correction) see.displacement += (*correction)[see.outer_dof];
  for (auto const& filament : filaments) {
    if (correction) filament->correct(*correction);
    filament->create_rhs(rhs);
  }
  see.see_create_rhs(rhs);
  if (std::isfinite(rhs.l1_norm())) return;
  for (unsigned i = 0; i < rhs.size(); ++i) {
    if (std::isfinite(rhs[i])) continue;
    stop("the force on " + filaments.place_of(i) + at_step() + " is " + shown(rhs[i]) +
         ": an elastic law has no finite value there");
  }
}

void Equilibrium::refuse_floating(Ends const& ends) const {
  // A half-sarcomere's thin filaments are tied together and its thick ones held; under length
  // control the series elastic element holds the former.
  bool const is_held = !filaments.is_series() && ends.prescribed.is_length();
  if (is_held && see.stiffness() != 0.0) return;
  auto const floating = system.first_floating(ends);
  if (!floating) return;
  stop("singular system" + at_step() + ": " + filaments.place_of(*floating) +
       " is joined to no held end by bonds, titin or the series elastic element with a stiffness");
}

bool Equilibrium::is_balanced(Residual const& r) const {
  return r.rms_du <= limits.dispSqLimit && r.rms_rhs <= limits.forceSqLimit &&
         r.max_du <= limits.dispCBLimit && r.max_rhs <= limits.forceCBLimit;
}

void Equilibrium::stop_without_convergence(Residual const& r) const {
  std::printf("No Convergence!\n");
  auto const against = [](char const* name, double value, char const* limit, double bound) {
    return std::string(name) + shown(value) + " (" + limit + " " + shown(bound) + ")";
  };
  stop("no equilibrium after " + std::to_string(most_passes) + " passes" + at_step() +
       against(": correction in nm: rms ", r.rms_du, "dispSqLimit", limits.dispSqLimit) +
       against(", largest ", r.max_du, "dispCBLimit", limits.dispCBLimit) +
       against("; out-of-balance force in pN: rms ", r.rms_rhs, "forceSqLimit",
               limits.forceSqLimit) +
       against(", largest ", r.max_rhs, "forceCBLimit", limits.forceCBLimit));
}

void Equilibrium::log_pass(int pass) const {
  if (!Logger::Takes(Log::convergence_data, true)) return;
  unsigned const d0 = filaments.front().get_bnd_dof(0, 0);
  unsigned const d1 = filaments.front().get_bnd_dof(1, 1);
  double S = 0.0;
  for (auto const& filament : filaments) S += rhs[filament->get_bnd_dof(0, 0)];
  // Room for any double that "%lf" may write out in full.
  char text[3072];
  std::snprintf(text, sizeof text, "%lf,%d,%lf,%lf,%lf,%lf,%lf", timeForAll, pass, see.displacement,
                S, rhs[d0], rhs[d1], rhs[see.outer_dof]);
  Logger::Add(text, Log::convergence_data, true);
  std::snprintf(text, sizeof text, ",%lf,%lf,%lf", du[d0], du[d1], du[see.outer_dof]);
  Logger::Add(text, Log::convergence_data, true);
}

void Equilibrium::log_residual(Residual const& r) const {
  if (!Logger::Takes(Log::convergence_data, true)) return;
  char text[2048];
  std::snprintf(text, sizeof text, ",%lf,%u,%lf,%u,%lf\n", r.max_rhs, index_of_peak(rhs, r.max_rhs),
                r.max_du, index_of_peak(du, r.max_du), filaments.get_last_actin_displacement());
  Logger::Add(text, Log::convergence_data, true);
}
