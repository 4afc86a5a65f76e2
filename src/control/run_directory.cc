#include "control/run_directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "base/diagnostics.h"

RunDirectoryLock::RunDirectoryLock(char const* listing)
    : descriptor(open(listing, O_WRONLY | O_CREAT | O_CLOEXEC, 0666)) {
  // A listing that can't be opened is reported where it is opened for writing; one that is no file,
  // such as /dev/null, stands for no directory.
  struct stat status;
  if (descriptor < 0 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return;
  if (flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return;
  stop(std::string(listing) + ": another run is going on in this directory");
}

RunDirectoryLock::~RunDirectoryLock() {
  if (descriptor >= 0) close(descriptor);
}

void raise_open_file_limit() {
  rlimit limit;
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}
