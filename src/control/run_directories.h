#pragma once
/// Runs in many directories, each in a child of this process.
///
/// Starting the program is nearly all dynamic linking (0.35 s); a child has that behind it when it
/// is forked, and finds everything else as a program finds it that starts in its directory.

#include <functional>
#include <string>
#include <vector>

/// Lets a child per directory go there and `run` it, so many at a time. What the children write to
/// standard output and standard error is passed on in whole lines that bear the directory's name.
/// A child that fails is told on standard error and the others go on; SIGINT and SIGTERM are handed
/// on to all children, and no further one is started. Returns the exit status: 1 if a child failed
/// or was not started, else 0.
int run_directories(std::vector<std::string> const& directories, unsigned at_a_time,
                    std::function<void(std::string const& directory)> const& run);
