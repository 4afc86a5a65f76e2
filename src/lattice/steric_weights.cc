#include "lattice/steric_weights.h"

#include <deal.II/base/point.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "base/diagnostics.h"

namespace {

constexpr double widest_bearing = 1.0471975511965976;
constexpr double out_of_reach = -1.0;

}  // namespace

std::optional<double> steric_weight(EndOnView_s const& view, double n) {
  double offset_b = 0.0;
  double offset_a = 0.0;
  bool const in_sight = find_angle({view.actin_x, view.actin_y}, {0.0, 0.0}, view.site_angle,
                                   view.head_angle, view.radii, offset_b, offset_a);
  if (!in_sight || !(std::abs(offset_b) < widest_bearing)) return std::nullopt;
  return (1.0 + std::cos(n * offset_b)) * (1.0 + std::cos(2.0 * offset_a));
}

StericWeights::StericWeights(Shape_s const& size, Look const& look, std::string const& lattice,
                             std::string const& file_name)
    : shape(size), tables(shape.thin_filaments) {
  for (auto& weights : tables) weights.resize(entries_per_phase() * shape.phases, out_of_reach);
  double sum = 0.0;
  int count = 0;
  std::vector<BindingSite_s> out;
  for (unsigned phase = 0; phase < shape.phases; ++phase) {
    for (unsigned crown = 0; crown < shape.crown_classes; ++crown) {
      for (unsigned head = 0; head < shape.heads; ++head) {
        for (unsigned fibre = 1; fibre <= shape.thin_filaments; ++fibre) {
          out.clear();
          look(head, crown, phase, fibre, out);
          if (out.size() > 1) std::printf("Error initialising %s geometry!\n", lattice.c_str());
          if (out.empty()) continue;
          tables[fibre - 1][index(head, crown, phase)] = out[0].weight;
          sum += out[0].weight;
          ++count;
        }
      }
    }
  }
  if (!(sum > 0.0)) stop(file_name + ": with these radii and distances no head can see any site");
  for (auto& weights : tables) {
    weights /= sum / count;
    window_sums.push_back(find_window_sums(weights));
  }
}

std::valarray<double> StericWeights::find_window_sums(std::valarray<double> const& weights) const {
  std::size_t const stride = entries_per_phase();
  std::valarray<double> most(0.0, stride * (shape.phases + 1));
  for (std::size_t i = 0; i < stride; ++i) {
    for (unsigned first = 0; first < shape.phases; ++first) {
      double sum = 0.0;
      for (unsigned n = 1; n <= shape.phases; ++n) {
        double const weight = weights[i + stride * ((first + n - 1) % shape.phases)];
        sum += std::max(weight, 0.0);
        most[i + stride * n] = std::max(most[i + stride * n], sum);
      }
    }
  }
  return most;
}

double StericWeights::of(unsigned head, unsigned crown, unsigned site, unsigned fibre) const {
  if (fibre == 0 || fibre > shape.thin_filaments) return out_of_reach;
  return tables[fibre - 1][index(head, crown, site)];
}
