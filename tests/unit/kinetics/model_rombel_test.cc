// Would catch: a wrong closed form, a binding rate that doesn't add up over the strain, a cycle
// whose free energy depends on the strain, a value without sense that is taken.

#include "kinetics/model_rombel.h"

#include <gtest/gtest.h>

#include <cmath>

#include "elastic/XB_Models.h"
#include "support/quadrature.h"
#include "support/work_dir.h"

namespace {

ModelRombel make_model(std::vector<std::string> const& settings) {
  static XB_ConstantStiffness spring("");
  spring.k = 1.25;
  write_parameters("rombel.prm", "rombel", settings);
  return ModelRombel({&spring, "rombel.prm"});
}

TEST(ModelRombel, ForwardRatesAreClosedFormsOfTheStrain) {
  ModelRombel const model = make_model({"k_bind = 300", "kBT = 4"});
  auto const binding = [&](double x) { return model.get_k(x, 0, 1); };
  // A thermal distribution of strains: all of them together bind at k_bind.
  EXPECT_NEAR(integral(binding, -20.0, 20.0), 300.0, 1e-9);
  EXPECT_DOUBLE_EQ(binding(2.0), 300.0 * std::sqrt(1.25 / (8.0 * M_PI)) * std::exp(-0.625));
  EXPECT_DOUBLE_EQ(model.get_k(std::log(5.0), 1, 2), 2000.0);
  EXPECT_EQ(model.get_k(0.0, 2, 0), 0.0);
  EXPECT_EQ(model.get_k(1.5, 2, 0), 3.0);
  EXPECT_EQ(model.get_k(-1.5, 2, 0), 150.0);
}

TEST(ModelRombel, WholeCycleReleasesTheSameFreeEnergyAtEveryStrain) {
  ModelRombel const model = make_model({"ener_cycle = 9.5"});
  for (double const x : {-6.0, -1.1, 0.3, 2.0, 5.0}) {
    double const forward = model.get_k(x, 0, 1) * model.get_k(x, 1, 2) * model.get_k(x, 2, 0);
    double const backward = model.get_k(x, 0, 2) * model.get_k(x, 2, 1) * model.get_k(x, 1, 0);
    EXPECT_NEAR(std::log(forward / backward), 9.5, 1e-10) << x;
  }
}

TEST(ModelRombel, RefusesValuesWithoutSense) {
  for (char const* const setting : {"kBT = 0", "D = -7", "k_bind = -1"}) {
    EXPECT_EXIT(make_model({setting}), testing::ExitedWithCode(1), "rombel.prm, section rombel: ");
  }
}

}  // namespace
