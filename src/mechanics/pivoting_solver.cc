#include "mechanics/pivoting_solver.h"

#include <deal.II/lac/affine_constraints.h>
#include <deal.II/lac/dynamic_sparsity_pattern.h>
#include <deal.II/lac/sparse_direct.h>
#include <deal.II/lac/sparse_matrix.h>
#include <deal.II/lac/vector.h>
#include <deal.II/numerics/matrix_tools.h>

#include <cmath>

namespace {

using Constraints = dealii::AffineConstraints<double>;

Constraints tie(std::vector<Ends::Tie> const& ties) {
  Constraints constraints;
  for (Ends::Tie const& each : ties) {
    constraints.add_line(each.dof);
    constraints.add_entry(each.dof, each.to, each.factor);
  }
  constraints.close();
  return constraints;
}

dealii::SparsityPattern pattern_of(std::vector<Spring> const& springs,
                                   Constraints const& constraints, unsigned n) {
  dealii::DynamicSparsityPattern dynamic(n, n);
  for (unsigned i = 0; i < n; ++i) dynamic.add(i, i);
  for (Spring const& spring : springs) {
    dynamic.add(spring.i, spring.j);
    dynamic.add(spring.j, spring.i);
  }
  constraints.condense(dynamic);
  dealii::SparsityPattern pattern;
  pattern.copy_from(dynamic);
  return pattern;
}

bool is_finite(dealii::Vector<double> const& v) {
  for (double const value : v) {
    if (!std::isfinite(value)) return false;
  }
  return true;
}

}  // namespace

bool solve_with_pivoting(std::vector<Spring> const& springs, Ends const& ends,
                         dealii::Vector<double> const& forces,
                         dealii::Vector<double>& displacements) {
  unsigned const n = forces.size();
  Constraints const constraints = tie(ends.ties);
  dealii::SparsityPattern const pattern = pattern_of(springs, constraints, n);
  dealii::SparseMatrix<double> matrix(pattern);
  for (Spring const& spring : springs) {
    matrix.add(spring.i, spring.i, spring.k);
    matrix.add(spring.j, spring.j, spring.k);
    matrix.add(spring.i, spring.j, -spring.k);
    matrix.add(spring.j, spring.i, -spring.k);
  }
  displacements = forces;
  constraints.condense(matrix);
  constraints.condense(displacements);
  std::map<dealii::types::global_dof_index, double> values;
  for (unsigned const dof : ends.held) values[dof] = 0.0;
  if (ends.prescribed.is_length()) values[ends.driven] = ends.prescribed.value;
  dealii::Vector<double> unused(n);
  dealii::MatrixTools::apply_boundary_values(values, matrix, unused, displacements, true);
  dealii::SparseDirectUMFPACK umfpack;
  try {
    umfpack.solve(matrix, displacements);
  } catch (dealii::ExceptionBase const&) {
    return false;  // exactly singular
  }
  constraints.distribute(displacements);
  return is_finite(displacements);
}
