#pragma once
/// Kinetic model of a myosin head, as the Monte-Carlo stepper sees it.
///
/// A model says which discrete states a head has, which of them are attached to actin, how far each
/// has moved the lever, and at what rate the head goes from one to another as a function of the
/// crossbridge strain x. States count from 0, and state 0 is detached.
///
/// Units: strain and lever displacement in nm, energy in pN nm, force in pN, rates in reciprocal
/// time units of the time step, so that rate times step length is a probability.

#include <memory>
#include <string>
#include <vector>

#include "base/factory.h"

class XB_Model;

namespace dealii {
class ParameterHandler;
}

/// Argument of every model's constructor.
struct ModelParameter_s {
  XB_Model* xb_model = nullptr;  ///< elastic law of the crossbridge; not owned
  std::string file_name;         ///< the model's parameter file
};

class Model;

/// What a run will ask of a model.
struct RunFrame_s {
  double step;         ///< the longest time step of its protocol
  double reach;        ///< of the heads [nm]
  bool is_fast;        ///< the model of the fast heads
  Model const* other;  ///< that of the slow heads, or else of the fast ones
};

class Model {
 public:
  Model(ModelParameter_s const& parameter, unsigned n);
  virtual bool IsPowerStrokeState(int state) const = 0;
  virtual ~Model() = default;
  Model(Model const&) = delete;
  Model& operator=(Model const&) = delete;

  /// Rate of a transition at strain `x`, for a site that regulation leaves alone.
  virtual double get_k(double x, unsigned from, unsigned to) const = 0;
  /// Upper bound, now and at strains of at most `reach` nm in size, of the sum of the rates out of
  /// `from` that a site has a part in: of a detached state those into attached states, of an
  /// attached one all. It holds for a site whose factors are all 1; at another the sum is at most
  /// the bound times the largest of 1 and the site's factors. Infinity where the model knows none.
  virtual double rate_bound(unsigned from, double reach) const;
  /// Refuses or warns of what doesn't fit the run, before it begins.
  virtual void check_before_run(RunFrame_s const&) const {}
  /// Lever displacement of a state.
  virtual double power_stroke(unsigned state) const;

  unsigned n_states() const { return n_states_; }

 private:
  unsigned const n_states_;

 public:
  /// Whether a state is attached to actin; a derived constructor sets it.
  std::unique_ptr<bool[]> attached;
  XB_Model* xb_model;
  std::string file_name;  ///< the model's parameter file
  /// Whether the stepper considers a pair [from][to] at all: everything off the diagonal, unless a
  /// derived constructor says otherwise.
  std::vector<std::vector<bool>> transitions;
};

#define REGISTER_MODEL(Derived, name) REGISTER_COMPONENT(Derived, Model, ModelParameter_s, name)
