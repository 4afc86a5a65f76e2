// Would catch: a seed that is set when it must not be, set twice or cut short, names of the slow
// and the fast model exchanged, a listing out of order.

#include "control/simulation.h"

#include <gtest/gtest.h>

#include "support/scripted_rand.h"
#include "support/work_dir.h"

namespace {

TEST(SimParameter, DefaultsHoldAndSeedZeroIsNoSeed) {
  write_file("simulation.prm", "");
  SimParameter const parameters("simulation.prm");
  EXPECT_TRUE(ScriptedRand::seeds().empty());
  EXPECT_EQ(parameters.model, "Huxley");
  EXPECT_EQ(parameters.model_slow_fileName + parameters.model_fast_fileName, "");
  EXPECT_EQ(parameters.modelMyBPC, "HuxleyMyBPC");
  EXPECT_EQ(parameters.numerics, "MonteCarlo");
  EXPECT_EQ(parameters.xb_model, "ConstantStiffness");
  EXPECT_NE(listing_text().find("\tRandom Seed:\t0\n\n"), std::string::npos);
}

TEST(SimParameter, ReadsNamesAndSeedsOnce) {
  write_parameters("simulation.prm", "global",
                   {"model = Duke", "model_slow_fileName = s.prm", "model_fast_fileName = f.prm",
                    "modelMyBPC = DukeMyBPC", "xb_model = ThreeLinearForce", "numerics = FEM",
                    "random_seed = 42"});
  SimParameter const parameters("simulation.prm");
  EXPECT_EQ(parameters.model_slow_fileName, "s.prm");
  EXPECT_EQ(parameters.model_fast_fileName, "f.prm");
  EXPECT_EQ(parameters.numerics, "FEM");  // taken here; that it has no class shows later
  EXPECT_EQ(ScriptedRand::seeds(), std::vector<unsigned>{42});
  EXPECT_EQ(ScriptedRand::draws(), 0u);
  EXPECT_EQ(listing_text(),
            "\t*** SIMULATION PARAMETERS ************\n\n\tModel:\t\t\tDuke\n"
            "\tModelSlow_fileName:\t\t\ts.prm\n\tModelFast_fileName:\t\t\tf.prm\n"
            "\tModel MyBPC:\tDukeMyBPC\n\tNumerics model:\tFEM\n"
            "\tXB Model:\t\tThreeLinearForce\n\tRandom Seed:\t42\n\n");
}

TEST(SimParameter, RefusesNamesOutsideItsSelections) {
  for (std::string const setting : {"numerics = Exact", "xb_model = Stiff", "modelMyBPC = Duke"}) {
    write_parameters("simulation.prm", "global", {setting});
    EXPECT_EXIT(SimParameter("simulation.prm"), testing::ExitedWithCode(1), "simulation\\.prm")
        << setting;
  }
}

}  // namespace
