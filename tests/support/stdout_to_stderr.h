#pragma once
/// For the statement of a death test: what goes to standard output counts as standard error, which
/// is all that such a test can match.

#include <unistd.h>

#include <cstdio>

inline void stdout_to_stderr() {
  std::fflush(stdout);
  dup2(STDERR_FILENO, STDOUT_FILENO);
}
