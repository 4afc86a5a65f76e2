#include "kinetics/dawson.h"

#include <array>
#include <cmath>

namespace {

constexpr double H = 0.4;  // sampling step
constexpr int n_terms = 6;

std::array<double, n_terms> sampled_gaussian() {
  std::array<double, n_terms> c{};
  for (int i = 0; i < n_terms; ++i) {
    double const t = (2 * i + 1) * H;
    c[i] = std::exp(-(t * t));
  }
  return c;
}

}  // namespace

double exprot(double x) {
  if (x >= 70.0) return 2.515438670919167e30;
  if (x <= -70.0) return 3.975449735908647e-31;
  return std::exp(x);
}

double exprot_(double const* x) { return exprot(*x); }

double dawson_(double const* x) {
  static std::array<double, n_terms> const c = sampled_gaussian();
  double const xx = std::abs(*x);
  if (xx < static_cast<double>(0.2F)) {
    double const x2 = *x * *x;
    return *x * (1.0 - 2.0 / 3.0 * x2 * (1.0 - 0.4 * x2 * (1.0 - 2.0 / 7.0 * x2)));
  }
  double const half_steps = 0.5 * xx / H;
  auto const n0 = static_cast<double>(2 * i_dnnt(&half_steps));
  double const xp = xx - n0 * H;
  double e1 = std::exp(2.0 * xp * H);
  double const e2 = e1 * e1;
  double d1 = n0 + 1.0;
  double d2 = d1 - 2.0;
  double sum = 0.0;
  for (double const c_i : c) {
    sum += c_i * (e1 / d1 + 1.0 / (d2 * e1));
    d1 += 2.0;
    d2 -= 2.0;
    e1 *= e2;
  }
  double const gaussian = std::exp(-xp * xp);
  return 0.564189612865448 * d_sign(&gaussian, x) * sum;
}

long i_dnnt(double const* x) {
  return static_cast<long>(*x >= 0.0 ? std::floor(*x + 0.5) : -std::floor(0.5 - *x));
}

double d_sign(double const* a, double const* b) {
  double const size = std::abs(*a);
  return *b >= 0.0 ? size : -size;
}
