// Would catch: a chain solved with from and to exchanged, at another strain or with the states of
// the other part, a state without inflow that keeps occupancy.

#include "kinetics/model_util.h"

#include "support/occupancy.h"
#include "support/rate_model.h"

namespace {

TEST(ModelUtil, SteadyStatesAreNullVectorsOfTheRates) {
  // State 1 only empties. The rates follow no order, and hold at the strain 1.
  RateModel const model(5, {2, 3}, [](double x, unsigned from, unsigned to, ActinSite_s const&) {
    return to == 1 || from == to ? 0.0 : x * (1.0 + (7 * from + 3 * to) % 5);
  });
  auto const rate = [&](unsigned from, unsigned to) { return model.get_k(1.0, from, to); };
  std::vector<double> p = {9.0};  // what stood there before doesn't count
  ModelUtil::get_states(model, 1.0, p);
  std::vector<double> const expected = stationary_occupancy(5, rate);
  ASSERT_EQ(p.size(), expected.size());
  for (unsigned s = 0; s < 5; ++s) EXPECT_NEAR(p[s], expected[s], 1e-14) << s;
  ModelUtil::get_states(RateModel(5, {1}), 0.0, p);
  EXPECT_EQ(p, std::vector<double>(5, 0.0));
}

}  // namespace
