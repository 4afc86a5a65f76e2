#include "control/interruption.h"

#include <csignal>
#include <string>

#include "control/diagnostics.h"
#include "control/run_state.h"

namespace {

std::sig_atomic_t volatile caught_signal = 0;

void note_signal(int signal) { caught_signal = signal; }

}  // namespace

void catch_interruptions() {
  for (int const signal : {SIGINT, SIGTERM}) std::signal(signal, note_signal);
}

void stop_if_interrupted() {
  if (caught_signal == 0) return;
  stop(std::string("interrupted by ") + (caught_signal == SIGINT ? "SIGINT" : "SIGTERM") +
       " at time " + std::to_string(timeForAll) + ", after step " + std::to_string(t_timeStep));
}
