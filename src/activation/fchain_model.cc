#include "activation/fchain_model.h"

#include <algorithm>
#include <boost/math/special_functions/erf.hpp>
#include <cfloat>
#include <cmath>
#include <cstdio>

#include "base/parameter_file.h"
#include "base/run_state.h"

namespace {

constexpr char const* parameter_file = "mg_old.prm";
constexpr double sqrt_2 = 1.4142135623730951;
/// A chain with a smaller deviation stands at its mean.
constexpr double pinned_sd = 1e-10;

/// Twice the probability that a normal variate lies above `x`.
double two_tails(double x, double mean, double sd) { return std::erfc((x - mean) / (sd * sqrt_2)); }

/// The distribution of the angle at one site; the tails at the cut point serve every `below`.
struct JoinedCurve {
  double m, s;  ///< mean and deviation above the cut point
  double c;     ///< the cut point
  double t, u;  ///< deviation and mean below it
  double upper_tails_at_cut;
  double lower_tails_at_cut;

  double below(double x) const {
    bool const has_lower = t > pinned_sd;
    if (c > x) return has_lower ? 1.0 - 0.5 * two_tails(x, u, t) : 0.0;
    if (!has_lower) return 1.0 - 0.5 * two_tails(x, m, s);
    return 1.0 + 0.5 * (upper_tails_at_cut - lower_tails_at_cut - two_tails(x, m, s));
  }
};

/// Where the inverse of erfc, and with it the cut's place on the lower curve, is held: at a weight
/// of 0.999999999 above the cut, and of the least number.
double const lowest_cut = boost::math::erfc_inv(2.0 * 0.999999999);
double const highest_cut = boost::math::erfc_inv(2.0 * DBL_MIN);

/// The curve whose lower mean u follows from the weight q of the upper curve above the cut, as
/// u = c - t erfc_inv(2 q); with 2 q = erfc(z) the inverse is z itself.
JoinedCurve joined_curve(double m, double s, double c, double t) {
  // Where both curves coincide, what follows gives these values exactly.
  if (c == m && t == s) return {m, s, c, t, c, 1.0, 1.0};
  double const z = (c - m) / (s * sqrt_2);
  double const u = c - t * std::clamp(z, lowest_cut, highest_cut);
  return {m, s, c, t, u, std::erfc(z), t > pinned_sd ? two_tails(c, u, t) : 0.0};
}

bool is_pinned(double sd) { return !(std::abs(sd) > pinned_sd); }

}  // namespace

FChainModel::FChainModel() {
  load_parameters(*this, parameter_file);
  WriteToTaveloOutput();
}

void FChainModel::declare_parameters(dealii::ParameterHandler& handler) {
  {
    ParameterSection const rates(handler, "rates");
    rates.declare_double("km", "2.4e6");
    rates.declare_double("kps", "4820");
    rates.declare_double("k_cur", "0");
  }
  ParameterSection const chain(handler, "chain");
  chain.declare_double("actin_distance", "5.5e-9");
  chain.declare_double("radius_actin", "3.5");
  chain.declare_double("xi", "4.5e7");
  chain.declare_double("phi_plus", "0.2");
  chain.declare_double("phi_minus", "-0.3");
  chain.declare_double("sd_fac", "0.518");
  chain.declare_integer("segment_length", "7");
}

void FChainModel::get_parameters(dealii::ParameterHandler& handler) {
  {
    ParameterSection const rates(handler, "rates", parameter_file);
    km = rates.between("km", 0.0, 1e100);
    kps = rates.between("kps", 0.0, 1e100);
    k_cur = rates.between("k_cur", -1e100, 1e100);
  }
  ParameterSection const chain(handler, "chain", parameter_file);
  fc.actin_distance = chain.between("actin_distance", 1e-12, 1e-3);
  fc.radius_actin = chain.between("radius_actin", 1e-3, 1e3);
  fc.xi = chain.number("xi");
  if (!accepts(fc.xi)) chain.refuse_value("xi", accepted_xi);
  fc.phi_plus = chain.between("phi_plus", -100.0, 100.0);
  fc.phi_minus = chain.between("phi_minus", -100.0, 100.0);
  fc.sd_fac = chain.between("sd_fac", 0.0, 100.0);
  segment_length = chain.count("segment_length", 1);
}

void FChainModel::ChangeXi(double xi) { fc.xi = xi; }

double FChainModel::belowProbability(double x, double m, double s, double c, double t,
                                     double u) const {
  return JoinedCurve{m, s, c, t, u, two_tails(c, m, s), two_tails(c, u, t)}.below(x);
}

double FChainModel::belowProbability(double x, double s) const {
  return 0.5 * std::erfc(x / (s * -sqrt_2));
}

double FChainModel::closing_probability(double mean, double sd, double mean_weak,
                                        double sd_weak) const {
  if (is_pinned(sd)) return 0.0;
  return joined_curve(mean, sd, mean_weak, sd_weak).below(fc.phi_minus);
}

unsigned FChainModel::update_status(unsigned, double mean, double sd, double mean_weak,
                                    double sd_weak, unsigned state, double& factor) const {
  switch (state) {
    case 1:
      factor = free_factor(mean, sd, mean_weak, sd_weak);
      break;
    case 2:
      factor = weak_head_factor(mean, sd, mean_weak, sd_weak);
      break;
    default:
      factor = 0.0;
  }
  return state;
}

double FChainModel::free_factor(double mean, double sd, double mean_weak, double sd_weak) const {
  if (is_pinned(sd)) return mean >= 0.0 || mean >= fc.phi_plus ? std::min(km, 1.0) : 0.0;
  double const below_0 = joined_curve(mean, sd, mean_weak, sd_weak).below(0.0);
  return std::min((1.0 - below_0) * km, 1.0);
}

double FChainModel::weak_head_factor(double mean, double sd, double mean_weak,
                                     double sd_weak) const {
  if (is_pinned(sd)) return mean >= fc.phi_plus ? std::min(kps, 1.0) : 0.0;
  double const below_plus = joined_curve(mean, sd, mean_weak, sd_weak).below(fc.phi_plus);
  return std::min((1.0 - below_plus) * kps, 1.0);
}

void FChainModel::WriteToTaveloOutput() const {
  std::fprintf(fOutputFile, "\t*** FCHAIN MODEL *********************\n\n");
  std::fprintf(fOutputFile, "\tkm:\t\t\t%15.10lf\n", km);
  std::fprintf(fOutputFile, "\tkps:\t\t\t%15.10lf\n\n", kps);
  std::fprintf(fOutputFile, "\tk_cur:\t\t\t%15.10lf\n\n", k_cur);
  std::fprintf(fOutputFile, "\tactin_distance:\t\t%15.10lf\n", fc.actin_distance);
  std::fprintf(fOutputFile, "\txi:\t\t\t\t%15.10lf\n", fc.xi);
  std::fprintf(fOutputFile, "\tphi_plus:\t\t\t%15.10lf\n", fc.phi_plus);
  std::fprintf(fOutputFile, "\tphi_minus:\t\t\t%15.10lf\n", fc.phi_minus);
  std::fprintf(fOutputFile, "\tsd_fac:\t\t\t%15.10lf\n", fc.sd_fac);
  std::fprintf(fOutputFile, "\tsegment_length:\t\t\t%d\n\n", static_cast<int>(segment_length));
}
