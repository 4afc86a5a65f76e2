#pragma once
/// The series elastic element (SEE) between the actin end of the lattice and the outside: one
/// spring with a damper beside it for every filament, all in parallel.
///
/// Law:     force on either end = N (F(x) + c (x - x_old) / dt)
/// Symbols: x extension [nm], x_old the same at the start of the step, N filaments, F law of the
///          spring [pN], c damping [pN time/nm], dt length of the step
/// Assumes: the element hangs on the actin end of the first filament, to which all others of a
///          half-sarcomere are tied. In a series of sarcomeres it takes no part: its outer end is
///          free and carries no load.

#include "base/output_file.h"
#include "mechanics/dealii_forward.h"

class FilamentArray;
class XB_Model;

class SeriesElasticElement {
 public:
  /// Keeps references to law and filaments.
  SeriesElasticElement(XB_Model const& law, double damping, FilamentArray const& filaments);

  /// Finds the extension at which the spring carries |force|: what titin's prestress stretches it
  /// to, and lengths are measured from.
  void SetInitialPrescribedDisplacement(double force);
  /// Keeps the present extension, from which the damper works in this step.
  void begin_step() { extension_old = extension(); }
  double extension() const;
  /// Of one spring alone [pN].
  double spring_force(double x) const;
  /// Of all springs and dampers together [pN/nm].
  double stiffness() const;

  /// The actin end that it hangs on.
  unsigned inner_dof() const;
  /// Adds the present force and writes a row of "SEE_velocity.csv", which grows across the runs of
  /// a directory. Rows reach the disk with `flush`.
  void see_create_rhs(dealii::Vector<double>& rhs);
  void flush() const { velocity_file.flush(); }

  unsigned outer_dof = 0;             ///< behind those of all filaments
  double displacement = 0.0;          ///< of the outer end [nm]
  double initial_displacement = 0.0;  ///< of the outer end under the prestress alone [nm]

 private:
  XB_Model const& law;
  double const damping;
  FilamentArray const& filaments;
  double extension_old = 0.0;
  OutputFile velocity_file;
};
