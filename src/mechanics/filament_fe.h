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
/// Call order in an assembly: `prepare_nodes`; with the offsets known `create_sparsity`;
/// `create_matrix` and `create_rhs`; after the solve `interpolate_displacement`. The last three may
/// repeat on the same mesh.

#include <boost/container/flat_map.hpp>
#include <boost/container/flat_set.hpp>
#include <iosfwd>
#include <utility>
#include <valarray>
#include <vector>

#include "mechanics/dealii_forward.h"

struct MyosinHead_s;

/// Orders (node, rest coordinate) pairs by the coordinate alone.
struct CompareSetOfPairBySecond {
  bool operator()(std::pair<unsigned, double> const& a,
                  std::pair<unsigned, double> const& b) const {
    return a.second < b.second;
  }
};

class FilamentFEM {
 public:
  /// Keeps references to all three containers; `e` Young's modulus [pN/nm^2], `a` cross-section
  /// [nm^2].
  FilamentFEM(std::vector<MyosinHead_s*> const& attached, std::valarray<double> const& x,
              std::valarray<double>& u, double e, double a);

  /// Rebuilds the mesh; `fibre` is the chain's place in its filament.
  void prepare_nodes(unsigned fibre);
  unsigned n_dofs() const { return static_cast<unsigned>(dofs.size()); }
  /// Local number of a node; 0 for a node without a degree of freedom.
  unsigned get_local_dof(unsigned node) const;
  unsigned get_raw_nodes() const { return static_cast<unsigned>(x.size()); }
  double get_x(unsigned node) const { return x[node]; }
  double get_u(unsigned node) const { return u[node]; }

  void create_sparsity(dealii::DynamicSparsityPattern& pattern, unsigned offset) const;
  void create_matrix(dealii::SparseMatrix<double>& matrix, unsigned offset) const;
  /// Adds the forces that the elements carry under the present displacements.
  void create_rhs(dealii::Vector<double>& rhs, unsigned offset) const;
  /// Adds a correction to `u` at the nodes with a degree of freedom.
  void interpolate_displacement(dealii::Vector<double> const& solution, unsigned offset);
  /// Makes `u` linear in the node number between nodes with a degree of freedom.
  void straighten();

 private:
  struct Dof {
    unsigned number;  ///< local
    double x;         ///< rest coordinate of its node, beside it because `x` is too long to cache
  };

  /// Calls `action(node, node, dof, dof, rest length)`.
  template <class Action>
  void for_each_element(unsigned offset, Action action) const;

  // Flat containers keep their memory from step to step.
  boost::container::flat_map<unsigned, Dof> dofs;
  boost::container::flat_set<std::pair<unsigned, double>, CompareSetOfPairBySecond> mesh;
  double const e;
  double const a;
  std::valarray<double> const& x;
  std::valarray<double>& u;
  std::vector<MyosinHead_s*> const& attached;
};

/// Adds a spring of stiffness `k` between two degrees of freedom: to the pattern, and to the
/// matrix. A zero `k` adds nothing; a place missing from the matrix's pattern is passed over.
void add_spring(dealii::DynamicSparsityPattern& pattern, unsigned i, unsigned j);
void add_spring(dealii::SparseMatrix<double>& matrix, unsigned i, unsigned j, double k);

/// The chain's operations in the one shape that `Filament::do_for_all` walks the fibres with:
/// chain, argument, offset of the chain. All return 0.
int fa_count_dofs(FilamentFEM const& chain, unsigned& sum, unsigned offset);
/// The counter is the fibre's number, and is increased.
int fa_prepare_nodes(FilamentFEM& chain, unsigned& counter, unsigned offset);
int fa_assign_offset(FilamentFEM const& chain, std::vector<unsigned>& offsets, unsigned offset);
int fa_create_sparsity(FilamentFEM const& chain, dealii::DynamicSparsityPattern& pattern,
                       unsigned offset);
int fa_create_matrix(FilamentFEM const& chain, dealii::SparseMatrix<double>& matrix,
                     unsigned offset);
int fa_create_rhs(FilamentFEM const& chain, dealii::Vector<double>& rhs, unsigned offset);
int fa_interpolate(FilamentFEM& chain, dealii::Vector<double> const& solution, unsigned offset);
/// Writes "x u" for each node and an empty line.
int fa_write_displacement(FilamentFEM const& chain, std::ostream& stream, unsigned offset);
