#include "mechanics/linear_system.h"

#include <deal.II/lac/dynamic_sparsity_pattern.h>
#include <deal.II/numerics/matrix_tools.h>

#include <cmath>
#include <numeric>

#include "base/diagnostics.h"
#include "base/run_state.h"
#include "mechanics/filament_array.h"
#include "mechanics/series_elastic_element.h"

namespace {

/// Sets of degrees of freedom that stiffness or a condition joins.
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

LinearSystem::LinearSystem(FilamentArray const& array, SeriesElasticElement& element)
    : n(array.number_dofs()), rhs(n), filaments(array), see(element), unused(n) {
  see.outer_dof = n - 1;
}

void LinearSystem::set_ends(Ends const& wanted) {
  ends = wanted;
  constraints.clear();
  for (Ends::Tie const& tie : ends.ties) {
    constraints.add_line(tie.dof);
    constraints.add_entry(tie.dof, tie.to, tie.factor);
  }
  constraints.close();
  values.clear();
  for (Ends::Held const& held : ends.held) values[held.dof] = held.step;
  if (pattern.empty()) create_pattern();
}

void LinearSystem::create_pattern() {
  dealii::DynamicSparsityPattern dynamic(n, n);
  for (auto const& filament : filaments) filament->create_sparsity(dynamic);
  see.see_create_sparsity(dynamic);
  constraints.condense(dynamic);
  pattern.copy_from(dynamic);
  matrix.reinit(pattern);
}

// What is done to one filament is done at once: the data of many filaments don't fit the cache.

void LinearSystem::assemble_matrix() {
  matrix = 0.0;
  for (auto const& filament : filaments) filament->create_matrix(matrix);
  see.see_create_matrix(matrix);
}

void LinearSystem::assemble_rhs() {
  rhs = 0.0;
  for (Ends::Load const& load : ends.loads) rhs[load.dof] = load.force;
  for (auto const& filament : filaments) filament->create_rhs(rhs);
  see.see_create_rhs(rhs);
  for (unsigned i = 0; i < n; ++i) {
    if (std::isfinite(rhs[i])) continue;
    stop("the force on " + filaments.place_of(i) + at_step() + " is " + shown(rhs[i]) +
         ": an elastic law has no finite value there");
  }
}

bool LinearSystem::solve(Vector& du) {
  constraints.condense(matrix);
  constraints.condense(rhs);
  dealii::MatrixTools::apply_boundary_values(values, matrix, unused, rhs, true);
  du = rhs;
  if (!solver.solve(matrix, du)) return false;
  constraints.distribute(du);
  return true;
}

LinearSystem::Vector const& LinearSystem::hold_rhs() {
  constraints.condense(rhs);
  for (auto const& held : values) rhs[held.first] = 0.0;
  return rhs;
}

LinearSystem::Vector LinearSystem::reaction(Vector const& correction) const {
  Vector forces(n);
  matrix.vmult(forces, correction);
  forces.sadd(-1.0, rhs);
  return forces;
}

std::optional<unsigned> LinearSystem::first_floating() const {
  Connections connections(n + 1);
  unsigned const ground = n;
  for (auto const& held : values) connections.join(held.first, ground);
  for (Ends::Tie const& tie : ends.ties) connections.join(tie.dof, tie.to);
  for (unsigned i = 0; i < n; ++i) {
    // The matrix is symmetric, and a row begins with its diagonal.
    auto const end = matrix.end(i);
    for (auto entry = ++matrix.begin(i); entry != end; ++entry) {
      auto const j = static_cast<unsigned>(entry->column());
      if (j > i && entry->value() != 0.0) connections.join(i, j);
    }
  }
  for (unsigned i = 0; i < n; ++i) {
    if (connections.root(i) != connections.root(ground)) return i;
  }
  return std::nullopt;
}
