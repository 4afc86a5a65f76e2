#include "kinetics/model_3state.h"

#include "elastic/XB_Models.h"
#include "kinetics/rate_tools.h"
#include "records/filament_data.h"

Model3State::Model3State(ModelParameter_s const& parameter) : ActiveModel(parameter, 3) {
  attached[1] = true;
  attached[2] = true;
}

double Model3State::get_k(double x, unsigned from, unsigned to, ActinSite_s const& site) const {
  if (site.state == 1) return 0.0;
  double const k = unregulated_rate(x, from, to);
  if (from == 0 && to == 1) return k * site.k_on_factor;
  if (from == 1 && to == 2) return k * site.k_stroke_factor;
  if (to < from) return k * site.k_off_factor;
  return k;
}

double Model3State::unregulated_rate(double x, unsigned from, unsigned to) const {
  switch (rate_type[from][to]) {
    case 1:
      return get_forward_rate(x, from, to);
    case 2:
      return get_reverse_rate(x, to, from, get_forward_rate(x, to, from));
    case 3:
      return get_reverse_rate(x, to, from + 3, get_forward_rate(x, to, from));
    default:
      return 0.0;
  }
}

double Model3State::get_G(double x, unsigned state) const {
  switch (state) {
    case 1:
      return c_1 + xb_model->GetEnergy(x);
    case 2:
      return c_2 + xb_model->GetEnergy(x + D);
    case 3:
      return c_4;
    default:
      return 0.0;
  }
}

double Model3State::get_reverse_rate(double x, unsigned i, unsigned j, double f) const {
  return detailed_balance(f, get_G(x, i), get_G(x, j), kBT);
}

void Model3State::print_energy(double x0, double x1, double dx) const {
  write_strain_table("energy.dat", x0, x1, dx, [this](FILE* file, double x) {
    for (unsigned s = 0; s < n_states(); ++s) std::fprintf(file, "%e ", get_G(x, s));
  });
}
