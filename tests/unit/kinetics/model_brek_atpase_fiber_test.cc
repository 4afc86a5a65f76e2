// Would catch: a constant read from a neighbouring key or on a wrong transition, a short-cut that
// is lost, a lever moved in a wrong state, tables that end early or name other columns, a value
// without sense that is taken.

#include "kinetics/model_brek_atpase_fiber.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "elastic/XB_Models.h"
#include "support/work_dir.h"

namespace {

std::unique_ptr<ModelBrekAtpaseFiber> make_model(std::vector<std::string> const& settings) {
  static XB_ConstantStiffness spring("");
  spring.k = 25.0;
  write_parameters("fiber.prm", "brek_atpase_fiber", settings);
  testing::internal::CaptureStdout();
  auto model = std::make_unique<ModelBrekAtpaseFiber>(ModelParameter_s{&spring, "fiber.prm"});
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "k bind scaled: 170\n");  // one site in reach
  return model;
}

TEST(ModelBrekAtpaseFiber, ConstantRatesStandOnTheTransitionsOfTheirNames) {
  char const* const pairs[] = {"34", "43", "45", "54", "56", "65",
                               "67", "76", "70", "07", "16", "61"};
  std::vector<std::string> settings;
  for (char const* const pair : pairs) settings.push_back(std::string("k_") + pair + " = " + pair);
  auto const model = make_model(settings);
  for (char const* const pair : pairs) {
    auto const from = static_cast<unsigned>(pair[0] - '0'),
               to = static_cast<unsigned>(pair[1] - '0');
    EXPECT_EQ(model->get_k(2.5, from, to), std::stod(pair)) << pair;
  }
  std::string const others = "01 10 12 21 23 32";
  int n_transitions = 0;
  for (unsigned from = 0; from < 8; ++from) {
    for (unsigned to = 0; to < 8; ++to) {
      std::string const pair = std::to_string(from) + std::to_string(to);
      bool const exists = others.find(pair) != std::string::npos ||
                          std::find(std::begin(pairs), std::end(pairs), pair) != std::end(pairs);
      EXPECT_EQ(model->transitions[from][to], exists) << pair;
      EXPECT_EQ(model->get_k(0.1, from, to) > 0.0, exists) << pair;
      n_transitions += exists;
    }
  }
  EXPECT_EQ(n_transitions, 18);
}

TEST(ModelBrekAtpaseFiber, LeverMovesInTheStatesBehindTheStroke) {
  auto const model = make_model({"D = 6", "delta = 2"});
  double const strokes[] = {0.0, 0.0, 6.0, 8.0, 8.0, 8.0, 8.0, 0.0};
  for (unsigned s = 0; s < 8; ++s) {
    EXPECT_EQ(model->attached[s], s >= 1 && s <= 6);
    EXPECT_EQ(model->IsPowerStrokeState(static_cast<int>(s)), strokes[s] > 0.0);
    EXPECT_EQ(model->power_stroke(s), strokes[s]);
  }
}

TEST(ModelBrekAtpaseFiber, TabulatesEnergiesAndRatesOverTheStrain) {
  auto const model = make_model({"k_61 = 7"});
  std::vector<std::string> const rates = read_lines("rates.csv");
  ASSERT_EQ(rates.size(), 2002u);
  EXPECT_EQ(rates[0],
            "x[nm]/rates,0 -> 1,0 -> 7,1 -> 0,1 -> 2,1 -> 6,2 -> 1,2 -> 3,3 -> 2,3 -> 4,4 -> 3,"
            "4 -> 5,5 -> 4,5 -> 6,6 -> 1,6 -> 5,6 -> 7,7 -> 0,7 -> 6,");
  EXPECT_EQ(rates[1].substr(0, 14), "-1.000000e+01,");
  EXPECT_EQ(rates[2001].substr(0, 13), "1.000000e+01,");
  std::istringstream row(rates[1]);
  std::vector<std::string> cells;
  for (std::string cell; std::getline(row, cell, ',');) cells.push_back(cell);
  ASSERT_EQ(cells.size(), 19u);
  EXPECT_EQ(cells[14], "7.000000e+00");
  std::vector<std::string> const energies = read_lines("energy.csv");
  ASSERT_EQ(energies.size(), 2002u);
  EXPECT_EQ(energies[0],
            "x[nm]/energy,State 0,State 1,State 2,State 3,State 4,State 5,State 6,State 7,");
  // In pN nm at -10 nm: -3.63 kBT + 1250; less 13.96 kBT, + 3.125; less 24 kBT, + 28.125; as much.
  EXPECT_EQ(energies[1],
            "-1.000000e+01,0.000000e+00,1.234972e+03,-6.969760e+01,-1.440576e+02,-4.469760e+01,"
            "0.000000e+00,0.000000e+00,0.000000e+00,");
}

TEST(ModelBrekAtpaseFiber, RefusesValuesWithoutSense) {
  for (char const* const setting :
       {"kBT = 0", "D = 0", "k_bind = -1", "k_12 = 0", "k_21_cap = 0", "k_adp = -1", "k_34 = -1",
        "k_61 = -1", "detachment_multiplier = 0", "eta = -1"}) {
    std::string const key = std::string(setting).substr(0, std::string(setting).find(' '));
    EXPECT_EXIT(make_model({setting}), testing::ExitedWithCode(1), "fiber.prm.*" + key) << setting;
  }
}

}  // namespace
