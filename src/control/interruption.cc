#include "control/interruption.h"

#include <unistd.h>

#include <csignal>
#include <string>

#include "base/diagnostics.h"
#include "base/run_state.h"

namespace {

std::sig_atomic_t volatile caught_signal = 0;

/// A call that begins to wait right behind a signal is interrupted by the alarm.
void note_signal(int signal) {
  if (signal != SIGALRM) caught_signal = signal;
  alarm(1);
}

void set_handlers(int flags) {
  for (int const signal : {SIGINT, SIGTERM, SIGALRM}) {
    struct sigaction before;
    struct sigaction noting = {};
    noting.sa_handler = note_signal;
    noting.sa_flags = flags;
    sigaction(signal, &noting, &before);
    // A run that was started with the signal ignored, in the background of a script say, stays so.
    if (before.sa_handler == SIG_IGN) sigaction(signal, &before, nullptr);
  }
}

}  // namespace

void catch_interruptions() { set_handlers(0); }

void finish_calls() { set_handlers(SA_RESTART); }

void stop_if_interrupted() {
  if (caught_signal == 0) return;
  stop(std::string("interrupted by ") + (caught_signal == SIGINT ? "SIGINT" : "SIGTERM") +
       " at time " + shown(timeForAll) + ", after step " + std::to_string(t_timeStep));
}
