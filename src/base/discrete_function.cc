#include "base/discrete_function.h"

#include <algorithm>
#include <cmath>
#include <fstream>

#include "base/diagnostics.h"
#include "base/output_file.h"

namespace {

void require_two_rows(Table const& table) {
  if (table.size() < 2) {
    refuse("function table", "its number of rows", std::to_string(table.size()), "2 or more");
  }
}

/// y on the straight line through two points.
double line_through(double x_lo, double y_lo, double x_hi, double y_hi, double x) {
  return y_lo + (y_hi - y_lo) * (x - x_lo) / (x_hi - x_lo);
}

/// Halves the bracket until it holds one segment; `above(row)` tells whether the row lies before
/// what is sought. Returns the segment's first row.
template <class Above>
std::size_t find_segment(std::size_t n, Above above) {
  std::size_t lo = 0;
  std::size_t hi = n - 1;
  std::size_t probe = n / 2;
  while (hi - lo != 1) {
    if (above(probe)) {
      lo = probe;
    } else {
      hi = probe;
    }
    probe = (lo + hi) / 2;
  }
  return lo;
}

std::size_t segment_of_value(Table const& table, double y) {
  std::size_t const n = table.size();
  double const first = table.front().second;
  double const last = table.back().second;
  if (last > first) {
    if (first > y) return 0;
    if (y > last) return n - 2;
    return find_segment(n, [&](std::size_t row) { return y > table[row].second; });
  }
  if (y > first) return 0;
  if (last > y) return n - 2;
  return find_segment(n, [&](std::size_t row) { return !(y > table[row].second); });
}

}  // namespace

double GetValue(Table const& table, double x) {
  require_two_rows(table);
  std::size_t const n = table.size();
  std::size_t const lo =
      x < table.front().first ? 0
      : x > table.back().first
          ? n - 2
          : find_segment(n, [&](std::size_t row) { return x > table[row].first; });
  auto const& a = table[lo];
  auto const& b = table[lo + 1];
  return line_through(a.first, a.second, b.first, b.second, x);
}

std::pair<double, double> GetRange(Table const& table, double from, double to) {
  // A function made of straight lines has its extremes at rows or at the ends.
  auto [least, most] = std::minmax({GetValue(table, from), GetValue(table, to)});
  auto const is_before = [](auto const& row, double x) { return row.first < x; };
  auto row = std::lower_bound(table.begin(), table.end(), from, is_before);
  for (; row != table.end() && row->first < to; ++row) {
    least = std::min(least, row->second);
    most = std::max(most, row->second);
  }
  return {least, most};
}

double GetInverseValue(Table const& table, double y) {
  require_two_rows(table);
  std::size_t const lo = segment_of_value(table, y);
  auto const& a = table[lo];
  auto const& b = table[lo + 1];
  return line_through(a.second, a.first, b.second, b.first, y);
}

MyDiscreteFunction::MyDiscreteFunction(double scale) : thermal_scale(scale) {}

MyDiscreteFunction::MyDiscreteFunction(Table const& table, double scale)
    : points(table), thermal_scale(scale) {}

MyDiscreteFunction::MyDiscreteFunction(std::string const& file, double scale)
    : thermal_scale(scale) {
  std::ifstream stream(file);
  if (!stream) stop(file + ": can't be read");
  for (double x, y; stream >> x >> y;) points.emplace_back(x, y);
}

void MyDiscreteFunction::MakeIntegralTable(Table& result) const {
  Table below, rest;
  DevideFunction(below, rest);
  if (below.empty() || rest.size() < 3) {
    refuse("energy table", "its number of rows below 0 and from 0 on",
           std::to_string(below.size()) + " and " + std::to_string(rest.size()),
           "1 and 3 or more, so that it can be integrated to both sides");
  }
  VectorTurn(below);
  MinusX(below);
  // The row at zero starts both branches; the right one gets it back as its own (0, 0) row.
  below.insert(below.begin(), rest.front());
  rest.erase(rest.begin());
  Table left, right;
  MakeIntegralFunction(below, left);
  MakeIntegralFunction(rest, right);
  VectorTurn(left);
  MinusX(left);
  MinusY(left);
  result = std::move(left);
  result.insert(result.end(), right.begin(), right.end());
}

void MyDiscreteFunction::MakeIntegralFunction(Table const& e, Table& result) const {
  constexpr double dx = 0.0001;
  result.clear();
  result.emplace_back(0.0, 0.0);
  double const last = e.back().first;
  double x = 0.0;
  double integral = 0.0;
  while (last >= x) {
    x += dx;
    double const energy = GetValue(e, x);
    integral += std::exp(energy / thermal_scale) * dx;
    result.emplace_back(x, std::exp(-energy / thermal_scale) * integral);
  }
}

void MyDiscreteFunction::DevideFunction(Table& below, Table& rest) const {
  below.clear();
  rest.clear();
  for (auto const& row : points) (row.first < 0.0 ? below : rest).push_back(row);
}

void MyDiscreteFunction::VectorTurn(Table& table) { std::reverse(table.begin(), table.end()); }

void MyDiscreteFunction::MinusX(Table& table) {
  for (auto& row : table) row.first = -row.first;
}

void MyDiscreteFunction::MinusY(Table& table) {
  for (auto& row : table) row.second = -row.second;
}

void MyDiscreteFunction::PrintFunctionAtFile(std::string const& name) const {
  std::ofstream stream = open_output_stream(name);
  for (auto const& row : points) stream << row.first << ' ' << row.second << '\n';
  flush_output(stream, name);
}
