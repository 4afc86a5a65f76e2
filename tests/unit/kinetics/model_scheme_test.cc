// Would catch: a formula that is evaluated in another order than in C++, a factor of the site on
// the wrong direction, binding that is rescaled by something else, a reverse without the energy of
// the ATP, time or calcium that stand still, a sum over parallel transitions that is lost, a table
// in place of a formula that follows the site, a cycle whose missing energy is not seen.

#include "kinetics/model_scheme.h"

#include <cmath>

#include "base/run_state.h"
#include "records/filament_data.h"
#include "scheme/scheme_checks.h"
#include "support/expect_refusal.h"
#include "support/kinetic_model.h"

namespace {

/// Three states, all reversible if the last transition has the reverse that is told.
constexpr char const* cycle_but_reverse = R"toml(
name = "cycle"
energy_per_ATP = 96
[parameters]
kBT = { value = 4, unit = "pN nm" }
[[state]]
name = "D"
attached = false
energy = 0
[[state]]
name = "A"
attached = true
energy = "E - 12"
[[state]]
name = "B"
attached = true
lever = 9
energy = "E - 60"
[[transition]]
from = "D"
to = "A"
rate = "50 * exp(-E / kBT)"
reverse = "balance"
site = ["open", "on"]
reverse_site = ["open", "off"]
[[transition]]
from = "A"
to = "B"
rate = "300 + F"
reverse = "balance"
[[transition]]
from = "B"
to = "D"
fuel = true
rate = "80 * exp(0.1 * F)"
)toml";

std::string cycle(std::string const& reverse_of_last, std::string const& heading = "") {
  return heading + cycle_but_reverse + "reverse = \"" + reverse_of_last + "\"\n";
}

double energy(double x) { return 0.85 * x * x; }

TEST(ModelScheme, RatesFollowFormulasAndBalance) {
  Spring spring(1.7);
  for (char const* const exact : {"", "exact = true"}) {
    auto const model = make_model("Scheme", spring, cycle("balance", exact));
    double const tolerance = *exact ? 0.0 : 1e-6;
    for (double x = -9.0; x < 9.0; x += 0.37) {
      auto const expect = [&](unsigned from, unsigned to, double k) {
        EXPECT_NEAR(model->get_k(x, from, to), k, (tolerance + 1e-14) * k)
            << from << to << ' ' << x;
      };
      double const binding = 50 * std::exp(-energy(x) / 4);
      double const detachment = 80 * std::exp(0.1 * 1.7 * (x + 9));
      double const G_A = energy(x) - 12, G_B = energy(x + 9) - 60;
      expect(0, 1, binding);
      expect(1, 0, binding * std::exp(G_A / 4));
      double const stroke = 300 + 1.7 * x;
      expect(1, 2, stroke);
      expect(2, 1, stroke * std::exp((G_B - G_A) / 4));
      expect(2, 0, detachment);
      expect(0, 2, detachment * std::exp((-96 - G_B) / 4));
    }
    EXPECT_EQ(model->get_k(1.0, 0, 0), 0.0);
    EXPECT_EQ(model->power_stroke(2), 9.0);
    EXPECT_FALSE(model->IsPowerStrokeState(1));
    EXPECT_TRUE(model->IsPowerStrokeState(2));
  }
}

TEST(ModelScheme, FormulasAreEvaluatedInTheOrderOfCpp) {
  Spring spring(1.7);
  SchemeVariables v;
  Constants const constants = {{"k", 0.7}};
  Formula const formula({"x / 3 + 7 * k * 3 - -x^2 / k + 2 * (x + 0.1) * 0.1 + ln(x)", "here"},
                        constants, v, {"x"}, spring);
  for (v.x = 0.1; v.x < 9.0; v.x += 0.173) {
    double const x = v.x, k = 0.7;
    EXPECT_EQ(formula(), x / 3 + 7 * k * 3 - -(x * x) / k + 2 * (x + 0.1) * 0.1 + std::log(x));
  }
}

TEST(ModelScheme, SitesActWhereTheFileSaysSo) {
  Spring spring(1.7);
  auto const model = make_model("Scheme", spring, cycle("balance"));
  ActinSite_s const site = {2, 2.0, 3.0, 5.0, nullptr}, blocked = {1, 2.0, 3.0, 5.0, nullptr};
  auto const factor = [&](unsigned from, unsigned to, ActinSite_s const& s) {
    return model->get_k(1.3, from, to, s) / model->get_k(1.3, from, to);
  };
  EXPECT_EQ(factor(0, 1, site), 2.0);
  EXPECT_EQ(factor(1, 0, site), 5.0);
  EXPECT_EQ(factor(1, 2, site), 1.0);
  EXPECT_EQ(factor(0, 1, blocked), 0.0);
  EXPECT_EQ(factor(1, 2, blocked), 1.0);
  std::string text = two_state_scheme;
  text.replace(text.find("exp("), 4, "(1 + on * stroke + open) * exp(");
  auto const sited = make_model("Scheme", spring, text);
  double const plain = std::exp(-0.02 * 1.7 * 2) * 3;
  EXPECT_NEAR(sited->get_k(2.0, 1, 0), 5 + plain, 1e-12);
  EXPECT_NEAR(sited->get_k(2.0, 1, 0, site), (5 + plain * 8 / 3) * 5, 1e-12);
  EXPECT_NEAR(sited->get_k(2.0, 1, 0, blocked), (5 + plain * 7 / 3) * 5, 1e-12);
  EXPECT_EQ(sited->rate_bound(1, 5.0), HUGE_VAL);
}

TEST(ModelScheme, FollowsTimeAndCalciumAndAddsParallelTransitions) {
  write_file("ca_protocol.dat", "0 1 0 0 2\n3 1 0 0 7\n9 1 0 0 0\n");
  std::string const more = R"toml([[state]]
name = "S"
attached = false
[[transition]]
from = "D"
to = "S"
rate = "10 * t"
reverse = "Ca"
[[transition]]
from = "D"
to = "S"
rate = 2
)toml";
  Spring spring(1.7);
  std::string text = two_state_scheme;
  text.insert(text.find("[[transition]]"), more.substr(0, more.find("[[transition]]")));
  auto const model = make_model("Scheme", spring, text + more.substr(more.find("[[transition]]")));
  timeForAll = 1.0;
  EXPECT_EQ(model->get_k(0.0, 0, 2), 12.0);
  EXPECT_EQ(model->get_k(0.0, 2, 0), 2.0);
  for (timeForAll = 2.0; timeForAll < 5.5; timeForAll += 1.0) model->get_k(0.0, 2, 0);
  timeForAll = 6.0;
  EXPECT_EQ(model->get_k(0.0, 2, 0), 7.0);
  timeForAll = 0.0;
}

TEST(ModelScheme, RatesBeyondTheTableAreAskedAndChecked) {
  Spring spring(1.7);
  std::string text = two_state_scheme;
  text.replace(text.find("exp("), 4, "sqrt(31 - x) + exp(");
  auto const model = make_model("Scheme", spring, text);
  EXPECT_EQ(model->get_k(30.5, 1, 0),
            20 * 30.5 / 8 + std::sqrt(0.5) + std::exp(-0.02 * (1.7 * 30.5)));
  expect_refusal([&] { model->get_k(31.5, 1, 0); },
                 "transition 2: the rate A -> D is -?nan at a strain of 31.5 nm at time 0");
}

TEST(ModelScheme, BindingIsSharedAmongTheSitesInReach) {
  Spring spring(1.7);
  auto const factor = [&](std::string const& binding) {
    std::string text = two_state_scheme;
    auto const plain = make_model("Scheme", spring, text)->get_k(3.0, 0, 1);
    text.replace(text.find("site ="), 4, "binding = " + binding + "\nsite");
    return plain / make_model("Scheme", spring, text)->get_k(3.0, 0, 1);
  };
  // The sites 5.5 m away on both sides add 2 (1 - 5.5 m / h) to the flux of one, in sums of 0.1 nm.
  EXPECT_NEAR(factor("{ range = [0, \"h\"] }"), 1.625, 0.01);
  EXPECT_NEAR(factor("{ range = [0, 5.5] }"), 1.0, 1e-12);
  EXPECT_NEAR(factor("{ constant = \"h\", range = [0, \"h\"] }"), 1 / 1.625, 0.01);
}

std::string warnings_of(std::string const& text) {
  Spring spring(1.7);
  Scheme const scheme(parse_scheme(text, "s.toml"), spring);
  std::string all;
  for (std::string const& warning : cycle_warnings(scheme)) all += warning + '\n';
  return all;
}

std::string missing_energy(std::string const& reverse_of_last) {
  return warnings_of(cycle(reverse_of_last));
}

TEST(ModelScheme, CyclesThatDisagreeWithTheirEnergiesAreNamed) {
  EXPECT_EQ(missing_energy("balance"), "");
  // A transition that the file has the other way round.
  std::string turned = cycle("balance");
  std::string const there = "from = \"A\"\nto = \"B\"\nrate = \"300 + F\"";
  turned.replace(turned.find(there), there.size(), "from = \"B\"\nto = \"A\"\nrate = 300");
  EXPECT_EQ(warnings_of(turned), "");
  // A reverse e^2 times too fast takes 2 kT off the cycle and its last step, at any strain.
  std::string const balance = "80 * exp(0.1 * F) * exp((0 - 96 - (energy(x + 9) - 60)) / kBT)";
  EXPECT_EQ(missing_energy(balance), "");
  auto const found = missing_energy("exp(2) * " + balance);
  EXPECT_NE(found.find("across B -> D"), std::string::npos) << found;
  EXPECT_NE(found.find("cycle B -> D -> A -> B"), std::string::npos) << found;
  EXPECT_NE(found.find(" kT: 2 kT are missing"), std::string::npos) << found;
}

TEST(ModelScheme, RatesThatStepsAreTooLongForAreNamed) {
  Spring spring(1.7);
  auto const model = make_model("Scheme", spring, two_state_scheme);
  auto const told = [&](double step, double reach) {
    testing::internal::CaptureStderr();
    model->check_before_run({step, reach, false, model.get()});
    return testing::internal::GetCapturedStderr();
  };
  EXPECT_EQ(told(0.004, 15), "");
  // 200 + exp(-0.02 1.7 x) out of A is most at the end of the reach.
  double const most = 200 + std::exp(0.34);
  auto const text = told(0.005, 10);
  EXPECT_NE(text.find("out of 'A' add up to " + std::to_string(most).substr(0, 6)),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("that fits is " + std::to_string(1 / most).substr(0, 6)), std::string::npos);
  Spring other(1.7);
  auto const three = make_model("Scheme", other, cycle("balance"));
  expect_refusal(
      [&] {
        model->check_before_run({0.001, 10, false, three.get()});
      },
      "slow and fast heads have different states");
}

}  // namespace
