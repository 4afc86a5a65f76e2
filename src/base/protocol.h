#pragma once
/// The course of an experiment: what is prescribed at a time, and when the run ends.
///
/// A protocol file has one row a line: start, time step, control mode (0 length, 1 force), type of
/// law, and the law's parameters. The last row only marks the end of a run. The same class reads
/// the course of calcium, where the value is a concentration, a rate or a probability, the mode is
/// not looked at, and the last row holds to the end.
///
/// With tau = time - start, the value by type is
///   - 0, constant: p0
///   - 1, ramp: tau p0 + p1
///   - 2, sine: p0 sin(2 pi tau p1 + pi p3) + p2
///   - 3, twitch: (exp(-tau/p0) - exp(-tau/p1)) p2 / peak + p3
///   - 4, ramp from the present state to the target p1: tau p0 + the response before the row
///   - 5, log-normal: p3 p0/L exp(-(ln(L/p2)/p1)^2 / 2) with L = log10(1000 tau), 0 below 1.1/1000
///   - 999, table file: linear interpolation at tau
///   - any other: 0
///
/// A type 4 row lasts until its ramp has covered the distance to the target. Starts behind it stand
/// in the file relative to the end of the ramp.

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/output_file.h"
#include "base/prescribed.h"

/// One row of a protocol.
struct ProtocolStep_s {
  double start = 0.0;
  unsigned mode = 0;
  unsigned type = 0;
  double p0 = 0.0;
  double p1 = 0.0;
  double p2 = 0.0;
  double p3 = 0.0;
  double dt = 0.0;
  int started = 0;  ///< type 4: whether the row has taken its start value
};

class Protocol {
 public:
  /// Reads the file, refusing it with file and line where it can't be used, and opens
  /// "Ca_function.csv".
  explicit Protocol(std::string const& file_name);
  Protocol(Protocol const&) = delete;
  Protocol& operator=(Protocol const&) = delete;

  void read_protocol(std::string const& file_name);
  /// Refuses a protocol of a single row, which never ends, unless it is a table.
  void require_end() const;

  double get_dt() const { return current->dt; }
  /// Of all rows but the last, which only ends the run where there are others.
  double longest_step() const;
  /// Value at `time`. `lastResponse` is what the step before did not prescribe: the force after a
  /// length-controlled step, the displacement after a force-controlled one; type 4 starts from it.
  double value_at(double time, double lastResponse = 0.0);
  /// The value with its mode; nothing in a row whose mode is neither length nor force.
  std::optional<Prescribed> prescribed_at(double time, double lastResponse);
  /// Moves on to the next row when its start is reached; true at the end of the run.
  bool checkForNewProtocol(double time);
  /// Ends the run when the current table's last time has passed without being met.
  void refuse_missed_end(double time) const;

  /// Mode and value of the same; always true.
  bool get_value(double time, unsigned& mode, double& value, double lastResponse);
  double get_twitch(double t, double tau1, double tau2) const;
  /// The maximum of `get_twitch`.
  double get_twitch_peak(double tau1, double tau2) const;

  void WriteToTaveloOutput() const;
  /// Writes the rows of types 0, 1, 2 and 4 to a file.
  void write_protocol(std::string const& file_name) const;

  /// End of the last type 4 ramp, which later starts count from; 0 before any.
  static double TimeOffset;

 private:
  void read_row(std::string const& line, std::string const& where);
  void read_table(std::string const& where);
  double value_of_row(double tau) const;
  double log_normal(double tau) const;
  void start_ramp(double time, double lastResponse);
  /// The row behind the current one; null behind the last.
  ProtocolStep_s* next_row() const;

  std::string protocol_file;
  std::string function_file;
  std::vector<ProtocolStep_s> steps;
  ProtocolStep_s* current = nullptr;
  std::vector<std::pair<double, double>> function;
  OutputFile ca_file;
};
