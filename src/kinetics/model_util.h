#pragma once
/// Steady states of a kinetic scheme, and tables of its rates and states over strain.
///
/// All work on the rates of a site that regulation leaves alone.

#include <vector>

class Model;

class ModelUtil {
 public:
  /// Steady state of the chain of detached states alone, at strain 0; 0 for attached states. This
  /// is the distribution from which heads take their first states.
  static void get_detached_states(Model const& model, std::vector<double>& p);

  // Diagnostics that no step of a run calls.

  /// Steady state of all states at strain `x`. A state that no rate leads into gets 0, and the rest
  /// of the chain is solved.
  static void get_states(Model const& model, double x, std::vector<double>& p);

  /// Writes "rates.dat": strain, then the rates of all pairs, from by from and in it to by to.
  static void print_rates(Model const& model, double x0, double x1, double dx);
  /// Writes "states.dat": strain, then the steady state.
  static void print_states(Model const& model, double x0, double x1, double dx);
};
