// Would catch: a node in two segments or in none, chains that exchange nodes or fibres, a last
// segment that is lost or too long, a lattice without chains that gets segments.

#include "activation/segment_layout.h"

#include <gtest/gtest.h>

#include <map>

#include "lattice/geometry_vertebrae.h"
#include "support/bare_geometry.h"
#include "support/work_dir.h"

namespace {

void expect_layout(unsigned nodes, unsigned length, unsigned even_segments, unsigned odd_segments) {
  write_parameters("geom_vertebrae.prm", "actin",
                   {"dx_actin = 1", "length_actin = " + std::to_string(nodes)});
  GeometryVertebrae const geometry{GeometryParameter_s{}};
  ASSERT_EQ(geometry.n_actin_nodes, nodes);
  ChainSegments const chains = lay_out_segments(geometry, length);
  ASSERT_EQ(chains.size(), 4u);
  std::map<std::pair<unsigned, unsigned>, int> covered;
  for (unsigned chain = 0; chain < 4; ++chain) {
    EXPECT_EQ(chains[chain].size(), chain % 2 == 0 ? even_segments : odd_segments) << chain;
    unsigned node = chain % 2;  // the nodes of a strand follow each other at twice the spacing
    for (ActivationStateData const& segment : chains[chain]) {
      ASSERT_EQ(segment.get_segment_length(), length);
      for (unsigned i = 0; i < length; ++i, node += 2) {
        EXPECT_EQ(segment.fibre[i], chain < 2 ? 1u : 2u);
        EXPECT_EQ(segment.site[i], node);
        if (node < nodes) ++covered[{segment.fibre[i], node}];
      }
    }
  }
  EXPECT_EQ(covered.size(), 2 * nodes);  // each node of both fibres, once
  for (auto const& [place, times] : covered) EXPECT_EQ(times, 1) << place.second;
}

TEST(SegmentLayout, CoversEachNodeOnceWhateverTheNumberOfNodes) {
  expect_layout(12, 3, 2, 2);  // whole segments
  expect_layout(13, 3, 3, 2);  // the last even segment runs past the end
  expect_layout(15, 4, 2, 2);  // only the odd ones' last does so
  expect_layout(14, 1, 7, 7);
  expect_layout(5, 9, 1, 1);  // a segment longer than the chain
}

TEST(SegmentLayout, LatticeWithoutChainsHasNoSegments) {
  EXPECT_TRUE(lay_out_segments(BareGeometry{}, 7).empty());
}

}  // namespace
