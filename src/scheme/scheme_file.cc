#include "scheme/scheme_file.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <set>

#include "base/diagnostics.h"
#include "base/input_file.h"
#include "scheme/toml_section.h"

namespace {

constexpr std::size_t most_states = 40;
constexpr std::size_t most_transitions = 400;
constexpr std::size_t most_parameters = 1000;
constexpr std::int64_t most_points = 100000;

bool is_name(std::string const& name) {
  auto const is_fine = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
  };
  return !name.empty() && name.size() <= 60 && !std::isdigit(static_cast<unsigned char>(name[0])) &&
         std::all_of(name.begin(), name.end(), is_fine);
}

SchemeParameter_s::Solution_s read_solution(TomlSection const& section) {
  SchemeParameter_s::Solution_s solution;
  solution.law = section.formula("solve");
  solution.equals = section.formula("equals");
  std::tie(solution.first, solution.last) = section.range("over");
  toml::node const* const points = section.find("points");
  auto const number = points && points->is_integer() ? points->as_integer()->get() : 0;
  if (number < 2 || number > most_points)
    section.refuse_value("points", "a whole number from 2 to " + std::to_string(most_points));
  solution.points = static_cast<unsigned>(number);
  return solution;
}

SchemeParameter_s read_parameter(TomlSection const& parameters, std::string const& name) {
  SchemeParameter_s parameter;
  parameter.name = name;
  if (!is_name(name)) {
    refuse(parameters.where(name), "a parameter", name, "a name of letters, digits and _");
  }
  if (is_reserved(name)) {
    refuse(parameters.where(name), "a parameter", name, "a name that formulas have no use for");
  }
  if (!parameters.find(name)->is_table()) {
    parameter.formula = parameters.formula(name);
    return parameter;
  }
  TomlSection const section = parameters.section(name, "");
  parameter.unit = section.text("unit", "the unit in quotes, \"1\" for a pure number");
  parameter.about = section.text_or_none("about");
  if (section.find("solve")) {
    section.allow_only({"solve", "equals", "over", "points", "unit", "about"});
    parameter.solution = read_solution(section);
  } else {
    section.allow_only({"value", "unit", "about"});
    parameter.formula = section.formula("value");
  }
  return parameter;
}

/// In the order of the file, which decides what a formula may use.
std::vector<SchemeParameter_s> read_parameters(TomlSection const& root) {
  std::vector<SchemeParameter_s> found;
  if (!root.find("parameters")) return found;
  TomlSection const section = root.section("parameters", "a table [parameters]");
  for (std::string const& name : section.keys()) {
    found.push_back(read_parameter(section, name));
    if (found.size() > most_parameters)
      stop(section.where(name) + ": there are more than " + std::to_string(most_parameters));
  }
  return found;
}

bool is_colour(std::string const& text) {
  return text.size() == 7 && text[0] == '#' &&
         text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos;
}

SchemeState_s read_state(TomlSection const& section) {
  section.allow_only({"name", "attached", "lever", "energy", "colour", "after_stroke"});
  SchemeState_s state;
  state.name = section.text("name");
  bool const is_fine = !state.name.empty() && state.name.size() <= 40 &&
                       std::none_of(state.name.begin(), state.name.end(),
                                    [](unsigned char c) { return c < 0x20 || c == ','; });
  if (!is_fine) section.refuse_value("name", "1 to 40 characters, no comma");
  auto const attached = section.flag("attached");
  if (!attached) section.refuse_value("attached", "true or false");
  state.attached = *attached;
  state.lever = section.formula_or_none("lever");
  state.energy = section.formula_or_none("energy");
  if (!state.attached && section.find("lever"))
    section.refuse_value("lever", "no lever in a state that isn't attached");
  state.colour = section.text_or_none("colour");
  if (!state.colour.empty() && !is_colour(state.colour))
    section.refuse_value("colour", "a colour such as \"#1f5fa8\"");
  state.is_stroked = section.flag("after_stroke");
  return state;
}

SiteFactors_s read_site(TomlSection const& section, std::string const& key) {
  std::string const accepted = "a list of \"open\", \"on\", \"stroke\", \"off\"";
  SiteFactors_s site;
  toml::node const* const node = section.find(key);
  if (!node) return site;
  if (!node->is_array()) section.refuse_value(key, accepted);
  for (toml::node const& entry : *node->as_array()) {
    std::string const word = entry.value<std::string>().value_or("");
    bool* const factor = word == "open"     ? &site.open
                         : word == "on"     ? &site.on
                         : word == "stroke" ? &site.stroke
                         : word == "off"    ? &site.off
                                            : nullptr;
    if (!factor) refuse(section.where(key), key, TomlSection::shown_as(entry), accepted);
    *factor = true;
  }
  // The bounds by which heads that stay are not asked know the largest of the three.
  if (site.on + site.stroke + site.off > 1)
    section.refuse_value(key, "at most one of \"on\", \"stroke\", \"off\"");
  return site;
}

std::optional<Binding_s> read_binding(TomlSection const& section) {
  toml::node const* const node = section.find("binding");
  if (!node) return std::nullopt;
  Binding_s binding;
  if (node->is_boolean()) {
    if (!node->as_boolean()->get()) return std::nullopt;
    return binding;
  }
  TomlSection const inner = section.section("binding", "true, false or a table");
  inner.allow_only({"constant", "release", "range"});
  binding.constant = inner.text_or_none("constant");
  binding.release = inner.formula_or_none("release");
  if (inner.find("range")) std::tie(binding.first, binding.last) = inner.range("range");
  if (!binding.release.text.empty() && inner.find("range"))
    inner.refuse_value("range", "a range or a release, not both");
  return binding;
}

unsigned state_number(TomlSection const& section, std::string const& key,
                      std::vector<SchemeState_s> const& states) {
  std::string const name = section.text(key, "the name of a state");
  TomlSection::Names names;
  for (SchemeState_s const& state : states) names.push_back(state.name);
  auto const found = std::find(names.begin(), names.end(), name);
  if (found == names.end()) section.refuse_value(key, TomlSection::listed(names));
  return static_cast<unsigned>(found - names.begin());
}

void read_reverse(TomlSection const& section, SchemeTransition_s& transition) {
  using Reverse = SchemeTransition_s::Reverse;
  if (!section.find("reverse")) return;
  transition.reverse_rate = section.formula("reverse");
  std::string const& text = transition.reverse_rate.text;
  transition.reverse = text == "balance"           ? Reverse::balance
                       : text == "balance as read" ? Reverse::balance_as_read
                                                   : Reverse::formula;
}

SchemeTransition_s read_transition(TomlSection const& section,
                                   std::vector<SchemeState_s> const& states) {
  section.allow_only(
      {"from", "to", "rate", "reverse", "site", "reverse_site", "binding", "fuel", "about"});
  SchemeTransition_s transition;
  transition.from = state_number(section, "from", states);
  transition.to = state_number(section, "to", states);
  if (transition.from == transition.to) section.refuse_value("to", "another state");
  transition.where = section.where("from");
  transition.rate = section.formula("rate");
  read_reverse(section, transition);
  transition.site = read_site(section, "site");
  transition.reverse_site = read_site(section, "reverse_site");
  transition.binding = read_binding(section);
  transition.fuel = section.flag("fuel").value_or(false);
  section.text_or_none("about");
  bool const is_free = !states[transition.from].attached && !states[transition.to].attached;
  if (is_free && transition.site.any())
    section.refuse_value("site", "none between detached states");
  if (is_free && transition.reverse_site.any())
    section.refuse_value("reverse_site", "none between detached states");
  if (transition.reverse == SchemeTransition_s::Reverse::none && section.find("reverse_site"))
    section.refuse_value("reverse_site", "none without a reverse");
  if (transition.binding && !(!states[transition.from].attached && states[transition.to].attached))
    section.refuse_value("binding", "from a detached to an attached state only");
  return transition;
}

void read_heading(TomlSection const& root, SchemeFile& scheme) {
  root.allow_only({"name", "source", "exact", "range", "energy_per_ATP", "tolerance", "parameters",
                   "state", "transition"});
  scheme.name = root.text("name");
  scheme.source = root.text_or_none("source");
  scheme.exact = root.flag("exact").value_or(false);
  scheme.first = {"-20", root.where("range")};
  scheme.last = {"20", root.where("range")};
  if (root.find("range")) std::tie(scheme.first, scheme.last) = root.range("range");
  scheme.energy_per_ATP = root.formula_or_none("energy_per_ATP");
  if (toml::node const* const node = root.find("tolerance")) {
    auto const number = node->is_number() ? node->value<double>() : std::nullopt;
    if (!number || !(*number > 0.0)) root.refuse_value("tolerance", "a number above 0 [kT]");
    scheme.tolerance = *number;
  }
}

SchemeFile take(toml::table const& table, std::string const& name) {
  SchemeFile scheme;
  scheme.file = name;
  TomlSection const root(table, name, "");
  read_heading(root, scheme);
  scheme.parameters = read_parameters(root);
  std::set<std::string> names;
  for (TomlSection const& section : root.sections("state", most_states)) {
    scheme.states.push_back(read_state(section));
    if (!names.insert(scheme.states.back().name).second)
      section.refuse_value("name", "a name that no other state has");
  }
  if (scheme.states.size() < 2) root.refuse_value("state", "two states or more");
  if (scheme.states[0].attached) {
    stop(root.where("state") + ": the first state, '" + scheme.states[0].name +
         "', is attached; accepted: a detached one, which heads start from");
  }
  for (TomlSection const& section : root.sections("transition", most_transitions)) {
    scheme.transitions.push_back(read_transition(section, scheme.states));
  }
  return scheme;
}

}  // namespace

SchemeFile parse_scheme(std::string const& text, std::string const& name) {
  try {
    return take(toml::parse(text, name), name);
  } catch (toml::parse_error const& error) {
    auto const place = error.source().begin;
    stop(name + ", line " + std::to_string(place.line) + ", column " +
         std::to_string(place.column) + ": " + std::string(error.description()));
  }
}

SchemeFile read_scheme_file(std::string const& name) {
  if (name.empty())
    refuse("simulation.prm", "the file of the model Scheme", name, "the TOML file of a scheme");
  auto const text = read_input(name);
  if (!text) stop(name + ": can't be read: " + std::strerror(errno));
  return parse_scheme(*text, name);
}
