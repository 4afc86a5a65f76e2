#pragma once
/// Keeps a working directory for one run at a time.

/// Holds the directory while it lives. A second program that starts in the directory meanwhile ends
/// at once with a message, before it touches any file: two runs would mix their rows.
class RunDirectoryLock {
 public:
  /// `listing` is the file whose lock stands for the directory; it is created, not emptied.
  explicit RunDirectoryLock(char const* listing);
  ~RunDirectoryLock();
  RunDirectoryLock(RunDirectoryLock const&) = delete;
  RunDirectoryLock& operator=(RunDirectoryLock const&) = delete;

 private:
  int const descriptor;
};

/// Raises the number of files that may be open to what the system allows: every regulated filament
/// keeps one.
void raise_open_file_limit();
