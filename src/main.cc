#include <deal.II/base/exceptions.h>
#include <deal.II/base/multithread_info.h>

#include <new>

#include "base/diagnostics.h"
#include "control/command_line.h"
#include "control/run_directories.h"
#include "control/simulation.h"

int main(int argc, char** argv) {
  dealii::MultithreadInfo::set_thread_limit(1);
  dealii::deal_II_exceptions::disable_abort_on_exception();
  try {
    CommandLine const command = read_command_line(argc, argv);
    if (!command.directories.empty()) {
      return run_directories(command.directories, command.at_a_time, run_program);
    }
    run_program();
  } catch (std::bad_alloc const&) {
    stop("there is not enough memory for a lattice of this size");
  } catch (std::exception const& exception) {
    stop(std::string("internal error: ") + exception.what());
  }
  return 0;
}
