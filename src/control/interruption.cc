#include "control/interruption.h"

#include <csignal>
#include <string>

#include "base/diagnostics.h"
#include "base/run_state.h"

namespace {

std::sig_atomic_t volatile caught_signal = 0;

void note_signal(int signal) { caught_signal = signal; }

}  // namespace

void catch_interruptions() {
  for (int const signal : {SIGINT, SIGTERM}) {
    // A run that was started with the signal ignored, in the background of a script say, stays so.
    if (std::signal(signal, note_signal) == SIG_IGN) std::signal(signal, SIG_IGN);
  }
}

void stop_if_interrupted() {
  if (caught_signal == 0) return;
  stop(std::string("interrupted by ") + (caught_signal == SIGINT ? "SIGINT" : "SIGTERM") +
       " at time " + shown(timeForAll) + ", after step " + std::to_string(t_timeStep));
}
