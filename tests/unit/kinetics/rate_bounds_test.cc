// Would catch: a bound that the rates exceed at some strain, law, scheme or factor of a site, or
// that is so wide that hardly a head is known to stay; an energy asked of a law that has none.

#include <algorithm>
#include <cmath>

#include "elastic/create_law.h"
#include "records/filament_data.h"
#include "support/kinetic_model.h"

namespace {

XB_Model& law(std::string const& name, std::string const& settings = "") {
  write_settings(name + ".prm", settings);
  testing::internal::CaptureStdout();
  XB_Model* const made = create_elastic_law(name, "");
  testing::internal::GetCapturedStdout();
  return *made;
}

/// Sum of the rates that a site has a part in, as the stepper takes them.
double sum_of_rates(ActiveModel const& model, double x, unsigned from, ActinSite_s const& site) {
  double sum = 0.0;
  for (unsigned to = 0; to < model.n_states(); ++to) {
    bool const counts = model.transitions[from][to] && (model.attached[from] || model.attached[to]);
    if (counts) sum += std::max(0.0, model.get_k(x, from, to, site));
  }
  return sum;
}

/// At each strain the bound of just that reach holds, so that jumps are met from both sides. How
/// often it is the largest sum, at a reach of 30 nm.
double excess_of_bounds(ActiveModel const& model, unsigned from) {
  ActinSite_s const sites[] = {{}, {0, 3, 1, 2}, {2, 1, 4, 0.5}, {0, 0.1, 0.2, 3}};
  double largest = sum_of_rates(model, 0.0, from, {});
  for (int i = 1; i <= 300; ++i) {
    for (double const x : {std::nextafter(0.1 * i, 0.0), 0.1 * i}) {
      double const bound = model.rate_bound(from, x) * (1.0 + 1e-9);
      for (auto const& s : sites) {
        double const factor = std::max({1.0, s.k_on_factor, s.k_stroke_factor, s.k_off_factor});
        EXPECT_LE(sum_of_rates(model, x, from, s), factor * bound) << from << " at " << x;
        EXPECT_LE(sum_of_rates(model, -x, from, s), factor * bound) << from << " at " << -x;
      }
      for (double const y : {-x, x}) largest = std::max(largest, sum_of_rates(model, y, from, {}));
      EXPECT_LE(largest, bound) << from << " within " << x;
    }
  }
  return largest > 0.0 ? model.rate_bound(from, 30.0) / largest : 1.0;
}

std::vector<std::pair<char const*, std::string>> const variants = {
    {"Huxley", "huxley: h=7 g3=9"},
    {"Duke", "duke: eta=-0.7 delta=-2 GStroke=5"},
    {"Vorn", "vorn: eta=5 detachment_multiplier=3"},
    {"Vorn", "vorn: eta=5 detachment_multiplier=0.5"},
    {"BrekAtpaseFiber", "brek_atpase_fiber: eta=-0.7 delta=-2"},
    {"Rombel", "rombel: ener_cycle=-3 D=3 GBind=-2"},
    {"Tolen9", nine_states("C5")},
    {"Tolen9", "tolen: model=C4; numerics: xs=1 dx=0.5"},
    {"Tolen9", "numerics: interpolation=Step"}};

TEST(RateBounds, HoldAndAreTight) {
  std::string waves;  // without a row at 0
  for (int i = -30; i < 30; ++i) {
    waves += std::to_string(0.7 * i + 0.2) + ' ' + std::to_string(1.3 + 1.2 * std::sin(i)) + '\n';
  }
  write_file("xbStiffnessFileName.dat", waves);
  for (XB_Model* const spring :
       {&law("ConstantStiffness"), &law("ConstantStiffness", "ConstantStiffness: k=25"),
        &law("StiffnessFunction"), &law("TwoPartSigmoidalStiffness"),
        &law("TwoPartSigmoidalStiffness", "TwoPartSigmoidalStiffness: k0_left=9")}) {
    auto const check = [spring](std::string const& name, std::string const& settings) {
      bool const has_no_integral = name == "Tolen9" && spring->xbType == 4;
      if (has_no_integral) return;
      auto const model = make_model(name, *spring, settings);
      for (unsigned from = 0; from < model->n_states(); ++from) {
        SCOPED_TRACE(name + " on law " + std::to_string(spring->xbType));
        double const excess = excess_of_bounds(*model, from);
        if (!model->attached[from] && settings.empty()) {
          EXPECT_LE(excess, 2.5) << from;
        }
      }
    };
    for (auto const& type : Factory<Model, ModelParameter_s>::instance().types()) {
      check(type.first, "");
    }
    for (auto const& [name, settings] : variants) check(name, settings);
  }
  EXPECT_EQ(make_model("Rombel", law("SigmoidalStiffness"))->rate_bound(0, 5.0), HUGE_VAL);
}

}  // namespace
