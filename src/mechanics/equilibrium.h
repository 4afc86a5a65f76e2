#pragma once
/// Equilibrium of all filaments, bonds, titin and the series elastic element, with the heads
/// frozen.
///
/// Newton iteration: the matrix is the stiffness at the present displacements (for titin, at its
/// rest value), the right-hand side what the elements carry out of balance, and each solution a
/// correction to the accumulated displacements. A prescribed displacement enters as a step in the
/// first pass; the same ends are then held while the rest is balanced. The heads don't move, so
/// bonds, mesh and numbering stay fixed meanwhile.
///
/// It ends when root mean square and largest entry of both the correction [nm] and the
/// out-of-balance force [pN] are within their limits. No balance after 99 passes, and a system that
/// determines no displacements, end the run: no number comes out of either.

#include <functional>

#include "mechanics/lattice_system.h"
#include "mechanics/sarcomer_parameter.h"

struct Measured;

class Equilibrium {
 public:
  /// Keeps references to all.
  Equilibrium(SarcomerParameter_s const& limits, FilamentArray const& filaments,
              SeriesElasticElement& see, Boundary const& boundary);

  /// Moves the lattice into equilibrium and measures it in each pass.
  void find(Measured& measured);
  /// Solves without moving anything, and calls `report(stiffness)` after each pass: force gained at
  /// the held ends over the way of the actin ends. No step of a run asks for it.
  void probe_stiffness(Measured const& measured, std::function<void(double)> const& report);

 private:
  using Vector = dealii::Vector<double>;
  struct Residual;

  /// The iteration. If the lattice `moves`, it takes each correction over; `report` sees it
  /// together with the forces before conditions.
  template <class Report>
  void iterate(bool moves, Report report);
  Ends begin();
  Vector reaction(Vector const& correction) const;
  /// Prescribed load and present forces, after a correction if there is one; a force that is not
  /// finite ends the run.
  void assemble_rhs(Ends const& ends, Vector const* correction);
  void refuse_floating(Ends const& ends) const;
  void log_pass(int pass) const;
  void log_residual(Residual const& residual) const;
  bool is_balanced(Residual const& residual) const;
  [[noreturn]] void stop_without_convergence(Residual const& residual) const;

  SarcomerParameter_s const& limits;
  FilamentArray const& filaments;
  SeriesElasticElement& see;
  Boundary const& boundary;
  LatticeSystem system;
  Vector rhs;
  Vector du;
};
