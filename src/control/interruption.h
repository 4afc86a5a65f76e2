#pragma once
/// Orderly end of a run that the user or the system interrupts.

/// From now on SIGINT and SIGTERM are noted instead of ending the process on the spot. They end the
/// waiting for an input, a pipe that says nothing say.
void catch_interruptions();

/// From now on a signal cuts no call short, such as the writing of a row.
void finish_calls();

/// Ends the run, between two filaments that are built or two time steps, when a signal has come:
/// with the time reached on standard error and exit status 1. All rows written so far are whole.
void stop_if_interrupted();
