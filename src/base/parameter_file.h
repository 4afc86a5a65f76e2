#pragma once
/// Text parameter files: how every component declares its keys, reads them and refuses bad values.
///
/// A component has `static void declare_parameters(dealii::ParameterHandler&)` and
/// `void get_parameters(dealii::ParameterHandler&)`; its constructor calls `load_parameters`.

#include <functional>
#include <string>

namespace dealii {
class ParameterHandler;
}

/// Reads a parameter file into a handler whose keys are declared.
///
/// A missing file is written with the default values, which then hold, or refused where `run_state`
/// says so; an empty name writes nothing. A line that the handler doesn't take ends the run with
/// file, line, key, value and what is accepted.
void read_parameter_file(dealii::ParameterHandler& handler, std::string const& file_name);

using ParameterAction = std::function<void(dealii::ParameterHandler&)>;

/// Makes a handler, lets `declare` fill it, reads the file and lets `get` take the values.
void load_parameters(std::string const& file_name, ParameterAction const& declare,
                     ParameterAction const& get);

template <class Component>
void load_parameters(Component& component, std::string const& file_name) {
  load_parameters(
      file_name, [&](dealii::ParameterHandler& handler) { component.declare_parameters(handler); },
      [&](dealii::ParameterHandler& handler) { component.get_parameters(handler); });
}

/// One subsection of a parameter file: entered on construction, left on destruction.
///
/// The readers refuse values without sense, naming file, section, key, value and what is accepted.
/// NaN and infinity are refused everywhere.
class ParameterSection {
 public:
  /// For declaring.
  ParameterSection(dealii::ParameterHandler& handler, std::string const& section);
  /// For reading; `file_name` is what refusals name.
  ParameterSection(dealii::ParameterHandler& handler, std::string const& section,
                   std::string const& file_name);
  ~ParameterSection();
  ParameterSection(ParameterSection const&) = delete;
  ParameterSection& operator=(ParameterSection const&) = delete;

  void declare_text(std::string const& key, std::string const& value) const;
  /// `names` are separated by '|'.
  void declare_selection(std::string const& key, std::string const& value,
                         std::string const& names) const;
  void declare_integer(std::string const& key, std::string const& value) const;
  void declare_double(std::string const& key, std::string const& value) const;

  std::string text(std::string const& key) const;
  /// Any finite number.
  double number(std::string const& key) const;
  /// A number above 0.
  double positive(std::string const& key) const;
  /// A number of at least 0.
  double non_negative(std::string const& key) const;
  /// A number from `lowest` to `highest`.
  double between(std::string const& key, double lowest, double highest) const;
  /// A length above 0 that stands for a part of a sarcomere [nm].
  double length(std::string const& key) const;
  int integer(std::string const& key) const;
  /// A whole number of at least `minimum`.
  unsigned count(std::string const& key, unsigned minimum = 0) const;

  /// Ends the run over a key of this section.
  [[noreturn]] void refuse_value(std::string const& key, std::string const& accepted) const;

 private:
  dealii::ParameterHandler& handler;
  std::string const section;
  std::string const file_name;
};
