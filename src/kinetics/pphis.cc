#include "kinetics/pphis.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kinetics/dawson.h"

namespace {

constexpr double thermal_energy = 4.0;  // pN nm; C6 alone has it as a parameter

double dawson(double z) { return dawson_(&z); }

/// Clears `t` and `v`, then fills them for the states whose lever positions are given.
class Levers {
 public:
  Levers(double stiffness, double* tension, double* energy, int n)
      : K(stiffness), t(tension), v(energy) {
    std::fill_n(t, n + 1, 0.0);
    std::fill_n(v, n + 3, 0.0);
  }

  void state(int i, double p) {
    t[i] = K * p;
    end(i, p);
  }
  void end(int i, double p) { v[i] = 0.5 * K * p * p; }

 private:
  double const K;
  double* const t;
  double* const v;
};

/// The laws at a strain, with tension, energy and load factors filled.
RateLaws laws_of(TensionRoutine& tension, RateBlock_s const& block, double const* x, double* rk,
                 double const* dco, int const* n) {
  RateLaws laws(block, thermal_energy, *dco, rk, dawson);
  tension(block, x, laws.t, nullptr, laws.v, nullptr, n, nullptr);
  return laws;
}

/// All but the end of the cycle, in which C3 and C4 differ; the limits and the cap come after it.
void bind_and_stroke_of_c3_and_c4(RateLaws& s, RateBlock_s const& b, double x) {
  double const hh = b.h + b.hd;
  s.load(4, false);
  s.bind(1, 9, b.eta1, x);
  s.bind(3, 4, b.eta3, x);
  s.bind(2, 6, b.eta2, x + b.h);
  s.bind(2, 8, b.eta2, x + hh);
  s.release(5, 3);
  s.release(7, 3);
  s.stroke(4, 5, x, b.h);
  s.stroke(5, 7, x + b.h, b.hd);
  s.stroke(6, 8, x + b.h, b.hd);
}

void limits_of_c3_and_c4(RateLaws& s, RateBlock_s const& b, double x) {
  double const hh = b.h + b.hd;
  s.limit(4, 3, x, b.gmax, b.gmax);
  s.limit(5, 3, x + b.h, b.gmax, b.gmax);
  s.limit(6, 2, x + b.h, b.gmax, b.gmax);
  s.limit(7, 3, x + hh, b.gmax, b.gmax);
  s.limit(8, 2, x + hh, b.gmax, b.gmax);
  s.limit(9, 1, x, b.gmax, b.gmax);
  s.cap_all();
}

}  // namespace

// Laws

RateLaws::RateLaws(RateBlock_s const& b, double thermal, double reach_of_binding, double* table,
                   Integral integral)
    : block(b),
      kT(thermal),
      dco(reach_of_binding),
      fac(std::sqrt(b.K / (2.0 * thermal))),
      rk(table),
      D(std::move(integral)) {
  std::copy_n(rk, 81, constants);
}

void RateLaws::load(int first, bool is_one_sided) {
  for (int i = first; i <= 9; ++i) {
    double const c = is_one_sided && t[i] < 0.0 ? block.ccm[i - 1] : block.cc[i - 1];
    dfac[i] = exprot(c * std::abs(t[i]) / kT);
    bfac[i] = exprot((c * std::abs(t[i]) - v[i]) / kT);
  }
}

double RateLaws::reach(double q) const { return std::abs(q) <= dco ? 1.0 : 0.0; }

void RateLaws::bind(int a, int b, double eta, double q) {
  double const saturation = eta * bfac[b] + 1.0;
  rate(a, b) = reach(q) * k(a, b) * bfac[b] * (eta + 1.0) / saturation;
  rate(b, a) = k(b, a) * dfac[b] * (eta + 1.0) / saturation;
}

void RateLaws::release(int b, int a) { rate(b, a) = k(b, a) * dfac[b]; }

RateLaws::Barrier RateLaws::barrier(int a, int b, double q, double L, double dv) const {
  double const xt = q * fac;
  double const ht = L * fac;
  double const e = exprot(dv / kT);
  double const D0 = D(xt);
  double const D1 = D(xt + ht);
  return {ht * k(a, b) / (e * D1 - D0), ht * k(b, a) / (D1 - D0 / e)};
}

void RateLaws::stroke(int a, int b, double q, double L) {
  Barrier const rates = barrier(a, b, q, L, v[b] - v[a]);
  rate(a, b) = rates.forward;
  rate(b, a) = rates.reverse;
}

void RateLaws::limit(int i, int to, double q, double below, double above) {
  if (q < -block.dm[i - 1]) rate(i, to) = below;
  if (q > block.dp[i - 1]) rate(i, to) = above;
}

void RateLaws::cap(int i, int j, double most) {
  if (rate(i, j) > most) rate(i, j) = most;
}

void RateLaws::cap_all() {
  for (int i = 0; i < 81; ++i) {
    if (rk[i] > block.kmax) rk[i] = block.kmax;
  }
}

// Tensions and energies

int xtensc_(RateBlock_s const& b, double const* px, double* t, double*, double* v, double*,
            int const* n, double*) {
  double const x = *px;
  double const hh = b.h + b.hd;
  Levers lever(b.K, t, v, *n);
  lever.state(4, x);
  lever.state(5, x + b.h);
  lever.state(6, x + b.h);
  lever.state(7, x + hh);
  lever.state(8, x + hh);
  lever.state(9, x);
  lever.end(10, x + hh + b.ht);
  return 0;
}

int xtensc4_(RateBlock_s const& b, double const* x, double* t, double* kap, double* v,
             double* spare, int const* n, double* spare2) {
  return xtensc_(b, x, t, kap, v, spare, n, spare2);
}

int xtensc5_(RateBlock_s const& b, double const* px, double* t, double*, double* v, double*,
             int const* n, double*) {
  double const x = *px;
  double const hh = b.h + b.hd;
  Levers lever(b.K, t, v, *n);
  lever.state(4, x);
  lever.state(5, x + b.h);
  lever.state(6, x + b.h + b.ha);
  lever.state(7, x + hh);
  lever.state(8, x + hh + b.hb);
  lever.state(9, x);
  lever.end(10, x + hh + b.hb + b.ht);
  return 0;
}

int xtensc7_(RateBlock_s const& b, double const* px, double* t, double*, double* v, double*,
             int const* n, double*) {
  double const x = *px;
  double const hh = b.h + b.hd;
  Levers lever(b.K, t, v, *n);
  lever.state(5, x);
  lever.state(6, x + b.h);
  lever.state(7, x + hh);
  lever.state(8, x + hh);
  lever.state(9, x);
  lever.end(10, x + hh + b.ht);
  lever.end(11, x + hh + b.ha);
  return 0;
}

// Rates

int xratesc_(RateBlock_s const& b, double const* x, double* rk, double*, double const* dco, double*,
             int const* n, double*) {
  RateLaws s = laws_of(xtensc_, b, x, rk, dco, n);
  bind_and_stroke_of_c3_and_c4(s, b, *x);
  s.rate(8, 1) = s.barrier(8, 1, *x + (b.h + b.hd), b.ht, s.v[10] - s.v[8]).forward;
  limits_of_c3_and_c4(s, b, *x);
  return 0;
}

int xratesc4_(RateBlock_s const& b, double const* x, double* rk, double*, double const* dco,
              double*, int const* n, double*) {
  RateLaws s = laws_of(xtensc4_, b, x, rk, dco, n);
  bind_and_stroke_of_c3_and_c4(s, b, *x);
  auto const [end, back] = s.barrier(8, 1, *x + (b.h + b.hd), b.ht, s.v[10] - s.v[8]);
  double const w = end / b.g1 + 1.0 + back / b.g2;
  double const f = (end / b.g3 + 1.0 + back / b.g2) * b.lambda / w;
  s.rate(1, 8) = 0.0;
  s.rate(8, 1) = end / w;
  s.rate(8, 7) *= f;
  s.rate(8, 6) *= f;
  limits_of_c3_and_c4(s, b, *x);
  return 0;
}

int xratesc5_(RateBlock_s const& b, double const* px, double* rk, double*, double const* dco,
              double*, int const* n, double*) {
  RateLaws s = laws_of(xtensc5_, b, px, rk, dco, n);
  double const x = *px;
  double const hh = b.h + b.hd;
  s.load(4, true);
  s.bind(1, 9, b.eta1, x);
  s.bind(3, 4, b.eta3, x);
  s.bind(2, 6, b.eta2, x + b.h + b.ha);
  s.bind(2, 8, b.eta2, x + hh + b.hb);
  s.bind(3, 5, b.eta3, x + b.h + b.ha);
  s.bind(3, 7, b.eta3, x + hh + b.hb);
  s.stroke(4, 5, x, b.h);
  s.stroke(5, 7, x + b.h, b.hd);
  s.stroke(6, 8, x + b.h + b.ha, b.hd + b.hb - b.ha);
  s.stroke(5, 6, x + b.h, b.ha);
  s.stroke(7, 8, x + hh, b.hb);

  auto const [end, back] = s.barrier(8, 1, x + hh + b.hb, b.ht, s.v[10] - s.v[8]);
  double const w = end / b.g1 + 1.0 + back / b.g2;
  double const f = (back / b.g2 + 1.0) / w;
  s.rate(1, 8) = 0.0;
  s.rate(8, 1) = end / w;
  for (int const to : {7, 6, 2}) s.rate(8, to) *= f;

  s.limit(4, 3, x, b.gmax, b.gmax);
  s.limit(5, 3, x + b.h, b.gmax, b.gmax);
  s.limit(6, 2, x + b.h + b.ha, b.gmax, b.gmax);
  s.limit(7, 3, x + hh, b.gmax, b.gmax);
  bool const is_state_8_out = x + hh + b.hb > b.dp[7] || x + hh < -b.dm[7];
  if (is_state_8_out) s.rate(8, 2) = b.gmax;
  if (std::abs(x) > b.dm[8]) s.rate(9, 1) = b.gmax;
  s.cap_all();
  return 0;
}

int xratesc7_(RateBlock_s const& b, double const* px, double* rk, double*, double const* dco,
              double*, int const* n, double*) {
  RateLaws s = laws_of(xtensc7_, b, px, rk, dco, n);
  double const x = *px;
  double const hh = b.h + b.hd;
  s.load(5, true);
  s.bind(1, 9, b.eta1, x);
  s.bind(2, 8, b.eta2, x + hh);
  s.bind(3, 7, b.eta3, x + hh);
  s.bind(4, 5, b.eta4, x);
  s.bind(3, 6, b.eta3, x + b.h);
  s.stroke(5, 6, x, b.h);
  s.stroke(6, 7, x + b.h, b.hd);

  double const b1 = b.eta1 * s.bfac[8] + 1.0;
  double const e1 = s.reach(x + hh) * s.bfac[8] * (b.eta1 + 1.0) / b1;
  double const d1 = s.dfac[8] * (b.eta1 + 1.0) / b1;
  double const e7 = exprot(-(s.v[10] - s.v[7]) / thermal_energy);
  double const e8 = exprot(-(s.v[11] - s.v[8]) / thermal_energy);
  s.rate(7, 8) = e7 * s.k(7, 8);
  s.rate(8, 7) = e7 * s.k(8, 7);
  s.rate(8, 1) = (b.eta5 + 1.0) * s.k(8, 1) * d1 / (d1 * b.eta5 / e8 + 1.0);
  s.rate(1, 8) = (b.eta5 + 1.0) * s.k(1, 8) * e1 / (b.eta5 * d1 / e8 + 1.0);

  s.limit(5, 4, x, b.gm[4], b.gp[4]);
  s.limit(6, 3, x + b.h, b.gm[5], b.gp[5]);
  s.limit(7, 3, x + hh, b.gm[6], b.gp[6]);
  s.limit(8, 2, x + hh, b.gm[7], b.gp[7]);
  s.limit(9, 1, x, b.gm[8], b.gp[8]);
  s.cap_all();
  return 0;
}
