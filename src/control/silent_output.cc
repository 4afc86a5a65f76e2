#include "control/silent_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

SilentOutput::SilentOutput() : original(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)) {
  std::fflush(stdout);
  int const nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nothing, STDOUT_FILENO);
  close(nothing);
}

SilentOutput::~SilentOutput() {
  std::fflush(stdout);
  dup2(original, STDOUT_FILENO);
  close(original);
}
