#include "base/uniform_variate.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "base/diagnostics.h"

namespace {

constexpr double largest_number = 2147483647.0;
static_assert(RAND_MAX == 2147483647, "the variate is scaled to glibc's rand");

/// Seed of the C library's start state.
constexpr unsigned start_seed = 1;

/// glibc's generator with the 128 bytes of state that `rand` has.
class Stream {
 public:
  explicit Stream(unsigned number) { initstate_r(number, state.data(), state.size(), &data); }
  Stream(Stream const&) = delete;
  Stream& operator=(Stream const&) = delete;

  void seed(unsigned number) { srandom_r(number, &data); }

  std::int32_t next() {
    std::int32_t number;
    random_r(&data, &number);
    return number;
  }

 private:
  alignas(std::int32_t) std::array<char, 128> state;
  random_data data = {};
};

Stream stream(start_seed);

}  // namespace

double uniform_variate() { return stream.next() / largest_number; }

void seed_variates(unsigned seed) { stream.seed(seed); }

void require_numbers_of_rand(unsigned seed) {
  constexpr int n_compared = 1000;  // many times around the 31 words of the state
  Stream own(seed == 0 ? start_seed : seed);
  if (seed != 0) std::srand(seed);
  for (int i = 0; i < n_compared; ++i) {
    if (own.next() == std::rand()) continue;
    stop("random_r and rand of this C library differ at number " + std::to_string(i + 1) +
         " of seed " + std::to_string(seed) + "; a run would not repeat those of others");
  }
}
