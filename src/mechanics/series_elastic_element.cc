#include "mechanics/series_elastic_element.h"

#include <deal.II/lac/vector.h>

#include <cmath>
#include <cstdio>

#include "base/diagnostics.h"
#include "base/run_state.h"
#include "elastic/XB_Models.h"
#include "mechanics/filament_array.h"

namespace {

/// Rounds after which a search that should converge counts as hopeless.
constexpr int most_rounds = 100000;

}  // namespace

SeriesElasticElement::SeriesElasticElement(XB_Model const& spring, double c,
                                           FilamentArray const& array)
    : law(spring), damping(c), filaments(array) {}

void SeriesElasticElement::SetInitialPrescribedDisplacement(double wanted) {
  double const step = wanted >= 0.0 ? 10.0 : -10.0;
  double const target = std::abs(wanted);
  auto const force_at = [this](double d) { return std::abs(spring_force(d)); };
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
      initial_displacement = mid;
      return;
    }
    if (is_closed) break;
    (found < target ? lo : hi) = mid;
  }
  stop("titin prestress: the series elastic element carries the titin force of " + shown(wanted) +
       " pN at no extension");
}

double SeriesElasticElement::extension() const {
  return displacement - filaments.get_last_actin_displacement();
}

double SeriesElasticElement::spring_force(double x) const { return law.GetForce(x); }

double SeriesElasticElement::stiffness() const {
  auto const N = static_cast<double>(filaments.size());
  return (damping / currentTimeStep + law.GetStiffness(extension())) * N;
}

unsigned SeriesElasticElement::inner_dof() const { return filaments.front().get_bnd_dof(1, 1); }

void SeriesElasticElement::see_create_rhs(dealii::Vector<double>& rhs) {
  auto const N = static_cast<double>(filaments.size());
  double const dt = currentTimeStep;
  double const x = extension();
  double const force = spring_force(x);
  double const R = ((x - extension_old) * damping / dt + force) * N;
  rhs[inner_dof()] += R;
  rhs[outer_dof] -= R;
  if (!velocity_file.get()) velocity_file = OutputFile("SEE_velocity.csv", "a");
  std::fprintf(velocity_file.get(), "%lf,%lf,%lf\n", timeForAll, force, (x - extension_old) / dt);
}
