#pragma once
/// How the ends of the lattice are held, and how length or force comes onto it.
///
/// A half-sarcomere has all thick filaments held at their first node (the middle of the sarcomere)
/// and all actin ends moving as one; length or force comes onto the outer end of the series elastic
/// element. In a series, mirrored half-sarcomeres share a point with each neighbour, in all rows
/// the same; the actin end of the last is held and that of the first is prescribed or loaded.

#include <vector>

#include "base/prescribed.h"

class FilamentArray;
class SeriesElasticElement;

/// Conditions on degrees of freedom, for one solve. Which ends are held, tied and driven follows
/// from the mesh alone, so that what is kept of an unchanged filament stays true; what is
/// prescribed may change from solve to solve.
struct Ends {
  /// The displacement of `dof` is `factor` times that of `to`, which is tied to nothing.
  struct Tie {
    unsigned dof;
    unsigned to;
    double factor;  ///< -1 across a junction, into a half-sarcomere that looks the other way
  };

  std::vector<unsigned> held;  ///< do not move; ascending
  std::vector<Tie> ties;       ///< ascending in `dof`
  unsigned driven;             ///< where the prescribed length or force comes on
  Prescribed prescribed;       ///< the step that `driven` takes [nm], or the force on it [pN]
};

class Boundary {
 public:
  /// Keeps references to both.
  Boundary(FilamentArray const& filaments, SeriesElasticElement const& see);

  /// A length is a target position and becomes the step still to go from the present one; a force
  /// is taken as it is. Both are those of the whole lattice.
  void set_boundary_mode(Prescribed const& wanted);
  /// The conditions for the present numbering.
  Ends create() const;

 private:
  Ends create_bnd() const;
  Ends create_fibre_bnd() const;

  FilamentArray const& filaments;
  SeriesElasticElement const& see;
  Prescribed prescribed;
};
