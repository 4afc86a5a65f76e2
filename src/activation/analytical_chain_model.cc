#include "activation/analytical_chain_model.h"

#include <cmath>

namespace {

constexpr double longest = 5.0;

constexpr unsigned sites_beyond_end = 10;
constexpr double angle_beyond_end = -0.1;

}  // namespace

template <class Number>
AnalyticalChainModel<Number>::AnalyticalChainModel(FlexChainParameter_s const& chain) : fc(chain) {
  initialise_welks_table();
}

template <class Number>
void AnalyticalChainModel<Number>::compute_welks(Number x, WelksValue_s& w) const {
  bool const is_long = x > longest;
  if (is_long) x = longest;
  Number const s = is_long ? -0.9589242746631385 : std::sin(x);
  Number const c = is_long ? 0.28366218546322625 : std::cos(x);
  Number const S = std::sinh(x);
  Number const C = std::cosh(x);
  Number const D = S * S - s * s;
  Number const A = (S * S + s * s) / D;
  Number const B = (S * C - s * c) / D;
  Number const E = 2 * (C * s - c * S) / D;
  Number const F = 2 * (s * c + S * C) / D;
  Number const G = 4 * S * s / D;
  Number const H = B + 1;
  Number const I = (A - 1) / H;
  w.w0 = F - G * G / (4 * H);
  w.w1 = w.w2 = G * E / (4 * H) - A;
  w.w3 = B - E * E / (4 * H);
  w.w4 = G * I - 4 * (c * S + C * s) / D;
  w.w5 = G - E * I;
}

template <class Number>
void AnalyticalChainModel<Number>::welks(int n, WelksValue_s& w) const {
  if (n >= 1 && n < static_cast<int>(table.size())) {
    w = table[static_cast<std::size_t>(n)];
  } else {
    compute_welks_beyond_table(n, w);
  }
}

template <class Number>
void AnalyticalChainModel<Number>::compute_welks_beyond_table(int n, WelksValue_s& w) const {
  Number const x = length_of(n);
  if (x > longest) {
    w = table[0];
  } else {
    compute_welks(x, w);
  }
}

template <class Number>
void AnalyticalChainModel<Number>::initialise_welks_table() {
  table_size = 40;
  table.resize(static_cast<std::size_t>(table_size));
  compute_welks(longest, table[0]);
  for (int i = 1; i < table_size; ++i) {
    compute_welks(length_of(i), table[static_cast<std::size_t>(i)]);
  }
}

template <class Number>
void AnalyticalChainModel<Number>::extend_table(unsigned n) {
  while (table.size() <= n) {
    WelksValue_s w;
    compute_welks_beyond_table(static_cast<int>(table.size()), w);
    table.push_back(w);
  }
}

template <class Number>
void AnalyticalChainModel<Number>::pavsd(int n1, int n2, Number phi1, Number phi2, Number& mean,
                                         Number& sd) const {
  WelksValue_s W1, W2;
  welks(n1, W1);
  welks(n2, W2);
  join(W1, W2, phi1, phi2, mean, sd);
}

template <class Number>
void AnalyticalChainModel<Number>::join(WelksValue_s const& W1, WelksValue_s const& W2, Number phi1,
                                        Number phi2, Number& mean, Number& sd) {
  Number const a = W1.w1 - W2.w1;
  Number const b = W1.w3 + W2.w3;
  Number const q = (W1.w0 + W2.w0) * b - a * a;
  mean = -0.5 * ((W1.w4 * phi1 + W2.w4 * phi2) * b - (W1.w5 * phi1 - W2.w5 * phi2) * a) / q;
  sd = std::sqrt(std::abs(4 * b / q));
}

template <class Number>
void AnalyticalChainModel<Number>::fill(unsigned first, unsigned end, Hold_s left, Hold_s right,
                                        std::valarray<Number>& mean,
                                        std::valarray<Number>& sd) const {
  for (unsigned k = first; k < end; ++k) {
    join(table[k - first + left.gap], table[end - 1 - k + right.gap], left.angle, right.angle,
         mean[k], sd[k]);
    sd[k] *= fc.sd_fac;
  }
}

template <class Number>
void AnalyticalChainModel<Number>::compute_span(PinningSite_s a, PinningSite_s b,
                                                std::valarray<Number>& mean,
                                                std::valarray<Number>& sd) {
  extend_table(b.site - a.site);
  fill(a.site + 1, b.site, {pin_angle(a, fc), 1}, {pin_angle(b, fc), 1}, mean, sd);
  for (PinningSite_s const& pin : {a, b}) {
    mean[pin.site] = pin_angle(pin, fc);
    sd[pin.site] = 0.0;
  }
}

template <class Number>
void AnalyticalChainModel<Number>::compute_chain(std::vector<PinningSite_s> const& pins, unsigned n,
                                                 std::valarray<Number>& mean,
                                                 std::valarray<Number>& sd) {
  if (pins.empty()) {
    mean = 0.0;
    sd = fc.sd_fac;
    return;
  }
  extend_table(n + sites_beyond_end);
  PinningSite_s const& first = pins.front();
  PinningSite_s const& last = pins.back();
  Hold_s const beyond_end = {angle_beyond_end, sites_beyond_end};
  fill(0, first.site, beyond_end, {pin_angle(first, fc), 1}, mean, sd);
  compute_span(first, first, mean, sd);
  for (std::size_t i = 1; i < pins.size(); ++i) compute_span(pins[i - 1], pins[i], mean, sd);
  fill(last.site + 1, n, {pin_angle(last, fc), 1}, beyond_end, mean, sd);
}

template class AnalyticalChainModel<double>;
