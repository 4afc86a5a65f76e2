#include "activation/segment_layout.h"

#include "base/parameter_file.h"
#include "lattice/geometry.h"

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

unsigned read_segment_length(ParameterSection const& section) {
  constexpr unsigned longest = 1000000;
  unsigned const length = section.count("segment_length", 1);
  if (length > longest) section.refuse_value("segment_length", "a whole number from 1 to 1000000");
  return length;
}
