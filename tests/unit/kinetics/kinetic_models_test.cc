// Would catch: in any registered model a rate that is negative or not finite, an attached state 0,
// a lever that is moved while detached, two forms of a rate that differ, a start without
// occupancies.

#include <gtest/gtest.h>

#include <cmath>

#include "elastic/XB_Models.h"
#include "kinetics/active_model.h"
#include "kinetics/model_util.h"
#include "mechanics/filament_data.h"
#include "support/work_dir.h"

namespace {

using Models = Factory<Model, ModelParameter_s>;

class KineticModels : public testing::TestWithParam<std::string> {};

TEST_P(KineticModels, KeepTheCommonRules) {
  write_file("ca_protocol.dat", "0 0.001 0 0 0.5\n1 0.001 0 0 0.5\n");
  XB_ConstantStiffness spring("");
  ModelParameter_s const parameter = {&spring, "model.prm"};
  std::unique_ptr<Model> const model(Models::instance().create_type(GetParam(), parameter));
  auto const* const active = dynamic_cast<ActiveModel const*>(model.get());
  ASSERT_NE(active, nullptr);
  EXPECT_FALSE(model->attached[0]);
  unsigned const n = model->n_states();
  double detached_sum = 0.0;
  std::vector<double> p;
  ModelUtil::get_detached_states(*model, p);
  for (unsigned from = 0; from < n; ++from) {
    if (!model->attached[from]) {
      EXPECT_EQ(model->power_stroke(from), 0.0) << "state " << from;
    }
    EXPECT_GE(p[from], 0.0) << "state " << from;
    detached_sum += p[from];
    for (unsigned to = 0; to < n; ++to) {
      if (!model->transitions[from][to]) continue;
      for (double x = -20.0; x <= 20.0; x += 0.25) {
        double const k = model->get_k(x, from, to);
        ASSERT_TRUE(std::isfinite(k) && k >= 0.0)
            << from << " to " << to << " at " << x << ": " << k;
        ASSERT_EQ(active->get_k(x, from, to, ActinSite_s{}), k);
      }
    }
  }
  EXPECT_NEAR(detached_sum, 1.0, 1e-12);
}

std::vector<std::string> registered_names() {
  std::vector<std::string> names;
  for (auto const& type : Models::instance().types()) names.push_back(type.first);
  return names;
}

INSTANTIATE_TEST_SUITE_P(All, KineticModels, testing::ValuesIn(registered_names()),
                         [](auto const& name) { return name.param; });

}  // namespace
