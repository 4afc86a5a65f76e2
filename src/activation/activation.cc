#include "activation/activation.h"

ActivationModel::ActivationModel(ActivationModelParameter const& parameter)
    : caActivationModelIndicator(parameter.caActivationModelIndicator),
      geometry(parameter.geometry),
      model_slow(parameter.model_slow),
      model_fast(parameter.model_fast) {}

int ActivationModel::state_change(FilamentData&, double, std::vector<int>&) { return 1; }

void ActivationModel::state_info(std::vector<double>&) const {}

void ActivationModel::write_state_data(FilamentData const&, FILE*, bool) const {}
