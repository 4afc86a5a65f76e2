#pragma once
/// Procedures that several kinetic models share: detailed balance, the threshold strain of the
/// reverse stroke, the rescaling of binding, and tables of energies and rates over strain.

#include <array>
#include <cstdio>
#include <functional>
#include <string>

class XB_Model;

/// Boltzmann binding that can saturate.
///
/// Law:     c e for eta = 0, else c (1 + eta) e / (1 + eta e), which is c at e = 1 too
/// Symbols: c rate of an unstrained head, e Boltzmann factor of the strain, eta saturation above -1
double saturating_binding(double c, double eta, double e);

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
/// several sites, 5.5 nm apart, stays that of one site; 1 when the bound fraction is at most 2.75
/// nm wide on each side.
///
/// `rate` is the binding rate over strain with the constant as read, `kd` the constant divided by
/// exp(GBind). A law that gives no finite width yields 1 and a warning that names `model`; a rate
/// that never falls off ends the run.
double binding_overlap_factor(std::function<double(double)> const& rate, double kd,
                              std::string const& model);

/// Lists the constants of a Duke-like cycle under `heading`: k_adp, D, kBT, dGStroke, c_1, c_2,
/// c_3, c_4, k_12, k_21_cap, delta, eta.
void list_cycle(char const* heading, std::array<double, 12> const& values);

/// Warns that the rescaling of binding had nothing to work on; returns the factor 1.
double no_binding_overlap(std::string const& model);

/// Writes one line per strain from `x0` up to less than `x1` to a file: the strain, then whatever
/// `write_row` writes, each value with "%e ". Gives up silently when the file can't be opened.
void write_strain_table(char const* file_name, double x0, double x1, double dx,
                        std::function<void(FILE*, double)> const& write_row);
