#pragma once
/// The C library's `random_r` and `srandom_r` as the test program links them: a script of variates
/// where a test has given one, else a seeded generator of our own. The calls are counted.

#include <vector>

class ScriptedRand {
 public:
  /// Forgets script and counts; the generator starts anew.
  static void reset();
  /// The variates, in [0, 1], that the next draws give; each is exact to half a step of `random_r`.
  static void script(std::vector<double> const& variates);
  static std::size_t unused();
  /// Numbers drawn and seeds set since the last reset.
  static unsigned draws();
  static std::vector<unsigned> const& seeds();
};
