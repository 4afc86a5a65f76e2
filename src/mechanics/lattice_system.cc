#include "mechanics/lattice_system.h"

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
  set_motions(ends);
  for (std::size_t f = 0; f < filaments.size(); ++f) {
    Filament const& filament = filaments[f];
    if (mesh_numbers[f] == filament.mesh_number()) continue;
    mesh_numbers[f] = filament.mesh_number();
    has_springs[f] = false;
    dofs.clear();
    filament.for_each_dof([&](unsigned number, double x) {
      dofs.push_back({x, motions[filament.get_offset() + number]});
    });
    system.block(f).set_dofs(dofs);
  }
}

/// The shared unknowns: first the actin end that the series elastic element hangs on, then what is
/// driven and what other ends are tied to, in their order.
void LatticeSystem::set_motions(Ends const& ends) {
  motions.assign(see.outer_dof, Motion{});
  unsigned n_shared = 0;
  auto const share = [&](unsigned dof) {
    if (motions[dof].kind != Motion::Kind::shared) motions[dof] = Motion::shared(n_shared++);
    return motions[dof].unknown;
  };
  share(see.inner_dof());
  if (ends.driven != see.outer_dof) share(ends.driven);
  for (Ends::Tie const& tie : ends.ties)
    motions[tie.dof] = Motion::shared(share(tie.to), tie.factor);
  for (unsigned const dof : ends.held) motions[dof] = Motion::held();
  if (mesh_numbers.empty()) {
    mesh_numbers.assign(filaments.size(), 0);
    has_springs.assign(filaments.size(), false);
    system.set_size(filaments.size(), n_shared);
  }
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
    unsigned const driven = motions[ends.driven].unknown;
    is_length ? system.prescribe(driven, step) : system.release(driven);
  }
  system.set_series({motions[see.inner_dof()].unknown, see.stiffness(), holds_outer_end, step});
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
