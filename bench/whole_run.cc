// A tetanus of 10 filaments over 2,000 steps: microseconds per step by part, and head-steps per
// second.

#include <deal.II/base/multithread_info.h>

#include <cstdio>
#include <cstdlib>

#include "bench_lattice.h"

int main(int argc, char** argv) {
  dealii::MultithreadInfo::set_thread_limit(1);
  unsigned const n_filaments = argc > 1 ? static_cast<unsigned>(std::atoi(argv[1])) : 10;
  int const n_steps = argc > 2 ? std::atoi(argv[2]) : 2000;
  BenchLattice lattice(n_filaments);
  double moving = 0.0;
  double solving = 0.0;
  double writing = 0.0;
  auto const start = Clock::now();
  for (int i = 0; i < n_steps; ++i) {
    auto begin = Clock::now();
    lattice.state_change();
    moving += seconds_since(begin);
    begin = Clock::now();
    lattice.solve();
    solving += seconds_since(begin);
    begin = Clock::now();
    lattice.output();
    writing += seconds_since(begin);
  }
  double const total = seconds_since(start);
  double const head_steps = static_cast<double>(lattice.n_heads()) * n_steps;
  auto const print = [&](char const* part, double seconds) {
    std::fprintf(stderr, "%-24s %10.1f us per step\n", part, seconds / n_steps * 1e6);
  };
  std::fprintf(stderr, "%u filaments, %d steps\n", n_filaments, n_steps);
  print("state change", moving);
  print("equilibrium", solving);
  print("output", writing);
  print("whole step", total);
  std::fprintf(stderr, "state change per head          %.1f ns\n", moving / head_steps * 1e9);
  std::fprintf(stderr, "head-steps per second          %.3g\n", head_steps / total);
  return 0;
}
