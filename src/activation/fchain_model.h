#pragma once
/// The flexible tropomyosin chain at one site: its parameters, and how far it leaves a site to a
/// head.
///
/// Law:     the angle of the chain at a site follows two normal curves joined at a cut point c:
///          above c the chain with its fixed pins (mean m, deviation s), below c the chain as a
///          weakly bound head holds it (u, t)
///          binding factor of a free site   km  (P(0 <= angle < phi_plus) + P(angle >= phi_plus))
///          factor of a site with weak head kps  P(angle >= phi_plus)
///          both at most 1; any other site 0
/// Symbols: angle around the filament [radian]; km, kps scales of the factors
/// Source:  the continuous flexible chain of D. A. Smith, R. Maytum and M. A. Geeves, Biophys. J.
///          84 (2003) 3155
/// Assumes: the joined curve needn't end at exactly 1; the formulas are taken as they stand
/// Refuses: scales or `sd_fac` below 0; distance or radius not above 0; `xi` so small that
///          neighbouring sites can't be told apart; anything too large to calculate with
///
/// The parameters are read from "mg_old.prm".

#include <string>
#include <vector>

namespace dealii {
class ParameterHandler;
}

/// What the chain solvers need of the chain.
struct FlexChainParameter_s {
  double sd_fac = 0.0;          ///< deviation of the free chain, and scale of all [rad]
  double actin_distance = 0.0;  ///< between the sites of a chain [m]
  double radius_actin = 0.0;    ///< of the thin filament [nm]
  double xi = 0.0;              ///< inverse length scale of the chain [1/m]
  double phi_plus = 0.0;        ///< angle at which a strongly bound head pins the chain [rad]
  double phi_minus = 0.0;       ///< angle at which troponin pins the chain [rad]
};

class FChainModel {
 public:
  FChainModel();

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);
  void WriteToTaveloOutput() const;

  unsigned n_states() const { return n_states_; }
  FlexChainParameter_s const* get_fc_parameter() const { return &fc; }
  std::vector<unsigned> const& get_state_map() const { return state_map; }
  void ChangeXi(double xi);
  /// Whether spans of one site have a length at this `xi` that the chain's coefficients bear: below
  /// they lose more than half of their digits to cancellation, above the bed outweighs all bending.
  bool accepts(double xi) const {
    double const length = xi * fc.actin_distance;
    return 1e-4 <= length && length <= 100.0;
  }
  static constexpr char const* accepted_xi = "1e-4 / actin_distance to 100 / actin_distance";

  /// Probability that the chain lies below `x`: `m` and `s` of the curve above the cut point `c`,
  /// `u` and `t` of the one below it.
  double belowProbability(double x, double m, double s, double c, double t, double u) const;
  /// The same for a single normal curve of mean 0.
  double belowProbability(double x, double s) const;
  /// Probability that the chain lies below the blocking angle; 0 where it is pinned.
  double closing_probability(double mean, double sd, double mean_weak, double sd_weak) const;
  /// Writes the site's `factor` and returns `state` as it is.
  unsigned update_status(unsigned site, double mean, double sd, double mean_weak, double sd_weak,
                         unsigned state, double& factor) const;

 private:
  double free_factor(double mean, double sd, double mean_weak, double sd_weak) const;
  double weak_head_factor(double mean, double sd, double mean_weak, double sd_weak) const;

  unsigned const n_states_ = 4;
  FlexChainParameter_s fc;

 public:
  double km = 0.0;
  double kps = 0.0;
  double k_cur = 0.0;  ///< weight of the chain's curvature in the release factor

 private:
  unsigned segment_length = 0;
  /// Chain's state of a site (0 pinned by troponin, 1 free, 2 weak head, 3 strong head) to the
  /// site's: 0 open, 1 blocked, 2 closed.
  std::vector<unsigned> const state_map = {1, 2, 2, 0};
};
