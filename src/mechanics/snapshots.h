#pragma once

class FilamentArray;

/// Writes "distributions_T.csv", "x_ray_data_T.csv" and "bonds_T.csv", T the time as a stream
/// prints it: a row in each for every bond, filament after filament, so that the number of its row
/// is the bond's in all three.
void write_snapshots(FilamentArray const& filaments, double time);
