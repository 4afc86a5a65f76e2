#include "control/simulation.h"

#include <cmath>
#include <cstdio>

#include "base/diagnostics.h"
#include "base/output_file.h"
#include "base/parameter_file.h"
#include "base/protocol.h"
#include "base/run_state.h"
#include "base/uniform_variate.h"
#include "control/interruption.h"
#include "control/run_directory.h"
#include "control/run_record.h"
#include "control/writing_times.h"
#include "elastic/create_law.h"
#include "kinetics/model.h"
#include "kinetics/rate_tools.h"

namespace {

constexpr char const* simulation_file = "simulation.prm";
constexpr char const* listing_name = "TaveloOutput.lst";
constexpr char const* norms_name = "IterationNorms.csv";
constexpr char const* convergence_name = "ListingConvergence.dat";
constexpr char const* bonds_name = "Kacenja.csv";
constexpr char const* states_name = "cb_states_file.csv";

/// The time of the one dump of all sites.
constexpr double dump_time = 0.7;

/// Steps from which on the number of steps is no longer looked for.
constexpr int most_steps_counted = 10000000;

bool is_time(double wanted) { return std::abs(wanted - timeForAll) < 1e-10; }

}  // namespace

// Parameters

SimParameter::SimParameter(std::string file) : file_name(std::move(file)) {
  load_parameters(*this, file_name);
  WriteToTaveloOutput();
}

void SimParameter::declare_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const global(handler, "global");
  global.declare_text("model", "Huxley");
  global.declare_text("model_slow_fileName", "");
  global.declare_text("model_fast_fileName", "");
  global.declare_selection("modelMyBPC", "HuxleyMyBPC", "HuxleyMyBPC|DukeMyBPC");
  global.declare_selection("xb_model", "ConstantStiffness",
                           "ConstantStiffness|StiffnessFunction|SigmoidalStiffness|"
                           "ThreeLinearForce|TwoPartSigmoidalStiffness");
  global.declare_selection("numerics", "MonteCarlo", "MonteCarlo|Char|Integral|FEM");
  global.declare_integer("random_seed", "0");
}

void SimParameter::get_parameters(dealii::ParameterHandler& handler) {
  ParameterSection const global(handler, "global", file_name);
  model = global.text("model");
  modelMyBPC = global.text("modelMyBPC");
  model_slow_fileName = global.text("model_slow_fileName");
  model_fast_fileName = global.text("model_fast_fileName");
  numerics = global.text("numerics");
  xb_model = global.text("xb_model");
  random_seed = static_cast<std::uint32_t>(global.integer("random_seed"));
  run_facts.seed = static_cast<int>(random_seed);
  if (random_seed != 0) seed_variates(random_seed);
}

void SimParameter::WriteToTaveloOutput() const {
  FILE* const f = fOutputFile;
  std::fprintf(f, "\t*** SIMULATION PARAMETERS ************\n\n");
  std::fprintf(f, "\tModel:\t\t\t%s\n", model.c_str());
  std::fprintf(f, "\tModelSlow_fileName:\t\t\t%s\n", model_slow_fileName.c_str());
  std::fprintf(f, "\tModelFast_fileName:\t\t\t%s\n", model_fast_fileName.c_str());
  std::fprintf(f, "\tModel MyBPC:\t%s\n", modelMyBPC.c_str());
  std::fprintf(f, "\tNumerics model:\t%s\n", numerics.c_str());
  std::fprintf(f, "\tXB Model:\t\t%s\n", xb_model.c_str());
  std::fprintf(f, "\tRandom Seed:\t%d\n\n", static_cast<int>(random_seed));
}

// Construction

Simulation::Simulation() : parameters(simulation_file) {
  require_numbers_of_rand(parameters.random_seed);
  create_models();
  macro_model = create_component<MacroModel>(
      parameters.numerics,
      MacroModelParameter{model_slow.get(), model_fast.get(), model_proteinC.get()},
      simulation_file, "numerics");
}

Simulation::~Simulation() = default;

void Simulation::create_models() {
  ModelParameter_s parameter;
  parameter.xb_model = create_elastic_law(parameters.xb_model, "xb_");
  if (!parameter.xb_model) {
    stop_with_message("No Crossbridge model? ", std::string(simulation_file) + ": xb_model is '" +
                                                    parameters.xb_model +
                                                    "', which has no class here");
  }
  parameter.file_name = parameters.model_fast_fileName;
  model_fast = create_component<Model>(parameters.model, parameter, simulation_file, "model");
  parameter.file_name = parameters.model_slow_fileName;
  model_slow = create_component<Model>(parameters.model, parameter, simulation_file, "model");
  parameter.xb_model = create_passive_law("ConstantStiffness", "proteinC_");
  model_proteinC =
      create_component<Model>(parameters.modelMyBPC, parameter, simulation_file, "modelMyBPC");
  // One warning will do where both kinds of heads have it.
  if (!warn_of_infinite_rate(*model_fast)) warn_of_infinite_rate(*model_slow);
}

// Time loop

/// What the loop keeps from step to step.
struct Simulation::Loop {
  Protocol protocol{"protocol.dat"};
  std::vector<double> writingTimes;
  std::size_t next_writing = 0;
  LatticeTimes lattice_times;
  double lastResponse = 0.0;  ///< force [pN] after a step of length control, else displacement [nm]
  std::ofstream bonds;
  std::ofstream states;
};

void Simulation::run() {
  std::fprintf(fOutputFile, "\t*** MECHANICAL PROTOCOL **************\n\n");
  Loop loop;
  loop.protocol.require_end();
  loop.protocol.WriteToTaveloOutput();
  close_output(fOutputFile, listing_name);
  fOutputFile = nullptr;
  macro_model->check_before_run(loop.protocol.longest_step());
  Protocol::TimeOffset = 0.0;
  loop.writingTimes = read_writing_times();
  loop.lattice_times = LatticeTimes(read_lattice_times());
  loop.bonds = open_output_stream(bonds_name);
  loop.bonds << "Time,Attachment number,Detachment number";
  end_row(loop.bonds, bonds_name);
  loop.states = open_output_stream(states_name);
  loop.states << "Time,State1,State2,State3,State4,State5,State6,State7,State8,State9";
  end_row(loop.states, states_name);
  loop.states << timeForAll << ',';
  macro_model->write_cb_states(loop.states);
  write_run_record();
  if (loop.lattice_times.is_due(timeForAll)) macro_model->write_lattice(timeForAll);

  finish_calls();
  stop_if_interrupted();
  while (true) {
    begin_step(loop);
    move(loop);
    write_rows(loop);
    loop.protocol.refuse_missed_end(timeForAll);
    if (loop.protocol.checkForNewProtocol(timeForAll)) break;
    stop_if_interrupted();
  }
}

RunPlan_s Simulation::plan() const {
  RunPlan_s plan;
  plan.model = parameters.model;
  plan.crossbridge = parameters.xb_model;
  plan.seed = static_cast<int>(parameters.random_seed);
  plan.extent = macro_model->extent();
  plan.snapshots = read_writing_times().size();
  plan.lattice_snapshots = read_lattice_times().size();
  Protocol protocol("protocol.dat");
  protocol.require_end();
  macro_model->check_before_run(protocol.longest_step());
  bool has_ended = false;
  while (!has_ended && t_timeStep < most_steps_counted) {
    advance_clock(protocol.get_dt());
    protocol.prescribed_at(timeForAll, 0.0);
    protocol.refuse_missed_end(timeForAll);
    has_ended = protocol.checkForNewProtocol(timeForAll);
  }
  if (Protocol::TimeOffset != 0.0) plan.count = RunPlan_s::Count::ramp_from_zero;
  if (!has_ended) plan.count = RunPlan_s::Count::unfinished;
  plan.steps = t_timeStep;
  plan.end = timeForAll;
  return plan;
}

void Simulation::begin_step(Loop& loop) {
  advance_clock(loop.protocol.get_dt());
  std::fprintf(fIterationNorms, "Time = %lf\n", timeForAll);
  flush_output(fIterationNorms, norms_name);
  std::fprintf(fConvergenceListing, "Time = %lf\n", timeForAll);
  flush_output(fConvergenceListing, convergence_name);
  std::printf("TStep %i, Time=%lf\n", t_timeStep, timeForAll);
  if (t_timeStep % 100 == 0) flush_output(stdout, "standard output");
}

void Simulation::move(Loop& loop) {
  auto const wanted = loop.protocol.prescribed_at(timeForAll, loop.lastResponse);
  // A row of another mode lets time pass, and nothing moves.
  if (wanted) loop.lastResponse = macro_model->iterate(timeForAll, *wanted);
}

void Simulation::write_rows(Loop& loop) {
  macro_model->writeResults(timeForAll);
  if (loop.next_writing < loop.writingTimes.size() &&
      is_time(loop.writingTimes[loop.next_writing])) {
    macro_model->create_distribution_output(timeForAll);
    ++loop.next_writing;
  }
  if (loop.lattice_times.is_due(timeForAll)) macro_model->write_lattice(timeForAll);
  loop.bonds << timeForAll << ',' << numberOfAtachments << ',' << numberOfDetachments;
  end_row(loop.bonds, bonds_name);
  loop.states << timeForAll << ',';
  macro_model->write_cb_states(loop.states);
  if (is_time(dump_time)) macro_model->printActinSiteStates();
}

void open_listings() {
  raise_open_file_limit();
  fOutputFile = open_output(listing_name, "wt");
  std::fprintf(fOutputFile,
               "\t\t**********************************\n"
               "\t\t********* T A V E L O ************\n"
               "\t\t**********************************\n\n\n");
  fIterationNorms = open_output(norms_name, "wt");
  std::fprintf(fIterationNorms,
               ",MeanSquareError - Displacement,MeanSquareError - Force,"
               "Max CB Error - Dislpacement,Max CB Error - Force\n");
  fConvergenceListing = open_output(convergence_name, "wt");
}

void run_program(RunOrigin_s const& origin) {
  RunDirectoryLock const lock(listing_name);
  // Regulated filaments append to this file; each run starts it anew.
  std::remove("TroponinAngles.csv");
  open_listings();
  begin_run_record(origin);
  catch_interruptions();
  Simulation simulation;
  simulation.run();
  close_output(fIterationNorms, norms_name);
  close_output(fConvergenceListing, convergence_name);
  flush_output(stdout, "standard output");
  end_run_record();
}
