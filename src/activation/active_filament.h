#pragma once
/// A filament whose activation model runs ahead of its heads in each step.

#include <memory>
#include <string>

#include "activation/activation.h"
#include "mechanics/filament.h"

class ActiveFilament : public Filament {
 public:
  /// Builds the filament, then the activation model of that name.
  ActiveFilament(Geometry const& geometry, Model const& slow, Model const& fast,
                 FixedTimeStepMC const& stepper, std::string const& activation,
                 int caActivationModelIndicator, int healtyChainPercent, int direction,
                 XB_Model const* titin);

  int state_change(double time, double step) override;
  void state_info(std::vector<double>& info) const;

 private:
  std::unique_ptr<ActivationModel> activation_model;
};
