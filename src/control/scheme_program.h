#pragma once
/// A kinetic scheme, told without running anything.

#include <string>

/// Reads and checks a scheme as a run in the working directory would, on the crossbridge law that
/// "simulation.prm" names there or, without that file, on ConstantStiffness. Prints it with its
/// rates over the strain as JSON; leaves no file.
void scheme_program(std::string const& file);
