#pragma once

class FilamentArray;

/// Writes the whole lattice as it stands: "lattice_filaments_T.csv" with a row for every filament
/// and every place at which it appears round its thick filament, "lattice_heads_T.csv" for every
/// head, "lattice_bonds_T.csv" for every bond that holds and "lattice_sites_T.csv" for every site
/// that nebulin deficiency has left; T is the time to ten digits. Each file is there as a whole or
/// not at all. Angles [rad] and places across the filaments [nm] end a row; where the lattice has
/// none, it ends before them.
void write_lattice_snapshot(FilamentArray const& filaments, double time);
