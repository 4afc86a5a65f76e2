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
        found.resize(std::max(found.size(), segment_of[fibre].size()));
      }
      ++number;
    }
  }
}

void BoundSites::count(FilamentData const& data) {
  std::fill(n_bound.begin(), n_bound.end(), 0);
  std::size_t const n_fibres = std::min(segment_of.size(), data.bound_count.size());
  for (std::size_t fibre = 0; fibre < n_fibres; ++fibre) {
    auto const& heads = data.bound_count[fibre];
    auto const& segments = segment_of[fibre];
    std::size_t const n = std::min(heads.size(), segments.size());
    // No processor foresees where heads are bound. So each node is noted, without a branch, and the
    // note is overwritten where there is none.
    std::size_t n_found = 0;
    for (std::size_t node = 0; node < n; ++node) {
      found[n_found] = segments[node];
      n_found += heads[node] != 0 ? 1 : 0;
    }
    for (std::size_t i = 0; i < n_found; ++i) ++n_bound[found[i]];
  }
}

unsigned read_segment_length(ParameterSection const& section) {
  constexpr unsigned longest = 1000000;
  unsigned const length = section.count("segment_length", 1);
  if (length > longest) section.refuse_value("segment_length", "a whole number from 1 to 1000000");
  return length;
}
