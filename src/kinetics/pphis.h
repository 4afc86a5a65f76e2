#pragma once
/// Rate integrals: the rates of a nine-state crossbridge at one strain.
///
/// A routine turns a 9 x 9 table of rate constants into the rates at the strain x, for one of five
/// chemical schemes, C3 to C7. States count from 1; `rk` holds the rate of state i to state j at
/// (j - 1) * 9 + i - 1. An entry that no law below names keeps its constant.
///
/// A bound state i has the lever position p, the tension t = K p and the energy v = K p^2 / 2.
/// Laws:    binding, detached a to bound b:  r k_ab B_b (eta + 1) / (eta B_b + 1)
///          and its release:                   k_ba D_b (eta + 1) / (eta B_b + 1)
///          with D = exp(c |t| / kT), B = exp((c |t| - v) / kT), and r = 1 within the reach dco,
///          else 0; binding and release balance v, whatever the saturation eta and the load
///          distance c stroke of length L over the barrier of the spring, starting at q:
///            k_ab L / integral from 0 to L of exp((U(q + u) - U(q)) / kT) du,  U = K q^2 / 2
///          and its reverse from the same integral, in balance with the change of v
///          limit: beyond its range -dm <= q <= dp a state is released at a fixed rate
/// Symbols: x, q, p, c, L, dco, dm, dp [nm]; t [pN]; v, U, kT [pN nm]; K [pN/nm]; rates [1/time]
/// Source:  strokes: H. A. Kramers, Physica 7 (1940) 284, diffusion over a barrier, with Dawson's
///          integral for a spring; load on release: G. I. Bell, Science 200 (1978) 618
/// Refuses: nothing. A stroke of length 0 or a stiffness not above 0 gives rates that are no
///          numbers; the model refuses them

#include <functional>

/// What the routines work on besides the constants. Arrays are by state, counted from 1, minus 1.
struct RateBlock_s {
  double cc[9] = {};   ///< load distance of a state under positive tension
  double ccm[9] = {};  ///< the same under negative tension; C3 and C4 use `cc` for both
  double dm[9] = {};   ///< range of a state below 0
  double dp[9] = {};   ///< and above it
  double gm[9] = {};   ///< release rate below the range, C6 and C7
  double gp[9] = {};   ///< and above it
  double gmax = 0.0;   ///< release rate beyond the range, C3 to C5
  double eta1 = 0.0;   ///< saturations of binding
  double eta2 = 0.0;
  double eta3 = 0.0;
  double eta4 = 0.0;
  double eta5 = 0.0;
  double h = 0.0;   ///< first stroke
  double hd = 0.0;  ///< second stroke
  double ht = 0.0;  ///< end of the cycle
  double ha = 0.0;
  double hb = 0.0;
  double g1 = 0.0;  ///< rates that limit the end of the cycle, C4 and C5
  double g2 = 0.0;
  double g3 = 0.0;
  double lambda = 0.0;
  double phod = 0.0;    ///< C6: factor on the ways out of state 8
  double kkstar = 0.0;  ///< C6: saturation of the end of the cycle
  double kmax = 0.0;    ///< cap of every rate
  double KbT = 4.0;     ///< thermal energy of C6; the other schemes work at 4.0
  double K = 0.0;       ///< stiffness of the elastic law at the strain asked for
  /// C6: force and energy of the elastic law in each state; the tenth energy is the cycle's end.
  double force[9] = {};
  double energy[10] = {};
};

/// The laws, applied one by one to a table that holds the constants at first.
class RateLaws {
 public:
  using Integral = std::function<double(double)>;

  /// `D` takes Dawson's place in the barrier law.
  RateLaws(RateBlock_s const& block, double kT, double dco, double* rk, Integral D);

  /// Load factors of the states from `first` on, once `t` and `v` are filled.
  void load(int first, bool is_one_sided);
  /// 1 within reach, else 0.
  double reach(double q) const;
  void bind(int a, int b, double eta, double q);
  /// A release under load alone.
  void release(int b, int a);
  void stroke(int a, int b, double q, double L);
  void limit(int i, int to, double q, double below, double above);
  void cap(int i, int j, double most);
  void cap_all();

  /// The two rates that the barrier law gives a stroke.
  struct Barrier {
    double forward, reverse;
  };
  Barrier barrier(int a, int b, double q, double L, double dv) const;

  double k(int i, int j) const { return constants[index(i, j)]; }
  double& rate(int i, int j) { return rk[index(i, j)]; }

  // By state, counted from 1; energies 10 and 11 are ends of the cycle.
  double t[10] = {};
  double v[12] = {};
  double dfac[10] = {};
  double bfac[10] = {};

 private:
  static int index(int i, int j) { return (j - 1) * 9 + i - 1; }

  RateBlock_s const& block;
  double const kT;
  double const dco;
  double const fac;
  double* const rk;
  double constants[81];
  Integral const D;
};

// The routines keep one common form. `n` is the state count, 9; the arguments without a name carry
// nothing. The result is 0.

using RateRoutine = int(RateBlock_s const& block, double const* x, double* rk, double*,
                        double const* dco, double*, int const* n, double*);
RateRoutine xratesc_, xratesc4_, xratesc5_, xratesc7_;

/// Tension `t` and energy `v` of each state at the strain `x`, at the index of the state counted
/// from 1; `v` holds the ends of the cycle at 10 and 11.
using TensionRoutine = int(RateBlock_s const& block, double const* x, double* t, double*, double* v,
                           double*, int const* n, double*);
TensionRoutine xtensc_, xtensc4_, xtensc5_, xtensc7_;
