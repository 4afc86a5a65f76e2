// Would catch: a wrong switching ratio, the protocol's value taken as the concentration, two draws
// for the two moves, a bound head that doesn't hold a segment on, sites of a segment that differ.

#include "activation/activation_2s.h"

#include <gtest/gtest.h>

#include <cmath>

#include "lattice/geometry_vertebrae.h"
#include "records/filament_data.h"
#include "support/scripted_rand.h"
#include "support/work_dir.h"

namespace {

/// Two thin filaments of 12 nodes: 8 segments of 3 sites. The calcium is 1e-2.
struct Bench {
  explicit Bench(std::string const& settings) {
    write_parameters("geom_vertebrae.prm", "actin", {"dx_actin = 1", "length_actin = 12"});
    geometry = std::make_unique<GeometryVertebrae>(GeometryParameter_s{});
    geometry->initialize_filament(data);
    write_file("ca_protocol.dat", "0 0.001 0 0 -2\n0.5 0.001 0 0 -9\n1 0.001 0 0 0\n");
    write_file("activ_2s.prm",
               "subsection structure\n set segment_length = 3\nend\n"
               "subsection two_state\n" +
                   settings + "\nend\n");
    model = std::make_unique<Activation2SModel>(
        ActivationModelParameter{geometry.get(), nullptr, nullptr, 0.1, 0, 100});
  }

  void step(std::vector<double> variates, double time = 0.0) {
    variates.resize(8, 1.0);
    ScriptedRand::script(variates);
    model->state_change(data, time, counts);
    EXPECT_EQ(ScriptedRand::unused(), 0u);
    EXPECT_TRUE(counts.empty());
  }

  void expect_sites(unsigned fibre, std::vector<unsigned> const& nodes, unsigned state,
                    double factor) const {
    for (unsigned const node : nodes) {
      ActinSite_s const& site = data.sites[fibre][node];
      EXPECT_EQ(site.state, state) << node;
      EXPECT_EQ(site.k_on_factor, factor) << node;
      EXPECT_EQ(site.k_stroke_factor, factor) << node;
    }
  }

  std::unique_ptr<GeometryVertebrae> geometry;
  FilamentData data;
  std::unique_ptr<Activation2SModel> model;
  std::vector<int> counts;
};

TEST(Activation2S, RatioFollowsTheTwoIons) {
  Bench const bench("set lam = 8\nset ep = 0.01");
  auto const& model = *bench.model;
  EXPECT_NEAR(model.get_lti(1e12), 1.0 / 8.0, 1e-12);
  EXPECT_DOUBLE_EQ(model.get_lti(1e-6), (1.0 + 1.24 + 0.1984) / ((0.0124 + 0.1984) * 8.0));
  EXPECT_NEAR(model.get_lti(1e-15), 1.0 / (1.24e-9 * 0.01 * 8.0), 1e3);  // 1 / (k1t ep Ca lam)
  Bench const leaky("set e0 = 0.5\nset ep = 0.02\nset lam = 4");
  EXPECT_NEAR(leaky.model->get_lti(0.0), 1.0 / (0.5 * 0.02 * 4.0), 1e-12);
}

// k_12 dt = 0.4; at the calcium 1e-2, k1t Ca = 1, q = 2 and L = 4 / (2.5 * 4) = 0.4: off at 0.16.
char const* const settings =
    "set k1t = 100\nset k2t = 200\nset ep = 0.5\nset lam = 4\nset k_12 = 4";

TEST(Activation2S, OneDrawServesBothMoves) {
  Bench bench(settings);
  EXPECT_DOUBLE_EQ(bench.model->get_lti(0.01), 0.4);
  bench.step({0.39, 0.41, 0.15});
  bench.expect_sites(1, {0, 2, 4}, 0, 1.0);   // on
  bench.expect_sites(1, {6, 8, 10}, 1, 1.0);  // still off, with its first factors
  bench.expect_sites(1, {1, 3, 5}, 1, 0.0);   // on and off again
  std::vector<double> info;
  bench.model->state_info(info);
  EXPECT_EQ(info, (std::vector<double>{21.0, 3.0}));
  bench.step({0.17});
  bench.expect_sites(1, {0, 2, 4}, 0, 1.0);
  bench.step({0.15}, 0.7);  // the protocol's later rows don't count
  bench.expect_sites(1, {0, 2, 4}, 1, 0.0);
}

TEST(Activation2S, BoundHeadHoldsItsSegmentOn) {
  Bench bench(settings);
  bench.data.bound_count[2][5] = 1;
  bench.step({1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 0.01, 0.01});
  bench.expect_sites(2, {1, 3, 5}, 0, 1.0);
  bench.expect_sites(2, {7, 9, 11}, 1, 0.0);
}

TEST(Activation2S, DrawsReachTheStationaryShare) {
  Bench bench(settings);
  // Per step on with 0.4 - 0.16, since the lowest variates switch off again; off with 0.16.
  double on = 0.0;
  int const n = 20000;
  for (int i = 0; i < n; ++i) {
    bench.model->state_change(bench.data, 0.0, bench.counts);
    std::vector<double> info;
    bench.model->state_info(info);
    on += info[1] / 24.0 / n;
  }
  // 8 n segments, correlated over 1 / (0.24 + 0.16) steps on each side.
  EXPECT_NEAR(on, 0.6, 4.5 * std::sqrt(0.24 * 4.0 / (8.0 * n)));
}

TEST(Activation2S, WithoutK12NothingMoves) {
  Bench bench("set k_12 = 0");
  bench.step({0.0, 0.0, 0.0, 0.0});
  bench.expect_sites(1, {0, 11}, 1, 1.0);
}

TEST(Activation2SDeathTest, RefusesWhatHasNoSense) {
  for (std::string const line : {"lam = 0", "k_12 = -1", "ep = inf"}) {
    EXPECT_EXIT(Bench("set " + line), testing::ExitedWithCode(1),
                "activ_2s.prm.*" + line.substr(0, line.find(' ')));
  }
}

}  // namespace
