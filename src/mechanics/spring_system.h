#pragma once
/// The linear system of a step: the springs of all filaments and the series elastic element, with
/// the ends held, tied together or prescribed.
///
/// A filament is eliminated by itself (see SpringBlock) and hands on what its shared degrees of
/// freedom feel; the few shared unknowns are then solved, and every filament finds its own. A
/// filament whose springs did not change keeps its factors. The result does not depend on which
/// ones were kept.
///
/// Shared unknowns: in a half-sarcomere one, the actin end; in series the loaded end and then the
/// junctions in their order, which makes their matrix a band. A mirrored half-sarcomere has the
/// sign -1; the first degree of freedom that moves with a shared unknown has the sign 1. Whether
/// one is prescribed or free is no matter of the filaments, which keep their factors through it.
///
/// Degrees of freedom: block after block, then one more, the outer end of the series element. It
/// hangs on one spring, so its force simply passes to the inner end: no difference of large
/// stiffnesses is taken, however stiff the element is.
///
/// Units:   nm, pN.
/// Refuses: a pivot that is 0 or not finite, a free outer end without stiffness. As there is no
///          pivoting, the caller asks for the residual of a system that is not definite.

#include <deal.II/lac/vector.h>

#include <vector>

#include "mechanics/skyline_matrix.h"
#include "mechanics/spring_block.h"

/// Spring from a shared unknown, there from the first degree of freedom that moves with it, to the
/// outer end.
struct SeriesSpring {
  unsigned inner = 0;
  double k = 0.0;
  bool is_held = false;  ///< outer end prescribed, to `u`
  double u = 0.0;
};

class SpringSystem {
 public:
  using Vector = dealii::Vector<double>;

  /// At least one shared unknown; all are free at first.
  void set_size(std::size_t n_blocks, unsigned n_shared);
  SpringBlock& block(std::size_t i) { return blocks[i]; }
  void prescribe(unsigned unknown, double u);
  void release(unsigned unknown);
  void set_series(SeriesSpring const& spring);

  /// Finds the displacements at which the springs balance the forces. False if refused; forces may
  /// be condensed all the same.
  bool solve(Vector const& forces, Vector& u);

  /// Adds up the forces on each unknown at the first of its degrees of freedom. All others are set
  /// to 0, like those that are held or prescribed.
  void condense(Vector& forces) const;
  /// Adds the forces that all springs exert under displacements `u`; returns the largest.
  double add_forces(Vector const& u, Vector& forces) const;
  /// Whether the last solution came from positive pivots alone, and so balances.
  bool is_definite() const;
  /// The largest force that displacements `u` leave on an unknown, relative to the largest of all
  /// forces; not a number if one isn't.
  double residual(Vector const& forces, Vector const& u);

 private:
  struct Shared {
    bool is_prescribed = false;
    double u = 0.0;  ///< 0 if it is free
    unsigned first_dof = 0;
  };

  void number_shared();
  bool eliminate_blocks(Vector const& forces);
  bool factorise_shared();
  void solve_shared(double outer_force);
  /// Calls `action(p, q, stiffness)` for every share of an entry of the matrix, q at most p.
  template <class Action>
  void for_each_pair(Action action) const;
  double force_on(SpringBlock const& block, unsigned joint) const;

  std::vector<SpringBlock> blocks;
  std::vector<Shared> shared;
  SeriesSpring series;
  SkylineMatrix matrix;  ///< of the shared unknowns
  bool is_factorised = false;
  std::vector<double> work;  ///< right-hand side, then solution
  // Work spaces, kept for their memory.
  std::vector<unsigned> first;
  Vector left;
};
