// Would catch: a search that lands one segment off, clamped ends, an inverse that only rises, an
// integral table with its sides exchanged, a sign lost or a rectangle too few.

#include "base/discrete_function.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/work_dir.h"

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
  EXPECT_EXIT(GetValue(step, 0.0), testing::ExitedWithCode(1), "rows is '1'");
  EXPECT_EXIT(GetInverseValue(step, 0.0), testing::ExitedWithCode(1), "rows is '1'");
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

TEST(DiscreteFunction, ReadsTurnsAndPrintsItsRows) {
  write_file("in.dat", "-1 2.5\n0\t3 0.125 4\nend 5 6\n");
  MyDiscreteFunction const function("in.dat", 4.0);
  EXPECT_EQ(function.points, (Table{{-1, 2.5}, {0, 3}, {0.125, 4}}));
  Table below = {{9, 9}}, rest = {{9, 9}};
  function.DevideFunction(below, rest);
  EXPECT_EQ(below, (Table{{-1, 2.5}}));
  EXPECT_EQ(rest, (Table{{0, 3}, {0.125, 4}}));
  MyDiscreteFunction::VectorTurn(rest);
  MyDiscreteFunction::MinusX(rest);
  MyDiscreteFunction::MinusY(below);
  EXPECT_EQ(rest, (Table{{-0.125, 4}, {0, 3}}));
  EXPECT_EQ(below, (Table{{-1, -2.5}}));
  function.PrintFunctionAtFile("out.dat");
  EXPECT_EQ(read_file("out.dat"), "-1 2.5\n0 3\n0.125 4\n");
}

/// exp(-a x^2) times the integral of exp(a u^2) from 0 to x by Simpson's rule: Dawson's integral of
/// x sqrt(a), over sqrt(a).
double scaled_dawson(double a, double x) {
  constexpr int n = 2000;
  double sum = 0.0;
  for (int i = 0; i <= n; ++i) {
    double const u = x * i / n;
    sum += std::exp(a * (u * u - x * x)) * (i == 0 || i == n ? 1 : i % 2 == 0 ? 2 : 4);
  }
  return sum * x / n / 3.0;
}

TEST(DiscreteFunction, HarmonicEnergyGivesDawsonsIntegral) {
  EXPECT_NEAR(scaled_dawson(1.0, 1.0), 0.5380795069127684, 1e-12);  // the known value of D(1)
  constexpr double a = 6.25;  // k / (2 s) for k = 50, s = 4; x = 1 is at D(2.5), past the peak
  Table energy;
  for (int i = 0; i <= 1000; ++i) energy.emplace_back(i * 0.001, 25.0 * i * i * 1e-6);
  Table integral;
  MyDiscreteFunction(4.0).MakeIntegralFunction(energy, integral);
  EXPECT_EQ(integral.front(), (std::pair<double, double>(0.0, 0.0)));
  EXPECT_GT(integral.back().first, 1.0);  // one step past the last row
  EXPECT_LT(integral.back().first, 1.00011);
  for (double const x : {0.1, 0.37, 0.6, 1.0}) {
    // Rectangles as high as their right side: too much by half a width of the integrand's growth.
    double const excess = 0.5e-4 * (1.0 - std::exp(-a * x * x));
    EXPECT_NEAR(GetValue(integral, x), scaled_dawson(a, x) + excess, 3e-6) << x;
  }
}

TEST(DiscreteFunction, IntegralTableTakesEachSideFromItsOwnEnergies) {
  // Straight energies have closed forms. The row at 0 counts on the left only; on the right the
  // line of slope 16 through the others goes on down to 0.
  Table const energy = {{-0.5, -4.0}, {-0.25, -2.0}, {0.0, 0.0}, {0.25, 2.0}, {0.5, 6.0}};
  Table integral;
  MyDiscreteFunction(energy, 4.0).MakeIntegralTable(integral);
  EXPECT_NEAR(integral.front().first, -0.5, 2e-4);
  EXPECT_NEAR(integral.back().first, 0.5, 2e-4);
  int zero_rows = 0;
  for (std::size_t i = 0; i < integral.size(); ++i) {
    auto const& [x, y] = integral[i];
    EXPECT_LE(integral[i > 0 ? i - 1 : 0].first, x);
    double const c = (x > 0.0 ? 16.0 : 8.0) / 4.0;
    EXPECT_NEAR(y, (1.0 - std::exp(-c * x)) / c, 1.2e-4 * (1.0 + std::abs(y))) << x;
    if (x == 0.0 && y == 0.0) ++zero_rows;
  }
  EXPECT_EQ(zero_rows, 2);
  MyDiscreteFunction const one_sided(Table{{-1.0, 1.0}, {-0.5, 0.2}}, 4.0);
  EXPECT_EXIT(one_sided.MakeIntegralTable(integral), testing::ExitedWithCode(1), "2 and 0");
}

}  // namespace
