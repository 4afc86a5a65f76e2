#pragma once
/// Monte-Carlo step of one head: rates to probabilities of the current time step, one draw, one
/// move.
///
/// The outcomes of a head lie one after the other on a scale from 0: in ascending target state, and
/// in a binding step in the order of the candidates, each rate * dt (times the steric weight) long.
/// A uniform variate picks the outcome k with cum[k] < u <= cum[k + 1]; what is left up to 1 is
/// staying. A scale longer than 1 is shortened in proportion, and then no head stays.
///
/// Exactly one number of the random stream is used per head and step, whatever the head's state.

#include <array>
#include <iosfwd>
#include <limits>
#include <vector>

#include "base/output_file.h"
#include "kinetics/head_models.h"
#include "records/filament_data.h"

class ActiveModel;
class Geometry;

/// One possible outcome of a draw. `site` and `fibre` are `unbound` where it binds no site.
struct StateBin_s {
  unsigned state;
  unsigned site;
  unsigned fibre;
};

/// Stepper of a system without regulation of the thin filament: every site counts as open.
class FixedTimeStepMC {
 public:
  /// `protein_c` may be null if no head uses it. Opens "detached_states_init.csv".
  FixedTimeStepMC(Model const& slow, Model const& fast, Model const* protein_c);

  /// Rate of a slow or fast head at strain `x`.
  virtual double get_k_slow(double x, unsigned from, unsigned to, ActinSite_s const& site) const;
  virtual double get_k_fast(double x, unsigned from, unsigned to, ActinSite_s const& site) const;
  virtual ~FixedTimeStepMC() = default;
  FixedTimeStepMC(FixedTimeStepMC const&) = delete;
  FixedTimeStepMC& operator=(FixedTimeStepMC const&) = delete;

  /// Draws the first state of every head among the detached states of the slow model, and writes
  /// how many heads stand in each to "detached_states_init.csv".
  virtual void initialize_filament(FilamentData& data) const;

  /// One step of one head. `candidates` are what the lattice offers a detached head; a bound head's
  /// are not looked at. A pending release must have been carried out by `detach` before. Returns 0.
  virtual int state_change(FilamentData& data, MyosinHead_s& head,
                           std::vector<BindingSite_s> const& candidates) const;

  /// The same with the lattice that offers the candidates. The draw comes first: a head that no
  /// rate could move by it stays without a search. `candidates` is work space.
  int state_change(FilamentData& data, MyosinHead_s& head, Geometry const& geometry,
                   std::vector<BindingSite_s>& candidates) const;
  /// Renews the bounds of all rates for a step of the present length, until the clock moves on;
  /// `reach` is that of the heads [nm]. Before the first call every head is asked.
  void begin_step(double reach);

  Model const* get_proteinC_model() const { return models.protein_c; }

  /// Makes the bond to the site that the head's `actin_site` and `actin_fibre` name.
  void attach(FilamentData& data, MyosinHead_s& head) const;
  /// Breaks the bond and forgets the site.
  void detach(FilamentData& data, MyosinHead_s& head) const;

  // Diagnostics that no step of a run calls.

  /// Write how many heads went from state to state, for the pairs that the model has, and start
  /// counting anew. Slow and fast heads share one count.
  void print_transitions_slow(std::ostream& os);
  void print_transitions_fast(std::ostream& os);

 private:
  struct Outcomes;
  /// Bounds of the chances, rate times step, to leave a state.
  struct StateBounds {
    double at_site = std::numeric_limits<double>::infinity();  ///< of those that a site acts on
    double free = 0.0;                                         ///< of the others
  };
  using ModelBounds = std::vector<StateBounds>;

  ModelBounds find_bounds(Model const* model) const;
  bool surely_stays(double u, FilamentData const& data, MyosinHead_s const& head) const;
  void move(double u, FilamentData& data, MyosinHead_s& head,
            std::vector<BindingSite_s> const& candidates) const;
  double rate(MyosinHead_s const& head, double x, unsigned to, ActinSite_s const& site) const;
  void collect_of_detached(FilamentData const& data, MyosinHead_s const& head,
                           std::vector<BindingSite_s> const& candidates, Outcomes& outcomes) const;
  void collect_of_bound(FilamentData const& data, MyosinHead_s const& head,
                        Outcomes& outcomes) const;
  void carry_out(StateBin_s const& outcome, FilamentData& data, MyosinHead_s& head) const;
  void print_transitions(Model const& model, std::ostream& os);

  HeadModels const models;
  unsigned const n_states;
  double reach = 0.0;
  std::array<ModelBounds, 3> bounds;  ///< by kind of head
  mutable std::vector<std::vector<unsigned>> transition_counts;
  OutputFile detached_states_file;
};

/// Stepper of a regulated system: slow and fast heads see the state and the factors of their site.
class FixedTimeStepMCActiv : public FixedTimeStepMC {
 public:
  FixedTimeStepMCActiv(ActiveModel const& slow, ActiveModel const& fast, Model const* protein_c);

  double get_k_slow(double x, unsigned from, unsigned to, ActinSite_s const& site) const override;
  double get_k_fast(double x, unsigned from, unsigned to, ActinSite_s const& site) const override;

 private:
  ActiveModel const* active_model_slow;
  ActiveModel const* active_model_fast;
};
