#pragma once
/// The TOML file of a kinetic scheme, as read: nothing is evaluated yet.
///
/// docs/schemes.md describes the file. What isn't known, lacks or has the wrong kind is refused
/// with file, line, key and what is accepted.

#include <optional>
#include <string>
#include <vector>

#include "scheme/formula.h"

/// A constant: a number or a formula of constants above it, or the y at which a formula in y takes
/// a value.
struct SchemeParameter_s {
  std::string name;
  FormulaText formula;  ///< the number as text, too
  std::string unit;
  std::string about;
  /// y by a table of so many points from `first` to `last`, between which it is linear.
  struct Solution_s {
    FormulaText law, equals, first, last;
    unsigned points = 0;
  };
  std::optional<Solution_s> solution;
};

struct SchemeState_s {
  std::string name;
  bool attached = false;
  FormulaText lever;               ///< displacement [nm]; 0 if empty
  FormulaText energy;              ///< free energy [pN nm]; unknown if empty
  std::string colour;              ///< "#rrggbb", or empty
  std::optional<bool> is_stroked;  ///< behind a stroke; by the lever if not said
};

/// What a site of the thin filament multiplies a rate by.
struct SiteFactors_s {
  bool open = false;  ///< 0 at a blocked site
  bool on = false;
  bool stroke = false;
  bool off = false;
  bool any() const { return open || on || stroke || off; }
};

/// How binding is rescaled for the sites within reach.
struct Binding_s {
  std::string constant;     ///< what is divided; the whole rate if empty
  FormulaText release;      ///< rate of release that the bound fraction is found by; or
  FormulaText first, last;  ///< range of strains in which the head binds
};

struct SchemeTransition_s {
  enum class Reverse { none, formula, balance, balance_as_read };

  unsigned from = 0;
  unsigned to = 0;
  FormulaText rate;
  Reverse reverse = Reverse::none;
  FormulaText reverse_rate;
  SiteFactors_s site;
  SiteFactors_s reverse_site;
  std::optional<Binding_s> binding;
  bool fuel = false;  ///< consumes an ATP
  std::string where;
};

struct SchemeFile {
  std::string file;
  std::string name;
  std::string source;
  bool exact = false;
  FormulaText first, last;     ///< strains that are checked and tabulated [nm]
  FormulaText energy_per_ATP;  ///< [pN nm], or empty
  double tolerance = 0.1;      ///< of the energy of a cycle [kBT]
  std::vector<SchemeParameter_s> parameters;
  std::vector<SchemeState_s> states;
  std::vector<SchemeTransition_s> transitions;
};

/// Reads a file of the working directory.
SchemeFile read_scheme_file(std::string const& name);
/// Takes the text of such a file.
SchemeFile parse_scheme(std::string const& text, std::string const& name);
