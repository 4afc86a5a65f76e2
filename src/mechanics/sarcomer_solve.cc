// Equilibrium of all filaments, bonds, titin and the series elastic element.
//
// Newton iteration: the matrix is the stiffness at the present displacements (for titin, at its
// rest value), the right-hand side what the elements carry out of balance, and each solution a
// correction to the accumulated displacements. A prescribed displacement enters as a step in the
// first pass; the same ends are then held while the rest is balanced. The heads don't move, so
// bonds, mesh and numbering stay fixed during one call.

#include <deal.II/lac/affine_constraints.h>
#include <deal.II/lac/dynamic_sparsity_pattern.h>
#include <deal.II/lac/sparse_matrix.h>
#include <deal.II/lac/vector.h>
#include <deal.II/numerics/matrix_tools.h>

#include <cmath>
#include <numeric>

#include "base/diagnostics.h"
#include "base/logger.h"
#include "base/run_state.h"
#include "mechanics/direct_solver.h"
#include "mechanics/filament.h"
#include "mechanics/sarcomer.h"

namespace {

constexpr int most_passes = 100;
constexpr int convergence_log = 6;

/// Largest absolute entry of a vector and the index of its first occurrence.
struct Peak {
  double value = 0.0;
  unsigned index = 0;
};

Peak find_peak(dealii::Vector<double> const& v) {
  Peak peak;
  for (unsigned i = 0; i < v.size(); ++i) {
    double const size = std::abs(v[i]);
    // A value that isn't a number must not hide behind the comparison.
    if (size > peak.value || std::isnan(size)) peak = {size, i};
  }
  return peak;
}

/// Sets of degrees of freedom that stiffness or a constraint joins.
class Connections {
 public:
  explicit Connections(unsigned n) : parent(n) { std::iota(parent.begin(), parent.end(), 0u); }
  unsigned root(unsigned i) {
    while (parent[i] != i) i = parent[i] = parent[parent[i]];
    return i;
  }
  void join(unsigned i, unsigned j) { parent[root(i)] = root(j); }

 private:
  std::vector<unsigned> parent;
};

}  // namespace

/// The linear system of one call.
struct Sarcomer::System {
  explicit System(unsigned n_dofs) : n(n_dofs), rhs(n_dofs), unused(n_dofs) {}

  void condense_and_hold() {
    constraints.condense(matrix);
    constraints.condense(rhs);
    dealii::MatrixTools::apply_boundary_values(values, matrix, unused, rhs, true);
  }

  /// The right-hand side alone, once no held end has a step to take any more: the measures need no
  /// matrix, and most calls need none after their last pass.
  Vector const& hold_rhs() {
    constraints.condense(rhs);
    for (auto const& held : values) rhs[held.first] = 0.0;
    return rhs;
  }

  unsigned const n;
  dealii::SparsityPattern pattern;
  Matrix matrix;
  Constraints constraints;
  Values values;
  Vector rhs;
  Vector load;    ///< the prescribed force, as the boundary put it into `rhs`
  Vector unused;  ///< solution argument of `apply_boundary_values`
};

struct Sarcomer::Measures {
  Measures(Vector const& du, Vector const& rhs)
      : rms_du(std::sqrt(du.norm_sqr() / du.size())),
        rms_rhs(std::sqrt(rhs.norm_sqr() / rhs.size())),
        max_du(find_peak(du)),
        max_rhs(find_peak(rhs)) {}

  double rms_du;
  double rms_rhs;
  Peak max_du;
  Peak max_rhs;
};

int Sarcomer::assemble_and_solve(double time, bool update) {
  if (filaments.empty()) return -1;
  see_extension_old = see_displacement - get_last_actin_displacement();

  System system(number_dofs());
  dealii::DynamicSparsityPattern pattern(system.n, system.n);
  for (auto const& filament : filaments) filament->create_sparsity(pattern);
  see_create_sparsity(pattern, system.n);
  create_boundary(system);
  system.constraints.close();
  system.constraints.condense(pattern);
  system.pattern.copy_from(pattern);
  system.matrix.reinit(system.pattern);
  system.load = system.rhs;
  if (!is_displacement_mode() && n_attached() == 0) {
    stop_with_message("Prescribed Force : NO CROSSBRIDGES -> displacement = inf",
                      "no head is bound" + at_step() + "; begin with a row of length control");
  }
  assemble(system);
  refuse_floating(system);
  system.condense_and_hold();

  DirectSolver solver;
  Vector du;
  Vector unapplied(update ? 0 : system.n);
  for (int pass = 1;; ++pass) {
    solve_pass(system, solver, du);
    system.rhs = system.load;
    if (pass == 1 && is_displacement_mode()) hold_ends(system);
    if (update) {
      correct_and_assemble_rhs(system, du);
    } else {
      assemble_rhs(system);
    }
    log_pass(system, du, pass);
    if (update) {
      CalculateResults(du, system.rhs);
    } else {
      unapplied += du;
      write_stiffness(time, system, unapplied);
    }
    Measures const measures(du, system.hold_rhs());
    log_measures(measures);
    if (pass == most_passes) stop_without_convergence(measures);
    if (is_balanced(measures)) break;
    assemble_matrix(system);
    system.condense_and_hold();
  }
  if (!update) return 1;
  for (auto const& filament : filaments) filament->InterpolateDisplacements();
  return 1;
}

unsigned Sarcomer::number_dofs() {
  unsigned offset = 0;
  for (auto const& filament : filaments) {
    filament->prepare_nodes();
    filament->set_offset(offset);
    offset += filament->n_dofs();
  }
  return offset + 1;
}

void Sarcomer::create_boundary(System& system) {
  switch (boundary_mode) {
    case 1:
      create_bnd_force(system.constraints, system.rhs, system.values);
      break;
    case 2:
      create_fibre_bnd_displacement(system.constraints, system.values);
      break;
    case 3:
      create_fibre_bnd_force(system.constraints, system.rhs, system.values);
      break;
    default:
      create_bnd_displacement(system.constraints, system.values);
  }
}

// What is done to one filament is done at once: the data of many filaments don't fit the cache.

void Sarcomer::assemble(System& system) {
  system.matrix = 0.0;
  for (auto const& filament : filaments) filament->create_matrix(system.matrix, system.rhs);
  see_create_matrix(system.matrix);
  finish_rhs(system);
}

void Sarcomer::assemble_matrix(System& system) {
  system.matrix = 0.0;
  for (auto const& filament : filaments) filament->create_matrix(system.matrix);
  see_create_matrix(system.matrix);
}

void Sarcomer::correct_and_assemble_rhs(System& system, Vector const& du) {
  see_displacement += du[see_dof];
  for (auto const& filament : filaments) {
    filament->correct(du);
    filament->create_rhs(system.rhs);
  }
  finish_rhs(system);
}

void Sarcomer::assemble_rhs(System& system) {
  for (auto const& filament : filaments) filament->create_rhs(system.rhs);
  finish_rhs(system);
}

void Sarcomer::finish_rhs(System& system) {
  see_create_rhs(system.rhs);
  for (unsigned i = 0; i < system.n; ++i) {
    if (std::isfinite(system.rhs[i])) continue;
    stop("the force on " + place_of(i) + at_step() + " is " + shown(system.rhs[i]) +
         ": an elastic law has no finite value there");
  }
}

void Sarcomer::solve_pass(System& system, DirectSolver& solver, Vector& du) const {
  du = system.rhs;
  if (!solver.solve(system.matrix, du)) {
    stop("singular system" + at_step() + ": the forces determine no displacements");
  }
  system.constraints.distribute(du);
}

/// What the lattice would answer to a correction that is not applied: displacements with it, and
/// the out-of-balance forces that it leaves in the linearised system.
void Sarcomer::write_stiffness(double time, System& system, Vector const& correction) {
  assemble_matrix(system);
  Vector displacement = correction;
  for (auto const& filament : filaments) {
    displacement[filament->get_bnd_dof(1, 1)] += filament->get_last_actin_displacement();
  }
  Vector reaction(system.n);
  system.matrix.vmult(reaction, correction);
  reaction.sadd(-1.0, system.rhs);
  std::fprintf(stiffness_file.get(), "%e,", time);
  create_stiffness_output(displacement, reaction);
}

/// The prescribed step has been taken: from now on its ends stay where they are.
void Sarcomer::hold_ends(System& system) {
  system.rhs = 0.0;
  system.constraints.clear();
  system.values.clear();
  boundary_value = 0.0;
  create_boundary(system);
  system.constraints.close();
}

bool Sarcomer::is_balanced(Measures const& m) const {
  return m.rms_du <= param->dispSqLimit && m.rms_rhs <= param->forceSqLimit &&
         m.max_du.value <= param->dispCBLimit && m.max_rhs.value <= param->forceCBLimit;
}

void Sarcomer::stop_without_convergence(Measures const& m) const {
  std::printf("No Convergence!\n");
  auto const against = [](char const* name, double value, char const* limit, double bound) {
    return std::string(name) + shown(value) + " (" + limit + " " + shown(bound) + ")";
  };
  stop("no equilibrium after " + std::to_string(most_passes) + " passes" + at_step() +
       against(": correction in nm: rms ", m.rms_du, "dispSqLimit", param->dispSqLimit) +
       against(", largest ", m.max_du.value, "dispCBLimit", param->dispCBLimit) +
       against("; out-of-balance force in pN: rms ", m.rms_rhs, "forceSqLimit",
               param->forceSqLimit) +
       against(", largest ", m.max_rhs.value, "forceCBLimit", param->forceCBLimit));
}

std::string Sarcomer::at_step() const {
  return " at time " + shown(timeForAll) + ", step " + std::to_string(t_timeStep);
}

void Sarcomer::log_pass(System const& system, Vector const& du, int pass) const {
  if (!Logger::Takes(convergence_log, true)) return;
  unsigned const d0 = filaments.front()->get_bnd_dof(0, 0);
  unsigned const d1 = filaments.front()->get_bnd_dof(1, 1);
  double S = 0.0;
  for (auto const& filament : filaments) S += system.rhs[filament->get_bnd_dof(0, 0)];
  // Room for any double that "%lf" may write out in full.
  char text[3072];
  std::snprintf(text, sizeof text, "%lf,%d,%lf,%lf,%lf,%lf,%lf", timeForAll, pass, see_displacement,
                S, system.rhs[d0], system.rhs[d1], system.rhs[see_dof]);
  Logger::Write(text, convergence_log, true);
  std::snprintf(text, sizeof text, ",%lf,%lf,%lf", du[d0], du[d1], du[see_dof]);
  Logger::Write(text, convergence_log, true);
}

void Sarcomer::log_measures(Measures const& m) const {
  if (!Logger::Takes(convergence_log, true)) return;
  char text[2048];
  std::snprintf(text, sizeof text, ",%lf,%u,%lf,%u,%lf\n", m.max_rhs.value, m.max_rhs.index,
                m.max_du.value, m.max_du.index, get_last_actin_displacement());
  Logger::Write(text, convergence_log, true);
}

/// A part that no stiffness or constraint joins to a held end has no determined place, and a
/// factorisation may hide that behind rounding.
void Sarcomer::refuse_floating(System const& system) const {
  // A half-sarcomere's thin filaments are tied together and its thick ones held; under length
  // control the series elastic element holds the former.
  unsigned const inner = filaments.front()->get_bnd_dof(1, 1);
  if (boundary_mode == 0 && system.matrix.el(inner, see_dof) != 0.0) return;
  Connections connections(system.n + 1);
  unsigned const ground = system.n;
  for (auto const& value : system.values) {
    connections.join(value.first, ground);
  }
  for (unsigned i = 0; i < system.n; ++i) {
    // The matrix is symmetric, and a row begins with its diagonal.
    auto const end = system.matrix.end(i);
    for (auto entry = ++system.matrix.begin(i); entry != end; ++entry) {
      auto const j = static_cast<unsigned>(entry->column());
      if (j > i && entry->value() != 0.0) connections.join(i, j);
    }
  }
  for (auto const& line : system.constraints.get_lines()) {
    for (auto const& entry : line.entries) connections.join(line.index, entry.first);
  }
  for (unsigned i = 0; i < system.n; ++i) {
    if (connections.root(i) == connections.root(ground)) continue;
    stop(
        "singular system" + at_step() + ": " + place_of(i) +
        " is joined to no held end by bonds, titin or the series elastic element with a stiffness");
  }
}

std::string Sarcomer::place_of(unsigned dof) const {
  if (dof == see_dof) return "the outer end of the series elastic element";
  std::size_t i = filaments.size() - 1;
  while (filaments[i]->get_bnd_dof(0, 0) > dof) --i;
  bool const is_thick = dof <= filaments[i]->get_bnd_dof(1, 0);
  return std::string(is_thick ? "the thick filament" : "a thin filament") + " of half-sarcomere " +
         std::to_string(i % series() + 1) + " of row " + std::to_string(i / series() + 1);
}
