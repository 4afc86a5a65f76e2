#pragma once
/// One fibre as a one-dimensional elastic chain whose mesh follows the bonds.
///
/// Degrees of freedom exist only at the fibre's two end nodes and at the nodes that carry an
/// attached head; one element spans all nodes between two neighbours, with the stiffness EA / L. A
/// thin filament of several hundred sites is solved with as many unknowns as it has bonds, plus
/// two.
///
/// Local numbers count from 0 in ascending rest coordinate; the global number is the fibre's offset
/// plus the local one. The chain keeps no displacement of its own: it reads and writes `u`.
///
/// Call order in an assembly: `prepare_nodes`; `create_matrix` and `create_rhs`; after the solve
/// `interpolate_displacement`. The last three may repeat on the same mesh.

#include <iosfwd>
#include <utility>
#include <valarray>
#include <vector>

#include "mechanics/dealii_forward.h"
#include "records/fibre_displacement.h"

struct MyosinHead_s;

class FilamentFEM {
 public:
  /// Keeps references to all three containers; `e` Young's modulus [pN/nm^2], `a` cross-section
  /// [nm^2].
  FilamentFEM(std::vector<MyosinHead_s*> const& attached, std::valarray<double> const& x,
              FibreDisplacement& u, double e, double a);

  /// Rebuilds the mesh; `fibre` is the chain's place in its filament.
  void prepare_nodes(unsigned fibre);
  unsigned n_dofs() const { return static_cast<unsigned>(u.get_knots().size()); }
  /// Local number of a node; 0 for a node without a degree of freedom.
  unsigned get_local_dof(unsigned node) const;
  unsigned get_raw_nodes() const { return static_cast<unsigned>(x.size()); }
  /// Calls `action(rest coordinate)` for each node with a degree of freedom, in their order.
  template <class Action>
  void for_each_node(Action action) const {
    for (auto const& knot : u.get_knots()) action(knot.x);
  }
  double get_x(unsigned node) const { return x[node]; }
  double get_u(unsigned node) const { return u[node]; }
  /// The same by local number.
  double get_u_of_dof(unsigned number) const { return u.get_knots()[number].u; }

  /// Calls `spring(i, j, k)` for every element, with its two degrees of freedom and its stiffness.
  template <class Sink>
  void create_matrix(Sink&& spring, unsigned offset) const;
  /// Adds the forces that the elements carry under the present displacements.
  void create_rhs(dealii::Vector<double>& rhs, unsigned offset) const;
  /// Adds a correction to `u` at the nodes with a degree of freedom.
  void interpolate_displacement(dealii::Vector<double> const& solution, unsigned offset);
  /// No two neighbouring nodes stand closer than this at present.
  double least_spacing() const { return least_rest_spacing + least_slope; }
  /// Lets the nodes without a degree of freedom follow the others.
  void straighten();

 private:
  /// Calls `action(dof, dof, rest length, extension)`, with numbers from `offset` on.
  template <class Action>
  void for_each_element(unsigned offset, Action action) const;
  void report_negative_length() const;

  std::vector<unsigned> nodes;  ///< work space of `prepare_nodes`
  double const e;
  double const a;
  double least_rest_spacing;
  double least_slope = 0.0;  ///< of `u` over the node number
  std::valarray<double> const& x;
  FibreDisplacement& u;  ///< its knots are the nodes with a degree of freedom, in their order
  std::vector<MyosinHead_s*> const& attached;
};

/// The chain's operations in the one shape that `Filament::do_for_all` walks the fibres with:
/// chain, argument, offset of the chain. All return 0.
int fa_count_dofs(FilamentFEM const& chain, unsigned& sum, unsigned offset);
/// The counter is the fibre's number, and is increased.
int fa_prepare_nodes(FilamentFEM& chain, unsigned& counter, unsigned offset);
int fa_assign_offset(FilamentFEM const& chain, std::vector<unsigned>& offsets, unsigned offset);
template <class Sink>
int fa_create_matrix(FilamentFEM const& chain, Sink& spring, unsigned offset);
int fa_create_rhs(FilamentFEM const& chain, dealii::Vector<double>& rhs, unsigned offset);
int fa_interpolate(FilamentFEM& chain, dealii::Vector<double> const& solution, unsigned offset);
/// Writes "x u" for each node and an empty line.
int fa_write_displacement(FilamentFEM const& chain, std::ostream& stream, unsigned offset);

template <class Action>
void FilamentFEM::for_each_element(unsigned offset, Action action) const {
  auto const& knots = u.get_knots();
  for (unsigned i = 1; i < knots.size(); ++i) {
    auto const& first = knots[i - 1];
    auto const& second = knots[i];
    action(offset + i - 1, offset + i, second.x - first.x, second.u - first.u);
  }
}

template <class Sink>
void FilamentFEM::create_matrix(Sink&& spring, unsigned offset) const {
  double const EA = e * a;
  for_each_element(offset, [&](unsigned i, unsigned j, double L, double) {
    if (L < 0.0) report_negative_length();
    spring(i, j, EA / L);
  });
}

template <class Sink>
int fa_create_matrix(FilamentFEM const& chain, Sink& spring, unsigned offset) {
  chain.create_matrix(spring, offset);
  return 0;
}
