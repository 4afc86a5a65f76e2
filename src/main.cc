#include <deal.II/base/exceptions.h>
#include <deal.II/base/multithread_info.h>

#include <new>
#include <optional>

#include "base/diagnostics.h"
#include "base/run_state.h"
#include "control/check_program.h"
#include "control/command_line.h"
#include "control/process_start.h"
#include "control/run_directories.h"
#include "control/run_record.h"
#include "control/scheme_program.h"
#include "control/silent_output.h"
#include "control/simulation.h"

/// Written at each build, see cmake/WriteVersionText.cmake.
char const* version_text();

namespace {

/// `directory` is the one that the run is in, empty for the one that the program was started in.
void carry_out(CommandLine const& command, std::string const& directory) {
  std::optional<SilentOutput> silent;
  if (command.is_quiet) silent.emplace();
  refuses_missing_parameters = command.is_strict;
  if (command.is_check) {
    check_program();
  } else {
    std::vector<std::string> words = command.options;
    if (!directory.empty()) words.push_back(directory);
    run_program({words, version_text()});
  }
}

}  // namespace

int main(int argc, char** argv) {
  fill_standard_streams();
  outlive_failed_writes();
  dealii::MultithreadInfo::set_thread_limit(1);
  dealii::deal_II_exceptions::disable_abort_on_exception();
  try {
    CommandLine const command = read_command_line(argc, argv, version_text());
    if (command.scheme) {
      scheme_program(*command.scheme);
      return 0;
    }
    if (!command.directories.empty()) {
      return run_directories(command.directories, command.at_a_time,
                             [&command](auto const& directory) { carry_out(command, directory); });
    }
    carry_out(command, "");
  } catch (std::bad_alloc const&) {
    stop("there is not enough memory for a lattice of this size");
  } catch (std::exception const& exception) {
    stop(std::string("internal error: ") + exception.what());
  }
  return 0;
}
