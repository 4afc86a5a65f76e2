#pragma once
/// What an experimenter reads off the lattice after a step.

#include "mechanics/dealii_forward.h"

class FilamentArray;

struct Measured {
  /// Takes force, displacements and bond counts from a correction and the out-of-balance forces
  /// before constraints: the entry of a held node is the force on it. Corrections add up over the
  /// passes, so that the displacements follow their nodes.
  void CalculateResults(FilamentArray const& filaments, dealii::Vector<double> const& du,
                        dealii::Vector<double> const& rhs);

  /// Force gained at the held ends over the way of the actin ends, from displacements and forces
  /// that were not applied [pN/nm].
  double stiffness(FilamentArray const& filaments, dealii::Vector<double> const& solution,
                   dealii::Vector<double> const& reaction) const;

  double force = 0.0;                ///< mean force on the thick filaments' held ends, negative
                                     ///< when the muscle pulls; the column has the other sign
  double actin_displacement = 0.0;   ///< of the last actin node, mean over rows
  double myosin_displacement = 0.0;  ///< of the last myosin node, mean over rows
  double cb_per_filament = 0.0;
  double cb_proteinC_per_filament = 0.0;

 private:
  void count_bonds(FilamentArray const& filaments);
};
