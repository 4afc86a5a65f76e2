// Would catch: a search that lands one segment off, clamped ends, an inverse that only rises, an
// integral table with its sides exchanged, a sign lost or a rectangle too few.

#include "base/discrete_function.h"

#include <algorithm>
#include <cmath>

#include "support/expect_refusal.h"

namespace {

/// Rows (i^2, sign * i^3): monotonic, with segments of different widths and slopes.
Table cubic_table(int n, double sign) {
  Table table;
  for (int i = 0; i < n; ++i) table.emplace_back(i * i, sign * i * i * i);
  return table;
}

TEST(DiscreteFunction, InterpolatesBetweenRowsAndGoesOnBeyondThem) {
  Table const table = {{0, 0}, {1, 10}, {3, 14}, {6, 8}};
  for (auto const& [x, y] : table) EXPECT_DOUBLE_EQ(GetValue(table, x), y);
  EXPECT_DOUBLE_EQ(GetValue(table, 2.0), 12.0);
  EXPECT_DOUBLE_EQ(GetValue(table, 4.5), 11.0);
  EXPECT_DOUBLE_EQ(GetValue(table, -1.0), -10.0);
  EXPECT_DOUBLE_EQ(GetValue(table, 7.0), 6.0);
  // A row belongs to the segment that ends there, wherever the search comes from.
  Table step = {{-1, -1}, {0, 0}, {0, 5}, {1, 6}};
  for (; step.size() < 8; step.emplace_back(step.size(), 7)) EXPECT_EQ(GetValue(step, 0.0), 0.0);
  step.resize(1);
  expect_refusal([&] { GetValue(step, 0.0); }, "rows is '1'");
  expect_refusal([&] { GetInverseValue(step, 0.0); }, "rows is '1'");
}

TEST(DiscreteFunction, InverseRecoversWhatTheTableWasAskedFor) {
  for (int n = 2; n < 12; ++n) {
    for (double const sign : {1.0, -1.0}) {
      Table table = cubic_table(n, sign);
      for (int i = 0; i + 1 < n; ++i) {
        double const middle = 0.5 * (i * i + (i + 1) * (i + 1));
        double const value = sign * 0.5 * (i * i * i + (i + 1) * (i + 1) * (i + 1));
        EXPECT_NEAR(GetValue(table, middle), value, 1e-12 * std::abs(value));
        EXPECT_NEAR(GetInverseValue(table, value), middle, 1e-12 * middle);
      }
      for (auto const& [x, y] : table) EXPECT_NEAR(GetInverseValue(table, y), x, 1e-12 * (1 + x));
      EXPECT_DOUBLE_EQ(GetInverseValue(table, -2.0 * sign), -2.0);  // slope 1 at first
      // As far beyond the last row as the row before it lies inside.
      auto const& [x1, y1] = table[table.size() - 2];
      auto const& [x2, y2] = table.back();
      EXPECT_NEAR(GetInverseValue(table, 2.0 * y2 - y1), 2.0 * x2 - x1, 1e-10);
      EXPECT_NEAR(GetValue(table, 2.0 * x2 - x1), 2.0 * y2 - y1, 1e-10);
    }
  }
}

TEST(DiscreteFunction, IntegralTableTakesEachSideFromItsOwnEnergies) {
  // The row at 0 counts on the left only; on the right the line of slope 16 through the others goes
  // on down to 0.
  Table const energy = {{-0.5, -4.0}, {-0.25, -2.0}, {0.0, 0.0}, {0.25, 2.0}, {0.5, 6.0}};
  Table integral;
  MyDiscreteFunction(energy, 4.0).MakeIntegralTable(integral);
  EXPECT_NEAR(integral.front().first, -0.5001, 2e-5);  // a step past the last row
  EXPECT_NEAR(integral.back().first, 0.5001, 2e-5);
  // On straight energies the rectangles, as high as their outer side, form a geometric series.
  auto const series = [](double c, double x) {
    return 1e-4 * (1.0 - std::exp(-c * x)) / (1.0 - std::exp(-c * 1e-4));
  };
  for (std::size_t i = 0; i < integral.size(); ++i) {
    auto const& [x, y] = integral[i];
    EXPECT_LE(integral[i > 0 ? i - 1 : 0].first, x);
    EXPECT_NEAR(y, x > 0.0 ? series(16.0 / 4.0, x) : -series(-8.0 / 4.0, -x), 1e-12) << x;
  }
  EXPECT_EQ(std::count(integral.begin(), integral.end(), std::pair(0.0, 0.0)), 2);
  MyDiscreteFunction const one_sided(Table{{-1.0, 1.0}, {-0.5, 0.2}}, 4.0);
  expect_refusal([&] { one_sided.MakeIntegralTable(integral); }, "2 and 0");
}

}  // namespace
