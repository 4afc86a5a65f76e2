#pragma once
/// The direct solver of the linear systems, behind one small function: by far the largest cost of a
/// step.

#include <memory>

#include "mechanics/dealii_forward.h"

namespace dealii {
class SparseDirectUMFPACK;
}

class DirectSolver {
 public:
  DirectSolver();
  ~DirectSolver();

  /// Factorises the matrix and overwrites the right-hand side with the solution. False when the
  /// matrix is singular, or so nearly that the solution is not finite.
  bool solve(dealii::SparseMatrix<double> const& matrix, dealii::Vector<double>& rhs);

 private:
  std::unique_ptr<dealii::SparseDirectUMFPACK> umfpack;
};
