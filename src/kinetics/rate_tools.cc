#include "kinetics/rate_tools.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/diagnostics.h"
#include "base/discrete_function.h"
#include "base/output_file.h"
#include "base/run_state.h"
#include "elastic/XB_Models.h"
#include "kinetics/model.h"

namespace {

constexpr double negligible_rate = 1e-8;
constexpr double widest_reach = 1e5;  // nm, far beyond any filament
/// 600 kBT [pN nm]: below exp(-708) a double loses digits.
constexpr double most_spring_energy = 2500.0;
constexpr double unbounded = std::numeric_limits<double>::infinity();

/// Strain up to which the rate is not negligible, in whole nm.
double binding_reach(std::function<double(double)> const& rate, std::string const& model) {
  double r = 0.0;
  while (rate(r) > negligible_rate) {
    r += 1.0;
    if (r > widest_reach) stop(model + ": the binding rate never falls off with the strain");
  }
  return r;
}

/// Half width of the bound fraction rate / (release + rate), as a triangle of the same area and
/// height; not finite when no point of the sweep lies at strain 0 or nothing binds there.
double bound_half_width(std::function<double(double)> const& rate,
                        std::function<double(double)> const& release, double reach) {
  double sum = 0.0;
  double p0 = 0.0;
  auto const n = static_cast<long>(2.0 * reach / sweep_step + 1.0);
  double x = -reach;
  for (long i = 0; i < n; ++i, x += sweep_step) {
    double const k = rate(x);
    double const p = k / (release(x) + k);
    sum += p;
    if (std::abs(x) < 1e-5) p0 = p;
  }
  return 0.5 * (sum * sweep_step / (0.5 * p0));
}

std::string name_of_rate(double x, unsigned from, unsigned to) {
  return "rate of state " + std::to_string(from) + " to " + std::to_string(to) + " at strain " +
         shown(x) + " nm";
}

/// Whether some state stretches the spring so far that Boltzmann factors leave the range of a
/// double.
bool is_too_stiff(Model const& model, double x) {
  double longest = std::abs(x);
  for (unsigned s = 0; s < model.n_states(); ++s) {
    longest = std::max(longest, std::abs(x + model.power_stroke(s)));
  }
  double const energy = 0.5 * std::abs(model.xb_model->GetStiffness(x)) * longest * longest;
  return !(energy < most_spring_energy);
}

}  // namespace

void refuse_rate(double rate, Model const& model, double x, unsigned from, unsigned to) {
  std::string const which = name_of_rate(x, from, to) + (t_timeStep > 0 ? at_step() : "");
  if (!model.xb_model || !is_too_stiff(model, x)) {
    refuse(model.file_name, "the " + which, shown(rate), "a finite number");
  }
  refuse(model.xb_model->file_name, "the stiffness", shown(model.xb_model->GetStiffness(x)),
         "one with which the " + which + ", now " + shown(rate) + ", is finite");
}

bool warn_of_infinite_rate(Model const& model) {
  for (int i = -100; i <= 100; ++i) {
    double const x = 0.1 * i;
    for (unsigned from = 0; from < model.n_states(); ++from) {
      for (unsigned to = 0; to < model.n_states(); ++to) {
        bool const is_strained = model.attached[from] || model.attached[to];
        if (!is_strained || !model.transitions[from][to]) continue;
        double const rate = model.get_k(x, from, to);
        if (is_finite_rate(rate)) continue;
        bool const is_stiff = model.xb_model && is_too_stiff(model, x);
        warn((is_stiff ? model.xb_model->file_name : model.file_name) + ": the " +
             name_of_rate(x, from, to) + " is " + shown(rate) +
             "; a head that has it ends the run");
        return true;
      }
    }
  }
  return false;
}

double saturating_binding(double c, double eta, double e) {
  if (std::abs(eta) < 1e-10) return c * e;
  return c * (1 + eta) * e / (1 + eta * e);
}

double widened_binding(XB_Model const& law, double x, double c, double eta, double multiplier,
                       double kBT) {
  double const scale = x > 0.0 ? multiplier * kBT : kBT;
  return saturating_binding(c, eta, std::exp(-(law.GetEnergy(x) / scale)));
}

double most_widened_binding(XB_Model const& law, double reach, double c, double eta,
                            double multiplier, double kBT) {
  // The rate rises with the Boltzmann factor, as long as a saturation below 0 has no pole.
  double const exponent = std::max(-law.GetEnergyFloor(-reach, 0.0) / kBT,
                                   -law.GetEnergyFloor(0.0, reach) / (multiplier * kBT));
  double const e = std::exp(exponent);
  bool const is_bounded = std::isfinite(e) && 1 + eta * e > 0.0;
  return is_bounded ? saturating_binding(c, eta, e) : unbounded;
}

double bound_by_ends(Model const& model, unsigned from, double reach, double lever, double kBT) {
  constexpr double most_energy = 600.0;  // in kBT; below exp(-708) a double loses digits
  XB_Model const& law = *model.xb_model;
  bool const is_known = !law.IsNonLinear() && law.GetStiffness(0.0) >= 0.0 &&
                        law.GetEnergy(reach + lever) <= most_energy * kBT;
  if (!is_known) return unbounded;
  double sum = 0.0;
  for (unsigned to = 0; to < model.n_states(); ++to) {
    if (!model.transitions[from][to]) continue;
    double most = 0.0;
    for (double const x : {-reach, 0.0, reach}) most = std::max(most, model.get_k(x, from, to));
    sum += most;
  }
  return sum;
}

double strained_level(XB_Model const& law, double level, double x, double extension) {
  return level + 0.5 * law.GetStiffness(x) * extension * extension;
}

double linear_stroke(XB_Model const& law, double x, double k_12, double x_cap, double D,
                     double kBT) {
  if (x < x_cap) return k_12;
  return k_12 * std::exp(-law.GetStiffness(x) * D * (x - x_cap) / kBT);
}

double linear_adp_step(XB_Model const& law, double x, double k_adp, double D, double delta,
                       double kBT) {
  double const work = law.GetStiffness(x) * delta * D * (x / D + 1.0 + delta / (2 * D));
  return k_adp * std::exp(-work / kBT);
}

double detailed_balance(double f, double G_i, double G_j, double kBT) {
  return f / std::exp((G_i - G_j) / kBT);
}

double threshold_strain(XB_Model const& law, double D, double kBT, double k_12, double k_21_cap,
                        double dGStroke) {
  Table stroke_energy;
  double x = -25.0;
  for (int i = 0; i <= 100; ++i, x += 0.29) {
    stroke_energy.emplace_back(x, law.GetEnergy(x + D) - law.GetEnergy(x));
  }
  return GetInverseValue(stroke_energy, -(kBT * std::log(k_12 / k_21_cap) + dGStroke));
}

double binding_overlap_factor(std::function<double(double)> const& rate, double kd,
                              std::string const& model) {
  return binding_overlap_factor(
      rate, [kd](double) { return kd; }, model);
}

double binding_overlap_factor(std::function<double(double)> const& rate,
                              std::function<double(double)> const& release,
                              std::string const& model) {
  return binding_overlap_factor(rate, release, binding_reach(rate, model), model);
}

double binding_overlap_factor(std::function<double(double)> const& rate,
                              std::function<double(double)> const& release, double reach,
                              std::string const& model) {
  double const w = bound_half_width(rate, release, reach);
  if (!(w <= widest_reach)) return no_binding_overlap(model);
  double const t0 = site_spacing - w;
  double s = 0.0;
  double e = 0.0;
  auto const n = static_cast<long>(2.0 * w / sweep_step + 1.0);
  double x = -w;
  for (long i = 0; i < n; ++i) {
    double const k = rate(x);
    x += sweep_step;
    s += k;
    for (double t = t0; t < w; t += site_spacing) {
      if (x >= t) e += 2.0 * k;
    }
  }
  double const factor = (e + s) / s;
  return std::isfinite(factor) ? factor : no_binding_overlap(model);
}

void list_cycle(char const* heading, std::array<double, 12> const& values) {
  constexpr char const* labels[] = {"k_adp:\t\t", "D:\t\t\t",   "RT:\t\t\t",  "dGStroke:\t",
                                    "c_1:\t\t",   "c_2:\t\t",   "c_3:\t\t",   "c_4:\t\t",
                                    "k12:\t\t",   "k_cap:\t\t", "delta:\t\t", "eta:\t\t"};
  std::fprintf(fOutputFile, "\t%s\n\n", heading);
  for (std::size_t i = 0; i < values.size(); ++i) {
    std::fprintf(fOutputFile, "\t%s%15.8lf\n", labels[i], values[i]);
  }
  std::fprintf(fOutputFile, "\n");
}

double range_overlap_factor(std::function<double(double)> const& rate, double first, double last,
                            std::string const& model) {
  double const h = last - first;
  double s = 0.0;
  double e = 0.0;
  auto const n = static_cast<long>(h / sweep_step + 1.0);
  double x = 0.0;
  for (long i = 0; i < n; ++i) {
    double const k = rate(first + x);
    x += sweep_step;
    s += k;
    // Neighbour sites on both sides, as long as their ranges overlap with this one.
    double u = h - site_spacing;
    for (double t = site_spacing; h > t; t += site_spacing, u -= site_spacing) {
      if (x >= t) e += k;
      if (u >= x) e += k;
    }
  }
  double const factor = (e + s) / s;
  return std::isfinite(factor) ? factor : no_binding_overlap(model);
}

double no_binding_overlap(std::string const& model) {
  warn(model + ": binding vanishes where its rescaling looks for it; it is left as read");
  return 1.0;
}

void write_strain_table(char const* file_name, double x0, double x1, double step,
                        std::function<void(FILE*, double)> const& write_row) {
  OutputFile const file = OutputFile::if_possible(file_name, "wb");
  if (!file.get()) return;
  for (double x = x0; x < x1; x += step) {
    std::fprintf(file.get(), "%e ", x);
    write_row(file.get(), x);
    std::fprintf(file.get(), "\n");
  }
  file.flush();
}
