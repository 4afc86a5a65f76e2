#pragma once
/// Regulation of the thin filament: which sites a head can use, decided anew in each step before
/// the heads move.
///
/// A model keeps its own picture of the regulatory state and writes the outcome into the site
/// records of the filament; kinetics and stepper read nothing else. Each filament has a model of
/// its own, with its own reading of "ca_protocol.dat" and its own random draws.

#include <cstdio>
#include <vector>

#include "base/factory.h"

class Geometry;
class Model;
struct FilamentData;

/// Argument of every activation model's constructor.
struct ActivationModelParameter {
  Geometry const* geometry = nullptr;
  Model const* model_slow = nullptr;
  Model const* model_fast = nullptr;
  int caActivationModelIndicator = 0;  ///< below 1: by the rate kb; 1 or more: by calcium
  int healtyChainPercent = 100;        ///< percentage of filaments with the healthy parameters
};

class ActivationModel {
 public:
  explicit ActivationModel(ActivationModelParameter const& parameter);
  virtual ~ActivationModel() = default;
  ActivationModel(ActivationModel const&) = delete;
  ActivationModel& operator=(ActivationModel const&) = delete;

  /// One step of regulation. `counts` takes the filament's segments by regulatory state, where the
  /// model has segments. The result has no reader.
  virtual int state_change(FilamentData& data, double time, std::vector<int>& counts);
  virtual void state_info(std::vector<double>& info) const;
  virtual void write_state_data(FilamentData const& data, FILE* file, bool with_heading) const;

  int caActivationModelIndicator;
  Geometry const* geometry;
  Model const* model_slow;
  Model const* model_fast;
  std::vector<int> state_counts;
};

#define REGISTER_ACTIVATION(Derived, name) \
  REGISTER_COMPONENT(Derived, ActivationModel, ActivationModelParameter, name)
