#include "activation/analytical_chain_model.h"

#include <cmath>

namespace {

constexpr double longest = 5.0;

constexpr int sites_beyond_end = 10;
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
    compute_span(n, w);
  }
}

template <class Number>
void AnalyticalChainModel<Number>::compute_span(int n, WelksValue_s& w) const {
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
    compute_span(static_cast<int>(table.size()), w);
    table.push_back(w);
  }
}

template <class Number>
void AnalyticalChainModel<Number>::pavsd(int n1, int n2, Number phi1, Number phi2, Number& mean,
                                         Number& sd) const {
  WelksValue_s W1, W2;
  welks(n1, W1);
  welks(n2, W2);
  Number const a = W1.w1 - W2.w1;
  Number const b = W1.w3 + W2.w3;
  Number const q = (W1.w0 + W2.w0) * b - a * a;
  mean = -0.5 * ((W1.w4 * phi1 + W2.w4 * phi2) * b - (W1.w5 * phi1 - W2.w5 * phi2) * a) / q;
  sd = std::sqrt(std::abs(4 * b / q));
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
  fill_ends(pins.front(), pins.back(), static_cast<int>(n), mean, sd);
  for (PinningSite_s const& pin : pins) {
    mean[pin.site] = pin_angle(pin, fc);
    sd[pin.site] = 0.0;
  }
  for (std::size_t i = 1; i < pins.size(); ++i) fill_between(pins[i - 1], pins[i], mean, sd);
  sd *= fc.sd_fac;
}

template <class Number>
void AnalyticalChainModel<Number>::fill_ends(PinningSite_s first, PinningSite_s last, int n,
                                             std::valarray<Number>& mean,
                                             std::valarray<Number>& sd) const {
  Number const phi_first = pin_angle(first, fc);
  for (unsigned j = 0; j < first.site; ++j) {
    int const to_pin = static_cast<int>(first.site - j);
    pavsd(static_cast<int>(j) + sites_beyond_end, to_pin, angle_beyond_end, phi_first, mean[j],
          sd[j]);
  }
  Number const phi_last = pin_angle(last, fc);
  int const rest = n - 1 - static_cast<int>(last.site);
  for (int i = 1; i <= rest; ++i) {
    auto const site = last.site + static_cast<unsigned>(i);
    pavsd(i, rest + sites_beyond_end - i, phi_last, angle_beyond_end, mean[site], sd[site]);
  }
}

template <class Number>
void AnalyticalChainModel<Number>::fill_between(PinningSite_s a, PinningSite_s b,
                                                std::valarray<Number>& mean,
                                                std::valarray<Number>& sd) const {
  Number const phi_a = pin_angle(a, fc);
  Number const phi_b = pin_angle(b, fc);
  for (unsigned k = a.site + 1; k < b.site; ++k) {
    pavsd(static_cast<int>(k - a.site), static_cast<int>(b.site - k), phi_a, phi_b, mean[k], sd[k]);
  }
}

template class AnalyticalChainModel<double>;
