#pragma once
/// A kinetic model that a TOML file describes: states, free energies, and rates as formulas
/// (docs/schemes.md).
///
/// Law:     as the file says
/// Symbols: x strain [nm]; F, E force [pN] and energy [pN nm] of the elastic law at x and the lever
///          of the attached state that a rate leaves or, in binding, enters; t time; Ca the value
///          of "ca_protocol.dat"
/// Assumes: rates that depend on the strain alone are tabulated to relative 1e-6; with exact = true
///          every formula is evaluated
/// Refuses: what scheme/scheme_file and scheme/scheme_checks refuse, and rates that are negative or
///          not finite when they are asked for

#include <memory>

#include "kinetics/active_model.h"
#include "scheme/scheme.h"

class Protocol;

class ModelScheme : public ActiveModel {
 public:
  explicit ModelScheme(ModelParameter_s const& parameter);
  ~ModelScheme() override;

  bool IsPowerStrokeState(int state) const override;
  double power_stroke(unsigned state) const override { return scheme->lever(state); }
  using ActiveModel::get_k;
  double get_k(double x, unsigned from, unsigned to, ActinSite_s const& site) const override;
  double rate_bound(unsigned from, double reach) const override;
  void check_before_run(RunFrame_s const& frame) const override;
  void WriteToTaveloOutput() const;

  /// Free energy of a state, 0 where the file gives none.
  double get_G(double x, unsigned state) const;
  /// The scheme with its rates over the strain, see scheme/scheme_json.
  std::string json() const;

 private:
  /// One of the rates of a pair of states.
  struct Term {
    Scheme::Rate_s const* rate;
    RateTable const* table;  ///< null where the formula is asked
    double constant;         ///< of a rate that depends on nothing; negative where it does
  };

  ModelScheme(ModelParameter_s const& parameter, std::unique_ptr<Scheme> made);
  void rescale_binding();
  void collect_terms();
  void write_json() const;
  double ask(Scheme::Rate_s const& rate, double x, ActinSite_s const& site) const;
  void renew_clock() const;
  double bound_of(unsigned from, double reach) const;

  std::unique_ptr<Scheme> scheme;
  std::vector<std::string> warnings;
  std::vector<Term> terms;         ///< pair after pair
  std::vector<unsigned> of_pairs;  ///< the first of each pair, and the end

  /// The course of calcium, where the scheme follows it, and what was worked out last. Mutable, as
  /// both follow the clock.
  mutable std::unique_ptr<Protocol> calcium;
  mutable double clock = -1.0;
  mutable double bounds_reach = -1.0;
  mutable std::vector<double> bounds;
};
