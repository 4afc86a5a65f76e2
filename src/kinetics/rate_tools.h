#pragma once
/// Procedures that several kinetic models share: detailed balance, the threshold strain of the
/// reverse stroke, the rescaling of binding, and tables of energies and rates over strain.

#include <array>
#include <cstdio>
#include <functional>
#include <limits>
#include <string>
#include <vector>

class Model;
class XB_Model;

/// Distance between the sites of one strand that a head can reach [nm].
constexpr double site_spacing = 5.5;
/// Step of the sweeps over a binding law by which overlap is found [nm].
constexpr double sweep_step = 0.1;

/// Boltzmann binding that can saturate.
///
/// Law:     c e for eta = 0, else c (1 + eta) e / (1 + eta e), which is c at e = 1 too
/// Symbols: c rate of an unstrained head, e Boltzmann factor of the strain, eta saturation above -1
double saturating_binding(double c, double eta, double e);

/// `saturating_binding` for a head whose Boltzmann factor is widened on the positive side: there
/// the energy counts in units of multiplier kBT.
double widened_binding(XB_Model const& law, double x, double c, double eta, double multiplier,
                       double kBT);

/// Upper bound of `widened_binding` at strains of at most `reach` in size; infinity where the law
/// or the saturation sets none.
double most_widened_binding(XB_Model const& law, double reach, double c, double eta,
                            double multiplier, double kBT);

/// Upper bound of the sum of all rates out of a bound state of a cycle of such laws, at strains of
/// at most `reach` in size: the largest of each rate at -reach, 0 and reach.
///
/// Holds on a spring of constant stiffness, where the exponents are parabolas around 0, or straight
/// lines that bend once into a plateau; only the reverse of a narrowed binding may have a peak at
/// positive strain, which its value at the opposite strain tops. Infinity on another law, and where
/// Boltzmann factors of extensions up to `reach` plus `lever`, the lengths that states add to the
/// strain, come near the smallest number that a double holds.
double bound_by_ends(Model const& model, unsigned from, double reach, double lever, double kBT);

/// Free energy of a state whose spring has the extension `extension` at strain x and counts as
/// linear around x: level + K(x) extension^2/2.
double strained_level(XB_Model const& law, double level, double x, double extension);

/// Stroke of a spring that counts as linear around the strain x: k_12 below x_cap, from there on
/// k_12 exp(-K(x) D (x - x_cap)/kBT).
double linear_stroke(XB_Model const& law, double x, double k_12, double x_cap, double D,
                     double kBT);

/// ADP release that moves the lever on by delta: k_adp exp(-W/kBT) with the work
/// W = K(x) ((x + D + delta)^2 - (x + D)^2)/2 of a spring that counts as linear around x.
double linear_adp_step(XB_Model const& law, double x, double k_adp, double D, double delta,
                       double kBT);

/// Reverse rate of j to i by detailed balance.
///
/// Law:     r = f / exp((G_i - G_j) / kBT)
/// Symbols: f forward rate of i to j, G free energies [pN nm], kBT thermal energy [pN nm]
/// Source:  T. L. Hill, Free Energy Transduction in Biology (1977)
double detailed_balance(double f, double G_i, double G_j, double kBT);

/// Strain at which the reverse stroke, by detailed balance, reaches its cap; the forward stroke
/// begins to fall there.
///
/// Solves E(x + D) - E(x) = -(kBT ln(k_12 / k_21_cap) + dGStroke) in a table of 101 strains from
/// -25 to 4 nm. D is the stroke distance [nm], k_12 the forward rate, dGStroke the free energy of
/// the stroke [pN nm].
double threshold_strain(XB_Model const& law, double D, double kBT, double k_12, double k_21_cap,
                        double dGStroke);

/// Factor by which a binding constant is divided so that the binding flux of a head that reaches
/// several sites, `site_spacing` apart, stays that of one site; 1 when the bound fraction is at
/// most half of that wide on each side.
///
/// `rate` is the binding rate over strain with the constant as read, `kd` the constant divided by
/// exp(GBind). A law that gives no finite width yields 1 and a warning that names `model`; a rate
/// that never falls off ends the run.
double binding_overlap_factor(std::function<double(double)> const& rate, double kd,
                              std::string const& model);

/// The same for a release that depends on the strain.
double binding_overlap_factor(std::function<double(double)> const& rate,
                              std::function<double(double)> const& release,
                              std::string const& model);

/// The same for binding within a given reach [nm].
double binding_overlap_factor(std::function<double(double)> const& rate,
                              std::function<double(double)> const& release, double reach,
                              std::string const& model);

/// The same for binding at `rate` between two strains only: the number of sites within the range,
/// each strain counting by its rate.
double range_overlap_factor(std::function<double(double)> const& rate, double first, double last,
                            std::string const& model);

/// Makes the stepper consider the pairs whose kind of transition is not 0.
template <std::size_t n>
void set_transitions(std::array<std::array<unsigned, n>, n> const& rate_type,
                     std::vector<std::vector<bool>>& transitions) {
  for (unsigned from = 0; from < n; ++from) {
    for (unsigned to = 0; to < n; ++to) transitions[from][to] = rate_type[from][to] != 0;
  }
}

/// Ends the run over a rate that a head of strain x has between two states. Names the crossbridge's
/// file where its stiffness is why, else the model's.
[[noreturn]] void refuse_rate(double rate, Model const& model, double x, unsigned from,
                              unsigned to);

/// What is below 0 counts as no rate.
inline bool is_finite_rate(double rate) { return rate <= std::numeric_limits<double>::max(); }

/// The rate, unless it is not a number or infinite.
inline double require_finite(double rate, Model const& model, double x, unsigned from,
                             unsigned to) {
  if (!is_finite_rate(rate)) refuse_rate(rate, model, x, from, to);
  return rate;
}

/// Warns, before a run, of the first rate of bound heads, or of heads that bind, that isn't finite
/// at a strain of up to 10 nm in size; returns whether there is one. Heads may never come there.
bool warn_of_infinite_rate(Model const& model);

/// Lists the constants of a Duke-like cycle under `heading`: k_adp, D, kBT, dGStroke, c_1, c_2,
/// c_3, c_4, k_12, k_21_cap, delta, eta.
void list_cycle(char const* heading, std::array<double, 12> const& values);

/// Warns that the rescaling of binding had nothing to work on; returns the factor 1.
double no_binding_overlap(std::string const& model);

/// Writes one line per strain from `x0` up to less than `x1` to a file: the strain, then whatever
/// `write_row` writes, each value with "%e ".
///
/// The table is for a person to look at, and no run needs it: where the file can't be opened, it is
/// left out without a word. A table that was begun and can't be finished would mislead, and ends
/// the run.
void write_strain_table(char const* file_name, double x0, double x1, double dx,
                        std::function<void(FILE*, double)> const& write_row);
