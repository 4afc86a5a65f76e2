#include "base/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <set>
#include <utility>

#include "base/diagnostics.h"
#include "base/run_state.h"

namespace {

/// Where an output goes.
char const* place_of(std::string const& name) {
  return discards_outputs ? "/dev/null" : name.c_str();
}

[[noreturn]] void stop_unwritable(std::string const& name) {
  stop(name + ": can't be written: " + std::strerror(errno));
}

/// What an exit has to see to.
struct OpenFiles {
  std::map<FILE*, std::string> names;
  std::set<std::string> unfinished;  ///< places of files that have no name of their own yet
};

OpenFiles& open_files();

bool reaches_disk(FILE* file) { return std::fflush(file) == 0 && std::ferror(file) == 0; }

/// Cuts what stands behind the last line end off a file.
void cut_back(std::string const& name) {
  int const file = open(place_of(name), O_RDWR | O_CLOEXEC | O_NONBLOCK);
  struct stat status;
  if (file >= 0 && fstat(file, &status) == 0 && S_ISREG(status.st_mode)) {
    off_t end = status.st_size;
    for (char last = 0; end > 0 && pread(file, &last, 1, end - 1) == 1 && last != '\n';) --end;
    if (end < status.st_size && ftruncate(file, end) != 0) warn(name + ": ends within a row");
  }
  if (file >= 0) close(file);
}

/// What files still hold in memory may reach a full disk in part only.
void settle_files() {
  for (auto const& [file, name] : open_files().names) {
    if (!reaches_disk(file)) cut_back(name);
  }
  for (std::string const& place : open_files().unfinished) std::remove(place.c_str());
}

OpenFiles& open_files() {
  static OpenFiles files;
  [[maybe_unused]] static int const is_registered = std::atexit(settle_files);
  return files;
}

FILE* open_file(std::string const& name, char const* mode) {
  FILE* const file = std::fopen(place_of(name), mode);
  if (file) open_files().names[file] = name;
  return file;
}

int close_file(FILE* file) {
  open_files().names.erase(file);
  return std::fclose(file);
}

/// A write to `name` has failed.
[[noreturn]] void stop_unwritten(std::string const& name) {
  int const reason = errno;
  cut_back(name);
  errno = reason;
  stop_unwritable(name);
}

/// What isn't there yet, or is a file of its own.
bool can_be_replaced(std::string const& name) {
  std::error_code error;
  auto const type = std::filesystem::symlink_status(name, error).type();
  return type == std::filesystem::file_type::not_found ||
         type == std::filesystem::file_type::regular;
}

}  // namespace

OutputFile::OutputFile(std::string const& file_name, char const* mode)
    : file(open_output(file_name, mode)), name(file_name) {}

OutputFile OutputFile::if_possible(std::string const& file_name, char const* mode) {
  OutputFile output;
  output.file = open_file(file_name, mode);
  if (output.file) run_facts.outputs.insert(file_name);
  output.name = file_name;
  return output;
}

OutputFile::~OutputFile() {
  if (file) close_file(file);
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : file(std::exchange(other.file, nullptr)), name(std::move(other.name)) {}

OutputFile& OutputFile::operator=(OutputFile&& other) noexcept {
  std::swap(file, other.file);
  std::swap(name, other.name);
  return *this;
}

void OutputFile::flush() const { flush_output(file, name); }

WholeFile::WholeFile(std::string const& file_name)
    : name(file_name),
      place(can_be_replaced(name) ? name + ".part" : name),
      file(std::fopen(place_of(place), "wt")) {
  if (!file) stop_unwritable(name);
  if (place != name && !discards_outputs) open_files().unfinished.insert(place);
}

WholeFile::~WholeFile() {
  if (file) std::fclose(file);
}

void WholeFile::finish() {
  bool const is_whole = reaches_disk(file);
  bool const is_closed = std::fclose(std::exchange(file, nullptr)) == 0;
  if (!is_whole || !is_closed) stop_unwritten(name);
  bool const is_moved = open_files().unfinished.count(place) > 0;
  if (is_moved && std::rename(place.c_str(), name.c_str()) != 0) stop_unwritable(name);
  open_files().unfinished.erase(place);
  run_facts.outputs.insert(name);
}

FILE* open_output(std::string const& name, char const* mode) {
  FILE* const file = open_file(name, mode);
  if (!file) stop_unwritable(name);
  run_facts.outputs.insert(name);
  return file;
}

void flush_output(FILE* file, std::string const& name) {
  if (!reaches_disk(file)) stop_unwritten(name);
}

void close_output(FILE* file, std::string const& name) {
  flush_output(file, name);
  if (close_file(file) != 0) stop_unwritten(name);
}

std::ofstream open_output_stream(std::string const& name) {
  std::ofstream stream(place_of(name));
  if (!stream) stop_unwritable(name);
  run_facts.outputs.insert(name);
  return stream;
}

void flush_output(std::ofstream& stream, std::string const& name) {
  stream.flush();
  if (!stream) stop_unwritten(name);
}

void end_row(std::ofstream& stream, std::string const& name) {
  stream << '\n';
  flush_output(stream, name);
}
