#pragma once
/// The mechanical system of a run: filaments in parallel and in series, and a series elastic
/// element (SEE) between the actin end of the lattice and the outside.
///
/// A step has two stages: `state_change` lets all heads move; `assemble_and_solve` then brings
/// filaments, bonds, titin and SEE to equilibrium with the heads frozen. In between
/// `set_boundary_mode` says what is prescribed.
///
/// Two set-ups exist. A half-sarcomere has all thick filaments held at their first node (the middle
/// of the sarcomere), all actin ends moving together, and the SEE between these and the outside. In
/// a row of sarcomeres in series, mirrored half-sarcomeres share a point with each neighbour; the
/// actin end of the last is held and that of the first is prescribed or loaded; the SEE takes no
/// part.
///
/// Degrees of freedom: filament after filament, then one more, `see_dof`, the outer end of the SEE.
/// Units: nm, pN. The prescribed force is that of all filaments in parallel together.

#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <vector>

#include "base/output_file.h"
#include "mechanics/dealii_forward.h"
#include "mechanics/sarcomer_parameter.h"

class DirectSolver;
class Filament;
class Geometry;
class XB_Model;

/// Adds `b` to `a` entry by entry; different lengths end the run.
void VectorAdd(std::vector<int>& a, std::vector<int>& b);

class Sarcomer {
 public:
  using Constraints = dealii::AffineConstraints<double>;
  using Values = std::map<unsigned, double>;
  using Matrix = dealii::SparseMatrix<double>;
  using Vector = dealii::Vector<double>;

  /// Opens the result files, creates the laws of SEE and titin and finds the prestress. Keeps
  /// references to both arguments.
  Sarcomer(SarcomerParameter_s const& param, Geometry const& geometry);
  ~Sarcomer();
  Sarcomer(Sarcomer const&) = delete;
  Sarcomer& operator=(Sarcomer const&) = delete;

  /// Appends a filament and takes it over. In the series set-up all half-sarcomeres of the first
  /// row come first, then those of the second row, and so on.
  bool add_filament(Filament* filament);
  /// Lets every filament's heads move, and writes the segment states of the thin filaments.
  int state_change(double time, double dt);
  /// Displacement of the SEE's inner end: the last node of fibre 1 of the first filament.
  double get_last_actin_displacement() const;

  // Boundary conditions

  /// Mode 0 length and 1 force of a half-sarcomere, 2 and 3 the same in series. `value` is a target
  /// position, which becomes the step still to go, or a force.
  int set_boundary_mode(unsigned mode, double value);
  void create_bnd_displacement(Constraints& constraints, Values& values);
  void create_bnd_force(Constraints& constraints, Vector& rhs, Values& values);
  void create_fibre_bnd_displacement(Constraints& constraints, Values& values);
  void create_fibre_bnd_force(Constraints& constraints, Vector& rhs, Values& values);
  /// Finds the SEE extension that carries |force|, for the prestress.
  void SetInitialPrescribedDisplacement(double force);
  /// Passive force of titin at rest, with the thick filament stretched by it.
  double FindTitinForce() const;

  // Equilibrium

  /// Newton iteration to equilibrium, at most 99 passes. With `update` false nothing moves and
  /// "stiffness.csv" gets a row. Returns 1, or -1 if there is no filament.
  int assemble_and_solve(double time, bool update);
  void see_create_sparsity(dealii::DynamicSparsityPattern& pattern, unsigned n_dofs);
  void see_create_matrix(Matrix& matrix, Vector& rhs);
  void see_create_matrix(Matrix& matrix);
  /// Adds the SEE's present force and writes a row of "SEE_velocity.csv".
  void see_create_rhs(Vector& rhs);

  // Results

  /// Takes force, displacements and bond counts from a correction and the out-of-balance forces
  /// before constraints: the entry of a held node is the force on it.
  void CalculateResults(Vector const& du, Vector const& rhs);
  /// Writes a row of "result.csv"; -1 if there is no filament.
  int create_output(double time);
  /// Writes the populations of the states: of `attached` to the stream, of all myosin heads to
  /// "Myosin_head_states.csv".
  int write_cb_states(std::ofstream& stream, int n_states);
  /// Dumps the regulatory state of every site to "actinSites.csv".
  void create_actinSites_output();
  /// Writes stiffness from a displacement and a force vector; -1 if there is no filament.
  int create_stiffness_output(Vector const& solution, Vector const& reaction);
  int create_displacement(std::ostream& stream, double time);
  void PrintMonomerStatistics();
  /// Writes the snapshot of all bonds at a time.
  int create_distributions(double time) const;

  double force = 0.0;                ///< negated mean force on the thick filaments' held ends
  double actin_displacement = 0.0;   ///< of the last actin node, mean over rows
  double myosin_displacement = 0.0;  ///< of the last myosin node, mean over rows
  double cb_per_filament = 0.0;
  double cb_proteinC_per_filament = 0.0;
  std::ofstream actin_statistics;
  SarcomerParameter_s const* param;
  Geometry const* geometry;
  std::vector<std::unique_ptr<Filament>> filaments;
  std::vector<unsigned> master_dofs;
  unsigned boundary_mode = 10;
  double boundary_value = 0.0;
  unsigned see_dof = 0;
  double see_displacement = 0.0;
  double see_extension_old = 0.0;
  double see_initial_displacement = 0.0;
  XB_Model* see_model = nullptr;
  OutputFile result_file;
  OutputFile stiffness_file;
  OutputFile actin_sites_file;
  OutputFile actin_forces_file;
  XB_Model* titin_model = nullptr;

 private:
  struct System;
  struct Measures;
  enum class End { displacement, force };
  struct Place;

  void create_laws();
  void prestress();

  bool is_displacement_mode() const { return boundary_mode == 0 || boundary_mode == 2; }
  void create_boundary(System& system);
  void create_fibre_bnd(End end, Constraints& constraints, Vector* rhs, Values& values);
  void join_thick_end(Place const& place, unsigned d, Constraints& constraints);
  void join_actin_end(Place const& place, unsigned d, bool is_master, Constraints& constraints);
  unsigned number_dofs();
  void assemble(System& system);
  void assemble_matrix(System& system);
  void assemble_rhs(System& system);
  /// Takes the correction `du` over into the displacements first.
  void correct_and_assemble_rhs(System& system, Vector const& du);
  void finish_rhs(System& system);
  void solve_pass(System& system, DirectSolver& solver, Vector& du) const;
  void hold_ends(System& system);
  void log_pass(System const& system, Vector const& du, int pass) const;
  void log_measures(Measures const& measures) const;
  bool is_balanced(Measures const& measures) const;
  void write_stiffness(double time, System& system, Vector const& correction);
  [[noreturn]] void stop_without_convergence(Measures const& measures) const;
  void refuse_floating(System const& system) const;
  double see_extension() const { return see_displacement - get_last_actin_displacement(); }
  std::string at_step() const;
  std::string place_of(unsigned dof) const;

  /// Half-sarcomeres in series, 1 for a single one.
  unsigned series() const;
  /// The first filament of every row: those whose ends show force and displacement.
  template <class Action>
  void for_each_row(Action action) const;
  unsigned n_attached() const;
  void count_bonds();
  void write_actin_force_listing(Vector const& rhs) const;
  void write_crossbridge_listing() const;

  OutputFile see_velocity_file;
  OutputFile myosin_head_states_file;
};
