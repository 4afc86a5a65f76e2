#pragma once
/// The times of the snapshots, from "WritingDistributionSteps.dat".

#include <vector>

/// A heading line, then numbers in ascending order. None, and a word on standard output, if there
/// is no such file.
std::vector<double> read_writing_times();
