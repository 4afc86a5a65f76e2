// Would catch: a bond on the wrong degrees of freedom, displacements that are not straight in the
// node index, a strain without displacement or lever, force from a pending head, a wrong titin
// sign, a stiffness that is not the derivative of the force, a head lost or released too early.

#include <deal.II/lac/full_matrix.h>
#include <deal.II/lac/vector.h>
#include <gtest/gtest.h>

#include "lattice/geometry_vertebrae.h"
#include "support/scripted_rand.h"
#include "support/small_lattice.h"
#include "support/work_dir.h"

namespace {

/// The filament's stiffness and forces, with its numbers from 0 on.
struct System {
  explicit System(Filament& filament) {
    filament.prepare_nodes();
    filament.set_offset(0);
    n = filament.n_dofs();
    matrix.reinit(n, n);
    filament.create_matrix([this](unsigned i, unsigned j, double k) {
      springs.push_back({i, j});
      matrix(i, i) += k;
      matrix(j, j) += k;
      matrix(i, j) -= k;
      matrix(j, i) -= k;
    });
    rhs.reinit(n);
    filament.create_rhs(rhs);
  }
  unsigned n;
  std::vector<std::pair<unsigned, unsigned>> springs;
  dealii::FullMatrix<double> matrix;
  dealii::Vector<double> rhs;
};

// How to drive a filament by hand: one bond from 30 to 25 nm, the outer end of the series elastic
// element drawn to 2 nm. `System` above does without a lattice.
TEST(Filament, DrivenByHand) {
  SmallLattice lattice;
  lattice.bind(0, 3, 1, 5);
  lattice.solve_length(2.0);
  double const thick = 30.0 / SmallLattice::EA[0];
  double const thin = (95.0 - 25.0) / SmallLattice::EA[1];
  double const see = 1.0 / lattice.settings.see_stiffness;
  double const bond = 1.0 / SmallLattice::bond_k[0];
  double const tension = (2.0 - 5.0) / (thick + thin + see + bond);
  EXPECT_NEAR(lattice.filament().bond_force(0), tension, 1e-9);
  EXPECT_NEAR(lattice.measured.force, -tension, 1e-9);
}

// Fibres of 51, 379 and 379 nodes and one bond: their numbers start at 100, 103 and 105.
TEST(Filament, NumbersFibreAfterFibre) {
  SmallLattice lattice;
  write_file("geom_vertebrae.prm", "");
  GeometryVertebrae const full_size({});
  Filament filament(full_size, lattice.slow, lattice.fast, *lattice.stepper, -1, nullptr);
  ASSERT_EQ(filament.data.x[0].size(), 51u);
  ASSERT_EQ(filament.data.x[1].size(), 379u);
  MyosinHead_s head{5, 0, 1, 120, 2, 0, 0, 0};
  filament.data.attached = {&head};
  filament.prepare_nodes();
  filament.set_offset(100);
  EXPECT_EQ(filament.n_dofs(), 8u);
  unsigned const first[] = {100, 103, 105};
  unsigned const last[] = {102, 104, 107};
  for (unsigned fibre = 0; fibre < filament.n_fibre(); ++fibre) {
    EXPECT_EQ(filament.get_bnd_dof(0, fibre), first[fibre]);
    EXPECT_EQ(filament.get_bnd_dof(1, fibre), last[fibre]);
  }
  // Two elements, one and two, and the bond.
  using Pairs = std::vector<std::pair<unsigned, unsigned>>;
  EXPECT_EQ(System(filament).springs, (Pairs{{0, 1}, {1, 2}, {3, 4}, {5, 6}, {6, 7}, {1, 6}}));
  EXPECT_EQ(filament.direction, -1);
  EXPECT_EQ(filament.n_states(), 3u);
}

TEST(Filament, SolutionComesBackStraightInTheNodeIndex) {
  SmallLattice lattice;
  lattice.bind(0, 11, 2, 8);  // from node 4
  lattice.bind(0, 12, 2, 2);  // from node 5, to a lower site
  Filament& filament = lattice.filament();
  auto& u = filament.data.u;
  System system(lattice.filament());
  ASSERT_EQ(system.n, 10u);
  dealii::Vector<double> solution(10);  // 0, 4, 5, 6 | 0, 19 | 0, 2, 8, 19
  double const values[] = {0, 8, 8.5, 7, 1, 20, 0.5, 4.5, 1.5, 12.5};
  std::copy(values, values + 10, solution.begin());
  filament.correct(solution);
  for (unsigned i = 0; i <= 4; ++i) EXPECT_DOUBLE_EQ(u[0][i], 2.0 * i);  // though 20 nm, then 10
  EXPECT_DOUBLE_EQ(u[0][6], 7.0);
  for (unsigned i = 0; i < 20; ++i) EXPECT_DOUBLE_EQ(u[1][i], 1.0 + i);
  for (unsigned i = 2; i <= 8; ++i) EXPECT_DOUBLE_EQ(u[2][i], 4.5 - 0.5 * (i - 2));
  for (unsigned i = 8; i < 20; ++i) EXPECT_DOUBLE_EQ(u[2][i], 1.5 + i - 8);
  EXPECT_DOUBLE_EQ(filament.get_last_actin_displacement(), 20.0);
  filament.correct(solution);  // adds
  EXPECT_DOUBLE_EQ(u[2][6], 5.0);
  for (unsigned fibre = 0; fibre < 3; ++fibre) {
    for (unsigned i = 0; i < u[fibre].size(); ++i) {
      EXPECT_EQ(filament.get_actin_position(fibre, i), filament.data.position(fibre)[i]);
      EXPECT_EQ(filament.data.position(fibre)[i], filament.data.x[fibre][i] + u[fibre][i]);
    }
  }
  filament.resetDisplacement();
  EXPECT_EQ(u[2][8], 0.0);
}

TEST(Filament, StrainsAndPositions) {
  SmallLattice lattice;
  lattice.bind(0, 3, 1, 5);          // node 2 at 30, site at 25
  lattice.bind(0, 7, 2, 9, 2, 1);    // node 3 at 40, site at 45, after the stroke
  lattice.bind(0, 13, 1, 12, 2, 2);  // node 5 at 60, site at 60, protein-C
  Filament& filament = lattice.filament();
  filament.data.u[0].fill(0.5);
  filament.data.u[1].fill(2.0);
  filament.data.u[2].fill(-1.0);
  double myosin = 0.0, actin = 0.0;
  filament.get_crossbridge_positions(1, myosin, actin);
  EXPECT_EQ(myosin, 40.5);
  EXPECT_EQ(actin, 44.0);
  EXPECT_EQ(filament.get_myosin_position(13), 60.5);  // an index into `heads`
  double const rest[] = {-5.0, 5.0, 0.0};
  double const now[] = {-3.5, 3.5, 1.5};
  double const stretched[] = {-3.5, 3.5 + SmallLattice::strokes[1], 1.5};
  double const k[] = {SmallLattice::bond_k[0], SmallLattice::bond_k[1], SmallLattice::bond_k[2]};
  for (unsigned i = 0; i < 3; ++i) {
    EXPECT_EQ(filament.get_strain(i), rest[i]);
    EXPECT_EQ(filament.get_strain_euler(i), now[i]);
    EXPECT_EQ(filament.bond_strain(i), stretched[i]);
    EXPECT_EQ(filament.bond_stiffness(i), k[i]);
    EXPECT_DOUBLE_EQ(filament.bond_force(i), k[i] * stretched[i]);
  }
  EXPECT_EQ(filament.n_in_state(2), 2u);
  FILE* const forces = std::fopen("forces.csv", "w");
  for (int fibre : {1, 2}) filament.writeActinNodeForces(forces, fibre);
  std::fclose(forces);
  EXPECT_EQ(read_file("forces.csv"), "5,5.250000\n9,-26.250000\n");  // not of protein-C
}

TEST(Filament, PendingHeadKeepsMeshAndPatternButCarriesNothing) {
  SmallLattice lattice;
  MyosinHead_s& pending = lattice.bind(0, 5, 1, 6);
  lattice.filament().data.u[1].fill(3.0);
  System const before(lattice.filament());
  // Node 2 and site 6: numbers 1 of 0, 1, 2 and 4 of 3, 4, 5.
  EXPECT_EQ(before.matrix(1, 4), -1.5);
  EXPECT_DOUBLE_EQ(before.rhs[1], 4.5);
  EXPECT_DOUBLE_EQ(before.rhs[4], -4.5);
  pending.detach_pending = 1;
  pending.state = 0;
  System const after(lattice.filament());
  EXPECT_EQ(after.n, 8u);
  EXPECT_EQ(after.springs, before.springs);
  EXPECT_EQ(after.matrix(1, 4), 0.0);
  EXPECT_DOUBLE_EQ(after.matrix(1, 1), before.matrix(1, 1) - 1.5);
  EXPECT_EQ(after.rhs.linfty_norm(), 0.0);
}

// Several bonds, two of them at one node, one with a law whose stiffness changes, and titin.
TEST(Filament, MatrixIsTheDerivativeOfTheForces) {
  LatticeSettings settings;
  settings.titin_stiffness = 0.4;
  SmallLattice lattice(settings);
  XB_SigmoidalStiffness curved("curved.prm");  // width 0.5 nm about 0.01 nm
  lattice.slow.xb_model = &curved;
  lattice.bind(0, 3, 1, 6);
  lattice.bind(0, 4, 2, 5, 2, 1);
  lattice.bind(0, 10, 1, 10, 1, 2);
  lattice.bind(0, 13, 1, 13, 1, 1).detach_pending = 1;
  Filament& filament = lattice.filament();
  filament.data.u[0].fill(0.3);
  System const present(lattice.filament());
  double const h = 1e-4;
  for (unsigned j = 0; j < present.n; ++j) {
    dealii::Vector<double> shift(present.n), below(present.n), above(present.n);
    shift[j] = h;
    filament.correct(shift);
    filament.create_rhs(above);
    shift[j] = -2.0 * h;
    filament.correct(shift);
    filament.create_rhs(below);
    shift[j] = h;
    filament.correct(shift);
    for (unsigned i = 0; i < present.n; ++i) {
      EXPECT_NEAR(present.matrix(i, j), (below[i] - above[i]) / (2.0 * h), 1e-6) << i << ' ' << j;
    }
  }
}

TEST(Filament, TitinPullsWithItsPresentForceAndItsRestStiffness) {
  SmallLattice lattice;
  lattice.geometry->titin_enabled = 1;
  write_parameters("titin.prm", "SigmoidalStiffness", {"x0 = 22", "b = 2"});
  XB_SigmoidalStiffness const titin("titin.prm");
  Filament filament(*lattice.geometry, lattice.slow, lattice.fast, *lattice.stepper, 1, &titin);
  filament.data.u[0].fill(2.0);
  filament.data.u[1].fill(5.0);
  System const system(filament);
  double const force = titin.GetForce(SmallLattice::titin_rest + 5.0 - 2.0);
  double const expected[] = {0, force, 0, -force, 0, 0};
  for (unsigned i = 0; i < 6; ++i) EXPECT_NEAR(system.rhs[i], expected[i], 1e-9) << i;
  EXPECT_DOUBLE_EQ(system.matrix(1, 3), -titin.GetStiffness(SmallLattice::titin_rest));
}

TEST(Filament, ReleasedHeadBlocksItsSiteForOneMoreStep) {
  SmallLattice lattice;
  MyosinHead_s& leaving = lattice.bind(0, 5, 1, 6, 1, 1);
  MyosinHead_s& staying = lattice.bind(0, 12, 2, 14);
  lattice.fast.k[1][0] = 1.0 / SmallLattice::step;  // certain
  Filament& filament = lattice.filament();
  FilamentData const& data = filament.data;
  unsigned const draws = ScriptedRand::draws();
  EXPECT_EQ(filament.state_change(0.0, 0.0), 0);
  EXPECT_EQ(ScriptedRand::draws() - draws, data.heads.size());
  EXPECT_EQ(data.attached, (std::vector<MyosinHead_s*>{&leaving, &staying}));
  EXPECT_EQ(filament.n_attached(), 1u);
  EXPECT_EQ(leaving.detach_pending, 1u);
  EXPECT_EQ(leaving.state, 0u);
  EXPECT_EQ(leaving.actin_site, 6u);
  EXPECT_EQ(data.bound_count[1][6] + data.bound_count[0][2], 2u);
  EXPECT_EQ(data.sites[1][6].head, &leaving);

  filament.state_change(0.0, 0.0);
  EXPECT_EQ(data.attached, (std::vector<MyosinHead_s*>{&staying}));
  EXPECT_EQ(leaving.detach_pending, 0u);
  EXPECT_EQ(leaving.actin_site, unbound);
  EXPECT_EQ(data.bound_count[1][6] + data.bound_count[0][2], 0u);
  EXPECT_EQ(data.sites[1][6].head, nullptr);
}

TEST(Filament, ReleasedHeadMayBindAgainAtOnce) {
  SmallLattice lattice;
  MyosinHead_s& head = lattice.bind(0, 4, 1, 6, 1, 1);
  lattice.fast.k[1][0] = lattice.fast.k[0][1] = 1e9;
  Filament& filament = lattice.filament();
  filament.state_change(0.0, 0.0);
  ASSERT_EQ(head.detach_pending, 1u);
  filament.state_change(0.0, 0.0);
  ASSERT_EQ(filament.data.attached, (std::vector<MyosinHead_s*>{&head}));
  EXPECT_EQ(head.detach_pending, 0u);
  EXPECT_EQ(head.state, 1u);
  EXPECT_EQ(filament.data.bound_count[0][2], 1u);
  EXPECT_EQ(filament.data.sites[head.actin_fibre][head.actin_site].head, &head);
}

// All sites but one are closed to binding, and every head that sees it would bind.
TEST(Filament, FirstHeadTakesTheSiteThatOthersSeeToo) {
  SmallLattice lattice;
  FilamentData& data = lattice.filament().data;
  for (auto& fibre : data.sites) {
    for (ActinSite_s& site : fibre) site.k_on_factor = 0.0;
  }
  data.sites[1][9].k_on_factor = 1.0;
  std::vector<MyosinHead_s*> seeing;
  for (MyosinHead_s& head : data.heads) {
    std::vector<BindingSite_s> candidates;
    lattice.geometry->get_binding_sites(data, head, candidates);
    if (!candidates.empty()) seeing.push_back(&head);
  }
  ASSERT_GT(seeing.size(), 1u);
  lattice.slow.k[0][1] = 1e9;
  lattice.filament().state_change(0.0, 0.0);
  EXPECT_EQ(data.attached, (std::vector<MyosinHead_s*>{seeing.front()}));
  EXPECT_EQ(seeing.front()->actin_site, 9u);
  EXPECT_EQ(data.bound_count[1][9], 1u);
}

}  // namespace
