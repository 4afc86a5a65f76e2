// Would catch: a table that is off by more than it promises, a jump that has moved by a single
// double, a corner that is cut, a bound that values exceed, a strain beyond the table that is
// clamped.

#include "scheme/rate_table.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

struct Case {
  char const* name;
  RateTable::Rate rate;
  std::vector<double> jumps;  ///< the first strain behind each
};

Case const cases[] = {
    {"constant", [](double) { return 7.0; }, {}},
    {"gaussian", [](double x) { return 90 * std::exp(-1.7 * x * x / 8); }, {}},
    {"steep", [](double x) { return 5000 / std::exp(x) + 1000; }, {}},
    {"window", [](double x) { return x >= 0 && x < 8 ? 10 * x / 8 : 0.0; }, {8}},
    {"jumps",
     [](double x) { return x < -1.3   ? 200
                           : x <= 2.7 ? 3 + x * x
                                      : 0.5; },
     {-1.3, std::nextafter(2.7, 3)}},
    {"corner", [](double x) { return 1 + 100 * std::abs(x - 0.123); }, {}},
    {"vertical", [](double x) { return x < 0.3 ? 1 : 1 + std::sqrt(x - 0.3); }, {}},
    {"one strain", [](double x) { return x == 1.0 ? 5.0 : 1.0; }, {1, std::nextafter(1.0, 2)}}};

/// Strains that are no nodes of any grid, densest near 0.
std::vector<double> strains() {
  std::vector<double> found;
  for (int i = 0; i <= 40000; ++i) found.push_back(-20 + 40 * std::fmod(i * 0.6180339887498949, 1));
  for (int i = 1; i < 300; ++i) found.push_back(std::pow(10.0, -0.05 * i) + 0.123);
  return found;
}

TEST(RateTable, KeepsItsErrorAndItsBounds) {
  for (Case const& c : cases) {
    SCOPED_TRACE(c.name);
    RateTable const table(c.rate, -20, 20);
    double most = 0.0;
    for (double const x : c.jumps) most = std::max({most, table(x), table(std::nextafter(x, -99))});
    for (double const x : strains()) {
      ASSERT_NEAR(table(x), c.rate(x), 1e-6 * c.rate(x)) << x;
      ASSERT_LE(table(x), table.bound(std::abs(x))) << x;
      if (std::abs(x) <= 5) most = std::max(most, table(x));
    }
    // Not so wide that hardly a head is known to stay.
    EXPECT_LE(table.bound(5), 1.4 * most);
    EXPECT_EQ(table.bound(20.1), HUGE_VAL);
    EXPECT_EQ(table(33.3), c.rate(33.3));
    EXPECT_LT(table.size(), 5000u);
  }
}

TEST(RateTable, JumpsBetweenTheSameDoublesAsItsRate) {
  for (Case const& c : cases) {
    RateTable const table(c.rate, -20, 20);
    for (double const behind : c.jumps) {
      for (double const x : {std::nextafter(behind, -99), behind, std::nextafter(behind, 99)}) {
        EXPECT_NEAR(table(x), c.rate(x), 1e-9) << c.name << " at " << x;
      }
    }
  }
}

}  // namespace
