#include "control/command_line.h"

#include <getopt.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "base/diagnostics.h"
#include "base/output_file.h"

namespace {

constexpr unsigned most_at_a_time = 1000;

constexpr char const* help =
    R"(Usage: tavelo [--strict] [-q]                    run in the working directory
       tavelo [--strict] [-q] [-j N] DIR ...     run in each directory
       tavelo --check [--strict] [-q] [DIR ...]  tell what would run
       tavelo --scheme FILE                      check a kinetic scheme

Simulates the contraction of striated muscle: reads text files in a directory
and writes its results there.

  DIR        a directory, or - for those on standard input, one a line; what
             their runs print bears the directory's name
  -j N       up to N directories at a time (1)
  -q         print nothing on standard output
  --strict   refuse missing parameter files, which otherwise are written with
             the default values
  --check    read and build everything, run no step, leave no file; tell model,
             lattice, heads, steps and the expected time
  --scheme FILE
             check a kinetic scheme and print it with its rates over the strain
             as JSON, which tavelo-scheme draws
  --help     print this
  --version  print version, commit, compiler and version of deal.II

Input:  simulation.prm      models and random seed
        numeric_mc.prm      lattice and its size, regulation
        geom_*.prm          dimensions of the lattice
        model_*.prm, xb_*.prm, see_*.prm, titin_*.prm, proteinC_*.prm
                            rates and elastic laws
        protocol.dat        the experiment: start, step, mode, type, parameters
        ca_protocol.dat     the course that drives regulation
        WritingDistributionSteps.dat
                            times of snapshots (optional)
        WritingLatticeSteps.dat
                            times of snapshots of the whole lattice (optional)
Output: run.json            the record of the run
        result.csv          force, displacements, bound heads per step
        cb_states_file.csv  heads by state
        TaveloOutput.lst    all parameters in force, and many more

Examples:
  cd examples/isometric && tavelo
  tavelo --check --strict run
  tavelo -j 4 -q study/*
  find study -name protocol.dat -printf '%h\n' | tavelo -q -

Exit status: 0 after finished runs; 1 after bad input, a file that can't be
written, a step without equilibrium, SIGINT or SIGTERM, in any of the
directories; 2 after an argument that isn't known.
)";

[[noreturn]] void print_and_end(std::string const& text) {
  std::fputs(text.c_str(), stdout);
  flush_output(stdout, "standard output");
  std::exit(0);
}

[[noreturn]] void refuse_usage(std::string const& what) {
  tell(what + "; tavelo --help tells what there is");
  std::exit(2);
}

unsigned read_at_a_time(std::string const& word) {
  bool const is_number = word.find_first_not_of("0123456789") == std::string::npos;
  unsigned long const number = is_number && word.size() < 9 ? std::stoul("0" + word) : 0;
  if (number < 1 || number > most_at_a_time) {
    refuse_usage("-j is '" + word + "'; accepted: 1 to " + std::to_string(most_at_a_time));
  }
  return static_cast<unsigned>(number);
}

void add_from_standard_input(std::vector<std::string>& directories) {
  std::size_t const n_before = directories.size();
  for (std::string line; std::getline(std::cin, line);) {
    if (!line.empty()) directories.push_back(line);
  }
  if (directories.size() == n_before) stop("standard input names no directory");
}

}  // namespace

CommandLine read_command_line(int argc, char** argv, std::string const& version) {
  enum LongOption { print_help = 256, print_version, check, strict, scheme };
  option const long_options[] = {{"help", no_argument, nullptr, print_help},
                                 {"version", no_argument, nullptr, print_version},
                                 {"check", no_argument, nullptr, check},
                                 {"strict", no_argument, nullptr, strict},
                                 {"scheme", required_argument, nullptr, scheme},
                                 {nullptr, 0, nullptr, 0}};
  CommandLine command;
  opterr = 0;
  for (int c; (c = getopt_long(argc, argv, ":j:q", long_options, nullptr)) != -1;) {
    std::string const short_option = std::string("-") + static_cast<char>(optopt);
    if (c == print_help) print_and_end(help);
    if (c == print_version) print_and_end(version);
    if (c == ':') {
      bool const is_short = optopt < 256;
      refuse_usage((is_short ? short_option : std::string(argv[optind - 1])) + " lacks its value");
    }
    if (c == '?') {
      bool const is_short = optopt != 0 && optopt < 256;
      refuse_usage("unknown option '" + (is_short ? short_option : argv[optind - 1]) + "'");
    }
    if (c == 'j') command.at_a_time = read_at_a_time(optarg);
    if (c == 'q') command.is_quiet = true;
    if (c == check) command.is_check = true;
    if (c == scheme) command.scheme = optarg;
    if (c == strict) command.is_strict = true;
  }
  // The options stand first now, whatever the order they were given in.
  command.options.assign(argv, argv + optind);
  for (int i = optind; i < argc; ++i) {
    std::string const word = argv[i];
    if (word == "-") {
      add_from_standard_input(command.directories);
    } else {
      command.directories.push_back(word);
    }
  }
  if (command.scheme && !command.directories.empty()) {
    refuse_usage("--scheme takes one file, and no directory such as '" + command.directories[0] +
                 "'");
  }
  return command;
}
