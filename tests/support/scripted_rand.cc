#include "support/scripted_rand.h"

#include <cmath>
#include <cstdlib>
#include <deque>
#include <random>

namespace {

std::deque<int> scripted;
unsigned n_draws = 0;
std::vector<unsigned> seeds_set;
std::mt19937 generator;

}  // namespace

// These take the place of the C library's own in the whole test program.
extern "C" int rand() noexcept {
  ++n_draws;
  if (scripted.empty()) return static_cast<int>(generator() >> 1);
  int const number = scripted.front();
  scripted.pop_front();
  return number;
}

extern "C" void srand(unsigned seed) noexcept {
  seeds_set.push_back(seed);
  generator.seed(seed);
}

void ScriptedRand::reset() {
  scripted.clear();
  n_draws = 0;
  seeds_set.clear();
  generator.seed(1);
}

void ScriptedRand::script(std::vector<double> const& variates) {
  for (double const u : variates) scripted.push_back(static_cast<int>(std::lround(u * RAND_MAX)));
}

std::size_t ScriptedRand::unused() { return scripted.size(); }

unsigned ScriptedRand::draws() { return n_draws; }

std::vector<unsigned> const& ScriptedRand::seeds() { return seeds_set; }
