#pragma once
/// Symmetric matrix that is stored by its envelope, and its factors L D L^T.
///
/// Law:     A = L D L^T, with ones on the diagonal of L, and D diagonal. Row i is stored from its
///          first entry to the diagonal, and elimination fills nothing outside of that: where only
///          near neighbours are joined, the cost grows with the number of unknowns alone.
/// Partial: elimination may stop after the first n unknowns. The entries among the others are then
///          their Schur complement: what they feel with the first n free to follow.
/// Assumes: that no pivoting is needed. Negative pivots are taken, since a softening spring makes
///          the matrix indefinite; the caller checks the residual.
/// Refuses: a pivot that is 0 or not finite.

#include <cstddef>
#include <vector>

class SkylineMatrix {
 public:
  /// Row i gets the columns from `first[i]`, at most i, to i. All entries are 0.
  void reshape(std::vector<unsigned> const& first);

  /// Entry in row `i` and column `j`, at most `i`, which must lie in the envelope.
  double& at(unsigned i, unsigned j) { return values[rows[i].origin + j]; }
  /// The same, 0 outside of the envelope.
  double get(unsigned i, unsigned j) const {
    return j < rows[i].first ? 0.0 : values[rows[i].origin + j];
  }

  /// Eliminates the first `n` unknowns. False if refused; the entries are lost then.
  bool eliminate(unsigned n);
  /// Whether all pivots so far were positive: elimination without pivoting is stable then.
  bool is_definite() const { return all_positive; }
  /// Forward substitution in place: leaves on the other unknowns the right-hand side that belongs
  /// to their Schur complement.
  void reduce(std::vector<double>& b) const;
  /// Backward substitution in place: takes the solution on the other unknowns from `b`.
  void recover(std::vector<double>& b) const;

 private:
  struct Row {
    unsigned first;
    std::size_t origin;  ///< where column 0 would stand in `values`; wraps round below 0
  };

  std::vector<Row> rows;
  std::vector<double> values;  ///< row after row; of eliminated unknowns D and L
  std::vector<double> inverse_pivots;
  bool all_positive = false;
};
