#pragma once
/// The springs of one filament, condensed to those of its degrees of freedom that move together
/// with others outside.
///
/// Law:     K = sum of k (e_i - e_j)(e_i - e_j)^T over all springs. With o its own degrees of
///          freedom and s the shared ones, S = K_ss - K_so K_oo^-1 K_os is left on the latter.
/// Order:   own ones by rest coordinate over all fibres, the shared ones last. A bond joins what
///          stands side by side, so next to nothing fills up.
/// Symbols: k stiffness [pN/nm], u displacement [nm], forces [pN].
/// Refuses: a pivot that is 0 or not finite; a negative stiffness is taken.
///
/// The factors stay until dofs or springs change, and are the same bits as fresh ones.
///
/// Call order: `set_dofs`, `set_springs`; `factorise`; then for each right-hand side `reduce` and,
/// when the joints' displacements are known, `recover`.

#include <algorithm>
#include <vector>

#include "mechanics/skyline_matrix.h"

/// A spring between two degrees of freedom, by their numbers within the filament.
struct Spring {
  unsigned i;
  unsigned j;
  double k;

  bool operator==(Spring const& other) const {
    return i == other.i && j == other.j && k == other.k;
  }
};

/// How a degree of freedom moves: alone, not at all, or by `sign` times a shared unknown.
struct Motion {
  enum class Kind { own, held, shared };

  static Motion held() { return {Kind::held, 0, 0.0}; }
  static Motion shared(unsigned unknown, double sign = 1.0) {
    return {Kind::shared, unknown, sign};
  }

  Kind kind = Kind::own;
  unsigned unknown = 0;
  double sign = 1.0;  ///< -1 in a mirrored half-sarcomere
};

struct SpringDof {
  double x;  ///< rest coordinate; only the order of elimination depends on it
  Motion motion;
};

class SpringBlock {
 public:
  /// A shared degree of freedom.
  struct Joint {
    unsigned dof;
    unsigned unknown;
    double sign;
  };

  /// Fibre after fibre, in ascending coordinate within each.
  void set_dofs(std::vector<SpringDof> const& dofs);
  /// Setting the same springs again keeps the factors. New dofs need new springs.
  void set_springs(std::vector<Spring> const& list);

  unsigned n_dofs() const { return static_cast<unsigned>(places.size()); }
  std::vector<Spring> const& get_springs() const { return springs; }
  std::vector<Joint> const& get_joints() const { return joints; }
  std::vector<unsigned> const& get_held() const { return held; }

  bool has_factors() const { return is_factorised; }
  bool is_definite() const { return matrix.is_definite(); }
  bool factorise();
  /// Takes the force on each degree of freedom, as the functions below have a number for each.
  void reduce(double const* forces);
  /// What joint `a` feels of the forces and, under a displacement of joint `b`, of the springs.
  double joint_force(unsigned a) const { return work[n_own + a]; }
  double joint_stiffness(unsigned a, unsigned b) const {
    return matrix.get(n_own + std::max(a, b), n_own + std::min(a, b));
  }
  void set_joint_displacement(unsigned a, double u) { work[n_own + a] = u; }
  void recover(double* u);

  /// Adds the forces that the springs exert under displacements `u`; returns the largest.
  double add_forces(double const* u, double* forces) const;

 private:
  /// The degrees of freedom of a fibre that have no number yet.
  struct Fibre {
    unsigned next;
    unsigned end;
    double x;  ///< of `next`
  };

  void number_own(std::vector<SpringDof> const& dofs);
  /// The place of whatever is held.
  unsigned ground() const { return n_own + static_cast<unsigned>(joints.size()); }

  std::vector<Spring> springs;
  std::vector<unsigned> places;  ///< row of each degree of freedom
  std::vector<Joint> joints;
  std::vector<unsigned> held;
  unsigned n_own = 0;
  SkylineMatrix matrix;
  bool is_factorised = false;
  std::vector<double> work;  ///< right-hand side, then solution, by row
  // Work spaces, kept for their memory.
  std::vector<Fibre> fibres;
  std::vector<unsigned> first;
};
