#pragma once

class FilamentArray;

/// Writes "distributions_T.csv" and "x_ray_data_T.csv", T the time as a stream prints it: a row in
/// each for every bond, filament after filament.
void write_snapshots(FilamentArray const& filaments, double time);
