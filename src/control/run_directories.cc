#include "control/run_directories.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <utility>

#include "base/diagnostics.h"
#include "control/labelled_lines.h"
#include "control/run_directory.h"

namespace {

[[noreturn]] void stop_over(std::string const& action) {
  stop(action + ": " + std::strerror(errno));
}

struct Pipe {
  Descriptor reading;
  Descriptor writing;
};

Pipe make_pipe() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) stop_over("no pipe to a run");
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

struct Child {
  std::string name;
  pid_t pid;
  std::array<LabelledLines, 2> streams;

  bool has_ended() const { return streams[0].has_ended() && streams[1].has_ended(); }
};

/// SIGINT and SIGTERM as something that can be waited for together with the children's lines. A
/// signal that this process was started to ignore stays ignored.
class Signals {
 public:
  Signals() {
    sigset_t caught;
    sigemptyset(&caught);
    for (int const signal : {SIGINT, SIGTERM}) {
      struct sigaction action;
      sigaction(signal, nullptr, &action);
      if (action.sa_handler != SIG_IGN) sigaddset(&caught, signal);
    }
    sigprocmask(SIG_BLOCK, &caught, &mask_before);
    source = Descriptor(signalfd(-1, &caught, SFD_CLOEXEC));
    if (!source.is_open()) stop_over("signals can't be waited for");
  }

  int descriptor() const { return source.get(); }
  /// The signal that has come.
  int take() const {
    signalfd_siginfo info = {};
    if (read(source.get(), &info, sizeof info) != sizeof info) return 0;
    return static_cast<int>(info.ssi_signo);
  }
  /// What a child starts with: the signals as this process found them.
  void restore() {
    source = Descriptor();
    sigprocmask(SIG_SETMASK, &mask_before, nullptr);
  }

 private:
  sigset_t mask_before;
  Descriptor source;
};

using DirectoryRun = std::function<void(std::string const&)>;

class DirectoryRuns {
 public:
  explicit DirectoryRuns(DirectoryRun const& action) : run(action) {}

  /// Returns the exit status.
  int run_all(std::vector<std::string> const& directories, unsigned at_a_time);

 private:
  void start(std::string const& directory);
  [[noreturn]] void be_child(std::string const& directory, Pipe& out, Pipe& err);
  /// Waits until a child has something to say or has ended, or a signal has come.
  void attend();
  void hand_on(int signal);
  void finish(Child const& child);

  DirectoryRun const& run;
  Signals signals;
  std::vector<Child> children;
  int caught_signal = 0;
  bool has_failed = false;
};

int DirectoryRuns::run_all(std::vector<std::string> const& directories, unsigned at_a_time) {
  std::size_t next = 0;
  while (true) {
    while (caught_signal == 0 && children.size() < at_a_time && next < directories.size()) {
      start(directories[next++]);
    }
    if (children.empty()) break;
    attend();
  }
  std::size_t const n = directories.size();
  if (next == n) return has_failed ? 1 : 0;
  tell(std::string("interrupted by SIG") + sigabbrev_np(caught_signal) + "; " +
       std::to_string(n - next) + " of " + std::to_string(n) + " directories were not run");
  return 1;
}

void DirectoryRuns::start(std::string const& directory) {
  Pipe out = make_pipe();
  Pipe err = make_pipe();
  pid_t const pid = fork();
  if (pid < 0) stop_over("no process for a run");
  if (pid == 0) be_child(directory, out, err);
  std::string const name = single_line(directory);
  children.push_back({name,
                      pid,
                      {LabelledLines(std::move(out.reading), STDOUT_FILENO, name),
                       LabelledLines(std::move(err.reading), STDERR_FILENO, name)}});
}

void DirectoryRuns::be_child(std::string const& directory, Pipe& out, Pipe& err) {
  // Nobody would stop a run whose parent was killed.
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  // A list of directories on standard input is the parent's; a run reads nothing there.
  Descriptor const nothing(open("/dev/null", O_RDONLY | O_CLOEXEC));
  dup2(nothing.get(), STDIN_FILENO);
  dup2(out.writing.get(), STDOUT_FILENO);
  dup2(err.writing.get(), STDERR_FILENO);
  for (Pipe* const pipe : {&out, &err}) *pipe = {};
  children.clear();
  signals.restore();
  if (chdir(directory.c_str()) != 0) stop_over("the directory can't be entered");
  run(directory);
  // The libraries' own leave-taking costs more than a short run.
  std::fflush(nullptr);
  _exit(0);
}

void DirectoryRuns::attend() {
  std::vector<pollfd> watched = {{signals.descriptor(), POLLIN, 0}};
  for (Child const& child : children) {
    for (LabelledLines const& lines : child.streams) {
      watched.push_back({lines.descriptor(), POLLIN, 0});
    }
  }
  if (poll(watched.data(), watched.size(), -1) < 0) return;
  if (watched[0].revents != 0) hand_on(signals.take());
  std::size_t next = 1;
  for (Child& child : children) {
    for (LabelledLines& lines : child.streams) {
      if (watched[next++].revents != 0) lines.pass_on();
    }
  }
  for (Child const& child : children) {
    if (child.has_ended()) finish(child);
  }
  auto const has_ended = [](Child const& child) { return child.has_ended(); };
  children.erase(std::remove_if(children.begin(), children.end(), has_ended), children.end());
}

void DirectoryRuns::hand_on(int signal) {
  caught_signal = signal;
  for (Child const& child : children) kill(child.pid, signal);
}

void DirectoryRuns::finish(Child const& child) {
  int status = 0;
  while (waitpid(child.pid, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
  has_failed = true;
  std::string const end = WIFSIGNALED(status)
                              ? std::string(": ") + strsignal(WTERMSIG(status))
                              : " with exit status " + std::to_string(WEXITSTATUS(status));
  tell(child.name + ": failed" + end);
}

}  // namespace

int run_directories(std::vector<std::string> const& directories, unsigned at_a_time,
                    std::function<void(std::string const&)> const& run) {
  raise_open_file_limit();
  return DirectoryRuns(run).run_all(directories, at_a_time);
}
