#include "kinetics/model_6state.h"

#include "kinetics/rate_tools.h"
#include "records/filament_data.h"

Model6State::Model6State(ModelParameter_s const& parameter) : ActiveModel(parameter, 6) {
  for (unsigned state : {1, 2, 3}) attached[state] = true;
}

double Model6State::power_stroke(unsigned state) const {
  if (state == 2) return D;
  if (state == 3) return D + delta;
  return 0.0;
}

double Model6State::get_k(double x, unsigned from, unsigned to, ActinSite_s const& site) const {
  if (site.state == 1) return 0.0;
  double const k = unregulated_rate(x, from, to);
  if (from == 0 && to == 1) return k * site.k_on_factor;
  if (from == 1 && to == 2) return k * site.k_stroke_factor;
  bool const is_release =
      (from == 1 && to == 0) || (from == 2 && to == 1) || (from == 3 && to == 4);
  return is_release ? k * site.k_off_factor : k;
}

double Model6State::unregulated_rate(double x, unsigned from, unsigned to) const {
  switch (rate_type[from][to]) {
    case 1:
      return get_forward_rate(x, from, to, C_);
    case 2:
      return reverse_rate(x, from, to);
    default:
      return 0.0;
  }
}

double Model6State::reverse_rate(double x, unsigned from, unsigned to) const {
  if (from == 0 && to == 4) return k_15;
  if (from == 0 && to == 5) return k_16;
  // The unscaled constant: rescaling corrects how often a head binds, not how long it stays.
  return get_reverse_rate(x, to, from, get_forward_rate(x, to, from, c_3));
}

double Model6State::get_G(double x, unsigned state) const {
  switch (state) {
    case 1:
      return strained_level(*xb_model, c_1, x, x);
    case 2:
      return strained_level(*xb_model, c_2, x, x + D);
    case 3:
      return strained_level(*xb_model, g_3, x, x + D + delta);
    case 4:
      return strained_level(*xb_model, g_3, x, x + D + delta) + G_ATP;
    default:
      return 0.0;
  }
}

double Model6State::get_reverse_rate(double x, unsigned i, unsigned j, double f) const {
  return detailed_balance(f, get_G(x, i), get_G(x, j), kBT);
}

void Model6State::print_energy(double x0, double x1, double dx) const {
  write_strain_table("energy.dat", x0, x1, dx, [this](FILE* file, double x) {
    for (unsigned s = 0; s < n_states(); ++s) std::fprintf(file, "%e ", get_G(x, s));
  });
}
