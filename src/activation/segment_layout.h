#pragma once
/// How the sites of a filament group into the chains and segments that regulate together.

#include <vector>

#include "activation/activation_state_data.h"

class Geometry;
class ParameterSection;
struct FilamentData;

/// Per chain, its segments along the filament.
using ChainSegments = std::vector<std::vector<ActivationStateData>>;

/// Lays out all chains of a lattice in segments of `segment_length` sites. Each site knows its
/// fibre and node; the last segment of a chain may run past the end of the fibre. A lattice without
/// regulated chains gives none.
ChainSegments lay_out_segments(Geometry const& geometry, unsigned segment_length);

/// How many sites of each segment carry a head.
class BoundSites {
 public:
  BoundSites() = default;
  explicit BoundSites(ChainSegments const& chains);

  /// Counts the bonds of the last step anew.
  void count(FilamentData const& data);
  /// Of a segment, numbered chain after chain.
  unsigned in_segment(std::size_t number) const { return n_bound[number]; }

 private:
  std::vector<std::vector<unsigned>> segment_of;  ///< by fibre and node; of no segment: the last
  std::vector<unsigned> n_bound;                  ///< by segment; the last one is none
};

/// Reads the key `segment_length`; refuses what no chain can have.
unsigned read_segment_length(ParameterSection const& section);
