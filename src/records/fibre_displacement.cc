#include "records/fibre_displacement.h"

#include <algorithm>
#include <limits>

FibreDisplacement::FibreDisplacement(unsigned n_nodes)
    : knots{{0, 0.0, 0.0, 0.0}, {n_nodes - 1, 0.0, 0.0, 0.0}}, knots_before(n_nodes, 0) {
  knots_before.back() = 1;
}

void FibreDisplacement::set_knots(std::vector<unsigned> const& nodes,
                                  std::valarray<double> const& x) {
  auto const is_same = [&x](unsigned node, Knot const& knot) {
    return node == knot.node && x[node] == knot.x;
  };
  if (std::equal(nodes.begin(), nodes.end(), knots.begin(), knots.end(), is_same)) return;
  previous.swap(knots);
  knots.clear();
  for (unsigned const node : nodes) {
    Knot const& knot = previous[knots_before[node]];
    knots.push_back({node, knot.u + (node - knot.node) * knot.slope, 0.0, x[node]});
  }
  for (unsigned k = 0; k + 1 < knots.size(); ++k) {
    std::fill(knots_before.begin() + knots[k].node, knots_before.begin() + knots[k + 1].node, k);
  }
  knots_before.back() = static_cast<unsigned>(knots.size()) - 1;
}

double FibreDisplacement::straighten() {
  double least = std::numeric_limits<double>::infinity();
  for (std::size_t k = 0; k + 1 < knots.size(); ++k) {
    Knot const& next = knots[k + 1];
    knots[k].slope = (next.u - knots[k].u) / (next.node - knots[k].node);
    least = std::min(least, knots[k].slope);
  }
  return least;
}

void FibreDisplacement::fill(double u) {
  for (Knot& knot : knots) knot = {knot.node, u, 0.0, knot.x};
}
