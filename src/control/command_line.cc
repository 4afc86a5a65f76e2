#include "control/command_line.h"

#include <getopt.h>

#include <cstdlib>
#include <iostream>

#include "base/diagnostics.h"

namespace {

constexpr unsigned most_at_a_time = 1000;

[[noreturn]] void refuse_usage(std::string const& what) {
  tell(what + "; the usage is: tavelo [-j N] [DIR ...]");
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

CommandLine read_command_line(int argc, char** argv) {
  CommandLine command;
  option const long_options[] = {{nullptr, 0, nullptr, 0}};
  opterr = 0;
  for (int c; (c = getopt_long(argc, argv, ":j:", long_options, nullptr)) != -1;) {
    switch (c) {
      case 'j':
        command.at_a_time = read_at_a_time(optarg);
        break;
      case ':':
        refuse_usage(std::string("-") + static_cast<char>(optopt) + " lacks its value");
      default:
        refuse_usage("unknown option '" +
                     (optopt ? std::string("-") + static_cast<char>(optopt) : argv[optind - 1]) +
                     "'");
    }
  }
  for (int i = optind; i < argc; ++i) {
    std::string const word = argv[i];
    if (word == "-") {
      add_from_standard_input(command.directories);
    } else {
      command.directories.push_back(word);
    }
  }
  return command;
}
