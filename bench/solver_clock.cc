#include "solver_clock.h"

#include "mechanics/direct_solver.h"

namespace {

double seconds = 0.0;

}  // namespace

double seconds_in_solver() { return seconds; }

// The linker sends every call of DirectSolver::solve here, and "__real_" to the function itself.
extern "C" bool __real__ZN12DirectSolver5solveERKN6dealii12SparseMatrixIdEERNS0_6VectorIdEE(
    DirectSolver* solver, dealii::SparseMatrix<double> const& matrix, dealii::Vector<double>& rhs);

extern "C" bool __wrap__ZN12DirectSolver5solveERKN6dealii12SparseMatrixIdEERNS0_6VectorIdEE(
    DirectSolver* solver, dealii::SparseMatrix<double> const& matrix, dealii::Vector<double>& rhs) {
  auto const start = Clock::now();
  bool const solved = __real__ZN12DirectSolver5solveERKN6dealii12SparseMatrixIdEERNS0_6VectorIdEE(
      solver, matrix, rhs);
  seconds += seconds_since(start);
  return solved;
}
