#pragma once
/// Listings of a late moment of long runs, and of diagnostics.

#include <iosfwd>

#include "mechanics/dealii_forward.h"

class FilamentArray;

/// At time step 70000 writes "ActinForceListing.dat": the forces at the actin ends, their mean and
/// standard deviation.
void write_actin_force_listing(FilamentArray const& filaments, dealii::Vector<double> const& rhs);

// The rest is called by no step of a run.

/// Writes the time and the nodes of the first filament.
void create_displacement(FilamentArray const& filaments, std::ostream& stream, double time);
/// At the time steps 1 and 70000 writes where the actin nodes are, and at the latter the mean force
/// of a crossbridge.
void PrintMonomerStatistics(FilamentArray const& filaments);
