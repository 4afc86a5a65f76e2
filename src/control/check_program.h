#pragma once
/// What the input of a directory would run, told without running it.

/// Reads and builds all that a run in the working directory would, runs no step and leaves no file;
/// prints model, lattice, heads, steps and the time to expect. Bad input ends it as it would end
/// the run.
void check_program();
