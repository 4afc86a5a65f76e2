#pragma once
/// The Monte-Carlo macro model: builds the whole lattice from "numeric_mc.prm" and runs a step as a
/// stochastic state change followed by the mechanical solve.
///
/// The prescribed force is a force per filament and is multiplied by the number of filaments in
/// parallel; the prescribed length is a length per half-sarcomere and is multiplied by the number
/// of half-sarcomeres in series.

#include <cstdint>
#include <memory>

#include "control/macro_model.h"
#include "control/mcModelParameters.h"

class FixedTimeStepMC;
class Geometry;
class Sarcomer;

class MCModel : public MacroModel {
 public:
  explicit MCModel(MacroModelParameter const& parameter);
  ~MCModel() override;

  bool force_iter(double time, double value, double& displacement) override;
  bool displacement_iter(double time, double value, double& force) override;
  void writeResults(double time) override;
  void write_cb_states(std::ofstream& stream) override;
  void create_distribution_output(double time) override;
  void write_lattice(double time) override;
  void calculate_stiffness(double time, double displacement) override;
  void printActinSiteStates() override;
  Extent_s extent() const override;
  void check_before_run(double longest_step) const override;

 private:
  std::unique_ptr<FixedTimeStepMC> create_stepper() const;
  void add_filament(int direction);
  bool is_series() const { return parameters.full_sarcomer > 0; }
  std::uint64_t in_series() const;
  bool is_regulated() const { return parameters.activation != "None"; }
  void step(double time, Prescribed const& wanted);
  Prescribed of_lattice(Prescribed const& wanted) const;

  McModelParameters parameters;
  std::unique_ptr<Geometry> geometry;
  std::unique_ptr<FixedTimeStepMC> stepper;
  std::unique_ptr<Sarcomer> sarcomer;
};
