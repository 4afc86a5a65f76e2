#pragma once
/// A whole run: what "simulation.prm" asks for, and the time loop.

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "control/macro_model.h"
#include "control/run_plan.h"

class Protocol;
struct RunOrigin_s;

namespace dealii {
class ParameterHandler;
}

/// Contents of "simulation.prm": names of the models and the random seed, which is in force as soon
/// as it is read. Seed 0 leaves the C library's start state.
class SimParameter {
 public:
  explicit SimParameter(std::string file_name);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);
  void WriteToTaveloOutput() const;

  std::uint32_t random_seed = 0;
  std::string model;
  std::string modelMyBPC;
  std::string numerics;
  std::string model_slow_fileName;
  std::string model_fast_fileName;
  std::string xb_model;

 private:
  std::string const file_name;
};

class Simulation {
 public:
  Simulation();
  ~Simulation();
  Simulation(Simulation const&) = delete;
  Simulation& operator=(Simulation const&) = delete;

  /// The time loop, from the reading of "protocol.dat" to its end.
  void run();
  /// What `run` would do. Lets the clock run through the protocol; nothing moves.
  RunPlan_s plan() const;

 private:
  struct Loop;

  void create_models();
  void begin_step(Loop& loop);
  void move(Loop& loop);
  void write_rows(Loop& loop);

  std::unique_ptr<Model> model_slow;
  std::unique_ptr<Model> model_fast;
  std::unique_ptr<Model> model_proteinC;
  std::unique_ptr<MacroModel> macro_model;
  SimParameter parameters;
};

/// Opens the listing and the two convergence files.
void open_listings();

/// Takes the working directory for itself, runs one simulation, closes the files and leaves a
/// record of the run.
void run_program(RunOrigin_s const& origin);
