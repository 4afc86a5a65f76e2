#include "mechanics/equilibrium.h"

#include <cmath>

#include "base/diagnostics.h"
#include "base/logger.h"
#include "base/run_state.h"
#include "mechanics/boundary.h"
#include "mechanics/filament_array.h"
#include "mechanics/lattice_listings.h"
#include "mechanics/linear_system.h"
#include "mechanics/measured.h"
#include "mechanics/series_elastic_element.h"

namespace {

using Vector = dealii::Vector<double>;

constexpr int most_passes = 100;

/// Largest absolute entry of a vector and the index of its first occurrence.
struct Peak {
  double value = 0.0;
  unsigned index = 0;
};

Peak find_peak(Vector const& v) {
  Peak peak;
  for (unsigned i = 0; i < v.size(); ++i) {
    double const size = std::abs(v[i]);
    // A value that isn't a number must not hide behind the comparison.
    if (size > peak.value || std::isnan(size)) peak = {size, i};
  }
  return peak;
}

}  // namespace

/// What a pass left: its correction, and the forces that are still out of balance.
struct Equilibrium::Residual {
  Residual(Vector const& du, Vector const& rhs)
      : rms_du(std::sqrt(du.norm_sqr() / du.size())),
        rms_rhs(std::sqrt(rhs.norm_sqr() / rhs.size())),
        max_du(find_peak(du)),
        max_rhs(find_peak(rhs)) {}

  double rms_du;
  double rms_rhs;
  Peak max_du;
  Peak max_rhs;
};

Equilibrium::Equilibrium(SarcomerParameter_s const& parameter, FilamentArray const& array,
                         SeriesElasticElement& element, Boundary& ends)
    : limits(parameter), filaments(array), see(element), boundary(ends) {}

void Equilibrium::find(Measured& measured) {
  auto const move = [this](Vector const& du) {
    see.displacement += du[see.outer_dof];
    for (auto const& filament : filaments) filament->correct(du);
  };
  auto const measure = [&](LinearSystem& system, Vector const& du) {
    measured.CalculateResults(filaments, du, system.rhs);
    write_actin_force_listing(filaments, system.rhs);
  };
  iterate(move, measure);
  for (auto const& filament : filaments) filament->InterpolateDisplacements();
}

void Equilibrium::probe_stiffness(Measured const& measured,
                                  std::function<void(double)> const& report) {
  Vector unapplied;
  auto const stay = [](Vector const&) {};
  auto const measure = [&](LinearSystem& system, Vector const& du) {
    if (unapplied.size() == 0) unapplied.reinit(system.n);
    unapplied += du;
    Vector displacement = unapplied;
    for (auto const& filament : filaments) {
      displacement[filament->get_bnd_dof(1, 1)] += filament->get_last_actin_displacement();
    }
    system.assemble_matrix();
    report(measured.stiffness(filaments, displacement, system.reaction(unapplied)));
  };
  iterate(stay, measure);
}

template <class Move, class Report>
void Equilibrium::iterate(Move move, Report report) {
  see.begin_step();
  LinearSystem system(filaments, see);
  begin(system);
  Vector du;
  for (int pass = 1;; ++pass) {
    if (!system.solve(du)) {
      stop("singular system" + at_step() + ": the forces determine no displacements");
    }
    if (pass == 1 && boundary.is_length()) {
      boundary.hold();
      system.set_ends(boundary.create());
    }
    move(du);
    system.assemble_rhs();
    log_pass(system, du, pass);
    report(system, du);
    Residual const residual(du, system.hold_rhs());
    log_residual(residual);
    if (pass == most_passes) stop_without_convergence(residual);
    if (is_balanced(residual)) return;
    system.assemble_matrix();
  }
}

void Equilibrium::begin(LinearSystem& system) const {
  system.set_ends(boundary.create());
  if (!boundary.is_length() && filaments.n_attached() == 0) {
    stop_with_message("Prescribed Force : NO CROSSBRIDGES -> displacement = inf",
                      "no head is bound" + at_step() + "; begin with a row of length control");
  }
  system.assemble_matrix();
  system.assemble_rhs();
  refuse_floating(system);
}

void Equilibrium::refuse_floating(LinearSystem const& system) const {
  // A half-sarcomere's thin filaments are tied together and its thick ones held; under length
  // control the series elastic element holds the former.
  if (!filaments.is_series() && boundary.is_length() && see.stiffness() != 0.0) return;
  auto const floating = system.first_floating();
  if (!floating) return;
  stop("singular system" + at_step() + ": " + filaments.place_of(*floating) +
       " is joined to no held end by bonds, titin or the series elastic element with a stiffness");
}

bool Equilibrium::is_balanced(Residual const& r) const {
  return r.rms_du <= limits.dispSqLimit && r.rms_rhs <= limits.forceSqLimit &&
         r.max_du.value <= limits.dispCBLimit && r.max_rhs.value <= limits.forceCBLimit;
}

void Equilibrium::stop_without_convergence(Residual const& r) const {
  std::printf("No Convergence!\n");
  auto const against = [](char const* name, double value, char const* limit, double bound) {
    return std::string(name) + shown(value) + " (" + limit + " " + shown(bound) + ")";
  };
  stop("no equilibrium after " + std::to_string(most_passes) + " passes" + at_step() +
       against(": correction in nm: rms ", r.rms_du, "dispSqLimit", limits.dispSqLimit) +
       against(", largest ", r.max_du.value, "dispCBLimit", limits.dispCBLimit) +
       against("; out-of-balance force in pN: rms ", r.rms_rhs, "forceSqLimit",
               limits.forceSqLimit) +
       against(", largest ", r.max_rhs.value, "forceCBLimit", limits.forceCBLimit));
}

void Equilibrium::log_pass(LinearSystem const& system, Vector const& du, int pass) const {
  if (!Logger::Takes(Log::convergence_data, true)) return;
  Vector const& rhs = system.rhs;
  unsigned const d0 = filaments.front().get_bnd_dof(0, 0);
  unsigned const d1 = filaments.front().get_bnd_dof(1, 1);
  double S = 0.0;
  for (auto const& filament : filaments) S += rhs[filament->get_bnd_dof(0, 0)];
  // Room for any double that "%lf" may write out in full.
  char text[3072];
  std::snprintf(text, sizeof text, "%lf,%d,%lf,%lf,%lf,%lf,%lf", timeForAll, pass, see.displacement,
                S, rhs[d0], rhs[d1], rhs[see.outer_dof]);
  Logger::Write(text, Log::convergence_data, true);
  std::snprintf(text, sizeof text, ",%lf,%lf,%lf", du[d0], du[d1], du[see.outer_dof]);
  Logger::Write(text, Log::convergence_data, true);
}

void Equilibrium::log_residual(Residual const& r) const {
  if (!Logger::Takes(Log::convergence_data, true)) return;
  char text[2048];
  std::snprintf(text, sizeof text, ",%lf,%u,%lf,%u,%lf\n", r.max_rhs.value, r.max_rhs.index,
                r.max_du.value, r.max_du.index, filaments.get_last_actin_displacement());
  Logger::Write(text, Log::convergence_data, true);
}
