#pragma once
/// A second method for integrals.

/// Integral from a to b by Simpson's rule; exact for a polynomial of degree 3.
template <class Function>
double integral(Function f, double a, double b, int n = 4000) {
  double sum = f(a) + f(b);
  for (int i = 1; i < n; ++i) sum += f(a + (b - a) * i / n) * (i % 2 == 0 ? 2 : 4);
  return sum * (b - a) / n / 3.0;
}
