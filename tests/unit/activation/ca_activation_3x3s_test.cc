// Would catch: a rate on the wrong pair of states, a second ion without its indicator, a draw that
// isn't proportional to the rates, a veto that is lost or holds other moves, a wrong listing.

#include "activation/ca_activation_3x3s.h"

#include <gtest/gtest.h>

#include <map>

#include "support/occupancy.h"
#include "support/scripted_rand.h"
#include "support/work_dir.h"

namespace {

/// Constants of order 1 that tell all steps apart.
void write_constants() {
  write_file(
      "ca.prm",
      "subsection Ca_regulation\n set K_Ca = 0.5\n set k_Ca_off = 2\n set K_Ca_p = 0.75\n"
      " set k_Ca_off_p = 3\n set K_Ca_s = 1.25\n set k_Ca_off_s = 1\nend\n"
      "subsection Blocket2Closed_regulation\n set K_TnB = 0.25\n set k_c_b = 4\n"
      " set K_TnB_p = 1.5\n set k_c_b_p = 1.75\n set K_TnB_s = 2.5\n set k_c_b_s = 0.5\nend\n"
      "subsection Closed2Open_regulation\n set K_TnT = 0.375\n set k_o_c = 5\n"
      " set K_TnT_p = 0.875\n set k_o_c_p = 1.125\n set K_TnT_s = 3\n set k_o_c_s = 0.625\n"
      "end\n");
}

CaActivation3x3SModel make_model(int indicator, double Ca) {
  write_constants();
  CaActivation3x3SModel model("ca.prm", indicator);
  model.set_calcium(Ca);
  return model;
}

using Rates = std::map<std::pair<unsigned, unsigned>, double>;

Rates const one_ion = {{{0, 1}, 2.0},      {{1, 0}, 2.0},  {{3, 4}, 4.5},   {{4, 3}, 3.0},
                       {{6, 7}, 2.5},      {{7, 6}, 1.0},  {{0, 3}, 1.0},   {{3, 0}, 4.0},
                       {{1, 4}, 2.625},    {{4, 1}, 1.75}, {{3, 6}, 1.875}, {{6, 3}, 5.0},
                       {{4, 7}, 0.984375}, {{7, 4}, 1.125}};
Rates const second_ion = {{{1, 2}, 2.0},   {{2, 1}, 2.0},  {{4, 5}, 4.5},  {{5, 4}, 3.0},
                          {{7, 8}, 2.5},   {{8, 7}, 1.0},  {{2, 5}, 1.25}, {{5, 2}, 0.5},
                          {{5, 8}, 1.875}, {{8, 5}, 0.625}};

void expect_rates(CaActivation3x3SModel const& model, Rates const& rates) {
  ASSERT_EQ(model.n_states(), 9u);
  for (unsigned from = 0; from < 9; ++from) {
    for (unsigned to = 0; to < 9; ++to) {
      auto const found = rates.find({from, to});
      EXPECT_EQ(model.get_k(from, to), found == rates.end() ? 0.0 : found->second)
          << from << " to " << to;
    }
  }
}

TEST(CaActivation3x3S, RatesOfOneAndTwoIons) {
  for (int const indicator : {1, 3}) expect_rates(make_model(indicator, 2.0), one_ion);
  Rates all = one_ion;
  all.insert(second_ion.begin(), second_ion.end());
  CaActivation3x3SModel model = make_model(2, 5.0);
  model.set_calcium(2.0);
  expect_rates(model, all);
  unsigned const lumped[] = {1, 1, 1, 2, 2, 2, 0, 0, 0};
  for (int s = 0; s < 9; ++s) EXPECT_EQ(model.GetLumpedSegmentState(s), lumped[s]) << s;
}

TEST(CaActivation3x3S, DrawsReachTheStationaryOccupancies) {
  for (int const indicator : {1, 2}) {
    CaActivation3x3SModel const model = make_model(indicator, 2.0);
    auto const expected =
        stationary_occupancy(9, [&](unsigned from, unsigned to) { return model.get_k(from, to); });
    expect_occupancy(expected, 200, [&](int s) { return model.update_status(s, 0, 0.06); });
  }
}

TEST(CaActivation3x3S, OneDrawPicksTheTargetsInOrder) {
  CaActivation3x3SModel const model = make_model(1, 2.0);
  // Out of 4 with dt 0.1: to 1 up to 0.175, to 3 up to 0.475, to 7 up to 0.5734375, then staying.
  double const r[] = {0.0, 0.01, 0.17, 0.18, 0.47, 0.48, 0.57, 0.58, 1.0};
  int const next[] = {4, 1, 1, 3, 3, 7, 7, 4, 4};
  ScriptedRand::script({r, r + 9});
  for (int const expected : next) EXPECT_EQ(model.update_status(4, 0, 0.1), expected);
  EXPECT_EQ(ScriptedRand::draws(), 9u);
}

TEST(CaActivation3x3S, BoundHeadHoldsOffTheBlockedPosition) {
  CaActivation3x3SModel const model = make_model(1, 2.0);
  // Out of 3 with dt 0.09: to 0 up to 0.36, to 4 up to 0.765, to 6 up to 0.93375.
  ScriptedRand::script({0.3, 0.3, 0.7, 0.9, 0.3});
  EXPECT_EQ(model.update_status(3, 0, 0.09), 0);
  EXPECT_EQ(model.update_status(3, 1, 0.09), 3);
  EXPECT_EQ(model.update_status(3, 1, 0.09), 4);
  EXPECT_EQ(model.update_status(3, 2, 0.09), 6);
  EXPECT_EQ(model.update_status(6, 1, 0.09), 3);  // open to closed is free
}

TEST(CaActivation3x3S, TooLongAStepIsToldAndMovesWithCertainty) {
  CaActivation3x3SModel const model = make_model(1, 2.0);
  ScriptedRand::script({0.38, 0.39, 1.0, 0.0});
  testing::internal::CaptureStdout();
  EXPECT_EQ(model.update_status(3, 0, 1.0), 0);  // 4 of 10.375
  EXPECT_EQ(model.update_status(3, 0, 1.0), 4);
  EXPECT_EQ(model.update_status(3, 0, 1.0), 6);
  EXPECT_EQ(model.update_status(3, 0, 1.0), 3);
  std::string const line = "Internal Error!!!! Actin Binding, Sum 1.037500e+01\n";
  EXPECT_EQ(testing::internal::GetCapturedStdout(), line + line + line + line);
}

TEST(CaActivation3x3S, ListsConstantsInBothPlaces) {
  make_model(1, 0.0);
  std::string const text = read_file("CaActivation2x3SModel.lst");
  std::string const heading = "\t\tCa Activation 3x3S Model\n\n";
  ASSERT_EQ(text.substr(0, heading.size()), heading);
  std::string const constants = text.substr(heading.size());
  EXPECT_EQ(listing_text(), "\t\tCa ACTIVATION 3X3 - Rigid Chain\n\n" + constants);
  for (std::string const lines :
       {"# Ca constants:\n\tK_Ca       = 0.500000\n\tk_Ca_on    = 1.000000\n"
        "\tk_Ca_off   = 2.000000\n\n\tK_Ca_p     = 0.750000\n",
        "\tk_Ca_on_s  = 1.250000\n\tk_Ca_off_s = 1.000000\n\n\n# Blocked/Close Regulation:\n"
        "\tK_TnB   = 0.250000\n\tk_b_c   = 1.000000\n\tk_c_b   = 4.000000\n\n",
        "\tK_TnB_s = 0.000000\n\tk_b_c_s = 0.000000\n\tk_c_b_s = 0.000000\n\n\n"
        "# Closed/Open Regulation:\n\tK_TnT   = 0.375000\n\tk_c_o   = 1.875000\n",
        "\tk_c_o_s = 0.000000\n\tk_o_c_s = 0.000000\n\n\n"}) {
    EXPECT_NE(constants.find(lines), std::string::npos) << lines;
  }
  make_model(2, 0.0);
  EXPECT_NE(read_file("CaActivation3x3SModel.lst").find("\tk_c_o_s = 1.875000\n"),
            std::string::npos);
}

TEST(CaActivation3x3SDeathTest, RefusesWhatHasNoSense) {
  for (auto const& [section, line] :
       std::map<std::string, std::string>{{"structure", "segment_length = 0"},
                                          {"Ca_regulation", "K_Ca_s = -1"},
                                          {"Closed2Open_regulation", "k_o_c = nan"}}) {
    write_parameters("bad.prm", section, {line});
    EXPECT_EXIT(CaActivation3x3SModel("bad.prm", 1), testing::ExitedWithCode(1),
                "bad.prm.*" + line.substr(0, line.find(' ')));
  }
}

}  // namespace
