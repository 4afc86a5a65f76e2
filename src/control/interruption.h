#pragma once
/// Orderly end of a run that the user or the system interrupts.

/// From now on SIGINT and SIGTERM are noted instead of ending the process on the spot.
void catch_interruptions();

/// Ends the run, between two time steps, when a signal has come: with the time reached on standard
/// error and exit status 1. All rows written so far are whole.
void stop_if_interrupted();
