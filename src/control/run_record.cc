#include "control/run_record.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>

#include "base/diagnostics.h"
#include "base/run_state.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr char const* record_name = "run.json";
constexpr char const* unfinished_name = "run.json.part";

/// Grows by one when a key changes its meaning.
constexpr int format = 1;

/// The time of day as "2026-11-23T16:32:13.042Z".
std::string now() {
  using namespace std::chrono;
  auto const since_epoch = duration_cast<milliseconds>(system_clock::now().time_since_epoch());
  std::time_t const seconds = since_epoch.count() / 1000;
  std::tm utc;
  char text[32];
  std::size_t const n = std::strftime(text, sizeof text, "%FT%T", gmtime_r(&seconds, &utc));
  std::snprintf(text + n, sizeof text - n, ".%03dZ", static_cast<int>(since_epoch.count() % 1000));
  return text;
}

template <class T>
Json or_null(std::optional<T> const& value) {
  return value ? Json(*value) : Json();
}

Json by_first_word(std::string const& text) {
  Json parts = Json::object();
  std::istringstream lines(text);
  for (std::string name, value; lines >> name >> std::ws && std::getline(lines, value);) {
    parts[name] = value;
  }
  return parts;
}

Json shown(RunFacts_s::Excess_s const& excess) {
  bool const is_none = excess.draws.empty();
  return {{"draws", Json(excess.draws)},
          {"steps", excess.steps},
          {"first_time", is_none ? Json() : Json(excess.first_time)},
          {"largest_sum", is_none ? Json() : Json(excess.largest_sum)}};
}

class Record {
 public:
  explicit Record(RunOrigin_s run_origin) : origin(std::move(run_origin)), started(now()) {}

  void end(int status) {
    ended = now();
    exit_status = status;
  }
  bool has_ended() const { return ended.has_value(); }
  /// Whether the record could be written; if not, the reason is in `errno`.
  bool write() const;

 private:
  Json contents() const;

  RunOrigin_s const origin;
  std::string const started;
  std::optional<std::string> ended;
  std::optional<int> exit_status;
};

Json Record::contents() const {
  return {{"format", format},
          {"version", by_first_word(origin.version)},
          {"command", origin.command},
          {"seed", or_null(run_facts.seed)},
          {"started", started},
          {"ended", or_null(ended)},
          {"exit_status", or_null(exit_status)},
          {"time", timeForAll},
          {"steps", t_timeStep},
          {"passes", run_facts.passes},
          {"probabilities_above_1", shown(run_facts.excess)},
          {"inputs", Json(run_facts.inputs)},
          {"defaults", run_facts.defaults},
          {"outputs", run_facts.outputs},
          {"messages", run_facts.messages}};
}

bool Record::write() const {
  std::ofstream file(unfinished_name);
  // Names of files may be anything but text.
  file << contents().dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
  file.close();
  if (file && std::rename(unfinished_name, record_name) == 0) return true;
  int const reason = errno;
  std::remove(unfinished_name);
  errno = reason;
  return false;
}

std::optional<Record> record;

/// The process ends; where nothing has completed the record, it ends early.
void complete_at_exit(int status, void*) {
  if (record->has_ended()) return;
  record->end(status);
  record->write();
}

}  // namespace

void begin_run_record(RunOrigin_s const& origin) {
  record.emplace(origin);
  write_run_record();
  on_exit(complete_at_exit, nullptr);
}

void write_run_record() {
  if (!record || record->write()) return;
  stop(std::string(record_name) + ": can't be written: " + std::strerror(errno));
}

void end_run_record() {
  record->end(0);
  write_run_record();
}
