#pragma once
/// The process-wide state of a run: its clock, its counters and the files that several components
/// write. Everything global stands here, except `Protocol::TimeOffset`.

#include <cstdio>
#include <string>

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

/// The clock as messages name it: " at time 0.5, step 7".
std::string at_step();

/// Whether a missing parameter file ends the run, instead of being written with the default values.
extern bool refuses_missing_parameters;
/// Whether outputs go nowhere: they are opened and written as ever, but leave no file.
extern bool discards_outputs;

/// Heads that have attached and detached since the start of the run.
extern int numberOfAtachments;
extern int numberOfDetachments;
