#pragma once
/// What a lattice lays out and offers.

#include <vector>

#include "lattice/geometry.h"
#include "records/filament_data.h"

inline FilamentData filament_of(Geometry const& lattice) {
  FilamentData data;
  lattice.initialize_filament(data);
  return data;
}

inline std::vector<BindingSite_s> candidates_of(Geometry const& lattice, FilamentData const& data,
                                                MyosinHead_s const& head) {
  std::vector<BindingSite_s> candidates;
  lattice.get_binding_sites(data, head, candidates);
  return candidates;
}
