#include "mechanics/lattice_system.h"

#include <algorithm>
#include <numeric>

#include "mechanics/filament_array.h"
#include "mechanics/pivoting_solver.h"
#include "mechanics/series_elastic_element.h"

namespace {

/// Share of the largest force that rounding may leave out of balance.
constexpr double most_residual = 1e-9;

/// Sets of degrees of freedom that stiffness or a condition joins.
class Connections {
 public:
  explicit Connections(unsigned n) : parent(n) { std::iota(parent.begin(), parent.end(), 0u); }
  unsigned root(unsigned i) {
    while (parent[i] != i) i = parent[i] = parent[parent[i]];
    return i;
  }
  void join(unsigned i, unsigned j) { parent[root(i)] = root(j); }

 private:
  std::vector<unsigned> parent;
};

}  // namespace

LatticeSystem::LatticeSystem(FilamentArray const& array, SeriesElasticElement const& element)
    : filaments(array), see(element) {}

void LatticeSystem::set_ends(Ends const& ends) {
  number_shared(ends);
  if (mesh_numbers.empty()) {
    mesh_numbers.assign(filaments.size(), 0);
    has_springs.assign(filaments.size(), false);
    system.set_size(filaments.size(), static_cast<unsigned>(masters.size()));
  }
  auto held = ends.held.begin();
  auto tie = ends.ties.begin();
  for (std::size_t f = 0; f < filaments.size(); ++f) {
    Filament const& filament = filaments[f];
    unsigned const offset = filament.get_offset();
    unsigned const end = offset + filament.n_dofs();
    auto const first_held = held;
    auto const first_tie = tie;
    while (held != ends.held.end() && *held < end) ++held;
    while (tie != ends.ties.end() && tie->dof < end) ++tie;
    if (mesh_numbers[f] == filament.mesh_number()) continue;
    mesh_numbers[f] = filament.mesh_number();
    has_springs[f] = false;
    dofs.clear();
    filament.for_each_dof([this](double x) { dofs.push_back({x, {}}); });
    for (unsigned m = 0; m < masters.size(); ++m) {
      if (offset <= masters[m] && masters[m] < end)
        dofs[masters[m] - offset].motion = Motion::shared(m);
    }
    std::for_each(first_tie, tie, [&](Ends::Tie const& one) {
      dofs[one.dof - offset].motion = Motion::shared(unknown_of(one.to), one.factor);
    });
    std::for_each(first_held, held,
                  [&](unsigned dof) { dofs[dof - offset].motion = Motion::held(); });
    system.block(f).set_dofs(dofs);
  }
}

/// First the actin end that the series elastic element hangs on, then what is driven and what other
/// ends are tied to, in their order.
void LatticeSystem::number_shared(Ends const& ends) {
  masters.assign(1, see.inner_dof());
  auto const share = [this](unsigned dof) {
    if (std::find(masters.begin(), masters.end(), dof) == masters.end()) masters.push_back(dof);
  };
  if (ends.driven != see.outer_dof) share(ends.driven);
  for (Ends::Tie const& tie : ends.ties) share(tie.to);
}

unsigned LatticeSystem::unknown_of(unsigned master) const {
  return static_cast<unsigned>(std::find(masters.begin(), masters.end(), master) - masters.begin());
}

void LatticeSystem::set_springs() {
  for (std::size_t f = 0; f < filaments.size(); ++f) {
    if (has_springs[f]) continue;
    has_springs[f] = filaments[f].has_constant_springs();
    springs.clear();
    filaments[f].create_matrix([this](unsigned i, unsigned j, double k) {
      springs.push_back({i, j, k});
    });
    system.block(f).set_springs(springs);
  }
}

bool LatticeSystem::solve(Ends const& ends, Vector const& forces, Vector& u) {
  bool const is_length = ends.prescribed.is_length();
  bool const holds_outer_end = is_length && ends.driven == see.outer_dof;
  double const step = is_length ? ends.prescribed.value : 0.0;
  if (ends.driven != see.outer_dof) {
    unsigned const driven = unknown_of(ends.driven);
    is_length ? system.prescribe(driven, step) : system.release(driven);
  }
  system.set_series({unknown_of(see.inner_dof()), see.stiffness(), holds_outer_end, step});
  u.reinit(forces.size(), true);
  if (system.solve(forces, u)) {
    if (system.is_definite() || system.residual(forces, u) <= most_residual) return true;
  }
  return solve_with_pivoting(all_springs(), ends, forces, u);
}

std::vector<Spring> LatticeSystem::all_springs() const {
  std::vector<Spring> all;
  for (auto const& filament : filaments) {
    unsigned const offset = filament->get_offset();
    filament->create_matrix([&](unsigned i, unsigned j, double k) {
      all.push_back({offset + i, offset + j, k});
    });
  }
  all.push_back({see.inner_dof(), see.outer_dof, see.stiffness()});
  return all;
}

std::optional<unsigned> LatticeSystem::first_floating(Ends const& ends) const {
  unsigned const n = see.outer_dof + 1;
  unsigned const ground = n;
  Connections connections(n + 1);
  for (unsigned const dof : ends.held) connections.join(dof, ground);
  if (ends.prescribed.is_length()) connections.join(ends.driven, ground);
  for (Ends::Tie const& tie : ends.ties) connections.join(tie.dof, tie.to);
  for (Spring const& spring : all_springs()) {
    if (spring.k != 0.0) connections.join(spring.i, spring.j);
  }
  for (unsigned i = 0; i < n; ++i) {
    if (connections.root(i) != connections.root(ground)) return i;
  }
  return std::nullopt;
}
