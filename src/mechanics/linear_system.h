#pragma once
/// The linear system of one solve: the stiffness of all springs, the forces that they carry out of
/// balance, and the conditions at the ends of the lattice. Its solution is a correction to the
/// displacements.

#include <deal.II/lac/affine_constraints.h>
#include <deal.II/lac/sparse_matrix.h>
#include <deal.II/lac/sparsity_pattern.h>
#include <deal.II/lac/vector.h>

#include <map>
#include <optional>

#include "mechanics/boundary.h"
#include "mechanics/direct_solver.h"

class FilamentArray;
class SeriesElasticElement;

class LinearSystem {
 public:
  using Vector = dealii::Vector<double>;

  /// Numbers all degrees of freedom and lays out the matrix for the present bonds; without
  /// conditions and empty. Keeps references to both.
  LinearSystem(FilamentArray const& filaments, SeriesElasticElement& see);

  /// Replaces the conditions; the loads are kept until the next call. The first call settles the
  /// pattern of the matrix, so later ones may not add ties.
  void set_ends(Ends const& ends);
  void assemble_matrix();
  /// Right-hand side: loads and present forces. A force that is not finite ends the run.
  void assemble_rhs();
  /// Solves under the conditions. The matrix can be used once only; what `rhs` held is lost. False
  /// when the forces determine no displacements.
  bool solve(Vector& du);
  /// The right-hand side under the conditions: entries of tied and held ends are 0.
  Vector const& hold_rhs();
  /// The forces that remain after a correction in the linearised system, before conditions; the
  /// entry of a held node is the force on it.
  Vector reaction(Vector const& correction) const;
  /// The first degree of freedom that no stiffness or condition joins to a held end: it has no
  /// determined place, and a factorisation may hide that behind rounding.
  std::optional<unsigned> first_floating() const;

  unsigned const n;
  Vector rhs;

 private:
  void create_pattern();

  FilamentArray const& filaments;
  SeriesElasticElement& see;
  Ends ends;
  dealii::AffineConstraints<double> constraints;
  std::map<unsigned, double> values;
  dealii::SparsityPattern pattern;
  dealii::SparseMatrix<double> matrix;
  DirectSolver solver;
  Vector unused;  ///< solution argument of `apply_boundary_values`
};
