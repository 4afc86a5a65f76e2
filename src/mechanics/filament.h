#pragma once
/// One mechanical unit of the lattice: a thick filament with its thin filaments.
///
/// A filament lets its heads step in order, numbers its degrees of freedom, adds its chains, bonds
/// and titin to the global system, and brings a solution back to its nodes.
///
/// A bond is a spring between a node of fibre 0 and a node of an actin fibre, so it enters exactly
/// two rows and columns. Its strain is the distance from the head's node to the site, plus, for
/// myosin, the lever displacement of the head's state; a positive force pulls the myosin node
/// toward larger and the actin node toward smaller coordinates. A head with `detach_pending` keeps
/// its place in the mesh and carries nothing.
///
/// Call order in a step: the stepper's `begin_step`; `state_change`; `prepare_nodes`, `set_offset`;
/// then any number of `create_matrix`, `create_rhs` and `correct`. A step may end after the first
/// two.

#include <algorithm>
#include <iosfwd>
#include <memory>
#include <optional>
#include <vector>

#include "kinetics/head_models.h"
#include "mechanics/dealii_forward.h"
#include "mechanics/filament_fe.h"
#include "records/filament_data.h"

class FixedTimeStepMC;
class Geometry;
class XB_Model;

class Filament {
 public:
  /// `direction` is 1, or -1 in a mirrored half-sarcomere. `titin` may be null where the lattice
  /// has no titin. Draws the first state of every head.
  Filament(Geometry const& geometry, Model const& slow, Model const& fast,
           FixedTimeStepMC const& stepper, int direction, XB_Model const* titin);
  virtual ~Filament() = default;
  Filament(Filament const&) = delete;
  Filament& operator=(Filament const&) = delete;

  /// One Monte-Carlo step of all heads, in their order; each sees what those before it did. Time
  /// and step length are there for regulated filaments. Returns 0.
  virtual int state_change(double time, double step);

  /// Takes over the bonds: renews mesh and local numbers if they are others than before.
  int prepare_nodes();
  /// How many meshes there have been: the same number means the same mesh and the same bonds that
  /// carry force.
  unsigned mesh_number() const { return mesh_count; }
  /// Sets the number of the first degree of freedom; local numbers, from 0 on, come on top of it.
  void set_offset(unsigned first_dof) { offset = first_dof; }
  unsigned get_offset() const { return offset; }
  unsigned n_dofs() const { return total_dofs; }
  unsigned n_fibre() const { return static_cast<unsigned>(chains.size()); }
  unsigned n_states() const;
  /// Heads in `attached` whose release is not pending.
  unsigned n_attached() const;
  /// How many of them there were when the mesh was made: myosin heads, and protein-C.
  unsigned n_myosin_bonds() const { return myosin_bonds; }
  unsigned n_proteinC_bonds() const { return proteinC_bonds; }
  /// Number of the first (`end` 0) or last (1) node's degree of freedom, once numbered.
  unsigned get_bnd_dof(unsigned end, unsigned fibre) const {
    return offset + fibre_offsets[fibre] + (end == 0 ? 0 : chains[fibre].n_dofs() - 1);
  }

  /// The thin filament whose end shows the displacement: fibre 2, or the last one there is.
  unsigned shown_actin_fibre() const { return std::min(2u, n_fibre() - 1); }

  Geometry const* get_geometry() const { return geometry; }

  double get_last_actin_displacement() const;
  double get_actin_position(unsigned fibre, unsigned node) const;
  /// Coordinates of a bond's two ends; this index and the following run over `attached`.
  void get_crossbridge_positions(unsigned index, double& myosin, double& actin) const;
  /// Signed distance from the head's node to the site, in the current configuration.
  double get_strain_euler(unsigned index) const;

  /// What enters the elastic law of a bond: the present distance plus the lever displacement.
  double bond_strain(unsigned index) const;
  XB_Model const& bond_law(MyosinHead_s const& head) const;
  double bond_stiffness(unsigned index) const;
  double bond_force(unsigned index) const;
  /// Force of the titin spring [pN]; nothing without titin.
  std::optional<double> titin_force() const;

  /// Calls `function(chain, argument, offset)` for each chain in fibre order, with the running
  /// offset. Returns 0.
  template <class Function, class T>
  int do_for_all(Function function, T& argument, unsigned start);
  template <class Function, class T>
  int do_for_all(Function function, T& argument, unsigned start) const;
  /// Calls `function(myosin dof, actin dof, argument, stiffness)` for each head of `attached`, in
  /// order, with local numbers. Returns 0.
  template <class T>
  int do_for_all_xb(int (*function)(unsigned, unsigned, T&, double), T& argument) const;

  /// Calls `spring(i, j, k)` for the springs that chains, bonds and titin are at present: local
  /// numbers and stiffness. Springs of stiffness 0 are among them.
  template <class Sink>
  int create_matrix(Sink&& spring) const;
  /// Whether the springs of a mesh don't change with their extension.
  bool has_constant_springs() const;
  /// Calls `action(rest coordinate)` fibre by fibre along each.
  template <class Action>
  void for_each_dof(Action action) const;
  int create_rhs(dealii::Vector<double>& rhs) const;

  /// Adds a correction to the displacements at the degrees of freedom.
  void correct(dealii::Vector<double> const& solution);

  // Diagnostics that no step of a run calls.

  Model const* get_model_slow() const { return models.slow; }
  Model const* get_model_fast() const { return models.fast; }
  Model const* get_proteinC_model() const { return models.protein_c; }
  /// Heads in `attached` in that state, pending ones included.
  unsigned n_in_state(unsigned state) const;
  /// Coordinate of a head's node; the index runs over `heads`.
  double get_myosin_position(unsigned head) const;
  /// `get_strain_euler` in the rest configuration; the index runs over `attached`.
  double get_strain(unsigned index) const;
  /// Clears `u`; `position` stays.
  void resetDisplacement();
  void write_displacement(std::ostream& stream) const;
  /// Writes the number, then strain, stiffness and force of every head of `attached`.
  void WriteCBCharacteristics(std::ofstream& stream, int number) const;
  /// Writes site and force on the site of every myosin head bound to that fibre.
  void writeActinNodeForces(FILE* file, int fibre) const;

  int direction;
  FilamentData data;
  unsigned proteinC_enabled = 0;
  /// Segments of the thin filaments by regulatory state; empty without regulation.
  std::vector<int> activation_states;

 private:
  /// A bond of the mesh: where it is and its local degrees of freedom.
  struct Bond {
    unsigned node;
    unsigned fibre;
    unsigned site;
    bool carries_force;
    unsigned myosin_dof;
    unsigned actin_dof;
    double myosin_x;  ///< rest coordinates
    double actin_x;
    double stroke;  ///< of the head's present state
    XB_Model const* law;
  };

  double least_site_spacing() const;
  void renew_weight_bounds();
  bool bonds_differ_from_mesh() const;
  void make_mesh();
  /// Makes the fibres straight between degrees of freedom: renews all positions.
  void InterpolateDisplacements();
  /// The longest bond's length along the axis [nm]; infinity if some are not meshed.
  double longest_bond() const;
  /// Lever displacement of a bound head; protein-C has none.
  double stroke(MyosinHead_s const& head) const;
  /// The same as for heads, from what the mesh knows of a bond.
  double length(Bond const& bond) const;
  double stiffness(Bond const& bond) const;
  double force(Bond const& bond) const;
  unsigned local_end(unsigned fibre) const {
    return fibre_offsets[fibre] + chains[fibre].n_dofs() - 1;
  }
  bool has_titin() const;
  double titin_strain() const;
  double titin_stiffness() const;

  Geometry const* geometry;
  HeadModels const models;
  XB_Model const* titin_law;
  FixedTimeStepMC const* stepper;
  std::vector<FilamentFEM> chains;
  unsigned mesh_count = 0;
  unsigned offset = 0;
  unsigned total_dofs = 0;
  std::vector<unsigned> fibre_offsets;  ///< local
  std::vector<Bond> bonds;              ///< in the order of `attached`
  unsigned myosin_bonds = 0;            ///< without those whose release is pending
  unsigned proteinC_bonds = 0;
  bool is_meshed = false;                 ///< no head has moved since `prepare_nodes`
  std::vector<BindingSite_s> candidates;  ///< work space of `state_change`
};

template <class Sink>
int faxb_create_matrix(unsigned i, unsigned j, Sink& spring, double k) {
  spring(i, j, k);
  return 0;
}

template <class Function, class T>
int Filament::do_for_all(Function function, T& argument, unsigned start) {
  for (FilamentFEM& chain : chains) {
    function(chain, argument, start);
    start += chain.n_dofs();
  }
  return 0;
}

template <class Function, class T>
int Filament::do_for_all(Function function, T& argument, unsigned start) const {
  for (FilamentFEM const& chain : chains) {
    function(chain, argument, start);
    start += chain.n_dofs();
  }
  return 0;
}

template <class T>
int Filament::do_for_all_xb(int (*function)(unsigned, unsigned, T&, double), T& argument) const {
  for (Bond const& bond : bonds) {
    function(bond.myosin_dof, bond.actin_dof, argument, stiffness(bond));
  }
  return 0;
}

template <class Sink>
int Filament::create_matrix(Sink&& spring) const {
  do_for_all(fa_create_matrix<Sink>, spring, 0);
  do_for_all_xb(faxb_create_matrix<Sink>, spring);
  if (has_titin()) spring(local_end(0), local_end(1), titin_stiffness());
  return 0;
}

template <class Action>
void Filament::for_each_dof(Action action) const {
  for (FilamentFEM const& chain : chains) chain.for_each_node(action);
}
