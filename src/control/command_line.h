#pragma once
/// What the program is asked to do on its command line; nothing at all is a run in the working
/// directory.

#include <string>
#include <vector>

struct CommandLine {
  std::vector<std::string> directories;  ///< to run in; none for the working directory
  unsigned at_a_time = 1;                ///< runs that go on together
};

/// Takes the arguments apart. A "-" among the directories stands for those on standard input, one
/// a line. What isn't known ends the program with one line on standard error and exit status 2.
CommandLine read_command_line(int argc, char** argv);
