#pragma once
/// One table of a TOML file, whose readers refuse what they don't take: with file, line, table,
/// key, value and what is accepted.

#include <toml++/toml.h>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "scheme/formula.h"

class TomlSection {
 public:
  using Names = std::vector<std::string>;

  /// `words` names the table in messages; empty for the whole file.
  TomlSection(toml::table const& values, std::string file_name, std::string words);

  /// File, line of the key or else of the table, and the table.
  std::string where(std::string const& key) const;
  /// Null where there is no such key.
  toml::node const* find(std::string const& key) const { return table.get(key); }
  void allow_only(Names const& keys) const;
  [[noreturn]] void refuse_value(std::string const& key, std::string const& accepted) const;

  std::string text(std::string const& key, std::string const& accepted = "a text in quotes") const;
  std::string text_or_none(std::string const& key) const;
  std::optional<bool> flag(std::string const& key) const;
  /// A number or a text.
  FormulaText formula(std::string const& key) const;
  FormulaText formula_or_none(std::string const& key) const;
  /// Two numbers or formulas.
  std::pair<FormulaText, FormulaText> range(std::string const& key) const;
  /// The table that a key holds.
  TomlSection section(std::string const& key, std::string const& accepted) const;
  /// The tables of a list such as [[state]], of which there is one or more.
  std::vector<TomlSection> sections(std::string const& key, std::size_t most) const;
  /// The keys in the order of the file.
  Names keys() const;

  static std::string listed(Names const& names);
  /// A value as messages show it.
  static std::string shown_as(toml::node const& node);

 private:
  FormulaText formula_of(toml::node const* node, std::string const& key,
                         std::string const& accepted) const;

  toml::table const& table;
  std::string file;
  std::string what;
};
