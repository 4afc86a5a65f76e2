#pragma once
/// The mechanical system as the time loop sees it: a time and a prescribed value go in, the
/// response comes out.

#include <cstddef>
#include <iosfwd>
#include <string>

#include "base/factory.h"
#include "base/prescribed.h"

class Model;

/// Argument of every macro model's constructor; nothing of it is owned.
struct MacroModelParameter {
  Model const* slow = nullptr;
  Model const* fast = nullptr;
  Model const* proteinC = nullptr;
};

/// What a macro model has built.
struct Extent_s {
  std::string lattice;
  std::string regulation;
  unsigned filaments = 0;  ///< in parallel
  unsigned in_series = 1;  ///< half-sarcomeres
  std::size_t heads = 0;   ///< of myosin, in all filaments
  std::size_t links = 0;   ///< of protein-C
};

class MacroModel {
 public:
  explicit MacroModel(MacroModelParameter const& parameter)
      : model_slow(parameter.slow),
        model_fast(parameter.fast),
        model_proteinC(parameter.proteinC) {}
  virtual ~MacroModel() = default;
  MacroModel(MacroModel const&) = delete;
  MacroModel& operator=(MacroModel const&) = delete;

  Model const* get_model_slow() const { return model_slow; }
  Model const* get_model_fast() const { return model_fast; }

  /// One step under what is prescribed, per half-sarcomere or filament; gives the response: the
  /// force to a length, the displacement to a force.
  double iterate(double time, Prescribed const& wanted) {
    double response = 0.0;
    if (wanted.is_length()) {
      displacement_iter(time, wanted.value, response);
    } else {
      force_iter(time, wanted.value, response);
    }
    return response;
  }
  /// One step under a prescribed force per filament [pN]; gives the displacement [nm].
  virtual bool force_iter(double time, double value, double& displacement) = 0;
  /// One step under a prescribed length per half-sarcomere [nm]; gives the force [pN].
  virtual bool displacement_iter(double time, double value, double& force) = 0;
  virtual void writeResults(double time) = 0;
  virtual void write_cb_states(std::ofstream& stream) = 0;
  virtual void create_distribution_output(double time) = 0;
  /// Writes the whole lattice as it stands.
  virtual void write_lattice(double time) = 0;
  /// Writes the stiffness against a further displacement of 1 nm; nothing moves.
  virtual void calculate_stiffness(double time, double displacement) = 0;
  virtual void printActinSiteStates() = 0;
  virtual Extent_s extent() const = 0;
  /// Lets the models look at the run ahead, whose longest time step this is.
  virtual void check_before_run(double longest_step) const = 0;

 protected:
  Model const* model_slow;
  Model const* model_fast;
  Model const* model_proteinC;
};
