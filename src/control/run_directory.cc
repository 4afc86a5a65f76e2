#include "control/run_directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "control/diagnostics.h"

RunDirectoryLock::RunDirectoryLock(char const* listing)
    : descriptor(open(listing, O_WRONLY | O_CREAT | O_CLOEXEC, 0666)) {
  // A listing that can't be opened is reported where it is opened for writing.
  if (descriptor < 0 || flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return;
  stop(std::string(listing) + ": another run is going on in this directory");
}

RunDirectoryLock::~RunDirectoryLock() {
  if (descriptor >= 0) close(descriptor);
}
