#pragma once
/// The process-wide state of a run: its clock, its counters and the files that several components
/// write. Everything global stands here, except `Protocol::TimeOffset`.

#include <cstdio>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// "TaveloOutput.lst": open from the start of the program until the time loop begins.
extern FILE* fOutputFile;
/// "IterationNorms.csv": open during the whole run.
extern FILE* fIterationNorms;
/// "ListingConvergence.dat": open during the whole run.
extern FILE* fConvergenceListing;

/// Number of the current time step; the first step is 1.
extern int t_timeStep;
/// Current simulation time, in time units of the rates; models whose rates follow a course read it.
extern double timeForAll;
/// Length of the current time step.
extern double currentTimeStep;
/// Begins a time step of that length; all three follow.
void advance_clock(double step);

/// Whether a missing parameter file ends the run, instead of being written with the default values.
extern bool refuses_missing_parameters;
/// Whether outputs go nowhere: they are opened and written as ever, but leave no file.
extern bool discards_outputs;

/// Heads that have attached and detached since the start of the run.
extern int numberOfAtachments;
extern int numberOfDetachments;

/// What a run has read, written, told and met so far: its record tells it (control/run_record).
struct RunFacts_s {
  std::optional<int> seed;                    ///< none before it is read
  std::map<std::string, std::string> inputs;  ///< SHA-256 by name
  std::vector<std::string> defaults;          ///< parameter files that were missing
  std::set<std::string> outputs;
  std::vector<std::string> messages;  ///< on standard error
  long passes = 0;                    ///< of the iterations to equilibrium

  /// Draws whose probabilities exceeded 1.
  struct Excess_s {
    std::map<std::string, long> draws;  ///< by what was drawn
    long steps = 0;                     ///< in which there was one
    int last_step = 0;
    double first_time = 0.0;
    double largest_sum = 0.0;
  } excess;
};
extern RunFacts_s run_facts;
