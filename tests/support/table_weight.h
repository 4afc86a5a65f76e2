#pragma once
/// Weights from the tables of a lattice; 0 where a head can't bind.

#include <gtest/gtest.h>

#include "lattice/geometry_flight.h"
#include "lattice/geometry_vertebrae.h"
#include "records/filament_data.h"

inline double weight_of(std::vector<BindingSite_s> const& out) {
  EXPECT_LE(out.size(), 1u);
  return out.empty() ? 0.0 : out[0].weight;
}

inline double table_weight(GeometryFlight const& lattice, unsigned crown, unsigned head,
                           unsigned site, unsigned fibre) {
  std::vector<BindingSite_s> out;
  lattice.get_angles_cached(head, crown, site, fibre, out, 1.0);
  return weight_of(out);
}

inline double table_weight(GeometryVertebrae const& lattice, unsigned crown, unsigned head,
                           unsigned site, unsigned fibre) {
  std::vector<BindingSite_s> out;
  lattice.get_angles_cached(head, crown, site, fibre, out);
  return weight_of(out);
}
