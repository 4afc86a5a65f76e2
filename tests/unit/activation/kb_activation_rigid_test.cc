// Would catch: a wrong rate or pair of states, kb on a backward step, a segment that enters state
// 3, a bound head that doesn't hold an open segment or holds other moves.

#include "activation/kb_activation_rigid.h"

#include <gtest/gtest.h>

#include "support/occupancy.h"
#include "support/scripted_rand.h"
#include "support/work_dir.h"

namespace {

KbActivationModelR make_model(double kb) {
  write_file("kb.prm",
             "subsection structure\n set segment_length = 5\n set strict_closing = 0\nend\n"
             "subsection six_state\n set k1t = 0.5\n set k2t = 0.75\n set ep = 0.25\n"
             " set lam = 8\n set k_21 = 3\n set k_32 = 2\n set k_25 = 1.5\n set k_65 = 6\n"
             " set k_36 = 5\nend\n");
  KbActivationModelR model("kb.prm");
  model.set_kb(kb);
  return model;
}

TEST(KbActivationRigid, RatesAndStates) {
  KbActivationModelR const model = make_model(2.0);
  EXPECT_EQ(model.get_segment_length(), 5u);
  EXPECT_FALSE(model.get_strict_closing());
  double const expected[6][6] = {{0, 3, 0, 0, 0, 0},       {3, 0, 3, 0, 1.5, 0},
                                 {0, 2, 0, 0, 0, 5},       {0, 0, 0, 0, 0, 0},
                                 {0, 0.75, 0, 0, 0, 2.25}, {0, 0, 0.625, 0, 6, 0}};
  for (unsigned from = 0; from < 6; ++from) {
    EXPECT_EQ(model.GetLumpedSegmentState(static_cast<int>(from)), from < 3 ? 1u : 0u);
    for (unsigned to = 0; to < 6; ++to) {
      EXPECT_EQ(model.get_k(from, to), expected[from][to]) << from << " to " << to;
    }
  }
  EXPECT_EQ(listing_text(), "\t\tKb ACTIVATION - Rigid Chain\n\n");
}

TEST(KbActivationRigid, DrawsReachTheStationaryOccupancies) {
  KbActivationModelR const model = make_model(2.0);
  auto const expected =
      stationary_occupancy(6, [&](unsigned from, unsigned to) { return model.get_k(from, to); });
  EXPECT_EQ(expected[3], 0.0);
  expect_occupancy(expected, 200, [&](int s) { return model.update_status(s, 0, 0.1); });
}

TEST(KbActivationRigid, BoundHeadHoldsTheSegmentOpen) {
  KbActivationModelR const model = make_model(2.0);
  // Steps of 0.1 lead from 4 to 1 up to 0.075 and to 5 up to 0.3, from 5 to 2 up to 0.0625 and
  // to 4 up to 0.6625.
  ScriptedRand::script({0.05, 0.05, 0.2, 0.05, 0.5});
  EXPECT_EQ(model.update_status(4, 0, 0.1), 1);
  EXPECT_EQ(model.update_status(4, 1, 0.1), 4);
  EXPECT_EQ(model.update_status(4, 1, 0.1), 5);
  EXPECT_EQ(model.update_status(5, 3, 0.1), 5);  // to 2 is held as well
  EXPECT_EQ(model.update_status(5, 3, 0.1), 4);
}

TEST(KbActivationRigid, WithoutKbNothingOpens) {
  KbActivationModelR const model = make_model(0.0);
  for (int i = 0; i < 1000; ++i) EXPECT_EQ(model.update_status(0, 0, 0.3), 0);
}

TEST(KbActivationRigidDeathTest, RefusesWhatHasNoSense) {
  for (std::string const line : {"k_65 = -1", "ep = 0", "lam = -2", "k1t = nan"}) {
    write_parameters("bad.prm", "six_state", {line});
    EXPECT_EXIT(KbActivationModelR("bad.prm"), testing::ExitedWithCode(1),
                "bad.prm.*" + line.substr(0, line.find(' ')));
  }
}

}  // namespace
