// What the parts of a time step cost: one head, the candidate search, assembly and solve, whole
// steps; and what each kinetic model costs.

#include <benchmark/benchmark.h>
#include <deal.II/base/multithread_info.h>

#include <fstream>
#include <iostream>
#include <numeric>

#include "activation/activation.h"
#include "base/run_state.h"
#include "bench_lattice.h"
#include "elastic/XB_Models.h"
#include "kinetics/fixed_dt_mc.h"
#include "kinetics/model.h"
#include "lattice/geometry.h"
#include "lattice/geometry_tools.h"
#include "mechanics/filament_array.h"
#include "mechanics/pivoting_solver.h"
#include "mechanics/sarcomer.h"
#include "mechanics/spring_system.h"

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
  Filament& filament = lattice.sarcomer->all_filaments().front();
  std::vector<MyosinHead_s> heads;
  for (MyosinHead_s const& head : filament.data.heads) {
    if ((head.state == 1) == bound && head.detach_pending == 0) heads.push_back(head);
  }
  FilamentData data = filament.data;
  currentTimeStep = 1e-12;  // so that no head moves
  std::vector<BindingSite_s> candidates;
  std::size_t i = 0;
  for (auto _ : state) {
    MyosinHead_s& head = heads[i++ % heads.size()];
    candidates.clear();
    if (!bound) lattice.geometry->get_binding_sites(data, head, candidates);
    lattice.stepper->state_change(data, head, candidates);
  }
  currentTimeStep = 0.0005;
}

void head_detached(benchmark::State& state) { head_step(state, false); }
void head_bound(benchmark::State& state) { head_step(state, true); }
BENCHMARK(head_detached);
BENCHMARK(head_bound);

benchmark::Counter time_of_each(benchmark::State const& state, std::size_t per_step) {
  return {static_cast<double>(per_step * state.iterations()),
          benchmark::Counter::kIsRate | benchmark::Counter::kInvert};
}

/// The search of one head, at the plateau of a tetanus on that lattice, and the part of it that
/// falls to each site that was looked at: those in reach on the thin filaments that the head can
/// see.
void candidate_search(benchmark::State& state, std::string const& name) {
  BenchLattice lattice(10, "Huxley", name);
  for (int i = 0; i < steps_to_plateau; ++i) lattice.step();
  FilamentData const& data = lattice.sarcomer->all_filaments().front().data;
  double const reach = name == "Simple" ? 20.0 : 15.0;
  std::size_t visited = 0;
  for (MyosinHead_s const& head : data.heads) {
    bool const sees_one =
        name == "Simple" || name == "Tolen" || (name == "Vertebrae" && head.crown_class() == 0);
    unsigned const last = sees_one ? 1 : static_cast<unsigned>(data.x.size()) - 1;
    for (unsigned fibre = 1; fibre <= last; ++fibre) {
      auto const [first, end] =
          axial_reach(data.position(fibre), data.position(0)[head.node], reach);
      visited += end - first;
    }
  }
  std::vector<BindingSite_s> candidates;
  for (auto _ : state) {
    for (MyosinHead_s const& head : data.heads) {
      candidates.clear();
      lattice.geometry->get_binding_sites(data, head, candidates);
      benchmark::DoNotOptimize(candidates.data());
    }
  }
  state.counters["per_head"] = time_of_each(state, data.heads.size());
  state.counters["per_site"] = time_of_each(state, visited);
}

constexpr unsigned segment_length = 7;

/// Constants of examples/calcium_tetanus and examples/twitch_flexible.
void write_regulation(char const* calcium) {
  std::ofstream("ca_protocol.dat") << "0 1 0 0 " << calcium << '\n';
  std::ofstream("CaActivation3x3s.prm")
      << "subsection Ca_regulation\nset K_Ca=5e4\nset k_Ca_off=3000\nset K_Ca_p=5e7\n"
         "set k_Ca_off_p=1.5\nset K_Ca_s=5e7\nset k_Ca_off_s=1.5\nend\n"
         "subsection Blocket2Closed_regulation\nset K_TnB=6e-5\nset k_c_b=3750\n"
         "set K_TnB_p=0.06\nset k_c_b_p=375\nset K_TnB_s=60\nset k_c_b_s=100\nend\n"
         "subsection Closed2Open_regulation\nset K_TnT=0.5\nset k_o_c=1000\n"
         "set K_TnT_p=0.5\nset k_o_c_p=1000\nset K_TnT_s=0.5\nset k_o_c_s=1000\nend\n";
  std::ofstream("CaActivation3x2s.prm")
      << "subsection Ca_regulation\nset K_Ca=2e5\nset k_Ca_off=500\nset K_Ca_p=3e6\n"
         "set k_Ca_off_p=33\nend\n"
         "subsection Blocket2Closed_regulation\nset K_TnB=0.01\nset k_c_b=400\n"
         "set K_TnB_p=0.15\nset k_c_b_p=200\nset K_TnB_s=2.25\nset k_c_b_s=50\nend\n";
  std::ofstream("mg_old.prm") << "subsection rates\nset km=1\nset kps=1\nend\n"
                                 "subsection chain\nset xi=3e7\nset phi_minus=-0.6\nend\n";
}

double cpu_seconds() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// Steps of regulation, and between them, off the clock, of the heads, which Huxley's model makes
/// weakly bound ones. `value` is that of "ca_protocol.dat".
void regulation(benchmark::State& state, char const* activation, int indicator, char const* value,
                double dt) {
  BenchLattice lattice(10);
  write_regulation(value);
  ActivationModelParameter const parameter = {lattice.geometry.get(), lattice.model.get(),
                                              lattice.model.get(), indicator, 100};
  std::vector<std::unique_ptr<ActivationModel>> models;
  for (std::size_t i = 0; i < lattice.sarcomer->all_filaments().size(); ++i) {
    models.push_back(
        create_component<ActivationModel>(activation, parameter, "the benchmark", "activation"));
  }
  std::vector<int> counts;
  double const step_of_heads = currentTimeStep;
  auto const step = [&] {
    currentTimeStep = step_of_heads;
    lattice.state_change();
    currentTimeStep = dt;
    double const start = cpu_seconds();
    for (std::size_t i = 0; i < models.size(); ++i) {
      models[i]->state_change(lattice.sarcomer->all_filaments()[i].data, 0.0, counts);
    }
    return cpu_seconds() - start;
  };
  for (int i = 0; i < steps_to_plateau; ++i) step();
  for (auto _ : state) state.SetIterationTime(step());
  std::vector<unsigned> segments(lattice.geometry->n_actin_chains());
  lattice.geometry->n_actin_segments(segment_length, segments);
  auto const n = std::accumulate(segments.begin(), segments.end(), 0u) * models.size();
  // Against the time on the clock: the heads' steps beside it don't count.
  state.counters["segments"] = static_cast<double>(n);
}

void register_regulation() {
  auto const add = [](char const* name, char const* activation, int indicator, char const* value,
                      double dt) {
    benchmark::RegisterBenchmark(name, regulation, activation, indicator, value, dt)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
  };
  add("rigid_segments/geeves_calcium", "Geeves6S", 2, "1e-5", 1e-4);
  add("rigid_segments/geeves_kb", "Geeves6S", 0, "1e-6", 5e-7);
  add("rigid_segments/lumped", "Lumped2S", 0, "-6", 1e-4);
  add("flexible_chain/relaxed", "FChain", 2, "1e-7", 2.5e-4);
  add("flexible_chain/activated", "FChain", 2, "1e-5", 2.5e-4);
}

void state_change(benchmark::State& state) {
  BenchLattice& lattice = plateau(10);
  for (auto _ : state) lattice.state_change();
  state.counters["per_head"] = benchmark::Counter(
      static_cast<double>(lattice.n_heads()) * static_cast<double>(state.iterations()),
      benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(state_change)->Unit(benchmark::kMicrosecond);

/// Mesh, assembly, solves and results of one step.
void assemble_and_solve(benchmark::State& state) {
  BenchLattice& lattice = plateau(10);
  for (auto _ : state) lattice.solve();
}
BENCHMARK(assemble_and_solve)->Unit(benchmark::kMicrosecond);

/// The filaments of a plateau, over and over, as springs for the program's solver and for the one
/// with pivoting. Thick filaments and the outer end are held, and every force is 1 pN.
struct PlateauSprings {
  explicit PlateauSprings(unsigned n) {
    FilamentArray const& filaments = plateau(10).sarcomer->all_filaments();
    system.set_size(n, 1);
    for (unsigned f = 0; f < n; ++f) add(filaments[f % filaments.size()]);
    for (unsigned f = 0; f < n; ++f) renew(f);
    double const k = 60.0 * n;
    system.set_series({0, k, true, 0.0});
    all.push_back({actin_ends.front(), n_dofs, k});
    for (unsigned const dof : actin_ends) ends.ties.push_back({dof, actin_ends.front(), 1.0});
    ends.ties.erase(ends.ties.begin());
    ends.driven = n_dofs;
    forces.reinit(n_dofs + 1);
    forces = 1.0;
  }

  void add(Filament const& filament) {
    auto& own_dofs = dofs.emplace_back();
    auto& own_springs = springs.emplace_back();
    filament.for_each_dof([&](double x) { own_dofs.push_back({x, {}}); });
    filament.create_matrix([&](unsigned i, unsigned j, double k) {
      own_springs.push_back({i, j, k});
      all.push_back({n_dofs + i, n_dofs + j, k});
    });
    for (unsigned fibre = 0; fibre < filament.n_fibre(); ++fibre) {
      bool const is_actin = fibre > 0;
      unsigned const end = filament.get_bnd_dof(is_actin ? 1 : 0, fibre) - filament.get_offset();
      own_dofs[end].motion = is_actin ? Motion::shared(0) : Motion::held();
      (is_actin ? actin_ends : ends.held).push_back(n_dofs + end);
    }
    n_dofs += filament.n_dofs();
  }

  /// Sets mesh and springs of a filament as new ones.
  void renew(unsigned f) {
    system.block(f).set_dofs(dofs[f]);
    system.block(f).set_springs(springs[f]);
  }

  std::vector<std::vector<SpringDof>> dofs;
  std::vector<std::vector<Spring>> springs;
  SpringSystem system;
  std::vector<Spring> all;
  std::vector<unsigned> actin_ends;
  Ends ends{};
  unsigned n_dofs = 0;
  dealii::Vector<double> forces;
  dealii::Vector<double> u;
};

/// With new springs in every n-th filament, in none for 0.
void solve_springs(benchmark::State& state) {
  PlateauSprings lattice(static_cast<unsigned>(state.range(0)));
  auto const n = static_cast<unsigned>(state.range(1));
  for (auto _ : state) {
    for (unsigned f = 0; n > 0 && f < lattice.dofs.size(); f += n) lattice.renew(f);
    lattice.system.solve(lattice.forces, lattice.u);
  }
  state.counters["dofs"] = lattice.n_dofs;
}
BENCHMARK(solve_springs)->ArgsProduct({{10, 100, 1000}, {0, 1, 2}})->Unit(benchmark::kMicrosecond);

/// The same, with the sparse matrix built anew, as it has to be where bonds come and go. The
/// largest difference of the two solutions, relative to the largest displacement, beside it.
void solve_springs_with_pivoting(benchmark::State& state) {
  PlateauSprings lattice(static_cast<unsigned>(state.range(0)));
  dealii::Vector<double> u;
  for (auto _ : state) solve_with_pivoting(lattice.all, lattice.ends, lattice.forces, u);
  lattice.system.solve(lattice.forces, lattice.u);
  lattice.u -= u;
  state.counters["difference"] = lattice.u.linfty_norm() / u.linfty_norm();
}
BENCHMARK(solve_springs_with_pivoting)->Arg(10)->Arg(100)->Unit(benchmark::kMicrosecond);

void whole_step(benchmark::State& state) {
  BenchLattice& lattice = plateau(static_cast<unsigned>(state.range(0)));
  for (auto _ : state) lattice.step();
  state.counters["per_filament"] = benchmark::Counter(
      static_cast<double>(state.range(0)) * static_cast<double>(state.iterations()),
      benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(whole_step)->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

/// What a filament costs among 1,000 against what it costs among 10. The two take turns of about
/// the same time, as a shared machine changes its speed by more than they differ.
void filament_of_1000_against_10(benchmark::State& state) {
  constexpr int steps_of_few = 150;
  BenchLattice few(10);
  for (int i = 0; i < steps_to_plateau; ++i) few.step();
  BenchLattice many(1000);
  for (int i = 0; i < steps_to_plateau; ++i) many.step();
  double among_few = 0.0;
  double among_many = 0.0;
  for (auto _ : state) {
    auto const start = Clock::now();
    for (int i = 0; i < steps_of_few; ++i) few.step();
    among_few += seconds_since(start) / (10.0 * steps_of_few);
    auto const middle = Clock::now();
    many.step();
    among_many += seconds_since(middle) / 1000.0;
  }
  using benchmark::Counter;
  state.counters["among_10"] = Counter(among_few, Counter::kAvgIterations);
  state.counters["among_1000"] = Counter(among_many, Counter::kAvgIterations);
  state.counters["ratio"] = among_many / among_few;
}
BENCHMARK(filament_of_1000_against_10)->Iterations(40)->Unit(benchmark::kMillisecond);

/// What a step costs with Huxley's states as a scheme against the built-in model; the two take
/// turns.
void scheme_against_huxley(benchmark::State& state) {
  BenchLattice built_in(10);
  for (int i = 0; i < steps_to_plateau; ++i) built_in.step();
  BenchLattice scheme(10, "Scheme");
  for (int i = 0; i < steps_to_plateau; ++i) scheme.step();
  double of_built_in = 0.0;
  double of_scheme = 0.0;
  for (auto _ : state) {
    auto const start = Clock::now();
    for (int i = 0; i < 20; ++i) built_in.step();
    auto const middle = Clock::now();
    of_built_in += std::chrono::duration<double>(middle - start).count();
    for (int i = 0; i < 20; ++i) scheme.step();
    of_scheme += seconds_since(middle);
  }
  state.counters["ratio"] = of_scheme / of_built_in;
}
BENCHMARK(scheme_against_huxley)->Iterations(100)->Unit(benchmark::kMillisecond);

/// The mean of all rates of a model over the strains from -10 to 10 nm.
void rate(benchmark::State& state, std::string const& name) {
  BenchLattice const lattice(1, name);
  Model const& model = *lattice.model;
  std::vector<std::pair<unsigned, unsigned>> pairs;
  for (unsigned from = 0; from < model.n_states(); ++from) {
    for (unsigned to = 0; to < model.n_states(); ++to) {
      if (model.transitions[from][to] && model.get_k(0.1, from, to) > 0.0) {
        pairs.emplace_back(from, to);
      }
    }
  }
  std::size_t i = 0;
  for (auto _ : state) {
    auto const& [from, to] = pairs[i % pairs.size()];
    benchmark::DoNotOptimize(model.get_k(0.1 * static_cast<double>(i % 201) - 10.0, from, to));
    ++i;
  }
}

void construction(benchmark::State& state, std::string const& name) {
  BenchLattice const lattice(1, name);
  for (auto _ : state) benchmark::DoNotOptimize(lattice.make_model());
}

/// One step of a head, detached and bound ones as the plateau of a tetanus has them.
void model_head_step(benchmark::State& state, std::string const& name) {
  BenchLattice lattice(2, name);
  for (int i = 0; i < steps_to_plateau; ++i) lattice.step();
  for (auto _ : state) lattice.state_change();
  state.counters["per_head"] = benchmark::Counter(
      static_cast<double>(lattice.n_heads()) * static_cast<double>(state.iterations()),
      benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void register_lattices() {
  for (auto const& type : Factory<Geometry, GeometryParameter_s>::instance().types()) {
    benchmark::RegisterBenchmark(("candidate_search/" + type.first).c_str(), candidate_search,
                                 type.first);
  }
}

void register_models() {
  for (auto const& type : Factory<Model, ModelParameter_s>::instance().types()) {
    std::string const name = type.first;
    benchmark::RegisterBenchmark(("rate/" + name).c_str(), rate, name);
    benchmark::RegisterBenchmark(("head_step/" + name).c_str(), model_head_step, name)
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark(("construction/" + name).c_str(), construction, name)
        ->Unit(benchmark::kMillisecond);
  }
}

/// The table that the nine-state model asks of its law, once in a run.
void integral_table(benchmark::State& state) {
  for (auto _ : state) XB_ConstantStiffness("").GetIntegralFunction();
}
BENCHMARK(integral_table)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  dealii::MultithreadInfo::set_thread_limit(1);
  // The program's own standard output is sent to a file; the report goes to standard error.
  std::cout.rdbuf(std::cerr.rdbuf());
  benchmark::Initialize(&argc, argv);
  register_regulation();
  register_lattices();
  register_models();
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
