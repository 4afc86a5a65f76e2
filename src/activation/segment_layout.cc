#include "activation/segment_layout.h"

#include <algorithm>

#include "base/parameter_file.h"
#include "lattice/geometry.h"
#include "records/filament_data.h"

ChainSegments lay_out_segments(Geometry const& geometry, unsigned segment_length) {
  std::vector<unsigned> n_segments(geometry.n_actin_chains(), 0);
  geometry.n_actin_segments(segment_length, n_segments);
  ChainSegments chains(n_segments.size());
  for (unsigned chain = 0; chain < chains.size(); ++chain) {
    chains[chain].assign(n_segments[chain], ActivationStateData(segment_length));
    for (unsigned s = 0; s < n_segments[chain]; ++s) {
      ActivationStateData& segment = chains[chain][s];
      for (unsigned i = 0; i < segment_length; ++i) {
        segment.fibre[i] = geometry.get_fibre(segment_length, chain, s, i);
        segment.site[i] = geometry.get_site(segment_length, chain, s, i);
      }
    }
  }
  return chains;
}

BoundSites::BoundSites(ChainSegments const& chains) {
  unsigned n_segments = 0;
  for (auto const& chain : chains) n_segments += static_cast<unsigned>(chain.size());
  n_bound.resize(n_segments + 1);
  unsigned number = 0;
  for (auto const& chain : chains) {
    for (ActivationStateData const& segment : chain) {
      for (unsigned i = 0; i < segment.get_segment_length(); ++i) {
        unsigned const fibre = segment.fibre[i];
        unsigned const node = segment.site[i];
        if (fibre >= segment_of.size()) segment_of.resize(fibre + 1);
        if (node >= segment_of[fibre].size()) segment_of[fibre].resize(node + 1, n_segments);
        segment_of[fibre][node] = number;
      }
      ++number;
    }
  }
}

void BoundSites::count(FilamentData const& data) {
  std::fill(n_bound.begin(), n_bound.end(), 0);
  for (MyosinHead_s const* head : data.attached) {
    if (head->actin_fibre >= segment_of.size()) continue;
    auto const& segments = segment_of[head->actin_fibre];
    if (head->actin_site < segments.size()) ++n_bound[segments[head->actin_site]];
  }
}

unsigned read_segment_length(ParameterSection const& section) {
  constexpr unsigned longest = 1000000;
  unsigned const length = section.count("segment_length", 1);
  if (length > longest) section.refuse_value("segment_length", "a whole number from 1 to 1000000");
  return length;
}
