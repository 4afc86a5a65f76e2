#pragma once
/// The mechanical system of a run: filaments in parallel and in series, and a series elastic
/// element (SEE) between the actin end of the lattice and the outside.
///
/// A step has two stages: `state_change` lets all heads move; `assemble_and_solve` then brings
/// filaments, bonds, titin and SEE to equilibrium with the heads frozen. In between
/// `set_boundary_mode` says what is prescribed.
///
/// Two set-ups exist: a half-sarcomere, and mirrored half-sarcomeres in series (see `Boundary`).
/// Units: nm, pN.

#include <iosfwd>
#include <memory>
#include <vector>

#include "mechanics/boundary.h"
#include "mechanics/filament_array.h"
#include "mechanics/measured.h"
#include "mechanics/result_files.h"
#include "mechanics/series_elastic_element.h"

class Equilibrium;
class Geometry;
class XB_Model;
struct SarcomerParameter_s;

/// Adds `b` to `a` entry by entry; different lengths end the run.
void VectorAdd(std::vector<int>& a, std::vector<int> const& b);

class Sarcomer {
 public:
  /// Opens the result files, creates the laws of SEE and titin and finds the prestress. Keeps
  /// references to both arguments.
  Sarcomer(SarcomerParameter_s const& param, Geometry const& geometry);
  Sarcomer(Sarcomer const&) = delete;
  Sarcomer& operator=(Sarcomer const&) = delete;
  ~Sarcomer();

  /// Appends a filament and takes it over. In the series set-up all half-sarcomeres of the first
  /// row come first, then those of the second row, and so on.
  bool add_filament(Filament* filament);

  /// Lets every filament's heads move, and writes the segment states of the thin filaments.
  int state_change(double time, double dt);
  /// Prescribes the position [nm] that the near end of the whole series, or the force [pN] that all
  /// rows together, shall have after this step.
  void set_boundary_mode(Prescribed const& wanted);
  /// Brings all forces to balance. With `update` false nothing moves, and "stiffness.csv" gets a
  /// row in each pass. Returns 1, or -1 if there is no filament.
  int assemble_and_solve(double time, bool update);

  /// Writes a row of "result.csv"; -1 if there is no filament.
  int create_output(double time);
  /// Writes the populations of the states: of the heads in the mechanics to the stream, of all
  /// myosin heads to "Myosin_head_states.csv".
  int write_cb_states(std::ofstream& stream, int n_states);
  /// Dumps the regulatory state of every site to "actinSites.csv".
  void create_actinSites_output();
  /// Writes the snapshot of all bonds at a time.
  int create_distributions(double time) const;

  FilamentArray const& all_filaments() const { return filaments; }
  Measured const& results() const { return measured; }
  /// The law of titin, which filaments share; null without titin.
  XB_Model const* titin() const { return titin_model; }

 private:
  void create_titin();

  FilamentArray filaments;
  ResultFiles files;
  Geometry const& geometry;
  SeriesElasticElement see;
  Boundary boundary;
  std::unique_ptr<Equilibrium> equilibrium;
  Measured measured;
  XB_Model const* titin_model = nullptr;
};
