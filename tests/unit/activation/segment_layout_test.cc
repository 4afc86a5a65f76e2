// Would catch: a node in two segments or in none, chains that exchange nodes or fibres, a last
// segment that is lost or too long.

#include "activation/segment_layout.h"

#include <gtest/gtest.h>

#include "lattice/geometry_vertebrae.h"
#include "support/work_dir.h"

TEST(SegmentLayout, CoversEachNodeOnceWhateverTheNumberOfNodes) {
  struct Case_s {
    unsigned nodes, length, segments[2];  // of even and odd chains
  };
  for (auto const& [nodes, length, segments] :
       {Case_s{12, 3, {2, 2}},    // whole segments
        Case_s{13, 3, {3, 2}},    // the last even segment runs past the end
        Case_s{15, 4, {2, 2}},    // only the odd ones' last does so
        Case_s{5, 9, {1, 1}}}) {  // a segment longer than the chain
    write_settings("geom_vertebrae.prm", "actin: dx_actin=1 length_actin=" + std::to_string(nodes));
    ChainSegments const chains = lay_out_segments(GeometryVertebrae({}), length);
    ASSERT_EQ(chains.size(), 4u);
    for (unsigned chain = 0; chain < 4; ++chain) {
      EXPECT_EQ(chains[chain].size(), segments[chain % 2]) << chain;
      unsigned node = chain % 2;  // the nodes of a strand follow each other at twice the spacing
      for (ActivationStateData const& segment : chains[chain]) {
        ASSERT_EQ(segment.get_segment_length(), length);
        for (unsigned i = 0; i < length; ++i, node += 2) {
          EXPECT_EQ(segment.fibre[i], chain < 2 ? 1u : 2u);
          EXPECT_EQ(segment.site[i], node);
        }
      }
      EXPECT_GE(node, nodes) << chain;  // all nodes of the strand
    }
  }
}
