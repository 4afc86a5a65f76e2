#include "activation/fem_flex_chain_model.h"

namespace {

/// Sites by which the chain is extended at each end.
constexpr unsigned extension = 20;

}  // namespace

FEMFlexChainModel::FEMFlexChainModel(FlexChainParameter_s const& chain)
    : fc(chain),
      h3(fc.actin_distance * fc.actin_distance * fc.actin_distance),
      p(-(2.0 / 3.0) * (fc.xi * fc.xi * fc.xi * fc.xi) * fc.actin_distance),
      near(p + 4.0 / h3),
      diagonal(4.0 * p - 6.0 / h3) {}

void FEMFlexChainModel::compute_chain(std::vector<PinningSite_s> const& pins, unsigned n,
                                      std::valarray<double>& mean) {
  unsigned const N = n + 2 * extension;
  off1.assign(N - 1, near);
  off2.assign(N - 2, -1.0 / h3);
  rhs.assign(N, 0.0);
  x.resize(N);
  constrain(0, 0.0);
  for (PinningSite_s const& pin : pins) constrain(pin.site + extension, pin_angle(pin, fc));
  // A pinned row now holds nothing but the main diagonal.
  rhs[0] = diagonal * 0.0;
  for (PinningSite_s const& pin : pins) rhs[pin.site + extension] = diagonal * pin_angle(pin, fc);
  p_solve_sym(N, diagonal, off1.data(), off2.data(), rhs.data(), x.data());
  for (unsigned i = 0; i < n; ++i) mean[i] = x[i + extension];
}

void FEMFlexChainModel::constrain(unsigned node, double angle) {
  auto const N = static_cast<unsigned>(rhs.size());
  auto const move = [&](unsigned row, double amount) {
    if (row < N) rhs[row] += amount;  // rows before the first one wrap around and drop out, too
  };
  move(node - 2, angle / h3);
  move(node + 2, angle / h3);
  move(node - 1, -near * angle);
  move(node + 1, -near * angle);
  auto const cut = [](std::vector<double>& off, unsigned entry) {
    if (entry < off.size()) off[entry] = 0.0;
  };
  cut(off2, node);
  cut(off2, node - 2);
  cut(off1, node);
  cut(off1, node - 1);
}

void FEMFlexChainModel::p_solve_sym(unsigned N, double diag, double const* off1_of,
                                    double const* off2_of, double const* rhs_of, double* result) {
  double const* const a = off1_of;
  double const* const b = off2_of;
  double const* const r = rhs_of;
  pivot.resize(N);
  factor1.resize(N);
  factor2.resize(N);
  double* const d = pivot.data();
  double* const e = factor1.data();
  double* const f = factor2.data();

  d[0] = diag;
  e[0] = a[0] / d[0];
  f[0] = b[0] / d[0];
  d[1] = diag - a[0] * e[0];
  e[1] = (a[1] - b[0] * e[0]) / d[1];
  f[1] = b[1] / d[1];
  auto const next_pivot = [&](unsigned i) {
    return diag - b[i - 2] * f[i - 2] - d[i - 1] * (e[i - 1] * e[i - 1]);
  };
  for (unsigned i = 2; i < N - 2; ++i) {
    d[i] = next_pivot(i);
    e[i] = (a[i] - b[i - 1] * e[i - 1]) / d[i];
    f[i] = b[i] / d[i];
  }
  d[N - 2] = next_pivot(N - 2);
  e[N - 2] = (a[N - 2] - b[N - 3] * e[N - 3]) / d[N - 2];
  d[N - 1] = next_pivot(N - 1);

  double* const z = result;
  z[0] = r[0];
  z[1] = r[1] - e[0] * z[0];
  for (unsigned i = 2; i < N; ++i) z[i] = r[i] - e[i - 1] * z[i - 1] - f[i - 2] * z[i - 2];
  for (unsigned i = 0; i < N; ++i) z[i] = z[i] / d[i];
  double* const x_of = result;
  x_of[N - 2] = z[N - 2] - e[N - 2] * x_of[N - 1];
  for (unsigned i = N - 2; i-- > 0;) x_of[i] = z[i] - e[i] * x_of[i + 1] - f[i] * x_of[i + 2];
}
