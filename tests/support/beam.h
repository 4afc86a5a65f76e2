#pragma once
/// A beam on an elastic bed, y'''' + 4 xi^4 y = 0, on a dense grid of its own: the slow way to what
/// the chain solvers compute.

#include <deal.II/lac/full_matrix.h>
#include <deal.II/lac/vector.h>

#include <cmath>
#include <map>

struct Beam {
  unsigned n;  ///< nodes
  double h;    ///< their distance
  double xi;

  /// Bending and bed per unit of bending stiffness; the terms beyond either end are left out. Rows
  /// of held nodes are those of the identity.
  dealii::FullMatrix<double> matrix(std::map<unsigned, double> const& held) const {
    double const bending[] = {6.0, -4.0, 1.0};
    double const bed[] = {4.0 / 6.0, 1.0 / 6.0, 0.0};
    dealii::FullMatrix<double> result(n, n);
    for (unsigned i = 0; i < n; ++i) {
      for (unsigned j = 0; j < n; ++j) {
        unsigned const apart = i < j ? j - i : i - j;
        if (held.count(i) != 0) {
          result(i, j) = i == j ? 1.0 : 0.0;
        } else if (apart <= 2) {
          result(i, j) = bending[apart] / (h * h * h) + 4.0 * std::pow(xi, 4) * h * bed[apart];
        }
      }
    }
    return result;
  }

  dealii::FullMatrix<double> inverse(std::map<unsigned, double> const& held) const {
    dealii::FullMatrix<double> result = matrix(held);
    result.gauss_jordan();
    return result;
  }

  dealii::Vector<double> angles(std::map<unsigned, double> const& held) const {
    dealii::Vector<double> load(n), result(n);
    for (auto const& [node, angle] : held) load[node] = angle;
    inverse(held).vmult(result, load);
    return result;
  }

  /// Thermal variance of each node's angle, in units of that of an endless free beam.
  dealii::Vector<double> variances(std::map<unsigned, double> const& held) const {
    auto const flexibility = inverse(held);
    dealii::Vector<double> result(n);
    for (unsigned i = 0; i < n; ++i) {
      if (held.count(i) == 0) result[i] = flexibility(i, i) * 8.0 * std::pow(xi, 3);
    }
    return result;
  }
};
