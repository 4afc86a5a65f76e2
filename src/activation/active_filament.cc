#include "activation/active_filament.h"

#include <cmath>

#include "base/output_file.h"
#include "kinetics/fixed_dt_mc.h"

namespace {

/// The time at which each filament appends its state to "TroponinAngles.csv".
constexpr double snapshot_time = 0.7;

}  // namespace

ActiveFilament::ActiveFilament(Geometry const& lattice, Model const& slow, Model const& fast,
                               FixedTimeStepMC const& mc, std::string const& activation,
                               int caActivationModelIndicator, int healtyChainPercent, int sense,
                               XB_Model const* titin)
    : Filament(lattice, slow, fast, mc, sense, titin) {
  ActivationModelParameter const parameter = {&lattice, &slow, &fast, caActivationModelIndicator,
                                              healtyChainPercent};
  activation_model =
      create_component<ActivationModel>(activation, parameter, "numeric_mc.prm", "activation");
}

int ActiveFilament::state_change(double time, double step) {
  activation_model->state_change(data, time, activation_states);
  if (std::abs(time - snapshot_time) < 1e-10) {
    OutputFile const file("TroponinAngles.csv", "at");
    activation_model->write_state_data(data, file.get(), true);
    file.flush();
  }
  return Filament::state_change(time, step);
}

void ActiveFilament::state_info(std::vector<double>& info) const {
  activation_model->state_info(info);
}
