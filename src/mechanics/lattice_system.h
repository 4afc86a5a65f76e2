#pragma once
/// The lattice as a system of springs between its degrees of freedom, kept from step to step.
///
/// Each filament is eliminated by itself and solved again only where its bonds or their stiffnesses
/// have changed; the few points that filaments share come last. A solution whose forces don't
/// balance, or none, goes to the solver with pivoting instead.

#include <deal.II/lac/vector.h>

#include <optional>
#include <vector>

#include "mechanics/boundary.h"
#include "mechanics/spring_system.h"

class FilamentArray;
class SeriesElasticElement;

class LatticeSystem {
 public:
  using Vector = dealii::Vector<double>;

  /// Keeps references to both.
  LatticeSystem(FilamentArray const& filaments, SeriesElasticElement const& see);

  /// Takes over the meshes and their numbering, and says how their ends move.
  void set_ends(Ends const& ends);
  /// Takes over the present stiffnesses.
  void set_springs();
  /// Displacements `u` under `forces` (by degree of freedom) and what `ends` prescribe. False when
  /// the forces determine no displacements.
  bool solve(Ends const& ends, Vector const& forces, Vector& u);
  /// Leaves of `forces` what acts on motions that are free: forces on nodes that move together are
  /// summed at the first of them, those on held ends dropped.
  void condense(Vector& forces) const { system.condense(forces); }
  /// The first degree of freedom that no spring with a stiffness joins to a held end. It has no
  /// determined place, and elimination may hide that behind rounding.
  std::optional<unsigned> first_floating(Ends const& ends) const;
  /// All springs, with global numbers.
  std::vector<Spring> all_springs() const;

 private:
  void number_shared(Ends const& ends);
  unsigned unknown_of(unsigned master) const;

  FilamentArray const& filaments;
  SeriesElasticElement const& see;
  SpringSystem system;
  std::vector<unsigned> mesh_numbers;  ///< those that the blocks were made for
  std::vector<bool> has_springs;       ///< whose stiffness will not change with this mesh
  std::vector<unsigned> masters;       ///< degrees of freedom that others follow, by unknown
  std::vector<SpringDof> dofs;
  std::vector<Spring> springs;
};
