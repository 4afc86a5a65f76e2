// Would catch: a seed that is set when it must not be, set twice or cut short, a draw before the
// run.

#include "control/simulation.h"

#include <gtest/gtest.h>

#include "support/scripted_rand.h"
#include "support/work_dir.h"

TEST(SimParameter, SeedsOnceButForSeedZero) {
  for (unsigned const seed : {0u, 4294967295u}) {
    write_settings("simulation.prm",
                   "global: random_seed=" + std::to_string(static_cast<int>(seed)));
    SimParameter const parameters("simulation.prm");
    EXPECT_EQ(ScriptedRand::seeds(), std::vector<unsigned>(seed == 0 ? 0 : 1, seed));
  }
  EXPECT_EQ(ScriptedRand::draws(), 0u);
}
