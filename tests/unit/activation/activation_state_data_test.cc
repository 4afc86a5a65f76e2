// Would catch: a place past the fibre's end that is read or written, heads counted at other sites,
// a factor or a mapped state that lands in the wrong field.

#include "activation/activation_state_data.h"

#include <gtest/gtest.h>

#include "records/filament_data.h"

namespace {

/// A segment of five places: nodes 1 to 3 of fibre 1, of which the last is past the end, then one
/// place on a fibre that isn't there and one at the first node of fibre 2.
struct Bench {
  Bench() {
    std::vector<unsigned> nodes = {2, 3, 4};
    data.initialize(nodes);
    segment.fibre = {1, 1, 1, 3, 2};
    segment.site = {1, 2, 3, 0, 0};
  }

  FilamentData data;
  ActivationStateData segment{5};
};

TEST(ActivationStateData, FindsTheHeadsOfItsSites) {
  Bench bench;
  FilamentData& data = bench.data;
  EXPECT_EQ(bench.segment.get_segment_length(), 5u);
  EXPECT_FALSE(bench.segment.heads_bound(data));
  MyosinHead_s head = {};
  head.state = 4;
  data.sites[1][2].head = &head;
  data.bound_count[1][2] = 1;
  data.bound_count[2][0] = 1;
  data.bound_count[1][0] = data.bound_count[2][3] = data.bound_count[0][1] = 2;  // not its own
  bool const bound[] = {false, true, false, false, true};
  for (unsigned i = 0; i < 5; ++i) {
    EXPECT_EQ(bench.segment.head_bound(i, data), bound[i]) << i;
    EXPECT_EQ(bench.segment.head_state(i, data), i == 1 ? 4u : 0u) << i;
  }
  EXPECT_EQ(bench.segment.n_heads_bound(data), 2u);  // sites, however many heads
  EXPECT_TRUE(bench.segment.heads_bound(data));
}

TEST(ActivationStateData, CopiesFactorsAndMappedStates) {
  Bench bench;
  for (double const factor : bench.segment.k_on_factor) EXPECT_EQ(factor, 1.0);
  for (double const factor : bench.segment.k_stroke_factor) EXPECT_EQ(factor, 1.0);
  bench.segment.state = {0, 1, 2, 0, 2};
  bench.segment.k_on_factor = {0.1, 0.2, 0.3, 0.4, 0.5};
  bench.segment.k_stroke_factor = {1.1, 1.2, 1.3, 1.4, 1.5};
  MyosinHead_s head = {};
  bench.data.sites[1][1].head = &head;
  bench.data.sites[1][1].k_off_factor = 0.7;
  bench.segment.copy_to_filament(bench.data, {2, 0, 1});
  auto const expect_site = [&](unsigned fibre, unsigned node, unsigned state, double on,
                               double stroke) {
    ActinSite_s const& site = bench.data.sites[fibre][node];
    EXPECT_EQ(site.state, state) << fibre << ", " << node;
    EXPECT_EQ(site.k_on_factor, on) << fibre << ", " << node;
    EXPECT_EQ(site.k_stroke_factor, stroke) << fibre << ", " << node;
  };
  expect_site(1, 0, 0, 1.0, 1.0);
  expect_site(1, 1, 2, 0.1, 1.1);
  expect_site(1, 2, 0, 0.2, 1.2);
  expect_site(2, 0, 1, 0.5, 1.5);
  expect_site(2, 1, 0, 1.0, 1.0);
  EXPECT_EQ(bench.data.sites[1][1].k_off_factor, 0.7);
  EXPECT_EQ(bench.data.sites[1][1].head, &head);
}

}  // namespace
