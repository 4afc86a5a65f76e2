#include "scheme/toml_section.h"

#include <algorithm>
#include <cmath>

#include "base/diagnostics.h"

namespace {

constexpr std::size_t longest_formula = 4000;

}  // namespace

TomlSection::TomlSection(toml::table const& values, std::string file_name, std::string words)
    : table(values), file(std::move(file_name)), what(std::move(words)) {}

std::string TomlSection::listed(Names const& names) {
  std::string text;
  for (std::string const& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

std::string TomlSection::shown_as(toml::node const& node) {
  if (node.is_table()) return "a table";
  if (node.is_array()) return "a list";
  if (node.is_boolean()) return node.as_boolean()->get() ? "true" : "false";
  if (node.is_string()) return node.as_string()->get();
  if (auto const number = node.value<double>()) return shown(*number);
  return "a date or time";
}

std::string TomlSection::where(std::string const& key) const {
  toml::node const* const node = table.get(key);
  auto const line = (node ? node->source() : table.source()).begin.line;
  return file + ", line " + std::to_string(line) + (what.empty() ? "" : ", " + what);
}

void TomlSection::allow_only(Names const& names) const {
  for (auto const& [key, node] : table) {
    std::string const name(key.str());
    if (std::find(names.begin(), names.end(), name) == names.end())
      refuse(where(name), "a key", name, listed(names));
  }
}

void TomlSection::refuse_value(std::string const& key, std::string const& accepted) const {
  if (toml::node const* const node = find(key)) refuse(where(key), key, shown_as(*node), accepted);
  stop(where(key) + ": " + key + " is missing; accepted: " + accepted);
}

std::string TomlSection::text(std::string const& key, std::string const& accepted) const {
  auto const* const node = find(key);
  if (!node || !node->is_string()) refuse_value(key, accepted);
  return node->as_string()->get();
}

std::string TomlSection::text_or_none(std::string const& key) const {
  return find(key) ? text(key) : "";
}

std::optional<bool> TomlSection::flag(std::string const& key) const {
  auto const* const node = find(key);
  if (!node) return std::nullopt;
  if (!node->is_boolean()) refuse_value(key, "true or false");
  return node->as_boolean()->get();
}

FormulaText TomlSection::formula(std::string const& key) const {
  return formula_of(find(key), key, "a number, or a formula in quotes");
}

FormulaText TomlSection::formula_or_none(std::string const& key) const {
  return find(key) ? formula(key) : FormulaText{};
}

std::pair<FormulaText, FormulaText> TomlSection::range(std::string const& key) const {
  std::string const accepted = "a list of two numbers or formulas, such as [-20, 20]";
  toml::node const* const node = find(key);
  toml::array const* const list = node ? node->as_array() : nullptr;
  if (!list || list->size() != 2) refuse_value(key, accepted);
  return {formula_of(list->get(0), key, accepted), formula_of(list->get(1), key, accepted)};
}

TomlSection TomlSection::section(std::string const& key, std::string const& accepted) const {
  toml::node const* const node = find(key);
  if (!node || !node->is_table()) refuse_value(key, accepted);
  return {*node->as_table(), file, what.empty() ? key : what + ", " + key};
}

std::vector<TomlSection> TomlSection::sections(std::string const& key, std::size_t most) const {
  toml::node const* const node = find(key);
  toml::array const* const list = node ? node->as_array() : nullptr;
  if (!list || list->empty()) refuse_value(key, "one table [[" + key + "]] or more");
  if (list->size() > most) {
    stop(where(key) + ": there are " + std::to_string(list->size()) +
         " tables; accepted: at most " + std::to_string(most));
  }
  std::vector<TomlSection> found;
  for (toml::node const& entry : *list) {
    if (!entry.is_table()) refuse_value(key, "tables [[" + key + "]]");
    found.emplace_back(*entry.as_table(), file, key + " " + std::to_string(found.size() + 1));
  }
  return found;
}

TomlSection::Names TomlSection::keys() const {
  std::vector<std::pair<toml::source_position, std::string>> places;
  for (auto const& [key, node] : table) places.emplace_back(key.source().begin, key.str());
  std::sort(places.begin(), places.end());
  Names names;
  for (auto const& place : places) names.push_back(place.second);
  return names;
}

FormulaText TomlSection::formula_of(toml::node const* node, std::string const& key,
                                    std::string const& accepted) const {
  std::string const place = where(key) + ", " + key;
  if (node && node->is_number()) {
    double const number = *node->value<double>();
    if (!std::isfinite(number)) refuse_value(key, "a finite number");
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", number);
    return {text, place};
  }
  if (!node || !node->is_string() || node->as_string()->get().empty()) refuse_value(key, accepted);
  std::string const& text = node->as_string()->get();
  if (text.size() > longest_formula)
    refuse_value(key, "at most " + std::to_string(longest_formula) + " characters");
  return {text, place};
}
