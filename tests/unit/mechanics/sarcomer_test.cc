// Would catch: a series elastic element with the wrong factor, sign, damping or node, a prestress
// that does not balance titin, a boundary step from the wrong origin, a tie or a load on the wrong
// degree of freedom, a lost heading or row.

#include <deal.II/lac/affine_constraints.h>
#include <deal.II/lac/dynamic_sparsity_pattern.h>
#include <deal.II/lac/sparse_matrix.h>
#include <deal.II/lac/vector.h>
#include <gtest/gtest.h>

#include "base/run_state.h"
#include "support/small_lattice.h"
#include "support/stdout_to_stderr.h"
#include "support/work_dir.h"

namespace {

using testing::ExitedWithCode;

TEST(Sarcomer, OpensItsFilesWithTheirHeadings) {
  { SmallLattice const lattice; }
  EXPECT_EQ(read_file("result.csv"),
            "Time,Force,Displacement_last_myosin_node,Displacement_last_actin_node,"
            "CB_per_filament,CB_ProteinC_per_filement\n");
  EXPECT_EQ(read_file("stiffness.csv"), "Time,Stiffness\n");
  EXPECT_EQ(read_file("ActinSegmentStates_Statistics.csv"),
            "Time,state 1,state 2,state 3,state 4,state 5,state 6,state 7,state 8,state 9\n");
  for (char const* name : {"actinSites.csv", "actinForces.csv"}) {
    EXPECT_TRUE(std::filesystem::exists(name)) << name;
    EXPECT_EQ(read_file(name), "") << name;
  }
}

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
  LatticeSettings settings;
  settings.filaments = 3;
  SmallLattice lattice(settings);
  EXPECT_EQ(lattice.sarcomer->state_change(0.25, 0.5), 0);  // filaments without regulation
  for (unsigned i = 0; i < 3; ++i) lattice.filament(i).activation_states = {int(i), 10, -5};
  EXPECT_EQ(lattice.sarcomer->state_change(1.5, 0.5), 0);
  EXPECT_EQ(lattice.filament(0).activation_states, (std::vector<int>{0, 10, -5}));
  auto const lines = read_lines("ActinSegmentStates_Statistics.csv");
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[1], "0.25,");
  EXPECT_EQ(lines[2], "1.5,3,30,-15,");
  lattice.filament(2).activation_states.pop_back();
  EXPECT_EXIT((stdout_to_stderr(), lattice.sarcomer->state_change(2.0, 0.5)), ExitedWithCode(1),
              "Error: vectors addition!\n");
}

// Two filaments, of 6 degrees of freedom each, with an element of K = 2 (30 + c / dt), c / dt = 4.
TEST(Sarcomer, SeriesElementIsASpringWithADamper) {
  LatticeSettings settings;
  settings.filaments = 2;
  settings.see_damping = 4.0 * SmallLattice::step;
  SmallLattice lattice(settings);
  Sarcomer& sarcomer = *lattice.sarcomer;
  ASSERT_EQ(lattice.number(), 13u);
  EXPECT_EQ(sarcomer.see_dof, 12u);
  dealii::DynamicSparsityPattern dynamic(13, 13);
  sarcomer.see_create_sparsity(dynamic, 13);
  unsigned const inner = 3;  // last node of fibre 1 of the first filament
  EXPECT_EQ(dynamic.n_nonzero_elements(), 4u);
  EXPECT_TRUE(dynamic.exists(inner, 12) && dynamic.exists(12, inner));
  dealii::SparsityPattern pattern;
  pattern.copy_from(dynamic);
  dealii::SparseMatrix<double> matrix(pattern);
  dealii::Vector<double> rhs(13);
  lattice.filament(0).data.u[1] = 0.5;
  sarcomer.see_displacement = 2.5;
  sarcomer.see_extension_old = 1.25;
  timeForAll = 0.125;
  sarcomer.see_create_matrix(matrix, rhs);
  EXPECT_DOUBLE_EQ(matrix(inner, inner), 68.0);
  EXPECT_DOUBLE_EQ(matrix(12, 12), 68.0);
  EXPECT_DOUBLE_EQ(matrix(inner, 12), -68.0);
  EXPECT_DOUBLE_EQ(matrix(12, inner), -68.0);
  // Extension 2, grown by 0.75: 2 (30 * 2 + 4 * 0.75).
  EXPECT_DOUBLE_EQ(rhs[inner], 126.0);
  EXPECT_DOUBLE_EQ(rhs[12], -126.0);
  EXPECT_DOUBLE_EQ(rhs.l1_norm(), 252.0);
  // Time, force of the spring alone, velocity 0.75 / 0.5.
  EXPECT_EQ(read_file("SEE_velocity.csv"), "0.125000,60.000000,1.500000\n");
}

// Titin k at the extension x stretches the thick filament K: k x = K (rest - x).
TEST(Sarcomer, PrestressBalancesTitinThickFilamentAndSeriesElement) {
  LatticeSettings settings;
  settings.titin_stiffness = 12.0;
  testing::internal::CaptureStdout();
  SmallLattice lattice(settings);
  std::string const said = testing::internal::GetCapturedStdout();
  double const k = 12.0;
  double const K = SmallLattice::EA[0] / SmallLattice::thick_length;
  double const expected = k * K / (k + K) * SmallLattice::titin_rest;
  EXPECT_NEAR(lattice.sarcomer->FindTitinForce(), expected, 1e-6);  // k times the 1e-8 nm left
  double const extension = expected / settings.see_stiffness;
  EXPECT_NEAR(lattice.sarcomer->see_initial_displacement, extension, 1e-8);
  char lines[200];
  std::snprintf(lines, sizeof lines,
                "Force Titin: %g\nSee Force: %g\nSetInitialPrescribedDisplacement: %g\n", expected,
                expected, extension);
  EXPECT_EQ(said, lines);

  // So the actin end stays where it is, and the thick filament alone gives way.
  lattice.solve(0, 0.0);
  EXPECT_NEAR(lattice.sarcomer->see_displacement, extension, 1e-8);
  EXPECT_NEAR(lattice.sarcomer->get_last_actin_displacement(), 0.0, 1e-7);
  EXPECT_NEAR(lattice.filament().data.u[0][6], expected / K, 1e-7);
  EXPECT_NEAR(-lattice.sarcomer->force, expected, 1e-6);
}

TEST(Sarcomer, PrestressSearchFollowsTheSignAndEnds) {
  SmallLattice lattice;
  Sarcomer& sarcomer = *lattice.sarcomer;
  EXPECT_EQ(sarcomer.see_initial_displacement, 0.0);
  for (double const force : {3.0, 300.0, 1234.5, -299.0, -3210.0, 0.0}) {
    sarcomer.SetInitialPrescribedDisplacement(force);
    EXPECT_NEAR(sarcomer.see_initial_displacement, force / 30.0, 1e-10) << force;
  }
  TestSpring slack(0.0);
  sarcomer.see_model = &slack;
  EXPECT_EXIT(sarcomer.SetInitialPrescribedDisplacement(1.0), ExitedWithCode(1),
              "titin prestress: .* at no extension");
  TestSpring stiff(2.0 * SmallLattice::EA[0] / SmallLattice::thick_length);
  sarcomer.titin_model = &stiff;  // the search for its force can't settle
  EXPECT_EXIT(sarcomer.FindTitinForce(), ExitedWithCode(1), "titin prestress: no extension");
}

TEST(Sarcomer, LengthIsAStepFromThePresentPositionAndForceIsTaken) {
  SmallLattice lattice;
  Sarcomer& sarcomer = *lattice.sarcomer;
  EXPECT_EQ(sarcomer.boundary_mode, 10u);
  sarcomer.see_displacement = 1.5;
  sarcomer.see_initial_displacement = 0.25;
  for (unsigned mode = 0; mode < 4; ++mode) {
    EXPECT_EQ(sarcomer.set_boundary_mode(mode, 4.0), 0);
    EXPECT_EQ(sarcomer.boundary_mode, mode);
    EXPECT_EQ(sarcomer.boundary_value, mode % 2 == 0 ? 2.75 : 4.0);
  }
}

TEST(Sarcomer, CountThatDoesNotFillTheRowsIsReported) {
  LatticeSettings settings;
  settings.filaments = 3;
  settings.full_sarcomer = 1;
  SmallLattice lattice(settings);
  lattice.number();
  Sarcomer::Constraints constraints;
  Sarcomer::Values values;
  lattice.sarcomer->set_boundary_mode(2, 1.0);
  testing::internal::CaptureStdout();
  lattice.sarcomer->create_fibre_bnd_displacement(constraints, values);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Number of half sarcomeres does not match the number of filaments in series!\n");
  EXPECT_EQ(values,
            (Sarcomer::Values{{3, 1.0}, {5, 1.0}, {9, 0.0}, {11, 0.0}, {15, 1.0}, {17, 1.0}}));
  EXPECT_EQ(lattice.sarcomer->master_dofs, std::vector<unsigned>{0});
}

}  // namespace
