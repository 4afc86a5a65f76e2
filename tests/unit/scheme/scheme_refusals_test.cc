// Would catch: a broken scheme that is taken, or refused without the line, the key, the value, the
// formula or the position in it.

#include "elastic/XB_Models.h"
#include "kinetics/model_scheme.h"
#include "support/expect_refusal.h"
#include "support/kinetic_model.h"

namespace {

constexpr char const* sound = R"toml(name = "sound"
energy_per_ATP = "24 * kBT"
range = [-15, 15]
[parameters]
kBT = { value = 4, unit = "pN nm" }
k = 50
h = { value = "2 * k", unit = "nm" }
x_c = { solve = "x^3", equals = 8, over = [0, 5], points = 11, unit = "nm" }
[[state]]
name = "D"
attached = false
energy = 0
[[state]]
name = "A"
attached = true
lever = 0
energy = "E - 12"
colour = "#1f5fa8"
[[transition]]
from = "D"
to = "A"
rate = "k * exp(-E / kBT)"
reverse = "balance"
site = ["open", "on"]
binding = { constant = "k", release = "k / 20" }
[[transition]]
from = "A"
to = "D"
rate = "80 + x^2"
fuel = true
)toml";

struct Broken {
  char const *found, *put;  ///< what of the sound file becomes what
  char const* message;
};

Broken const files[] = {
    // TOML
    {"name = \"sound\"", "name = sound", "s.toml, line 1, column "},
    {"[parameters]", "[parameters", "s.toml, line 4, column "},
    {"k = 50", "k = 50\nk = 60", "s.toml, line 7, column "},
    {"80 + x", "80\xff", "s.toml, line 29, column "},
    {"kBT = {", "kBT = {{", "s.toml, line 5, column "},
    // Keys and values
    {"name = \"sound\"", "", "name is missing; accepted: a text in quotes"},
    {"name = \"sound\"", "nime = \"sound\"", "line 1: a key is 'nime'; accepted: name, source"},
    {"range =", "tolerance = -1\nrange =", "line 3: tolerance is '-1'; accepted: a number above 0"},
    {"range = \\[-15, 15\\]", "range = [-15]",
     "line 3: range is 'a list'; accepted: a list of two"},
    {"-15, 15", "5, 15",
     "line 3, range: range is '5, 15'; accepted: a strain below and one above 0"},
    {"range =", "exact = \"yes\"\nrange =", "line 3: exact is 'yes'; accepted: true or false"},
    {"unit = \"pN nm\"", "unt = \"pN nm\"", "line 5, parameters, kBT: unit is missing"},
    {"k = 50", "x = 50", "line 6, parameters: a parameter is 'x'; accepted: a name that formulas"},
    {"k = 50", "\"k-1\" = 50",
     "line 6, parameters: a parameter is 'k-1'; accepted: a name of letters"},
    {"k = 50", "k = nan", "line 6, parameters: k is 'nan'; accepted: a finite number"},
    {"k = 50", "k = true", "line 6, parameters: k is 'true'; accepted: a number, or a formula"},
    {"k = 50", "k = \"1 / 0\"", "line 6, parameters, k: the value of 1 / 0 is 'inf'"},
    {"value = 4", "value = -4", "s.toml: kBT is '-4'; accepted: a number above 0"},
    {"points = 11", "points = 1",
     "line 8, parameters, x_c: points is '1'; accepted: a whole number"},
    {"name = \"A\"", "name = \"D\"",
     "line 14, state 2: name is 'D'; accepted: a name that no other"},
    {"name = \"A\"", "name = \"\"", "line 14, state 2: name is ''; accepted: 1 to 40 characters"},
    {"attached = false", "attached = true", "the first state, 'D', is attached"},
    {"attached = true\n", "", "state 2: attached is missing; accepted: true or false"},
    {"energy = 0", "lever = 3", "line 12, state 1: lever is '3'; accepted: no lever in a state"},
    {"#1f5fa8", "blue", "line 18, state 2: colour is 'blue'; accepted: a colour such as"},
    {"to = \"A\"", "to = \"C\"", "line 21, transition 1: to is 'C'; accepted: D, A"},
    {"to = \"A\"", "to = \"D\"", "line 21, transition 1: to is 'D'; accepted: another state"},
    {"\"open\", \"on\"", "\"open\", \"up\"",
     "line 24, transition 1: site is 'up'; accepted: a list of"},
    {"\"open\", \"on\"", "\"off\", \"on\"", "accepted: at most one of \"on\", \"stroke\", \"off\""},
    {"fuel = true", "fuel = 1", "line 30, transition 2: fuel is '1'; accepted: true or false"},
    {"fuel = true", "binding = true",
     "binding is 'true'; accepted: from a detached to an attached"},
    {"fuel = true", "reverse_site = [\"on\"]",
     "reverse_site is 'a list'; accepted: none without a reverse"},
    {"constant = \"k\"", "constant = \"h\"",
     "constant is 'h'; accepted: a parameter that stands in the rate"},
    {", release = \"k / 20\"", ", range = [3, 1]",
     "range is '3, 1'; accepted: a range that ascends"},
    // Formulas, with the position in them
    {"80 \\+ x\\^2", "80 + y^2", "rate: the formula '80 \\+ y\\^2' is wrong at position 6"},
    {"80 \\+ x\\^2", "80 + (x",
     "the formula '80 \\+ \\(x' is wrong at position 8: Missing parenthesis"},
    {"80 \\+ x\\^2", "80 + exp(x, 2)",
     "line 29, transition 2, rate: the formula .* is wrong at position 1"},
    {"80 \\+ x\\^2", "x = 3", "is wrong at position 3: '=' assigns"},
    {"80 \\+ x\\^2", "80, x", "is wrong at position 1: it has several values"},
    {"80 \\+ x\\^2", "80 ?", "the formula '80 .?' is wrong at position"},
    {"value = \"2 \\* k\"", "value = \"2 * x_c\"",
     "line 7, .*the formula '2 . x_c' is wrong at position 5"},
    {"energy = \"E - 12\"", "energy = \"t\"",
     "line 17, state 2, energy: the formula 't' is wrong at position 1"},
    // What the whole can't be
    {"energy = \"E - 12\"", "", "'balance' needs the free energy of both states; the state 'A'"},
    {"kBT = ", "T = ", "wrong at position"},
    {"energy_per_ATP = \"24 \\* kBT\"", "", "fuel is 'true' and the file has no energy_per_ATP"},
    {"80 \\+ x\\^2", "2 + x", "the rate A -> D, '2 . x', is -.* at a strain of -"},
    {"80 \\+ x\\^2", "1 / x^2", "the rate A -> D, '1 . x.2', is inf at a strain of 0 nm"},
    {"range", "[[state]]\nname = \"B\"\nattached = true\n[x]\nrange", "a key is 'x'"},
    {"\\[\\[transition\\]\\]\nfrom = \"A\"",
     "[[state]]\nname = \"B\"\nattached = true\n[[transition]]\nfrom = \"A\"",
     "the state 'B' can't be reached from the state 'D'"},
    {"\\[\\[transition\\]\\]\nfrom = \"A\"",
     "[[state]]\nname = \"B\"\nattached = true\n[[transition]]\nfrom = \"A\"\nto = \"B\"\nrate = "
     "1\n"
     "[[transition]]\nfrom = \"A\"",
     "the state 'B' can't be left for the state 'D'"},
    {"\\[\\[transition\\]\\]\nfrom = \"A\"",
     "[[state]]\nname = \"B\"\nattached = false\n[[transition]]\nfrom = \"A\"\nto = \"B\"\nrate = "
     "1\n"
     "reverse = 2\n[[transition]]\nfrom = \"A\"",
     "heads start detached, and whether in 'D' or in 'B' is undetermined"}};

std::string with_words_put(Broken const& broken) {
  std::string text = sound, found = broken.found;
  for (std::size_t i; (i = found.find('\\')) != std::string::npos;) found.erase(i, 1);
  auto const place = text.find(found);
  EXPECT_NE(place, std::string::npos) << found;
  return text.replace(place, found.size(), broken.put);
}

TEST(SchemeRefusals, NameThePlaceTheValueAndWhatIsAccepted) {
  Spring spring(1.7);
  write_file("s.toml", sound);
  { ModelScheme const model({&spring, "s.toml"}); }
  for (Broken const& broken : files) {
    SCOPED_TRACE(broken.put);
    write_file("s.toml", with_words_put(broken));
    expect_refusal([&] { ModelScheme({&spring, "s.toml"}); }, broken.message);
  }
  EXPECT_GE(std::size(files), 40u);
}

TEST(SchemeRefusals, LawWithoutEnergyWhereTheSchemeAsksForIt) {
  XB_SigmoidalStiffness law("");
  write_file("s.toml", sound);
  expect_refusal(
      [&] {
        ModelScheme({&law, "s.toml"});
      },
      "line 17, state 2, energy: the formula 'E - 12' asks for an energy");
  write_file("t.toml", two_state_scheme);
  ModelScheme const model({&law, "t.toml"});
  EXPECT_GT(model.get_k(1.0, 0, 1), 0.0);
  expect_refusal([&] { ModelScheme({&law, ""}); }, "accepted: the TOML file of a scheme");
  expect_refusal([&] { ModelScheme({&law, "none.toml"}); }, "none.toml: can't be read: No such");
}

}  // namespace
