// Would catch, in any model of a regulatory segment: a rate on the wrong pair of states, a second
// ion without its indicator, a divisor or a probability of the chain on other rates than those that
// close, a draw that isn't proportional to the rates or isn't one draw, targets in another order, a
// bound head that holds no move or the wrong one, constants without sense that are taken.

#include <gtest/gtest.h>

#include "activation/activation_2s.h"
#include "activation/ca_activation_3x2s.h"
#include "activation/ca_activation_3x3s.h"
#include "activation/kb_activation_extensible.h"
#include "activation/kb_activation_rigid.h"
#include "support/expect_refusal.h"
#include "support/occupancy.h"
#include "support/scripted_rand.h"
#include "support/work_dir.h"

namespace {

// Constants of order 1 that tell all steps apart.
std::string const two_positions =
    "Ca_regulation: K_Ca=0.5 k_Ca_off=2 K_Ca_p=0.75 k_Ca_off_p=3; Blocket2Closed_regulation: "
    "K_TnB=0.25 k_c_b=4 K_TnB_p=1.5 k_c_b_p=1.75 K_TnB_s=2.5 k_c_b_s=0.5;";
std::string const open_position =
    "Ca_regulation: K_Ca_s=1.25 k_Ca_off_s=1; Closed2Open_regulation: "
    "K_TnT=0.375 k_o_c=5 K_TnT_p=0.875 k_o_c_p=1.125 K_TnT_s=3 k_o_c_s=0.625";

CaActivation3x3SModel rigid_calcium(int indicator) {
  write_settings("ca.prm", two_positions + open_position);
  CaActivation3x3SModel model("ca.prm", indicator);
  for (double const Ca : {5.0, 2.0}) model.set_calcium(Ca);
  return model;
}

CaActivation3x2SModel flexible_calcium() {
  write_settings("ca.prm", two_positions);
  CaActivation3x2SModel model("ca.prm", 2, 0.5);
  model.set_calcium(2.0);
  return model;
}

KbActivationModelR rigid_kb() {
  write_settings("kb.prm",
                 "six_state: k1t=0.5 k2t=0.75 ep=0.25 lam=8 k_21=3 k_32=2 k_25=1.5 k_65=6 k_36=5");
  KbActivationModelR model("kb.prm");
  model.set_kb(2.0);
  return model;
}

KbActivationModelE flexible_kb() {
  write_settings("kb.prm", "rates: kt_eff=20");
  KbActivationModelE model("kb.prm");
  model.set_kb(3.0);
  return model;
}

struct Step_s {
  unsigned a, b;
  double forward, backward;
};

/// Compares the model's rates with those of the steps, and the occupancies that its draws reach
/// with those that the steps demand. `closing` is the chain's factor on what leads below 3.
template <class Model, class Step>
void expect_scheme(Model const& model, std::vector<Step_s> const& steps, double closing,
                   Step const& step) {
  double k[9][9] = {};
  for (Step_s const& s : steps) {
    k[s.a][s.b] = s.forward;
    k[s.b][s.a] = s.backward;
  }
  for (unsigned from = 0; from < model.n_states(); ++from) {
    for (unsigned to = 0; to < model.n_states(); ++to) {
      EXPECT_EQ(model.get_k(from, to), k[from][to]) << from << " to " << to;
      if (from >= 3 && to < 3) k[from][to] *= closing;
    }
  }
  auto const rate = [&k](unsigned from, unsigned to) { return k[from][to]; };
  expect_occupancy(stationary_occupancy(model.n_states(), rate), 200, step);
}

TEST(Segments, DrawsFollowTheRatesOfTheScheme) {
  std::vector<Step_s> const one_ion = {
      {0, 1, 2, 2},        {3, 4, 4.5, 3},   {6, 7, 2.5, 1},         {0, 3, 1, 4},
      {1, 4, 2.625, 1.75}, {3, 6, 1.875, 5}, {4, 7, 0.984375, 1.125}};
  std::vector<Step_s> two_ions = {
      {1, 2, 2, 2}, {4, 5, 4.5, 3}, {7, 8, 2.5, 1}, {2, 5, 1.25, 0.5}, {5, 8, 1.875, 0.625}};
  two_ions.insert(two_ions.end(), one_ion.begin(), one_ion.end());
  for (int const indicator : {1, 2, 3}) {
    auto const model = rigid_calcium(indicator);
    expect_scheme(model, indicator == 2 ? two_ions : one_ion, 1.0,
                  [&](int s) { return model.update_status(s, 0, 0.06); });
  }
  // The closing rates alone are divided, here by 0.5.
  std::vector<Step_s> const divided = {{0, 1, 2, 2},   {1, 2, 2, 2}, {3, 4, 4.5, 3},
                                       {4, 5, 4.5, 3}, {0, 3, 1, 8}, {1, 4, 2.625, 3.5},
                                       {2, 5, 1.25, 1}};
  auto const flexible = flexible_calcium();
  expect_scheme(flexible, divided, 0.3,
                [&](int s) { return flexible.update_status(s, 0.06, 0.3); });
  auto const kb = rigid_kb();
  expect_scheme(kb,
                {{0, 1, 3, 3}, {1, 2, 3, 2}, {1, 4, 1.5, 0.75}, {4, 5, 2.25, 6}, {2, 5, 5, 0.625}},
                1.0, [&](int s) { return kb.update_status(s, 0, 0.1); });
  auto const chain = flexible_kb();  // closes at 20 times 0.3
  expect_occupancy({2.0 / 3.0, 1.0 / 3.0}, 200,
                   [&](int s) { return chain.update_status(s, 0.05, 0.3); });
}

/// Each variate is the one number that a step uses.
template <class Step>
void expect_draws(Step const& step, std::vector<double> const& variates,
                  std::vector<int> const& next) {
  ScriptedRand::script(variates);
  std::vector<int> found;
  for (std::size_t i = 0; i < variates.size(); ++i) found.push_back(step());
  EXPECT_EQ(found, next);
  EXPECT_EQ(ScriptedRand::unused(), 0u);
  ScriptedRand::reset();
}

TEST(Segments, OneDrawPicksTheTargetsInOrder) {
  // Out of 4 with a step of 0.1: to 1 up to 0.175, to 3 up to 0.475, to 7 up to 0.5734375.
  auto const rigid = rigid_calcium(1);
  expect_draws([&] { return rigid.update_status(4, 0, 0.1); },
               {0.0, 0.01, 0.17, 0.18, 0.47, 0.48, 0.57, 0.58, 1.0}, {4, 1, 1, 3, 3, 7, 7, 4, 4});
  auto const chain = flexible_kb();
  EXPECT_EQ(chain.get_segment_length(), 7u);
  expect_draws([&] { return chain.update_status(0, 0.1, 0.2); }, {0.29, 0.31}, {1, 0});
  expect_draws([&] { return chain.update_status(1, 0.1, 0.2); }, {0.39, 0.41}, {0, 1});
  expect_draws([&] { return chain.update_status(2, 0.1, 0.2); }, {0.0}, {2});
}

TEST(Segments, HeadsAndChainHoldWhatCloses) {
  // Out of 3 to 0 up to 0.36, to 4 up to 0.765, to 6 up to 0.93375; from 6 all is free.
  auto const rigid = rigid_calcium(1);
  auto const calcium = [&](int s, int heads) {
    return [&rigid, s, heads] { return rigid.update_status(s, heads, 0.09); };
  };
  expect_draws(calcium(3, 0), {0.3}, {0});
  expect_draws(calcium(3, 1), {0.3, 0.7, 0.9}, {3, 4, 6});
  expect_draws(calcium(6, 1), {0.3}, {3});
  // Out of 4 to 1 up to 0.075 and to 5 up to 0.3, out of 5 to 2 up to 0.0625 and to 4 up to 0.6625.
  auto const kb = rigid_kb();
  expect_draws([&] { return kb.update_status(4, 1, 0.1); }, {0.05, 0.2}, {4, 5});
  expect_draws([&] { return kb.update_status(5, 3, 0.1); }, {0.05, 0.5}, {5, 4});
  // Out of 4 to 1 up to 0.315; a chain that is never below leaves 3 and 5, which follow at once.
  auto const flexible = flexible_calcium();
  expect_draws([&] { return flexible.update_status(4, 0.09, 1.0); }, {0.31}, {1});
  expect_draws([&] { return flexible.update_status(4, 0.09, 0.0); }, {0.0, 0.26, 0.28, 0.31, 0.68},
               {4, 3, 5, 5, 4});
}

TEST(Segments, RefuseConstantsWithoutSense) {
  static constexpr char const* file = "activ_2s.prm";  // the name that one of them has fixed
  write_file("ca_protocol.dat", "0 1 0 0 0\n");
  auto const refuses = [](auto const& make, std::vector<std::string> const& settings) {
    for (std::string const& setting : settings) {
      write_settings(file, setting);
      auto const key = setting.find(' ') + 1;
      expect_refusal(make, file + (".*" + setting.substr(key, setting.find('=') - key)));
    }
  };
  refuses([] { CaActivation3x3SModel(file, 1); },
          {"structure: segment_length=0", "Ca_regulation: K_Ca_s=-1",
           "Closed2Open_regulation: k_o_c=nan"});
  refuses([] { KbActivationModelR{file}; },
          {"six_state: k_65=-1", "six_state: ep=0", "six_state: lam=-2"});
  refuses([] { KbActivationModelE{file}; }, {"rates: kt_eff=-1"});
  refuses([] { Activation2SModel({}); }, {"two_state: lam=0", "two_state: k_12=-1"});
}

}  // namespace
