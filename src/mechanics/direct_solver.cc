#include "mechanics/direct_solver.h"

#include <deal.II/lac/sparse_direct.h>
#include <deal.II/lac/sparse_matrix.h>
#include <deal.II/lac/vector.h>

#include <algorithm>
#include <cmath>

DirectSolver::DirectSolver() : umfpack(std::make_unique<dealii::SparseDirectUMFPACK>()) {}

DirectSolver::~DirectSolver() = default;

bool DirectSolver::solve(dealii::SparseMatrix<double> const& matrix, dealii::Vector<double>& rhs) {
  try {
    umfpack->solve(matrix, rhs);
  } catch (dealii::SparseDirectUMFPACK::ExcUMFPACKError const&) {
    return false;
  }
  return std::all_of(rhs.begin(), rhs.end(), [](double value) { return std::isfinite(value); });
}
