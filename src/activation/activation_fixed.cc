#include "activation/activation_fixed.h"

#include "base/uniform_variate.h"
#include "records/filament_data.h"

REGISTER_ACTIVATION(ActivationFixedModel, "Fixed");

ActivationFixedModel::ActivationFixedModel(ActivationModelParameter const& parameter)
    : ActivationModel(parameter), ca_protocol("ca_protocol.dat") {}

int ActivationFixedModel::state_change(FilamentData& data, double time, std::vector<int>&) {
  double const value = ca_protocol.value_at(time);
  if (value == last_value) return 1;
  n_enabled = 0;
  n_disabled = 0;
  for (std::size_t fibre = 1; fibre < data.sites.size(); ++fibre) {
    for (ActinSite_s& site : data.sites[fibre]) {
      bool const is_off = value > uniform_variate();
      site.state = 0;
      site.k_on_factor = is_off ? 0.0 : 1.0;
      site.k_stroke_factor = is_off ? 0.0 : 1.0;
      ++(is_off ? n_disabled : n_enabled);
    }
  }
  last_value = value;
  return 1;
}

void ActivationFixedModel::state_info(std::vector<double>& info) const {
  info = {static_cast<double>(n_disabled), static_cast<double>(n_enabled)};
}
