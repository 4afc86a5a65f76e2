#include "control/check_program.h"

#include <cmath>
#include <cstdio>

#include "base/diagnostics.h"
#include "base/output_file.h"
#include "base/run_state.h"
#include "control/run_plan.h"
#include "control/silent_output.h"
#include "control/simulation.h"

namespace {

/// What a head costs in a step [s]: with its share of regulation and equilibrium 0.7 to 1.5 us on
/// the machine of docs/performance.md, by bench/against.
constexpr double cost_of_head = 1e-6;

std::string duration(double seconds) {
  if (seconds < 120.0) return shown(std::round(seconds)) + " s";
  if (seconds < 7200.0) return shown(std::round(seconds / 60.0)) + " min";
  return shown(std::round(seconds / 3600.0)) + " h";
}

std::string expected_time(RunPlan_s const& plan) {
  double const n_heads = static_cast<double>(plan.extent.heads + plan.extent.links);
  double const seconds = n_heads * plan.steps * cost_of_head;
  if (seconds < 1.0) return "less than 1 s";
  bool const is_least = plan.count == RunPlan_s::Count::unfinished;
  return (is_least ? "at least " : "about ") + duration(seconds);
}

/// How far the number of steps can be trusted.
char const* reservation(RunPlan_s::Count count) {
  switch (count) {
    case RunPlan_s::Count::exact:
      return "";
    case RunPlan_s::Count::ramp_from_zero:
      return ", if ramps to a target start at 0 (they start at the response)";
    case RunPlan_s::Count::unfinished:
      return ", and more that were not counted";
  }
  return "";
}

void print(RunPlan_s const& plan) {
  Extent_s const& extent = plan.extent;
  std::printf("model      %s, crossbridges %s, random seed %d\n", plan.model.c_str(),
              plan.crossbridge.c_str(), plan.seed);
  std::printf("lattice    %s, filaments %u, half-sarcomeres in series %u, regulation %s\n",
              extent.lattice.c_str(), extent.filaments, extent.in_series,
              extent.regulation.c_str());
  std::printf("heads      %zu, and %zu links of protein-C\n", extent.heads, extent.links);
  std::printf("steps      %d, to time %g%s\n", plan.steps, plan.end, reservation(plan.count));
  std::printf("snapshots  %zu\n", plan.snapshots);
  if (plan.lattice_snapshots > 0) {
    std::printf("           %zu of the whole lattice\n", plan.lattice_snapshots);
  }
  std::printf("expected   %s\n", expected_time(plan).c_str());
}

RunPlan_s make_plan() {
  SilentOutput const silent;
  open_listings();
  return Simulation().plan();
}

}  // namespace

void check_program() {
  discards_outputs = true;
  print(make_plan());
  flush_output(stdout, "standard output");
}
