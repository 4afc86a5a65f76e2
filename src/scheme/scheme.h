#pragma once
/// A kinetic scheme that can be asked: constants, levers, free energies and rates of the states
/// that a file describes.
///
/// Every transition is one rate or, with a reverse, two. By detailed balance the reverse of a rate
/// f from i to j is f / exp((G_i - G_j) / kBT), with the energy of an ATP taken off G_j where the
/// transition consumes one.
///
/// Units: strain in nm, force in pN, energy in pN nm, rates per time unit.

#include <deque>
#include <optional>

#include "scheme/rate_table.h"
#include "scheme/scheme_file.h"

class Scheme {
 public:
  Scheme(SchemeFile file, XB_Model const& law);
  Scheme(Scheme const&) = delete;
  Scheme& operator=(Scheme const&) = delete;

  /// A formula with what it needs to know of the law.
  struct Law_s {
    Formula formula;
    bool takes_force;
    bool takes_energy;
  };

  /// One direction of a transition.
  struct Rate_s {
    unsigned from;
    unsigned to;
    unsigned transition;
    bool is_reverse;
    SiteFactors_s site;
    std::optional<Law_s> as_read = std::nullopt;  ///< none by detailed balance
    std::optional<Law_s> scaled = std::nullopt;   ///< with the rescaled constant
    double divisor = 1.0;                         ///< of a rate that is rescaled as a whole
    bool follows_time = false;
    bool follows_site = false;  ///< in its formula
    std::optional<RateTable> table = std::nullopt;
  };

  SchemeFile const& as_read() const { return file; }
  Constants const& values() const { return constants; }
  unsigned n_states() const { return static_cast<unsigned>(file.states.size()); }
  bool is_attached(unsigned state) const { return file.states[state].attached; }
  double lever(unsigned state) const { return levers[state]; }
  bool has_energy(unsigned state) const { return energies[state].has_value(); }
  /// Free energy of a state that has one.
  double energy(unsigned state, double x) const;
  /// Force of the law with the lever of a state [pN].
  double force(unsigned state, double x) const;
  double kBT() const { return thermal_energy; }
  double energy_per_ATP() const { return fuel_energy; }
  double first_strain() const { return first; }
  double last_strain() const { return last; }
  bool follows_calcium() const { return takes_calcium; }

  std::deque<Rate_s> const& rates() const { return all_rates; }
  /// "name of a state -> name of another".
  std::string name_of(Rate_s const& rate) const;
  /// Energy that a transition sets free by its fuel [pN nm], negative against its direction.
  double fuel_of(Rate_s const& rate) const;
  /// The rate by its formula, for a site of the factors 1 that stand in it.
  double evaluate(Rate_s const& rate, double x) const;
  /// The same before any rescaling.
  double evaluate_as_read(Rate_s const& rate, double x) const;
  /// A formula of a rate's own, such as that of its release.
  Formula formula_of(Rate_s const& rate, FormulaText const& text);
  double evaluate(Formula const& formula, Rate_s const& rate, double x) const;
  /// Divides binding by the overlap of the sites in reach.
  void rescale(std::size_t rate, double factor);
  /// Tabulates what depends on the strain alone.
  void tabulate();

  /// What formulas that follow them see from now on. Mutable, as the clock moves on under models
  /// that are read only otherwise.
  SchemeVariables& variables() const { return around; }

 private:
  void evaluate_parameters();
  double solve(SchemeParameter_s::Solution_s const& solution);
  double constant_of(FormulaText const& text, double otherwise);
  void compile_states();
  void compile_rates();
  void add_reverse(unsigned transition);
  void note_dependences(Rate_s& rate);
  Rate_s const& forward_of(Rate_s const& rate) const;
  void require_balance(SchemeTransition_s const& transition) const;
  Law_s compile(FormulaText const& text, std::vector<std::string> const& allowed,
                Constants const& with);
  std::vector<std::string> allowed_in(unsigned from, unsigned to) const;
  double evaluate(Law_s const& law, unsigned state, double x) const;
  double balance(Rate_s const& rate, double x, bool is_as_read) const;
  unsigned strained_state(unsigned from, unsigned to) const;

  SchemeFile const file;
  XB_Model const& xb;
  mutable SchemeVariables around;
  Constants constants;
  std::vector<double> levers;
  std::vector<std::optional<Law_s>> energies;
  std::deque<Rate_s> all_rates;             ///< by transition, the reverse behind its forward rate
  std::vector<std::size_t> forward_places;  ///< in it, by transition
  double thermal_energy = 0.0;
  double fuel_energy = 0.0;
  double first = 0.0;
  double last = 0.0;
  bool takes_calcium = false;
};
