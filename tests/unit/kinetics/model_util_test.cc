// Would catch: a chain solved with from and to exchanged, a state without inflow that keeps
// occupancy, stale or shifted entries of the result, a table with a lost row or column.

#include "kinetics/model_util.h"

#include "support/rate_model.h"
#include "support/work_dir.h"

namespace {

void expect_values(std::vector<double> const& p, std::vector<double> const& expected) {
  ASSERT_EQ(p.size(), expected.size());
  for (std::size_t s = 0; s < p.size(); ++s) EXPECT_NEAR(p[s], expected[s], 1e-14) << "state " << s;
}

TEST(ModelUtil, SteadyStateBalancesTheFlows) {
  std::vector<double> p = {9.0};  // what stood there before doesn't count
  ModelUtil::get_states(RateModel(2, {1}, {{{0, 1}, 3.0}, {{1, 0}, 1.0}}), 0.0, p);
  expect_values(p, {0.25, 0.75});
  // 2 p2 = p1 from state 2, p0 = 3 p1 + 4 p2 from state 0
  RateModel const three(3, {1}, {{{0, 1}, 1.0}, {{1, 0}, 3.0}, {{1, 2}, 2.0}, {{2, 0}, 4.0}});
  ModelUtil::get_states(three, 0.0, p);
  expect_values(p, {10.0 / 13.0, 2.0 / 13.0, 1.0 / 13.0});
}

TEST(ModelUtil, StateWithoutInflowIsEmpty) {
  std::vector<double> p;
  // State 1 only empties; 0 and 2 share by their rates. Below strain 0 nothing enters state 2.
  RateModel const model(3, {1}, [](double x, unsigned from, unsigned to, ActinSite_s const&) {
    if (from == 1) return x < 0.0 && to == 2 ? 0.0 : 5.0;
    if (from == 0 && to == 2) return x < 0.0 ? 0.0 : 1.0;
    return from == 2 && to == 0 ? 4.0 : 0.0;
  });
  ModelUtil::get_states(model, 1.0, p);
  expect_values(p, {0.8, 0.0, 0.2});
  ModelUtil::get_states(model, -1.0, p);
  expect_values(p, {1.0, 0.0, 0.0});
  ModelUtil::get_states(RateModel(3, {1}), 0.0, p);
  expect_values(p, {0.0, 0.0, 0.0});
}

TEST(ModelUtil, DetachedStatesFormAChainOfTheirOwn) {
  std::vector<double> p = {9.0, 9.0};
  ModelUtil::get_detached_states(RateModel(2, {1}, {{{0, 1}, 8.0}}), p);
  expect_values(p, {1.0, 0.0});
  // A directed cycle 0 > 2 > 3 > 0 at strain 0: occupancies as 1/1 : 1/2 : 1/4.
  RateModel const model(4, {1}, [](double x, unsigned from, unsigned to, ActinSite_s const&) {
    if (x != 0.0 || from == 1 || to == 1) return 50.0;
    return from == 0 && to == 2   ? 1.0
           : from == 2 && to == 3 ? 2.0
           : from == 3 && to == 0 ? 4.0
                                  : 0.0;
  });
  p = {9.0, 9.0, 9.0, 9.0};
  ModelUtil::get_detached_states(model, p);
  expect_values(p, {4.0 / 7.0, 0.0, 2.0 / 7.0, 1.0 / 7.0});
}

TEST(ModelUtil, TablesHaveOneLinePerStrain) {
  RateModel const model(3, {1}, [](double x, unsigned from, unsigned to, ActinSite_s const&) {
    return from + to == 3 ? 0.0 : 100.0 * x + 10.0 * from + to + 1.0;
  });
  ModelUtil::print_rates(model, 0.0, 1.0, 0.5);
  EXPECT_EQ(read_file("rates.dat"),
            "0.000000e+00 2.000000e+00 3.000000e+00 1.100000e+01 0.000000e+00 2.100000e+01 "
            "0.000000e+00 \n"
            "5.000000e-01 5.200000e+01 5.300000e+01 6.100000e+01 0.000000e+00 7.100000e+01 "
            "0.000000e+00 \n");
  RateModel const pair(2, {1}, [](double x, unsigned from, unsigned, ActinSite_s const&) {
    return from == 0 ? 1.0 - x : 1.0;
  });
  ModelUtil::print_states(pair, -2.0, 2.0, 3.0);
  EXPECT_EQ(read_file("states.dat"),
            "-2.000000e+00 2.500000e-01 7.500000e-01 \n"
            "1.000000e+00 1.000000e+00 0.000000e+00 \n");
}

TEST(ModelUtil, GivesUpSilentlyOnAFileThatCannotBeOpened) {
  for (char const* const name : {"rates.dat", "states.dat"}) {
    std::filesystem::create_directory(name);
  }
  ModelUtil::print_rates(RateModel(2, {1}), 0.0, 1.0, 0.5);
  ModelUtil::print_states(RateModel(2, {1}), 0.0, 1.0, 0.5);
}

}  // namespace
