#include "mechanics/spring_block.h"

#include <algorithm>
#include <cmath>

void SpringBlock::set_dofs(std::vector<SpringDof> const& dofs) {
  places.resize(dofs.size());
  number_own(dofs);
  joints.clear();
  held.clear();
  for (unsigned d = 0; d < dofs.size(); ++d) {
    Motion const& motion = dofs[d].motion;
    if (motion.kind == Motion::Kind::held) held.push_back(d);
    if (motion.kind != Motion::Kind::shared) continue;
    places[d] = ground();
    joints.push_back({d, motion.unknown, motion.sign});
  }
  for (unsigned const d : held) places[d] = ground();
  work.resize(ground() + 1);
  is_factorised = false;
}

/// Merges the fibres.
void SpringBlock::number_own(std::vector<SpringDof> const& dofs) {
  fibres.clear();
  for (unsigned d = 0; d < dofs.size(); ++d) {
    if (d == 0 || dofs[d].x < dofs[d - 1].x) fibres.push_back({d, d, dofs[d].x});
    ++fibres.back().end;
  }
  n_own = 0;
  while (!fibres.empty()) {
    // No branches: which fibre is next can't be foreseen.
    std::size_t lowest = 0;
    double x = fibres[0].x;
    for (std::size_t i = 1; i < fibres.size(); ++i) {
      bool const is_lower = fibres[i].x < x;
      lowest = is_lower ? i : lowest;
      x = is_lower ? fibres[i].x : x;
    }
    Fibre& fibre = fibres[lowest];
    places[fibre.next] = n_own;
    n_own += dofs[fibre.next].motion.kind == Motion::Kind::own ? 1 : 0;
    if (++fibre.next < fibre.end) {
      fibre.x = dofs[fibre.next].x;
    } else {
      fibres.erase(fibres.begin() + static_cast<std::ptrdiff_t>(lowest));
    }
  }
}

void SpringBlock::set_springs(std::vector<Spring> const& list) {
  if (list == springs) return;
  springs = list;
  is_factorised = false;
}

bool SpringBlock::factorise() {
  first.resize(ground() + 1);
  for (unsigned i = 0; i < first.size(); ++i) first[i] = i;
  for (Spring const& spring : springs) {
    unsigned const low = std::min(places[spring.i], places[spring.j]);
    unsigned const high = std::max(places[spring.i], places[spring.j]);
    first[high] = std::min(first[high], low);
  }
  first.pop_back();
  matrix.reshape(first);
  for (Spring const& spring : springs) {
    unsigned const low = std::min(places[spring.i], places[spring.j]);
    unsigned const high = std::max(places[spring.i], places[spring.j]);
    if (low == ground()) continue;
    matrix.at(low, low) += spring.k;
    if (high == ground()) continue;
    matrix.at(high, high) += spring.k;
    matrix.at(high, low) -= spring.k;
  }
  return is_factorised = matrix.eliminate(n_own);
}

void SpringBlock::reduce(double const* forces) {
  for (unsigned d = 0; d < places.size(); ++d) work[places[d]] = forces[d];
  matrix.reduce(work);
}

void SpringBlock::recover(double* u) {
  matrix.recover(work);
  work[ground()] = 0.0;
  for (unsigned d = 0; d < places.size(); ++d) u[d] = work[places[d]];
}

double SpringBlock::add_forces(double const* u, double* forces) const {
  double largest = 0.0;
  for (Spring const& spring : springs) {
    double const f = spring.k * (u[spring.j] - u[spring.i]);
    forces[spring.i] += f;
    forces[spring.j] -= f;
    largest = std::max(largest, std::abs(f));
  }
  return largest;
}
