#include "kinetics/active_model.h"

#include "records/filament_data.h"

double ActiveModel::get_k(double x, unsigned from, unsigned to) const {
  return get_k(x, from, to, ActinSite_s{});
}
