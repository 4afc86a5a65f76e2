#pragma once
/// Input files: read as a whole, and known to the record of the run by their SHA-256.

#include <optional>
#include <string>

/// The text of an input file, noted among the run's inputs; nothing, with the reason in `errno`,
/// if it can't be read.
std::optional<std::string> read_input(std::string const& name);

/// Notes an input whose text is known already. A file that is read again stays as it was first.
void note_input(std::string const& name, std::string const& text);
