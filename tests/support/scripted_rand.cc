#include "support/scripted_rand.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <random>

namespace {

std::deque<std::int32_t> scripted;
unsigned n_draws = 0;
std::vector<unsigned> seeds_set;
std::mt19937 generator;

}  // namespace

// These take the place of the C library's own in the whole test program.
extern "C" int random_r(random_data*, std::int32_t* number) noexcept {
  ++n_draws;
  if (scripted.empty()) {
    *number = static_cast<std::int32_t>(generator() >> 1);
  } else {
    *number = scripted.front();
    scripted.pop_front();
  }
  return 0;
}

extern "C" int srandom_r(unsigned seed, random_data*) noexcept {
  seeds_set.push_back(seed);
  generator.seed(seed);
  return 0;
}

void ScriptedRand::reset() {
  scripted.clear();
  n_draws = 0;
  seeds_set.clear();
  generator.seed(1);
}

void ScriptedRand::script(std::vector<double> const& variates) {
  for (double const u : variates)
    scripted.push_back(static_cast<std::int32_t>(std::lround(u * RAND_MAX)));
}

std::size_t ScriptedRand::unused() { return scripted.size(); }

unsigned ScriptedRand::draws() { return n_draws; }

std::vector<unsigned> const& ScriptedRand::seeds() { return seeds_set; }
