#pragma once
/// Functions held as tables of (x, y) rows in ascending x.
///
/// Between rows the value is interpolated linearly; outside them the first or the last segment goes
/// on as a straight line. A table needs two rows; a smaller one ends the run.

#include <string>
#include <utility>
#include <vector>

using Table = std::vector<std::pair<double, double>>;

/// The table's value at `x`. A value that equals a row's x belongs to the segment ending there.
double GetValue(Table const& table, double x);

/// Least and greatest value of the table between `from` and `to`.
std::pair<double, double> GetRange(Table const& table, double from, double to);

/// The x at which a monotonic table, rising or falling, has the value `y`.
double GetInverseValue(Table const& table, double y);

/// A table, and the Boltzmann-weighted integral of the energy that it holds.
///
/// Law:     y(x) = exp(-E(x)/s) * integral from 0 to x of exp(E(u)/s) du
/// Symbols: x, u extension [nm], E energy [pN nm], s thermal scale [pN nm], y [nm]
/// For a harmonic energy this is Dawson's integral, scaled.
class MyDiscreteFunction {
 public:
  explicit MyDiscreteFunction(double scale);
  MyDiscreteFunction(Table const& table, double scale);
  /// Reads pairs of numbers, separated by white space, until that fails.
  MyDiscreteFunction(std::string const& file, double scale);

  void SetFunction(Table const& table) { points = table; }
  double GetY(double x) const { return GetValue(points, x); }

  /// The integral table of the energies in `points`, on both sides of zero and odd in form. Ends
  /// the run when the points don't reach from below 0 to two rows beyond it.
  void MakeIntegralTable(Table& result) const;
  /// One branch of it: `e` holds energies on x of 0 or more. Rectangles of width 0.0001 nm.
  void MakeIntegralFunction(Table const& e, Table& result) const;
  /// The rows with x below 0, and the others.
  void DevideFunction(Table& below, Table& rest) const;
  static void VectorTurn(Table& table);
  static void MinusX(Table& table);
  static void MinusY(Table& table);
  /// Writes the rows, "x y" a line, to a file.
  void PrintFunctionAtFile(std::string const& name) const;

  Table points;
  double thermal_scale;
};
