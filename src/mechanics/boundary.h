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

/// Conditions on degrees of freedom, for one solve.
struct Ends {
  struct Held {
    unsigned dof;
    double step;  ///< the displacement that it takes [nm]
  };
  /// The displacement of `dof` is `factor` times that of `to`, which is itself free.
  struct Tie {
    unsigned dof;
    unsigned to;
    double factor;  ///< -1 across a junction, into a half-sarcomere that looks the other way
  };
  struct Load {
    unsigned dof;
    double force;  ///< [pN]
  };

  std::vector<Held> held;
  std::vector<Tie> ties;
  std::vector<Load> loads;
};

class Boundary {
 public:
  /// Keeps references to both.
  Boundary(FilamentArray const& filaments, SeriesElasticElement const& see);

  /// A length is a target position and becomes the step still to go from the present one; a force
  /// is taken as it is. Both are those of the whole lattice.
  void set_boundary_mode(Prescribed const& wanted);
  bool is_length() const { return prescribed.is_length(); }
  /// The prescribed step has been taken: from now on its ends stay where they are.
  void hold() { prescribed.value = 0.0; }

  /// The conditions for the present numbering.
  Ends create() const;

 private:
  Ends create_bnd_displacement() const;
  Ends create_bnd_force() const;
  Ends create_fibre_bnd_displacement() const;
  Ends create_fibre_bnd_force() const;
  /// What both controls of a half-sarcomere have in common.
  Ends hold_half_sarcomere() const;
  /// What both controls of a series have in common: all but the actin ends at the near end, which
  /// go to `near`.
  Ends join_series(std::vector<unsigned>& near) const;

  FilamentArray const& filaments;
  SeriesElasticElement const& see;
  Prescribed prescribed;
};
