#pragma once
/// A lattice that leaves all that is optional undone: no sites to bind, no regulated chains.

#include "lattice/geometry.h"

struct BareGeometry : Geometry {
  bool is_actin(unsigned) const override { return false; }
  void initialize_filament(FilamentData&) const override {}
  void get_fibre_stiffness(unsigned, double&, double&) const override {}
};
