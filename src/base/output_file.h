#pragma once
/// Output files that tell when they can't be written.
///
/// A file that can't be opened and a row that doesn't reach the disk (disk full, say) end the run
/// with the file's name and the system's reason; rows flushed before that stay. Where `run_state`
/// says that outputs are discarded, the directory is left alone.

#include <cstdio>
#include <fstream>
#include <string>

/// Owner of one C output file.
class OutputFile {
 public:
  OutputFile() = default;
  /// Opens the file with a mode of `fopen`, or ends the run.
  OutputFile(std::string const& name, char const* mode);
  /// Opens the file, or leaves `get` null: for files on the side, for want of which no run ends.
  static OutputFile if_possible(std::string const& name, char const* mode);
  ~OutputFile();
  OutputFile(OutputFile&& other) noexcept;
  OutputFile& operator=(OutputFile&& other) noexcept;

  FILE* get() const { return file; }
  /// Brings everything written so far to the disk, or ends the run.
  void flush() const;

 private:
  FILE* file = nullptr;
  std::string name;
};

/// An output file that is there under its name only when it is whole: written as NAME.part, then
/// renamed. A run that is killed in between leaves what was there before.
class WholeFile {
 public:
  explicit WholeFile(std::string const& name);
  FILE* get() const { return part.get(); }
  /// Gives the file its name, or ends the run.
  void complete();

 private:
  std::string name;
  std::string part_name;
  OutputFile part;
};

/// `fopen` that ends the run when it fails.
FILE* open_output(std::string const& name, char const* mode);
/// `fflush` that ends the run when anything since the opening was not written.
void flush_output(FILE* file, std::string const& name);
/// `fclose` with the same check.
void close_output(FILE* file, std::string const& name);

/// Opens a text stream, truncating the file, or ends the run.
std::ofstream open_output_stream(std::string const& name);
/// Flushes a stream, and ends the run when anything was not written.
void flush_output(std::ofstream& stream, std::string const& name);
/// Ends a line of a stream and flushes it, with the same check.
void end_row(std::ofstream& stream, std::string const& name);
