#pragma once
/// The one source of chance: the C library's `rand` stream.
///
/// Every stochastic decision takes its numbers from here, in the order in which the decisions are
/// reached; that order is part of a run's result.

#include <cstdlib>

static_assert(RAND_MAX == 2147483647, "the variate is scaled to glibc's rand");

/// A uniform variate in [0, 1], both ends included.
inline double uniform_variate() { return std::rand() / 2147483647.0; }
