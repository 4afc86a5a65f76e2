#pragma once
/// A formula of a kinetic scheme: text that becomes a number.
///
/// It may name constants, some of the variables below, the functions energy(y), force(y) and
/// stiffness(y) of the crossbridge law at the extension y [nm], and what muParser offers. It is
/// evaluated in double, from left to right, as the same expression in C++ would be; evaluation
/// allocates nothing.

#include <map>
#include <memory>
#include <string>
#include <vector>

class XB_Model;

namespace mu {
class ParserError;
}

/// What rates depend on. Whoever evaluates a formula sets it before.
struct SchemeVariables {
  double x = 0.0;   ///< strain [nm]
  double F = 0.0;   ///< force of the law at x and the state's lever [pN]
  double E = 0.0;   ///< energy of the law there [pN nm]
  double t = 0.0;   ///< time
  double Ca = 0.0;  ///< course of calcium
  double on = 1.0;  ///< factors of the site
  double stroke = 1.0;
  double off = 1.0;
  double open = 1.0;  ///< 0 at a blocked site
};

/// A formula as read. An empty text stands for none.
struct FormulaText {
  std::string text;
  std::string where;  ///< file, line and key, as refusals name them
};

using Constants = std::map<std::string, double>;

class Formula {
 public:
  /// Refuses what is no formula, with its place and the position in it. `variables` and `law` must
  /// outlive the formula and stay where they are; `allowed` names the variables that it may use.
  Formula(FormulaText formula, Constants const& constants, SchemeVariables& variables,
          std::vector<std::string> const& allowed, XB_Model const& law);
  ~Formula();
  Formula(Formula&&) noexcept;
  Formula& operator=(Formula&&) noexcept;

  double operator()() const;
  /// Whether it names this variable or function.
  bool uses(std::string const& name) const;
  FormulaText const& as_read() const { return read; }

 private:
  struct Parser;

  [[noreturn]] void refuse_at(std::size_t position, std::string const& reason) const;
  [[noreturn]] void refuse_error(mu::ParserError const& error, Constants const& constants,
                                 std::vector<std::string> const& allowed) const;
  void refuse_assignments() const;

  FormulaText read;
  std::vector<std::string> names;
  std::unique_ptr<Parser> parser;
};

/// All variables, and those that belong to a site.
std::vector<std::string> const& scheme_variables();
std::vector<std::string> const& site_variables();
/// Names that no constant may have: the variables and functions of a formula.
bool is_reserved(std::string const& name);
