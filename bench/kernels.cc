// What the parts of a time step cost: one head, the candidate search, assembly and solve, whole
// steps.

#include <benchmark/benchmark.h>
#include <deal.II/base/multithread_info.h>

#include <fstream>
#include <iostream>
#include <map>

#include "bench_lattice.h"
#include "elastic/XB_Models.h"
#include "kinetics/fixed_dt_mc.h"
#include "kinetics/model_tolen9_C3.h"
#include "lattice/geometry.h"
#include "mechanics/filament.h"
#include "mechanics/sarcomer.h"
#include "solver_clock.h"

namespace {

constexpr int steps_to_plateau = 400;

/// A lattice at the plateau of its tetanus.
BenchLattice& plateau(unsigned n_filaments) {
  static std::unique_ptr<BenchLattice> lattice;
  static unsigned size = 0;
  if (size != n_filaments) {
    lattice.reset();
    lattice = std::make_unique<BenchLattice>(n_filaments);
    size = n_filaments;
    for (int i = 0; i < steps_to_plateau; ++i) lattice->step();
  }
  return *lattice;
}

/// One step of a detached head whose candidates are at hand, or of a bound one.
void head_step(benchmark::State& state, bool bound) {
  BenchLattice& lattice = plateau(10);
  Filament& filament = *lattice.sarcomer->filaments.front();
  std::vector<MyosinHead_s> heads;
  for (MyosinHead_s const& head : filament.data.heads) {
    if ((head.state == 1) == bound && head.detach_pending == 0) heads.push_back(head);
  }
  FilamentData data = filament.data;
  lattice.stepper->set_dt(1e-12);  // so that no head moves
  std::vector<BindingSite_s> candidates;
  std::size_t i = 0;
  for (auto _ : state) {
    MyosinHead_s& head = heads[i++ % heads.size()];
    candidates.clear();
    if (!bound) lattice.geometry->get_binding_sites(data, head, candidates);
    lattice.stepper->state_change(data, head, candidates);
  }
  lattice.stepper->set_dt(0.0005);
}

void head_detached(benchmark::State& state) { head_step(state, false); }
void head_bound(benchmark::State& state) { head_step(state, true); }
BENCHMARK(head_detached);
BENCHMARK(head_bound);

void candidate_search(benchmark::State& state) {
  BenchLattice& lattice = plateau(10);
  FilamentData const& data = lattice.sarcomer->filaments.front()->data;
  std::vector<BindingSite_s> candidates;
  std::size_t i = 0;
  for (auto _ : state) {
    candidates.clear();
    lattice.geometry->get_binding_sites(data, data.heads[i++ % data.heads.size()], candidates);
    benchmark::DoNotOptimize(candidates.data());
  }
}
BENCHMARK(candidate_search);

void state_change(benchmark::State& state) {
  BenchLattice& lattice = plateau(10);
  for (auto _ : state) lattice.state_change();
  state.counters["per_head"] = benchmark::Counter(
      static_cast<double>(lattice.n_heads()) * static_cast<double>(state.iterations()),
      benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(state_change)->Unit(benchmark::kMicrosecond);

/// Mesh, assembly, solves and results of one step; the share of the direct solver beside it.
void assemble_and_solve(benchmark::State& state) {
  BenchLattice& lattice = plateau(10);
  double const solver_before = seconds_in_solver();
  for (auto _ : state) lattice.solve();
  state.counters["in_solver"] =
      benchmark::Counter(seconds_in_solver() - solver_before, benchmark::Counter::kAvgIterations);
}
BENCHMARK(assemble_and_solve)->Unit(benchmark::kMicrosecond);

void whole_step(benchmark::State& state) {
  BenchLattice& lattice = plateau(static_cast<unsigned>(state.range(0)));
  double const solver_before = seconds_in_solver();
  for (auto _ : state) lattice.step();
  state.counters["in_solver"] =
      benchmark::Counter(seconds_in_solver() - solver_before, benchmark::Counter::kAvgIterations);
  state.counters["per_filament"] = benchmark::Counter(
      static_cast<double>(state.range(0)) * static_cast<double>(state.iterations()),
      benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(whole_step)->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

// Nine-state heads beside Huxley heads.

/// One rate at strains that lie all over the grid.
void one_rate(benchmark::State& state, ActiveModel const& model, unsigned from, unsigned to) {
  ActiveModel const* const rates = &model;
  benchmark::DoNotOptimize(rates);
  ActinSite_s const site;
  std::vector<double> strains;
  for (double x = -15.0; x < 15.0; x += 0.0073) strains.push_back(x);
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(rates->get_k(strains[i], from, to, site));
    i = (i + 1237) % strains.size();
  }
}

XB_Model& bench_law() { return *plateau(10).model->xb_model; }

ModelTolen9_C3 const& nine_state_model(std::string const& interpolation) {
  static std::map<std::string, std::unique_ptr<ModelTolen9_C3>> models;
  auto& model = models[interpolation];
  if (!model) {
    std::ofstream("tolen.prm") << "subsection numerics\nset interpolation = " << interpolation
                               << "\nend\n";
    model = std::make_unique<ModelTolen9_C3>(ModelParameter_s{&bench_law(), "tolen.prm"});
  }
  return *model;
}

void rate_huxley(benchmark::State& state) {
  one_rate(state, dynamic_cast<ActiveModel const&>(*plateau(10).model), 1, 0);
}
void rate_nine_state(benchmark::State& state) { one_rate(state, nine_state_model("Linear"), 0, 8); }
void rate_nine_state_exact(benchmark::State& state) {
  one_rate(state, nine_state_model("Exact"), 0, 8);
}
BENCHMARK(rate_huxley);
BENCHMARK(rate_nine_state);
BENCHMARK(rate_nine_state_exact);

/// With the law's integral table at hand; the table's own construction stands alone.
void nine_state_construction(benchmark::State& state) {
  bench_law().GetIntegralFunction();
  for (auto _ : state) ModelTolen9_C3({&bench_law(), ""});
}
void integral_table(benchmark::State& state) {
  for (auto _ : state) XB_ConstantStiffness("").GetIntegralFunction();
}
BENCHMARK(nine_state_construction)->Unit(benchmark::kMillisecond);
BENCHMARK(integral_table)->Unit(benchmark::kMillisecond);

/// As `head_step`, with the heads of the lattice in state `as` of the nine-state model.
void nine_state_head(benchmark::State& state, bool bound, unsigned as) {
  BenchLattice& lattice = plateau(10);
  ModelTolen9_C3 const& model = nine_state_model("Linear");
  FixedTimeStepMC const stepper(model, model, 1e-12, nullptr);
  FilamentData data = lattice.sarcomer->filaments.front()->data;
  std::vector<MyosinHead_s> heads;
  for (MyosinHead_s head : data.heads) {
    if ((head.state == 1) != bound || head.detach_pending != 0) continue;
    head.state = as;
    heads.push_back(head);
  }
  std::vector<BindingSite_s> candidates;
  std::size_t i = 0;
  for (auto _ : state) {
    MyosinHead_s& head = heads[i++ % heads.size()];
    candidates.clear();
    if (!bound) lattice.geometry->get_binding_sites(data, head, candidates);
    stepper.state_change(data, head, candidates);
  }
}
void nine_state_head_detached(benchmark::State& state) { nine_state_head(state, false, 3); }
void nine_state_head_bound(benchmark::State& state) { nine_state_head(state, true, 5); }
BENCHMARK(nine_state_head_detached);
BENCHMARK(nine_state_head_bound);

}  // namespace

int main(int argc, char** argv) {
  dealii::MultithreadInfo::set_thread_limit(1);
  // The program's own standard output is sent to a file; the report goes to standard error.
  std::cout.rdbuf(std::cerr.rdbuf());
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
