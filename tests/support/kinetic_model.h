#pragma once
/// Registered kinetic models with default parameters but for some settings.

#include <gtest/gtest.h>

#include <filesystem>

#include "elastic/XB_Models.h"
#include "kinetics/active_model.h"
#include "support/work_dir.h"

/// A linear spring whose integral table is a stub, since the true one takes its time: only the
/// nine-state scheme C6 looks into it.
struct Spring : XB_ConstantStiffness {
  explicit Spring(double stiffness) : XB_ConstantStiffness("") { k = stiffness; }
  void FillIntegralFunction() const override { integralFunction.SetFunction({{0, 0}, {1, 0.5}}); }
};

/// The models of protein-C always read the same file, all others the one that they are told.
inline std::string parameter_file_of(std::string const& model) {
  return model == "HuxleyMyBPC" ? "model_huxleyMyBPC.prm"
         : model == "DukeMyBPC" ? "model_dukeMyBPC.prm"
                                : model + ".prm";
}

/// A scheme that every elastic law can carry: two states, whose file is no parameter file.
inline constexpr char const* two_state_scheme = R"toml(
name = "two states"
range = [-30, 30]
energy_per_ATP = 100
[parameters]
h = { value = 8, unit = "nm" }
[[state]]
name = "D"
attached = false
[[state]]
name = "A"
attached = true
[[transition]]
from = "D"
to = "A"
rate = "x >= 0 && x < h ? 10 * x / h : 0"
site = ["on"]
fuel = true
[[transition]]
from = "A"
to = "D"
rate = "(x < 0 ? 200 : 20 * x / h) + exp(-0.02 * F)"
site = ["off"]
fuel = true
)toml";

inline std::unique_ptr<ActiveModel> read_model(std::string const& name, XB_Model& law,
                                               std::string const& settings) {
  if (name == "Scheme") {
    write_file("Scheme.prm", settings.empty() ? two_state_scheme : settings);
  } else {
    write_settings(parameter_file_of(name), settings);
  }
  if (!std::filesystem::exists("ca_protocol.dat")) write_file("ca_protocol.dat", "0 1 0 0 0\n");
  auto* const model =
      Factory<Model, ModelParameter_s>::instance().create_type(name, {&law, name + ".prm"});
  return std::unique_ptr<ActiveModel>(dynamic_cast<ActiveModel*>(model));
}

/// The same, while what the model prints goes nowhere.
inline std::unique_ptr<ActiveModel> make_model(std::string const& name, XB_Model& law,
                                               std::string const& settings = "") {
  testing::internal::CaptureStdout();
  auto model = read_model(name, law, settings);
  testing::internal::GetCapturedStdout();
  return model;
}

/// Settings of a nine-state scheme whose states have a range and whose steps have barriers.
inline std::string nine_states(std::string const& scheme) {
  std::string settings = "tolen: model=" + scheme + "; powerstroke: h=3.5 ha=0.75 hb=0.5";
  for (int state = 4; state <= 9; ++state) {
    settings += "; state" + std::to_string(state) + ": cc=0.5 ccm=0.2 dm=6 dp=5 gm=90 gp=70";
  }
  return settings;
}
