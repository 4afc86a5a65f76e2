#include "mechanics/spring_system.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

double largest_entry(SpringSystem::Vector const& v) {
  double largest = 0.0;
  for (double const value : v) {
    double const size = std::abs(value);
    // A value that isn't a number must not hide behind the comparison.
    if (size > largest || std::isnan(size)) largest = size;
  }
  return largest;
}

}  // namespace

void SpringSystem::set_size(std::size_t n_blocks, unsigned n_shared) {
  blocks.resize(n_blocks);
  shared.assign(n_shared, {});
  is_factorised = false;
}

void SpringSystem::prescribe(unsigned unknown, double u) {
  if (!shared[unknown].is_prescribed) is_factorised = false;
  shared[unknown].is_prescribed = true;
  shared[unknown].u = u;
}

void SpringSystem::release(unsigned unknown) {
  if (shared[unknown].is_prescribed) is_factorised = false;
  shared[unknown].is_prescribed = false;
  shared[unknown].u = 0.0;
}

void SpringSystem::set_series(SeriesSpring const& spring) {
  bool const is_same =
      spring.inner == series.inner && spring.k == series.k && spring.is_held == series.is_held;
  if (!is_same) is_factorised = false;
  series = spring;
}

bool SpringSystem::solve(Vector const& forces, Vector& u) {
  bool const is_unchanged = std::all_of(
      blocks.begin(), blocks.end(), [](SpringBlock const& block) { return block.has_factors(); });
  if (!is_unchanged) {
    is_factorised = false;
    number_shared();
  }
  if (!series.is_held && (series.k == 0.0 || !std::isfinite(series.k))) return false;
  if (!eliminate_blocks(forces)) return false;
  if (!is_factorised && !factorise_shared()) return false;
  double const outer_force = *(forces.end() - 1);
  solve_shared(outer_force);
  u.reinit(forces.size(), true);
  double* of_block = u.begin();
  for (SpringBlock& block : blocks) {
    auto const& joints = block.get_joints();
    for (unsigned a = 0; a < joints.size(); ++a) {
      block.set_joint_displacement(a, joints[a].sign * work[joints[a].unknown]);
    }
    block.recover(of_block);
    of_block += block.n_dofs();
  }
  *of_block = series.is_held ? series.u : work[series.inner] + outer_force / series.k;
  return true;
}

bool SpringSystem::is_definite() const {
  return matrix.is_definite() &&
         std::all_of(blocks.begin(), blocks.end(),
                     [](SpringBlock const& block) { return block.is_definite(); });
}

void SpringSystem::number_shared() {
  for (Shared& one : shared) one.first_dof = std::numeric_limits<unsigned>::max();
  unsigned offset = 0;
  for (SpringBlock const& block : blocks) {
    for (auto const& joint : block.get_joints()) {
      unsigned& first_dof = shared[joint.unknown].first_dof;
      first_dof = std::min(first_dof, offset + joint.dof);
    }
    offset += block.n_dofs();
  }
}

bool SpringSystem::eliminate_blocks(Vector const& forces) {
  double const* of_block = forces.begin();
  for (SpringBlock& block : blocks) {
    if (!block.has_factors() && !block.factorise()) return false;
    block.reduce(of_block);
    of_block += block.n_dofs();
  }
  return true;
}

bool SpringSystem::factorise_shared() {
  auto const n = static_cast<unsigned>(shared.size());
  first.resize(n);
  for (unsigned p = 0; p < n; ++p) first[p] = p;
  for_each_pair([this](unsigned p, unsigned q, double) { first[p] = std::min(first[p], q); });
  matrix.reshape(first);
  for_each_pair([this](unsigned p, unsigned q, double k) { matrix.at(p, q) += k; });
  if (series.is_held) matrix.at(series.inner, series.inner) += series.k;
  for (unsigned p = 0; p < n; ++p) {
    if (shared[p].is_prescribed) matrix.at(p, p) = 1.0;
  }
  return is_factorised = matrix.eliminate(n);
}

template <class Action>
void SpringSystem::for_each_pair(Action action) const {
  for (SpringBlock const& block : blocks) {
    auto const& joints = block.get_joints();
    for (unsigned a = 0; a < joints.size(); ++a) {
      for (unsigned b = 0; b < joints.size(); ++b) {
        unsigned const p = joints[a].unknown;
        unsigned const q = joints[b].unknown;
        if (p < q || shared[p].is_prescribed || shared[q].is_prescribed) continue;
        action(p, q, joints[a].sign * joints[b].sign * block.joint_stiffness(a, b));
      }
    }
  }
}

void SpringSystem::solve_shared(double outer_force) {
  work.assign(shared.size(), 0.0);
  work[series.inner] = series.is_held ? series.k * series.u : outer_force;
  for (SpringBlock const& block : blocks) {
    auto const& joints = block.get_joints();
    for (unsigned a = 0; a < joints.size(); ++a) {
      work[joints[a].unknown] += joints[a].sign * force_on(block, a);
    }
  }
  for (unsigned p = 0; p < shared.size(); ++p) {
    if (shared[p].is_prescribed) work[p] = shared[p].u;
  }
  matrix.reduce(work);
  matrix.recover(work);
}

/// What is left of the forces on a block, and what its prescribed joints make it exert.
double SpringSystem::force_on(SpringBlock const& block, unsigned a) const {
  double force = block.joint_force(a);
  auto const& joints = block.get_joints();
  for (unsigned b = 0; b < joints.size(); ++b) {
    double const u = shared[joints[b].unknown].u;
    if (u != 0.0) force -= block.joint_stiffness(a, b) * joints[b].sign * u;
  }
  return force;
}

void SpringSystem::condense(Vector& forces) const {
  double* of_block = forces.begin();
  for (SpringBlock const& block : blocks) {
    for (unsigned const d : block.get_held()) of_block[d] = 0.0;
    for (auto const& joint : block.get_joints()) {
      Shared const& one = shared[joint.unknown];
      double const force = joint.sign * of_block[joint.dof];
      of_block[joint.dof] = 0.0;
      if (!one.is_prescribed) forces[one.first_dof] += force;
    }
    of_block += block.n_dofs();
  }
  if (series.is_held) *of_block = 0.0;
}

double SpringSystem::add_forces(Vector const& u, Vector& forces) const {
  double largest = 0.0;
  unsigned offset = 0;
  for (SpringBlock const& block : blocks) {
    largest = std::max(largest, block.add_forces(u.begin() + offset, forces.begin() + offset));
    offset += block.n_dofs();
  }
  unsigned const inner = shared[series.inner].first_dof;
  double const f = series.k * (u[offset] - u[inner]);
  forces[inner] += f;
  forces[offset] -= f;
  return std::max(largest, std::abs(f));
}

double SpringSystem::residual(Vector const& forces, Vector const& u) {
  left = forces;
  condense(left);
  double const given = largest_entry(left);
  double const carried = add_forces(u, left);
  condense(left);
  double const largest = std::max(given, carried);
  return largest == 0.0 ? 0.0 : largest_entry(left) / largest;
}
