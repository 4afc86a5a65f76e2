#include "mechanics/sarcomer.h"

#include <deal.II/lac/dynamic_sparsity_pattern.h>
#include <deal.II/lac/sparse_matrix.h>
#include <deal.II/lac/vector.h>

#include <cmath>

#include "base/diagnostics.h"
#include "base/run_state.h"
#include "elastic/XB_Models.h"
#include "elastic/create_law.h"
#include "lattice/geometry.h"
#include "mechanics/filament.h"

namespace {

constexpr char const* statistics_name = "ActinSegmentStates_Statistics.csv";

/// Rounds after which a search that should converge counts as hopeless.
constexpr int most_rounds = 100000;

bool is_series_law(std::string const& name) {
  return name == "ConstantStiffness" || name == "StiffnessFunction";
}

XB_Model* create_series_law(std::string const& name, std::string const& prefix) {
  return is_series_law(name) ? create_elastic_law(name, prefix) : nullptr;
}

std::string no_law(Geometry const& geometry, std::string const& section, std::string const& name) {
  return geometry.parameter_file_name + ", section " + section + ": " + section +
         "_stiffness is '" + name + "'; accepted: ConstantStiffness or StiffnessFunction";
}

}  // namespace

void VectorAdd(std::vector<int>& a, std::vector<int>& b) {
  if (a.size() != b.size()) {
    stop_with_message("Error: vectors addition!", "segment counts of " + std::to_string(a.size()) +
                                                      " and " + std::to_string(b.size()) +
                                                      " states can't be added");
  }
  for (std::size_t i = 0; i < a.size(); ++i) a[i] += b[i];
}

Sarcomer::Sarcomer(SarcomerParameter_s const& parameter, Geometry const& lattice)
    : actin_statistics(open_output_stream(statistics_name)),
      param(&parameter),
      geometry(&lattice),
      result_file("result.csv", "wb"),
      stiffness_file("stiffness.csv", "wt"),
      actin_sites_file("actinSites.csv", "wt"),
      actin_forces_file("actinForces.csv", "wt") {
  actin_statistics
      << "Time,state 1,state 2,state 3,state 4,state 5,state 6,state 7,state 8,state 9";
  end_row(actin_statistics, statistics_name);
  std::fprintf(result_file.get(),
               "Time,Force,Displacement_last_myosin_node,Displacement_last_actin_node,"
               "CB_per_filament,CB_ProteinC_per_filement\n");
  result_file.flush();
  std::fprintf(stiffness_file.get(), "Time,Stiffness\n");
  stiffness_file.flush();
  create_laws();
  if (geometry->titin_enabled == 1) prestress();
}

Sarcomer::~Sarcomer() = default;

void Sarcomer::create_laws() {
  see_model = create_series_law(geometry->see_stiffness, "see_");
  if (!see_model) {
    stop_with_message("No See stiffness model? ",
                      no_law(*geometry, "see", geometry->see_stiffness));
  }
  if (geometry->titin_enabled != 1) return;
  titin_model = create_series_law(geometry->titin_stiffness, "titin_");
  if (!titin_model) {
    stop_with_message("No Titin stiffness model? ",
                      no_law(*geometry, "titin", geometry->titin_stiffness));
  }
}

void Sarcomer::prestress() {
  double const titin_force = FindTitinForce();
  SetInitialPrescribedDisplacement(titin_force);
  std::printf("Force Titin: %g\n", titin_force);
  std::printf("See Force: %g\n", see_model->GetForce(see_initial_displacement));
  std::printf("SetInitialPrescribedDisplacement: %g\n", see_initial_displacement);
}

double Sarcomer::FindTitinForce() const {
  double const K = geometry->myosin_stiffness;
  double const M = geometry->actin_end - geometry->titin_length - geometry->titin_extension;
  double x = geometry->titin_extension;
  for (int round = 0; round < most_rounds; ++round) {
    double const titin_force = titin_model->GetForce(x);
    double const overshoot = titin_force / K + M + geometry->titin_length + x - geometry->actin_end;
    x -= overshoot;
    if (!(std::abs(overshoot) > 1e-8)) {
      if (!std::isfinite(overshoot)) break;
      return titin_force;
    }
  }
  stop("titin prestress: no extension of titin balances the thick filament (stiffness " + shown(K) +
       " pN/nm); titin must be softer than the thick filament");
}

void Sarcomer::SetInitialPrescribedDisplacement(double wanted) {
  double const step = wanted >= 0.0 ? 10.0 : -10.0;
  double const target = std::abs(wanted);
  auto const force_at = [this](double d) { return std::abs(see_model->GetForce(d)); };
  double hi = 0.0;
  int round = 0;
  do {
    hi += step;
  } while (!(force_at(hi) >= target) && ++round < most_rounds);
  double lo = hi - step;
  for (; round < most_rounds; ++round) {
    double const mid = (lo + hi) * 0.5;
    double const found = force_at(mid);
    // Large forces are not resolved to 1e-10: the bracket closes before.
    bool const is_closed = mid == lo || mid == hi;
    if (std::abs(found - target) < (is_closed ? 1e-10 * target : 1e-10)) {
      see_initial_displacement = mid;
      return;
    }
    if (is_closed) break;
    (found < target ? lo : hi) = mid;
  }
  stop("titin prestress: the series elastic element carries the titin force of " + shown(wanted) +
       " pN at no extension");
}

bool Sarcomer::add_filament(Filament* filament) {
  filaments.emplace_back(filament);
  return true;
}

int Sarcomer::state_change(double time, double dt) {
  for (auto const& filament : filaments) filament->state_change(time, dt);
  std::vector<int> sums;
  for (auto const& filament : filaments) {
    if (filament == filaments.front()) {
      sums = filament->activation_states;
    } else {
      VectorAdd(sums, filament->activation_states);
    }
  }
  actin_statistics << time << ',';
  for (int const sum : sums) actin_statistics << sum << ',';
  end_row(actin_statistics, statistics_name);
  return 0;
}

double Sarcomer::get_last_actin_displacement() const {
  return filaments.front()->get_last_actin_displacement();
}

unsigned Sarcomer::series() const {
  return param->full_sarcomer == 0 ? 1 : 2 * param->full_sarcomer;
}

// Series elastic element

void Sarcomer::see_create_sparsity(dealii::DynamicSparsityPattern& pattern, unsigned n_dofs) {
  see_dof = n_dofs - 1;
  add_spring(pattern, filaments.front()->get_bnd_dof(1, 1), see_dof);
}

void Sarcomer::see_create_matrix(Matrix& matrix, Vector& rhs) {
  see_create_matrix(matrix);
  see_create_rhs(rhs);
}

void Sarcomer::see_create_matrix(Matrix& matrix) {
  auto const N = static_cast<double>(filaments.size());
  double const c = geometry->see_damping_factor;
  unsigned const a = filaments.front()->get_bnd_dof(1, 1);
  double const k = see_model->GetStiffness(see_extension());
  add_spring(matrix, a, see_dof, (c / currentTimeStep + k) * N);
}

void Sarcomer::see_create_rhs(Vector& rhs) {
  auto const N = static_cast<double>(filaments.size());
  double const dt = currentTimeStep;
  double const c = geometry->see_damping_factor;
  double const x = see_extension();
  double const see_force = see_model->GetForce(x);
  double const R = ((x - see_extension_old) * c / dt + see_force) * N;
  rhs[filaments.front()->get_bnd_dof(1, 1)] += R;
  rhs[see_dof] -= R;
  if (!see_velocity_file.get()) see_velocity_file = OutputFile("SEE_velocity.csv", "a");
  std::fprintf(see_velocity_file.get(), "%lf,%lf,%lf\n", timeForAll, see_force,
               (x - see_extension_old) / dt);
  see_velocity_file.flush();
}
