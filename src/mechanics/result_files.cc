#include "mechanics/result_files.h"

#include <cstdio>

#include "mechanics/filament_array.h"
#include "mechanics/measured.h"

namespace {

constexpr char const* statistics_name = "ActinSegmentStates_Statistics.csv";

}  // namespace

ResultFiles::ResultFiles()
    : actin_statistics(open_output_stream(statistics_name)),
      result_file("result.csv", "wb"),
      stiffness_file("stiffness.csv", "wt"),
      actin_sites_file("actinSites.csv", "wt"),
      actin_forces_file("actinForces.csv", "wt") {
  actin_statistics
      << "Time,state 1,state 2,state 3,state 4,state 5,state 6,state 7,state 8,state 9";
  end_row(actin_statistics, statistics_name);
  std::fprintf(result_file.get(),
               "Time,Force,Displacement_last_myosin_node,Displacement_last_actin_node,"
               "CB_per_filament,CB_ProteinC_per_filement\n");
  result_file.flush();
  std::fprintf(stiffness_file.get(), "Time,Stiffness\n");
  stiffness_file.flush();
}

void ResultFiles::write_time(double time) {
  std::fprintf(result_file.get(), "%13.11lf,", time);
  result_file.flush();
}

void ResultFiles::write_measured(double time, Measured const& measured, bool with_proteinC) {
  FILE* const file = result_file.get();
  std::fprintf(file, "%13.11lf,%13.5e,%13.5e,%13.5e,%13.5e,", time, -measured.force,
               measured.myosin_displacement, measured.actin_displacement, measured.cb_per_filament);
  if (with_proteinC) std::fprintf(file, "%13.5e,", measured.cb_proteinC_per_filament);
  std::fprintf(file, "\n");
  result_file.flush();
}

void ResultFiles::write_segment_states(double time, std::vector<int> const& counts) {
  actin_statistics << time << ',';
  for (int const count : counts) actin_statistics << count << ',';
  end_row(actin_statistics, statistics_name);
}

void ResultFiles::write_cb_states(FilamentArray const& filaments, std::ofstream& stream,
                                  int n_states) {
  auto const n = static_cast<std::size_t>(n_states);
  std::vector<int> attached_counts(n, 0);
  // In four rows, which are summed: most heads are in one state, and each increment of its count
  // waits for the one before it.
  std::vector<int> all_counts(4 * n, 0);
  for (auto const& filament : filaments) {
    for (MyosinHead_s const* head : filament->data.attached) {
      if (head->is_myosin()) ++attached_counts[head->state];
    }
    std::size_t row = 0;
    for (MyosinHead_s const& head : filament->data.heads) {
      if (head.is_myosin()) ++all_counts[row++ % 4 * n + head.state];
    }
  }
  for (std::size_t i = n; i < 4 * n; ++i) all_counts[i % n] += all_counts[i];
  all_counts.resize(n);
  for (int const count : attached_counts) stream << count << ',';
  end_row(stream, "cb_states_file.csv");

  // This file is never cleared: it grows across the runs of a directory.
  if (!myosin_head_states_file.get()) {
    myosin_head_states_file = OutputFile("Myosin_head_states.csv", "a");
  }
  for (int const count : all_counts) std::fprintf(myosin_head_states_file.get(), "%d,", count);
  std::fprintf(myosin_head_states_file.get(), "\n");
  myosin_head_states_file.flush();
}

void ResultFiles::write_actin_sites(FilamentArray const& filaments) {
  FILE* const file = actin_sites_file.get();
  auto const n_actin = [](Filament const& filament) { return filament.n_fibre() - 1; };
  std::fprintf(file, "Filament count, Actin per filament\n");
  std::fprintf(file, "%d,%d\n", static_cast<int>(filaments.size()),
               filaments.empty() ? 0 : static_cast<int>(n_actin(filaments.front())));
  for (std::size_t f = 0; f < filaments.size(); ++f) {
    auto const& sites = filaments[f].data.sites;
    for (unsigned fibre = 1; fibre <= n_actin(filaments[f]); ++fibre) {
      std::fprintf(file, "Filament,Actin,Site count\n");
      std::fprintf(file, "%d,%d,%d\n", static_cast<int>(f + 1), static_cast<int>(fibre),
                   static_cast<int>(sites[fibre].size()));
      std::fprintf(file, "Site state (0-open;1-blocked;2-closed)\n");
      for (ActinSite_s const& site : sites[fibre]) std::fprintf(file, "%u\n", site.state);
    }
  }
  actin_sites_file.flush();
}

void ResultFiles::write_stiffness(double time, double stiffness) {
  std::fprintf(stiffness_file.get(), "%e,%e\n", time, stiffness);
  stiffness_file.flush();
}
