#pragma once
/// What the program is asked to do on its command line; nothing at all is a run in the working
/// directory.

#include <optional>
#include <string>
#include <vector>

struct CommandLine {
  std::vector<std::string> directories;  ///< to run in; none for the working directory
  std::vector<std::string> options;      ///< the other words, the program's name first
  std::optional<std::string> scheme;     ///< a kinetic scheme to tell, in place of any run
  unsigned at_a_time = 1;                ///< runs that go on together
  bool is_check = false;                 ///< tell what would run, and run nothing
  bool is_strict = false;                ///< refuse missing parameter files
  bool is_quiet = false;                 ///< nothing on standard output
};

/// Takes the arguments apart. A "-" among the directories stands for those on standard input, one
/// a line. Where help or version is asked for it is printed and the program ends; what isn't known
/// ends it with one line on standard error and exit status 2.
CommandLine read_command_line(int argc, char** argv, std::string const& version);
