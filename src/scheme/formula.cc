#include "scheme/formula.h"

#include <muParser.h>

#include <algorithm>
#include <cctype>
#include <regex>

#include "base/diagnostics.h"
#include "elastic/XB_Models.h"

namespace {

struct Variable {
  char const* name;
  double SchemeVariables::*value;
};

constexpr Variable variable_table[] = {
    {"x", &SchemeVariables::x},           {"F", &SchemeVariables::F},
    {"E", &SchemeVariables::E},           {"t", &SchemeVariables::t},
    {"Ca", &SchemeVariables::Ca},         {"on", &SchemeVariables::on},
    {"stroke", &SchemeVariables::stroke}, {"off", &SchemeVariables::off},
    {"open", &SchemeVariables::open}};

double energy(void* law, double y) { return static_cast<XB_Model const*>(law)->GetEnergy(y); }
double force(void* law, double y) { return static_cast<XB_Model const*>(law)->GetForce(y); }
double stiffness(void* law, double y) { return static_cast<XB_Model const*>(law)->GetStiffness(y); }

constexpr char const* law_functions[] = {"energy", "force", "stiffness"};

bool is_letter(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_'; }
bool is_digit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

/// The words of a formula: names of constants, variables and functions. The exponent of a number
/// is none of them.
std::vector<std::string> words_of(std::string const& text) {
  std::vector<std::string> words;
  for (std::size_t i = 0; i < text.size();) {
    std::size_t end = i + 1;
    if (is_letter(text[i])) {
      while (end < text.size() && (is_letter(text[end]) || is_digit(text[end]))) ++end;
      words.push_back(text.substr(i, end - i));
    } else if (is_digit(text[i]) || text[i] == '.') {
      while (end < text.size() && (is_letter(text[end]) || is_digit(text[end]) || text[end] == '.'))
        ++end;
    }
    i = end;
  }
  return words;
}

bool contains(std::vector<std::string> const& names, std::string const& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

struct Formula::Parser : mu::Parser {};

Formula::Formula(FormulaText formula, Constants const& constants, SchemeVariables& variables,
                 std::vector<std::string> const& allowed, XB_Model const& law)
    : read(std::move(formula)), names(words_of(read.text)), parser(std::make_unique<Parser>()) {
  refuse_assignments();
  bool const wants_energy = uses("E") || uses("energy");
  if (wants_energy && !law.HasEnergy()) {
    stop(read.where + ": the formula '" + read.text +
         "' asks for an energy, and the crossbridge law has none; accepted: a law with an energy "
         "(xb_model in simulation.prm)");
  }
  try {
    // Optimisations reorder: x / 3 would become x times a rounded third.
    parser->EnableOptimizer(false);
    auto* const user_data = const_cast<XB_Model*>(&law);
    parser->DefineFunUserData("energy", energy, user_data, false);
    parser->DefineFunUserData("force", force, user_data, false);
    parser->DefineFunUserData("stiffness", stiffness, user_data, false);
    for (auto const& [name, value] : constants) parser->DefineConst(name, value);
    for (Variable const& variable : variable_table) {
      if (contains(allowed, variable.name))
        parser->DefineVar(variable.name, &(variables.*variable.value));
    }
    parser->SetExpr(read.text);
    parser->Eval();
    if (parser->GetNumResults() != 1) refuse_at(0, "it has several values");
  } catch (mu::ParserError const& error) {
    refuse_error(error, constants, allowed);
  }
}

Formula::~Formula() = default;
Formula::Formula(Formula&&) noexcept = default;
Formula& Formula::operator=(Formula&&) noexcept = default;

double Formula::operator()() const { return parser->Eval(); }

bool Formula::uses(std::string const& name) const { return contains(names, name); }

void Formula::refuse_error(mu::ParserError const& error, Constants const& constants,
                           std::vector<std::string> const& allowed) const {
  bool const is_known = error.GetPos() >= 0 && error.GetPos() <= static_cast<int>(read.text.size());
  std::size_t const position =
      is_known ? static_cast<std::size_t>(error.GetPos()) : read.text.size();
  if (error.GetCode() != mu::ecUNASSIGNABLE_TOKEN) {
    // The library counts positions from 0.
    static std::regex const place(" (found )?at (expression )?position \\d+\\.?");
    refuse_at(position, std::regex_replace(error.GetMsg(), place, ""));
  }
  std::string known;
  for (std::string const& name : allowed) known += name + ", ";
  for (auto const& constant : constants) known += constant.first + ", ";
  refuse_at(position,
            "unexpected '" + error.GetToken() + "'; known: " + known + "functions, numbers");
}

void Formula::refuse_at(std::size_t position, std::string const& reason) const {
  stop(read.where + ": the formula '" + read.text + "' is wrong at position " +
       std::to_string(position + 1) + ": " + reason);
}

/// "=" would change a variable for all formulas behind it.
void Formula::refuse_assignments() const {
  std::string const& text = read.text;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '=') continue;
    bool const is_double = i + 1 < text.size() && text[i + 1] == '=';
    bool const is_comparison =
        i > 0 && (text[i - 1] == '<' || text[i - 1] == '>' || text[i - 1] == '!');
    if (!is_double && !is_comparison) refuse_at(i, "'=' assigns; a comparison is '=='");
    if (is_double) ++i;
  }
}

std::vector<std::string> const& scheme_variables() {
  static std::vector<std::string> const names = [] {
    std::vector<std::string> all;
    for (Variable const& variable : variable_table) all.push_back(variable.name);
    return all;
  }();
  return names;
}

std::vector<std::string> const& site_variables() {
  static std::vector<std::string> const names = {"on", "stroke", "off", "open"};
  return names;
}

bool is_reserved(std::string const& name) {
  if (contains(scheme_variables(), name)) return true;
  if (std::find(std::begin(law_functions), std::end(law_functions), name) !=
      std::end(law_functions))
    return true;
  mu::Parser const parser;
  return parser.GetFunDef().count(name) > 0 || parser.GetConst().count(name) > 0;
}
