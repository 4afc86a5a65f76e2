// Would catch: a closing rate that isn't divided by the free chain's probability or not multiplied
// by the chain's, an opening rate that is, a closing transition left in the draw at probability 0,
// states or constants of the open position, undivided rates in the wrong listing.

#include "activation/ca_activation_3x2s.h"

#include <gtest/gtest.h>

#include "support/occupancy.h"
#include "support/scripted_rand.h"
#include "support/work_dir.h"

namespace {

CaActivation3x2SModel make_model(int indicator, double divisor) {
  write_file(
      "ca.prm",
      "subsection Ca_regulation\n set K_Ca = 0.5\n set k_Ca_off = 2\n set K_Ca_p = 0.75\n"
      " set k_Ca_off_p = 3\nend\n"
      "subsection Blocket2Closed_regulation\n set K_TnB = 0.25\n set k_c_b = 4\n"
      " set K_TnB_p = 1.5\n set k_c_b_p = 1.75\n set K_TnB_s = 2.5\n set k_c_b_s = 0.5\nend\n");
  CaActivation3x2SModel model("ca.prm", indicator, divisor);
  model.set_calcium(2.0);
  return model;
}

TEST(CaActivation3x2S, DivisorTouchesTheClosingRatesAlone) {
  CaActivation3x2SModel const model = make_model(2, 0.5);
  ASSERT_EQ(model.n_states(), 6u);
  double const expected[6][6] = {{0, 2, 0, 1, 0, 0},     {2, 0, 2, 0, 2.625, 0},
                                 {0, 2, 0, 0, 0, 1.25},  {8, 0, 0, 0, 4.5, 0},
                                 {0, 3.5, 0, 3, 0, 4.5}, {0, 0, 1, 0, 3, 0}};
  for (unsigned from = 0; from < 6; ++from) {
    for (unsigned to = 0; to < 6; ++to) {
      EXPECT_EQ(model.get_k(from, to), expected[from][to]) << from << " to " << to;
    }
  }
}

TEST(CaActivation3x2S, DrawsReachTheStationaryOccupancies) {
  constexpr double probability = 0.3;  // of the chain below the blocking position
  for (int const indicator : {1, 2}) {
    CaActivation3x2SModel const model = make_model(indicator, 0.5);
    auto const expected = stationary_occupancy(6, [&](unsigned from, unsigned to) {
      return model.get_k(from, to) * (from >= 3 && to < 3 ? probability : 1.0);
    });
    expect_occupancy(expected, 200,
                     [&](int s) { return model.update_status(s, 0.06, probability); });
  }
}

TEST(CaActivation3x2S, ChainThatIsNeverBelowLeavesOnlyTheOtherTargets) {
  CaActivation3x2SModel const model = make_model(2, 0.5);
  // Out of 4 with dt 0.09: closing would take up to 0.315; without it 3 follows at once.
  ScriptedRand::script({0.31, 0.31, 0.26, 0.28, 0.68, 0.0});
  EXPECT_EQ(model.update_status(4, 0.09, 1.0), 1);
  EXPECT_EQ(model.update_status(4, 0.09, 0.0), 5);
  EXPECT_EQ(model.update_status(4, 0.09, 0.0), 3);
  EXPECT_EQ(model.update_status(4, 0.09, 0.0), 5);
  EXPECT_EQ(model.update_status(4, 0.09, 0.0), 4);
  EXPECT_EQ(model.update_status(4, 0.09, 0.0), 4);
  EXPECT_EQ(ScriptedRand::draws(), 6u);
}

TEST(CaActivation3x2S, ListsClosingRatesBeforeAndAfterTheirDivision) {
  make_model(2, 0.5);
  auto const constants = [](std::string const& c_b, std::string const& c_b_p,
                            std::string const& c_b_s) {
    return "# Ca constants:\n\tK_Ca       = 0.500000\n\tk_Ca_on    = 1.000000\n"
           "\tk_Ca_off   = 2.000000\n\n\tK_Ca_p     = 0.750000\n\tk_Ca_on_p  = 2.250000\n"
           "\tk_Ca_off_p = 3.000000\n\n# Blocked/Close Regulation:\n\tK_TnB   = 0.250000\n"
           "\tk_b_c   = 1.000000\n\tk_c_b   = " +
           c_b +
           "\n\n\tK_TnB_p = 1.500000\n"
           "\tk_b_c_p = 2.625000\n\tk_c_b_p = " +
           c_b_p +
           "\n\n\tK_TnB_s = 2.500000\n"
           "\tk_b_c_s = 1.250000\n\tk_c_b_s = " +
           c_b_s + "\n\n\n";
  };
  EXPECT_EQ(read_file("CaActivation3x2SModel.lst"),
            "\t\tCa Activation 3x2S Model\n\n" + constants("4.000000", "1.750000", "0.500000"));
  EXPECT_EQ(listing_text(), "\t*** Ca ACTIVATION 3X2 - Elastic Chain *\n\n" +
                                constants("8.000000", "3.500000", "1.000000"));
  make_model(1, 0.5);
  EXPECT_EQ(read_lines("CaActivation2x2SModel.lst").at(0), "\t\tCa Activation 2x2S Model");
}

}  // namespace
