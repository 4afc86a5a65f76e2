#pragma once
/// "run.json": what a run is, what it has read and written, and how it ended.
///
/// The record is written when the run begins, before its first step and when it ends. Each time it
/// is written beside and then renamed, so that nobody finds half of it. docs/outputs.md lists what
/// it holds; most of that is collected in `run_facts`.

#include <string>
#include <vector>

/// Where a run comes from.
struct RunOrigin_s {
  std::vector<std::string> command;  ///< the words that it was started with
  std::string version;               ///< of the program, a line "name value" for each of its parts
};

/// Begins the record of the process's one run. From now on an end by `exit` completes it, with the
/// exit status.
void begin_run_record(RunOrigin_s const& origin);

/// Writes the record, if one was begun, as far as it is known.
void write_run_record();

/// Completes the record of a finished run.
void end_run_record();
