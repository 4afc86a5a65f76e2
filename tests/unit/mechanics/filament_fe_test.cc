// Would catch: dofs at the wrong nodes or in the wrong order, a bond of another fibre in the mesh,
// a stiffness or force with the wrong length, sign or offset, a correction that is not added.

#include <deal.II/lac/vector.h>
#include <gtest/gtest.h>

#include "mechanics/filament_fe.h"
#include "records/filament_data.h"

namespace {

/// Nodes at 0, 20, 30 .. 70 nm; heads of fibre 0 and bonds of the actin fibres on them.
struct Chain {
  Chain() {
    for (unsigned i = 1; i < x.size(); ++i) x[i] = 10.0 + 10.0 * i;
  }
  void head(unsigned node, unsigned actin_fibre, unsigned site) {
    heads.push_back({node, 0, 1, site, actin_fibre, 0, 0, 0});
    attached.clear();
    for (MyosinHead_s& each : heads) attached.push_back(&each);
  }

  std::valarray<double> x = std::valarray<double>(0.0, 7);
  FibreDisplacement u{7};
  std::vector<MyosinHead_s> heads;
  std::vector<MyosinHead_s*> attached;
  FilamentFEM fem{attached, x, u, 50.0, 12.0};
};

TEST(FilamentFEM, MeshFollowsTheBondsOfItsOwnFibre) {
  Chain chain;
  chain.fem.prepare_nodes(0);
  EXPECT_EQ(chain.fem.n_dofs(), 2u);
  EXPECT_EQ(chain.fem.get_local_dof(6), 1u);
  chain.head(4, 2, 5);
  chain.head(0, 1, 3);  // at the ends: nothing new
  chain.head(6, 2, 2);
  chain.head(4, 1, 6);  // a node that has a bond already
  chain.fem.prepare_nodes(0);
  EXPECT_EQ(chain.fem.n_dofs(), 3u);
  chain.fem.prepare_nodes(1);
  EXPECT_EQ(chain.fem.n_dofs(), 3u);
  EXPECT_EQ(chain.fem.get_local_dof(3), 1u);
  chain.fem.prepare_nodes(2);
  ASSERT_EQ(chain.fem.n_dofs(), 4u);
  EXPECT_EQ(chain.fem.get_local_dof(0), 0u);
  EXPECT_EQ(chain.fem.get_local_dof(2), 1u);  // though bound after node 5
  EXPECT_EQ(chain.fem.get_local_dof(5), 2u);
  EXPECT_EQ(chain.fem.get_local_dof(6), 3u);
  EXPECT_EQ(chain.fem.get_local_dof(3), 0u);  // no degree of freedom of its own
  chain.fem.prepare_nodes(3);
  EXPECT_EQ(chain.fem.n_dofs(), 2u);
}

// Two springs in series, of 30 and 40 nm and EA = 600 pN, drawn at the far end with 3 pN.
TEST(FilamentFEM, TwoSpringsInSeries) {
  Chain chain;
  chain.head(2, 1, 0);
  chain.fem.prepare_nodes(0);
  unsigned const offset = 3;
  double const F = 3.0;
  dealii::Vector<double> drawn(7);
  drawn[4] = F * 30.0 / 600.0;
  drawn[5] = drawn[4] + F * 40.0 / 600.0;
  dealii::Vector<double> forces(7);
  auto const add = [&](unsigned a, unsigned b, double k) {
    forces[a] += k * (drawn[a] - drawn[b]);
    forces[b] += k * (drawn[b] - drawn[a]);
  };
  chain.fem.create_matrix(add, offset);
  double const expected[] = {0, 0, 0, -F, 0, F, 0};
  for (unsigned i = 0; i < 7; ++i) EXPECT_NEAR(forces[i], expected[i], 1e-12) << i;

  // What the chain then exerts on its nodes is the opposite of what draws it.
  chain.u.fill(1.0);
  chain.fem.interpolate_displacement(drawn, offset);
  EXPECT_DOUBLE_EQ(chain.u[0], 1.0);
  EXPECT_DOUBLE_EQ(chain.u[2], 1.15);
  EXPECT_DOUBLE_EQ(chain.u[6], 1.35);
  EXPECT_EQ(chain.u[1], 1.0);  // not its business
  dealii::Vector<double> rhs(7);
  rhs = 10.0;
  chain.fem.create_rhs(rhs, offset);
  for (unsigned i = 0; i < 7; ++i) EXPECT_NEAR(rhs[i], 10.0 - expected[i], 1e-12) << i;
}

}  // namespace
