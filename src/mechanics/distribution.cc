#include "mechanics/distribution.h"

#include <algorithm>
#include <cstdio>
#include <ostream>

#include "elastic/XB_Models.h"
#include "kinetics/model.h"
#include "lattice/geometry.h"
#include "mechanics/filament.h"

namespace {

/// Extension that the law sees, with the warning of the measures that assume a constant stiffness.
double stretched(double x, unsigned state, Model const* model) {
  if (model->xb_model->xbType != 0) {
    std::printf("Jedino je moguce pustiti proracun sa konstantnim stifnesom!\n");
  }
  return x + model->power_stroke(state);
}

}  // namespace

void Distribution::create_crowns_distribution(std::ostream& stream, Iterator first,
                                              Iterator last) const {
  std::for_each(first, last, [&](Filament const* filament) {
    unsigned const n = filament->get_geometry()->n_actin_nodes;
    for (unsigned fibre = 1; fibre <= std::min(2u, filament->n_fibre() - 1); ++fibre) {
      NodePositions const position = filament->data.position(fibre);
      for (unsigned node = 1; node < n; ++node) {
        stream << position[node] - position[node - 1] << '\n';
      }
    }
  });
}

void Distribution::create_xray_distribution(std::ostream& stream, Iterator first,
                                            Iterator last) const {
  std::for_each(first, last, [&](Filament const* filament) {
    for (unsigned i = 0; i < filament->data.heads.size(); ++i) {
      MyosinHead_s const& head = filament->data.heads[i];
      double const actin = head.actin_fibre == unbound
                               ? 0.0
                               : filament->get_actin_position(head.actin_fibre, head.actin_site);
      stream << i << ' ' << filament->get_myosin_position(i) << ' ' << actin << ' '
             << head.actin_fibre << ' ' << head.actin_site << '\n';
    }
  });
}

void Distribution::create_state_distribution(std::ostream& stream, Iterator first,
                                             Iterator last) const {
  if (first == last) return;
  std::size_t const n_heads = (*first)->data.heads.size();
  std::vector<std::vector<unsigned>> counts(n_heads,
                                            std::vector<unsigned>((*first)->n_states(), 0));
  std::for_each(first, last, [&](Filament const* filament) {
    for (std::size_t i = 0; i < n_heads; ++i) ++counts[i][filament->data.heads[i].state];
  });
  auto const n_filaments = static_cast<double>(last - first);
  for (std::size_t i = 0; i < n_heads; ++i) {
    stream << i << ' ';
    for (unsigned const count : counts[i]) stream << count / n_filaments << ' ';
    stream << '\n';
  }
}

double DFuncStrain(double x, unsigned, Model const*) { return x; }

double DFuncForce(double x, unsigned state, Model const* model) {
  double const X = stretched(x, state, model);
  return model->xb_model->GetStiffness(X) * X;
}

double DFuncEnergy(double x, unsigned state, Model const* model) {
  double const X = stretched(x, state, model);
  return 0.5 * X * X * model->xb_model->GetStiffness(X);
}
