// Would catch: a rate out of a detached state that is read from a neighbouring key, a calcium rate
// that doesn't follow the clock or leaves the first row, a widening on the wrong side, a rate table
// with a row too few, files read in another order, a value without sense that is taken.

#include "kinetics/model_vorn.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "base/logger.h"
#include "elastic/XB_Models.h"
#include "support/work_dir.h"

namespace {

std::unique_ptr<ModelVorn> make_model(std::vector<std::string> const& settings,
                                      std::string const& calcium = "0 0.001 0 0 0\n") {
  static XB_ConstantStiffness spring("");
  spring.k = 25.0;
  if (Logger::model_vorn_rates) std::fclose(std::exchange(Logger::model_vorn_rates, nullptr));
  write_parameters("vorn.prm", "vorn", settings);
  write_file("ca_protocol.dat", calcium);
  testing::internal::CaptureStdout();
  auto model = std::make_unique<ModelVorn>(ModelParameter_s{&spring, "vorn.prm"});
  EXPECT_EQ(testing::internal::GetCapturedStdout().find("MODEL VORN C_ = "), 0u);
  return model;
}

TEST(ModelVorn, DetachedStatesHaveConstantRatesNamedFromOne) {
  auto const model = make_model({"k_45 = 3", "k_51 = 5", "k_15 = 7", "k_16 = 11", "k_61 = 13"});
  for (double const x : {-3.0, 0.0, 3.0}) {
    EXPECT_EQ(model->get_k(x, 3, 4), 3.0);
    EXPECT_EQ(model->get_k(x, 4, 0), 5.0);
    EXPECT_EQ(model->get_k(x, 0, 4), 7.0);
    EXPECT_EQ(model->get_k(x, 0, 5), 11.0);
    EXPECT_EQ(model->get_k(x, 5, 0), 10.0);  // no calcium: the floor k_ps_0
  }
  char const* const pairs = "01 04 05 10 12 21 23 32 34 40 50";
  for (unsigned from = 0; from < 6; ++from) {
    for (unsigned to = 0; to < 6; ++to) {
      std::string const pair = std::to_string(from) + std::to_string(to);
      bool const exists = std::string(pairs).find(pair) != std::string::npos;
      EXPECT_EQ(model->transitions[from][to], exists) << pair;
      EXPECT_EQ(model->get_k(0.1, from, to) > 0.0, exists) << pair;
    }
  }
}

TEST(ModelVorn, CalciumEmptiesTheParkedStateInTheTimeOfTheFirstRow) {
  write_file("ca.dat", "0 0\n1 2e-6\n2 2e-6\n");
  auto const model = make_model({"b_param = 3"}, "0 1 0 999 ca.dat\n1 1 0 0 5\n");
  EXPECT_EQ(model->get_k(0.0, 5, 0), 10.0);
  model->set_time_step(0.5);
  EXPECT_NEAR(model->get_k(4.0, 5, 0), 10.0 + 490.0 / 2.0, 1e-9);  // at ca_50, whatever the strain
  model->set_time_step(0.25);
  EXPECT_NEAR(model->get_k(0.0, 5, 0), 10.0 + 490.0 / 9.0, 1e-9);
  model->set_time_step(1.5);
  EXPECT_NEAR(model->get_k(0.0, 5, 0), 10.0 + 490.0 * 8.0 / 9.0, 1e-9);
  EXPECT_EXIT(make_model({"b_param = 0.5"}, "0 1 0 0 -1e-7\n")->get_k(0.0, 5, 0),
              testing::ExitedWithCode(1), "ca_protocol.dat: the calcium concentration at time 0");
}

TEST(ModelVorn, DetachmentMultiplierWidensBindingOfPulledHeadsOnly) {
  auto const model = make_model({"detachment_multiplier = 4", "GBind = -20"});
  auto const plain = make_model({"GBind = -20"});
  for (double const x : {0.3, 0.8, 1.7}) {
    // Four times the energy stands at twice the strain.
    EXPECT_NEAR(model->get_k(2.0 * x, 0, 1) / plain->get_k(x, 0, 1), 1.0, 1e-12);
    EXPECT_DOUBLE_EQ(model->get_k(-x, 0, 1), plain->get_k(-x, 0, 1));
    EXPECT_DOUBLE_EQ(plain->get_k(-x, 0, 1), plain->get_k(x, 0, 1));
  }
}

TEST(ModelVorn, ListsItsConstantsAndTabulatesTheRatesOfBindingAndStroke) {
  auto const model = make_model({"kBT = 4"});
  std::string const listing = listing_text();
  EXPECT_EQ(listing.find("\t*** VORN MODEL ***********************\n\n\tk_adp:\t\t    51.0"), 0u);
  EXPECT_NE(listing.find("\tc_3:\t\t   170.00000000\n"), std::string::npos);
  std::vector<std::string> const rows = read_lines("model_vorn_rates.csv");
  ASSERT_EQ(rows.size(), 2001u);
  EXPECT_EQ(rows.front().substr(0, 13), "-10.00000000,");
  EXPECT_EQ(rows.back().substr(0, 11), "10.00000000");
  unsigned const pairs[4][2] = {{0, 1}, {1, 0}, {1, 2}, {2, 1}};
  for (int const row : {500, 1005}) {
    double x, k[4];
    char const* const text = rows[static_cast<std::size_t>(row)].c_str();
    ASSERT_EQ(std::sscanf(text, "%lf,%lf,%lf, %lf,%lf", &x, k, k + 1, k + 2, k + 3), 5);
    EXPECT_NEAR(x, -10.0 + 0.01 * row, 1e-8);
    for (int i = 0; i < 4; ++i) {
      double const rate = model->get_k(x, pairs[i][0], pairs[i][1]);
      EXPECT_NEAR(k[i], rate, 1e-6 * (1.0 + rate));
    }
  }
}

TEST(ModelVorn, RefusesValuesWithoutSenseAndAsksForCalciumFirst) {
  for (char const* const setting :
       {"kBT = 0", "D = 0", "k_bind = -1", "k_12 = 0", "k_21_cap = 0", "k_adp = -1", "k_45 = -1",
        "k_51 = -1", "k_15 = -1", "k_16 = -1", "k_ps_0 = -1", "k_ps_max = -1", "ca_50 = 0",
        "b_param = -1", "detachment_multiplier = 0", "eta = -1"}) {
    std::string const key = std::string(setting).substr(0, std::string(setting).find(' '));
    EXPECT_EXIT(make_model({setting}), testing::ExitedWithCode(1), "vorn.prm.*" + key) << setting;
  }
  EXPECT_EXIT(make_model({"kBT = 0"}, ""), testing::ExitedWithCode(1), "ca_protocol.dat");
}

}  // namespace
