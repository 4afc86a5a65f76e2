// Would catch: opening and closing exchanged, a closing that forgets the chain's probability, a
// draw too few or too many, a segment length that is read.

#include "activation/kb_activation_extensible.h"

#include <gtest/gtest.h>

#include "support/occupancy.h"
#include "support/scripted_rand.h"
#include "support/work_dir.h"

namespace {

KbActivationModelE make_model(double kb) {
  write_parameters("kb.prm", "rates", {"kt_eff = 20"});
  KbActivationModelE model("kb.prm");
  model.set_kb(kb);
  return model;
}

TEST(KbActivationExtensible, OneDrawInAnyState) {
  KbActivationModelE const model = make_model(3.0);
  EXPECT_EQ(model.n_states(), 3u);
  EXPECT_EQ(model.get_segment_length(), 7u);
  EXPECT_EQ(model.GetLumpedSegmentState(0), 1u);
  EXPECT_EQ(model.GetLumpedSegmentState(1), 0u);
  EXPECT_EQ(listing_text(),
            "\t\tKb ACTIVATION - Elastic Chain\n\n\tkt_eff:\t\t\t\t  20.0000000000\n");
  ScriptedRand::script({0.29, 0.31, 0.39, 0.41, 0.0, 0.0});
  EXPECT_EQ(model.update_status(0, 0.1, 0.2), 1);  // dt kb = 0.3
  EXPECT_EQ(model.update_status(0, 0.1, 0.2), 0);
  EXPECT_EQ(model.update_status(1, 0.1, 0.2), 0);  // 0.2 kt_eff dt = 0.4
  EXPECT_EQ(model.update_status(1, 0.1, 0.2), 1);
  EXPECT_EQ(model.update_status(1, 0.1, 0.0), 1);  // the chain is never below
  EXPECT_EQ(model.update_status(2, 0.1, 0.2), 2);
  EXPECT_EQ(ScriptedRand::draws(), 6u);
}

TEST(KbActivationExtensible, DrawsReachTheStationaryOccupancies) {
  KbActivationModelE const model = make_model(3.0);
  expect_occupancy({5.0 / 8.0, 3.0 / 8.0}, 60,
                   [&](int s) { return model.update_status(s, 0.05, 0.25); });
}

}  // namespace
