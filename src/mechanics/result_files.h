#pragma once
/// The result files of a lattice and their rows, each flushed as it is written.

#include <fstream>
#include <vector>

#include "base/output_file.h"

class FilamentArray;
struct Measured;

class ResultFiles {
 public:
  /// Opens all files but those that grow across the runs of a directory.
  ResultFiles();

  /// "result.csv"
  void write_measured(double time, Measured const& measured, bool with_proteinC);
  /// "result.csv" of a lattice without filaments: the time alone, unflushed.
  void write_time(double time);
  /// "ActinSegmentStates_Statistics.csv"
  void write_segment_states(double time, std::vector<int> const& counts);
  /// Populations of the states: of the heads in the mechanics to the stream, of all myosin heads to
  /// "Myosin_head_states.csv".
  void write_cb_states(FilamentArray const& filaments, std::ofstream& stream, int n_states);
  /// "actinSites.csv": the regulatory state of every site.
  void write_actin_sites(FilamentArray const& filaments);
  /// "stiffness.csv"
  void write_stiffness(double time, double stiffness);

 private:
  std::ofstream actin_statistics;
  OutputFile result_file;
  OutputFile stiffness_file;
  OutputFile actin_sites_file;
  OutputFile actin_forces_file;
  OutputFile myosin_head_states_file;
};
