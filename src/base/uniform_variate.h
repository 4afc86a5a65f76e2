#pragma once
/// The one source of chance: the numbers of the C library's `rand`, from a state of our own.
///
/// Every stochastic decision takes its numbers from here, in the order in which the decisions are
/// reached; that order is part of a run's result. `rand` itself takes a lock for every number,
/// which costs five times the number (12.8 against 2.4 ns).

/// A uniform variate in [0, 1], both ends included.
double uniform_variate();

/// Starts the stream anew, as `srand` does. Before any seed it stands where `rand` stands in a
/// program that sets none.
void seed_variates(unsigned seed);

/// Ends the run if a stream of this seed, 0 for none, does not begin with the numbers of `rand`.
/// Draws from `rand`, and nothing from the stream.
void require_numbers_of_rand(unsigned seed);
