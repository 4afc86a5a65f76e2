// Would catch: a law that can't serve taken for one, counts of segments lost or added to the wrong
// filament, a prestress that does not balance titin.

#include "mechanics/sarcomer.h"

#include <gtest/gtest.h>

#include "mechanics/titin_prestress.h"
#include "support/small_lattice.h"
#include "support/stdout_to_stderr.h"
#include "support/work_dir.h"

namespace {

using testing::ExitedWithCode;

TEST(Sarcomer, StopsWithoutALaw) {
  SmallLattice lattice;
  lattice.geometry->titin_enabled = 1;
  lattice.geometry->titin_stiffness = "ThreeLinearForce";  // a law, but not one for titin
  EXPECT_EXIT((stdout_to_stderr(), Sarcomer(lattice.parameter, *lattice.geometry)),
              ExitedWithCode(1), "No Titin stiffness model\\? ");
  lattice.geometry->see_stiffness = "";
  EXPECT_EXIT((stdout_to_stderr(), Sarcomer(lattice.parameter, *lattice.geometry)),
              ExitedWithCode(1), "No See stiffness model\\? ");
}

TEST(Sarcomer, SumsTheActivationStatesOfAllFilaments) {
  SmallLattice lattice;
  Sarcomer sarcomer(lattice.parameter, *lattice.geometry);
  for (unsigned i = 0; i < 3; ++i) {
    sarcomer.add_filament(
        new Filament(*lattice.geometry, lattice.slow, lattice.fast, *lattice.stepper, 1, nullptr));
    sarcomer.all_filaments()[i].activation_states = {int(i), 10, -5};
  }
  sarcomer.state_change(1.5, 0.5);
  EXPECT_EQ(sarcomer.all_filaments()[0].activation_states, (std::vector<int>{0, 10, -5}));
  EXPECT_EQ(read_lines("ActinSegmentStates_Statistics.csv").at(1), "1.5,3,30,-15,");
  sarcomer.all_filaments()[2].activation_states.pop_back();
  EXPECT_EXIT((stdout_to_stderr(), sarcomer.state_change(2.0, 0.5)), ExitedWithCode(1),
              "Error: vectors addition!\n");
}

// Titin k at the extension x stretches the thick filament K: k x = K (rest - x).
TEST(Sarcomer, PrestressBalancesTitinThickFilamentAndSeriesElement) {
  LatticeSettings settings;
  settings.titin_stiffness = 12.0;
  SmallLattice lattice(settings);
  double const k = 12.0;
  double const K = SmallLattice::EA[0] / SmallLattice::thick_length;
  double const expected = k * K / (k + K) * SmallLattice::titin_rest;
  EXPECT_NEAR(FindTitinForce(lattice.titin_law, *lattice.geometry), expected, 1e-6);
  double const extension = expected / settings.see_stiffness;
  EXPECT_NEAR(lattice.see.initial_displacement, extension, 1e-8);  // k times the 1e-8 nm left

  // So the actin end stays where it is, and the thick filament alone gives way.
  lattice.solve_length(0.0);
  EXPECT_NEAR(lattice.see.displacement, extension, 1e-8);
  EXPECT_NEAR(lattice.filaments.get_last_actin_displacement(), 0.0, 1e-7);
  EXPECT_NEAR(lattice.filament().data.u[0][6], expected / K, 1e-7);
  EXPECT_NEAR(-lattice.measured.force, expected, 1e-6);
}

TEST(Sarcomer, PrestressSearchFollowsTheSignAndEnds) {
  SmallLattice lattice;
  for (double const force : {3.0, 300.0, 1234.5, -299.0, -3210.0, 0.0}) {
    lattice.see.SetInitialPrescribedDisplacement(force);
    EXPECT_NEAR(lattice.see.initial_displacement, force / 30.0, 1e-10) << force;
  }
  lattice.see_law.k = 0.0;
  EXPECT_EXIT(lattice.see.SetInitialPrescribedDisplacement(1.0), ExitedWithCode(1),
              "titin prestress: .* at no extension");
  // Stiffer than the thick filament: the search for its force can't settle.
  lattice.titin_law.k = 2.0 * SmallLattice::EA[0] / SmallLattice::thick_length;
  EXPECT_EXIT(FindTitinForce(lattice.titin_law, *lattice.geometry), ExitedWithCode(1),
              "titin prestress: no extension");
}

}  // namespace
