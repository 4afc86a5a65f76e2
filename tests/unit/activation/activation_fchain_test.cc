// Would catch: segments drawn in another order or with more than one draw, a chain that moves with
// its segments and not a step later, the wrong weak heads pinning, factors on the wrong nodes, a
// curvature other than the circle's, files or scales of the wrong regulation.

#include "activation/activation_fchain.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <sstream>

#include "kinetics/model.h"
#include "lattice/geometry_vertebrae.h"
#include "records/filament_data.h"
#include "support/bare_geometry.h"
#include "support/scripted_rand.h"
#include "support/work_dir.h"

namespace {

/// Detached, weakly bound, after the stroke.
struct Heads : Model {
  Heads() : Model({}, 3) {}
  bool IsPowerStrokeState(int state) const override { return state == 2; }
  double get_k(double, unsigned, unsigned) const override { return 0.0; }
};

struct Site_s {
  double mean, sd;
  int state;
};

/// Two thin filaments of 70 nodes, so four chains of 35 sites in 5 segments. With steps of 0.5 a
/// segment opens on a variate below 0.5 (kb) or 0.4 (calcium, without any) and closes on one below
/// the chain's probability, under calcium 0.4 in a free chain.
struct Bench {
  explicit Bench(std::string const& rates = "set km = 1\nset kps = 1\n", int indicator = 0,
                 int healthy = 100, unsigned nodes = 70) {
    write_parameters("geom_vertebrae.prm", "actin",
                     {"dx_actin = 1", "length_actin = " + std::to_string(nodes)});
    write_file("mg_old.prm", "subsection rates\n" + rates + "end\n");
    write_parameters("KbActivationExtensible.prm", "rates", {"kt_eff = 2"});
    write_file("ca_protocol.dat", indicator < 1 ? "0 0.5 0 0 1\n" : "0 0.5 0 0 0\n");
    geometry = std::make_unique<GeometryVertebrae>(GeometryParameter_s{});
    geometry->initialize_filament(data);
    n_segments = nodes == 70 ? 20 : 22;
    unsigned const before = ScriptedRand::draws();
    ScriptedRand::script({0.5});
    model = std::make_unique<ActivationFChainModel>(
        ActivationModelParameter{geometry.get(), &heads, &heads, 0.5, indicator, healthy});
    EXPECT_EQ(ScriptedRand::draws(), before + 1);
  }

  /// A step in which the given segments, counted over all chains, draw their variate, others 1.
  void step(std::map<unsigned, double> const& variates = {}) {
    std::vector<double> script(n_segments, 1.0);
    for (auto const& [segment, variate] : variates) script[segment] = variate;
    ScriptedRand::script(script);
    model->state_change(data, 0.0, counts);
    EXPECT_EQ(ScriptedRand::unused(), 0u);
  }

  void open_all() {
    std::map<unsigned, double> variates;
    for (unsigned i = 0; i < n_segments; ++i) variates[i] = 0.1;
    step(variates);
  }

  ActinSite_s& site(unsigned chain, unsigned i) {
    return data.sites[chain / 2 + 1][2 * i + chain % 2];
  }

  void bind(MyosinHead_s& head, unsigned state, unsigned chain, unsigned i) {
    head.state = state;
    site(chain, i).head = &head;
    data.bound_count[chain / 2 + 1][2 * i + chain % 2] = 1;
  }

  /// The lines of "TroponinAngles.csv": by site, then by chain.
  std::vector<std::vector<Site_s>> dump() const {
    FILE* const file = std::fopen("dump", "wt");
    model->write_state_data(data, file, false);
    model->write_state_data(data, file, true);
    std::fclose(file);
    std::vector<std::vector<Site_s>> rows;
    for (std::string const& line : read_lines("dump")) {
      std::vector<Site_s> row;
      std::istringstream cells(line);
      char comma;
      for (Site_s s; cells >> s.mean >> comma >> s.sd >> comma >> s.state;) {
        row.push_back(s);
        cells >> comma >> comma;
      }
      EXPECT_EQ(row.size(), 4u) << line;
      rows.push_back(row);
    }
    return rows;
  }

  Heads heads;
  std::unique_ptr<GeometryVertebrae> geometry;
  std::unique_ptr<ActivationFChainModel> model;
  FilamentData data;
  std::vector<int> counts;
  unsigned n_segments;
};

TEST(ActivationFChain, StartsBlocked) {
  Bench bench;
  bench.step();
  EXPECT_EQ(bench.counts, (std::vector<int>{20, 0, 0, 0, 0, 0}));
  std::vector<double> info;
  bench.model->state_info(info);
  EXPECT_EQ(info, (std::vector<double>{20, 120, 0, 0}));
  auto const rows = bench.dump();
  ASSERT_EQ(rows.size(), 35u);
  for (unsigned i = 0; i < 35; ++i) {
    for (unsigned chain = 0; chain < 4; ++chain) {
      bool const troponin = i % 7 == 3;
      Site_s const& found = rows[i][chain];
      EXPECT_EQ(found.state, troponin ? 0 : 1);
      EXPECT_EQ(found.sd == 0.0, troponin);
      EXPECT_EQ(found.mean == -0.3, troponin);
      ActinSite_s const& site = bench.site(chain, i);
      EXPECT_EQ(site.state, troponin ? 1u : 2u);
      EXPECT_EQ(site.k_on_factor > 0.0, !troponin);
      EXPECT_LT(site.k_on_factor, 0.5);
      EXPECT_EQ(site.k_stroke_factor, site.k_on_factor);
      EXPECT_EQ(site.k_off_factor, 1.0);
    }
  }
}

TEST(ActivationFChain, SegmentsOpenInOrderAndTheChainFollowsAStepLater) {
  Bench bench;
  bench.step({{2, 0.49}, {3, 0.51}, {5, 0.0}, {19, 0.3}});
  EXPECT_EQ(bench.counts, (std::vector<int>{17, 3, 0, 0, 0, 0}));
  auto const expect_troponin = [&](unsigned chain, unsigned segment, bool pinned) {
    unsigned const i = 7 * segment + 3;
    EXPECT_EQ(bench.dump()[i][chain].sd == 0.0, pinned);
    EXPECT_EQ(bench.dump()[i][chain].state, 1);
    EXPECT_EQ(bench.site(chain, i).state, 2u);
    EXPECT_EQ(bench.site(chain, i).k_on_factor == 0.0, pinned);
  };
  for (bool const pinned : {true, false}) {
    expect_troponin(0, 2, pinned);
    expect_troponin(1, 0, pinned);
    expect_troponin(3, 4, pinned);
    bench.step();
  }
}

TEST(ActivationFChain, FreeChainAndItsClosing) {
  Bench bench("set km = 1\n");
  bench.open_all();
  double const p = 0.5 * std::erfc(0.3 / (0.518 * std::sqrt(2.0)));  // closes below p kt_eff dt
  bench.step({{6, p - 1e-6}, {7, p + 1e-6}});
  EXPECT_EQ(bench.counts, (std::vector<int>{1, 19, 0, 0, 0, 0}));
  auto const rows = bench.dump();
  for (unsigned i = 0; i < 35; ++i) {
    for (unsigned chain = 0; chain < 4; ++chain) {
      EXPECT_EQ(rows[i][chain].mean, 0.0);
      EXPECT_EQ(rows[i][chain].sd, 0.518);
      bool const closed = chain == 1 && i == 10;
      EXPECT_EQ(rows[i][chain].state, closed ? 0 : 1);
      EXPECT_NEAR(bench.site(chain, i).k_on_factor, closed ? 0.0 : 0.5, 1e-15);
    }
  }
}

TEST(ActivationFChain, HeadsHoldTheirSites) {
  Bench bench;
  MyosinHead_s strong = {}, weak = {}, at_troponin = {};
  bench.step({{10, 0.1}});
  bench.bind(strong, 2, 2, 1);
  bench.bind(weak, 1, 2, 5);
  bench.bind(at_troponin, 2, 2, 10);
  bench.step();
  EXPECT_EQ(bench.site(2, 1).state, 0u);
  EXPECT_EQ(bench.site(2, 1).k_on_factor, 0.0);
  EXPECT_EQ(bench.site(2, 5).state, 2u);
  EXPECT_EQ(bench.site(2, 10).state, 1u);  // a blocked segment's troponin
  bench.step();
  auto const rows = bench.dump();
  EXPECT_EQ(rows[1][2].state, 3);
  EXPECT_EQ(rows[1][2].mean, 0.2);
  EXPECT_EQ(rows[5][2].state, 2);
  EXPECT_EQ(rows[10][2].state, 0);
  EXPECT_EQ(rows[10][2].mean, -0.3);
  weak.state = 2;  // makes its stroke, and the other one leaves
  bench.data.bound_count[2][2] = 0;
  bench.step();
  EXPECT_EQ(bench.dump()[5][2].state, 3);
  EXPECT_EQ(bench.dump()[1][2].state, 1);
}

// A weak head pins where the chain leans to the blocking side, if it is the nearest to a troponin
// without a strong head between them: here those at 8 and 20 aren't, and 29 is on the open side.
TEST(ActivationFChain, WeakHeadsNextToTroponinPin) {
  Bench bench;
  bench.step({{1, 0.1}, {2, 0.1}});
  std::vector<MyosinHead_s> weak(7);
  unsigned next = 0;
  for (unsigned const site : {5, 8, 20, 22, 25, 29, 33}) bench.bind(weak[next++], 1, 0, site);
  MyosinHead_s strong[2] = {};
  bench.bind(strong[0], 2, 0, 12);
  bench.bind(strong[1], 2, 0, 28);
  bench.step();
  bench.step();

  std::vector<PinningSite_s> const pins = {{3, 0},  {5, 1},  {12, 2}, {22, 1}, {24, 0},
                                           {25, 1}, {28, 2}, {31, 0}, {33, 1}};
  std::vector<PinningSite_s> const all_pins = {{3, 0},  {5, 1},  {8, 1},  {12, 2},
                                               {20, 1}, {22, 1}, {24, 0}, {25, 1},
                                               {28, 2}, {29, 1}, {31, 0}, {33, 1}};
  FChainModel const chain(0.5);
  AnalyticalChainModel<double> analytical(*chain.get_fc_parameter());
  std::valarray<double> mean(35), sd(35), all_mean(35), all_sd(35);
  analytical.compute_chain(pins, 35, mean, sd);
  analytical.compute_chain(all_pins, 35, all_mean, all_sd);
  FEMFlexChainModel(*chain.get_fc_parameter()).compute_chain(pins, 35, mean);
  for (unsigned i = 0; i < 35; ++i) {
    Site_s const found = bench.dump()[i][0];
    EXPECT_NEAR(found.mean, mean[i], 1e-6) << i;
    EXPECT_NEAR(found.sd, sd[i], 1e-6) << i;
    bool const loose = (i >= 5 && i <= 22) || (i >= 28 && i <= 31);
    double factor = 0.0;
    chain.update_status(i % 7, mean[i], sd[i], loose ? all_mean[i] : mean[i],
                        loose ? all_sd[i] : sd[i], static_cast<unsigned>(found.state), factor);
    EXPECT_EQ(bench.site(0, i).k_on_factor, factor) << i;
  }
}

TEST(ActivationFChain, ReleaseFactorIsTheCurvatureThroughThePins) {
  Bench bench("set k_cur = 1000\n");
  MyosinHead_s strong = {};
  bench.step({{6, 0.1}});  // of chain 1, so that troponins at 3 and 17 stand beside the head
  bench.bind(strong, 2, 1, 8);
  bench.step();
  bench.step();
  FEMFlexChainModel chain(*FChainModel(0.5).get_fc_parameter());
  std::valarray<double> mean(35);
  chain.compute_chain({{3, 0}, {8, 2}, {17, 0}, {24, 0}, {31, 0}}, 35, mean);
  // The circle through (x, radius angle) of three points, by its circumradius a b c / (4 area).
  auto const factor = [](double x1, double y1, double x2, double y2, double x3, double y3) {
    double const a = std::hypot(5.5 * (x2 - x1), 3.5 * (y2 - y1));
    double const b = std::hypot(5.5 * (x3 - x2), 3.5 * (y3 - y2));
    double const c = std::hypot(5.5 * (x3 - x1), 3.5 * (y3 - y1));
    double const half = (a + b + c) / 2;
    double const area = std::sqrt(half * (half - a) * (half - b) * (half - c));
    return 1.0 + 4.0 * area / (a * b * c) * 1000 / c;
  };
  EXPECT_NEAR(bench.site(1, 3).k_off_factor, factor(0, mean[0], 3, -0.3, 8, 0.2), 1e-12);
  EXPECT_NEAR(bench.site(1, 8).k_off_factor, factor(3, -0.3, 8, 0.2, 17, -0.3), 1e-12);
  EXPECT_NEAR(bench.site(1, 31).k_off_factor, factor(24, -0.3, 31, -0.3, 35, mean[34]), 1e-12);
  EXPECT_EQ(bench.site(1, 24).k_off_factor, 1.0);  // between equal pins
  EXPECT_GT(bench.site(1, 17).k_off_factor, 1.0);
  EXPECT_EQ(bench.site(1, 9).k_off_factor, 1.0);  // not pinned
  EXPECT_EQ(bench.site(0, 8).k_off_factor, 1.0);
}

TEST(ActivationFChain, PinAtTheStartHasNoCurvature) {
  Bench bench("set k_cur = 1000\n");
  MyosinHead_s strong = {};
  bench.bind(strong, 2, 3, 0);
  for (int i = 0; i < 3; ++i) bench.step();
  EXPECT_EQ(bench.dump()[0][3].mean, 0.2);
  EXPECT_EQ(bench.site(3, 0).k_off_factor, 1.0);
  EXPECT_GT(bench.site(3, 3).k_off_factor, 1.0);
}

TEST(ActivationFChain, ChainsOfUnequalLength) {
  Bench bench("set k_cur = 1000\n", 0, 100, 71);
  for (auto& fibre : bench.data.sites) {
    for (ActinSite_s& site : fibre) site.k_off_factor = 77.0;
  }
  bench.step();
  // Only the first and last troponin of a chain stand beside something else than their like: at 3
  // and, of the short chain, 31; the last one of the long chain lies past the filament's end.
  for (unsigned const fibre : {1u, 2u}) {
    for (unsigned node = 0; node < 71; ++node) {
      bool const bent = node == 6 || node == 7 || node == 63;
      EXPECT_EQ(bench.data.sites[fibre][node].k_off_factor != 1.0, bent) << node;
    }
    EXPECT_GT(bench.data.sites[fibre][6].k_off_factor, 1.0);
    EXPECT_LT(bench.data.sites[fibre][63].k_off_factor, 77.0);
  }
  EXPECT_EQ(bench.dump().size(), 35u);
}

// Scales and closing rates hold for a chain without pins: there they are nearly those of the files,
// as the deviation that they are divided by differs a little from sd_fac.
TEST(ActivationFChain, CalciumScalesByTheFreeChain) {
  for (bool const healthy : {true, false}) {
    write_file("xi_mutated.dat", "9e7 is twice the healthy value\n");
    std::string const file = healthy ? "CaActivation3x2s.prm" : "CaActivation3x2s_mutated.prm";
    write_parameters(file, "Blocket2Closed_regulation", {"k_c_b = 0.8", "K_TnB = 1"});
    Bench bench("set km = 0.3\nset kps = 0.1\n", 1, healthy ? 100 : 0);
    bench.step();
    bench.open_all();
    EXPECT_EQ(bench.counts, (std::vector<int>{0, 0, 0, 20, 0, 0}));
    auto const ratio = [](double angle) {
      return std::erfc(angle / (0.518 * std::sqrt(2.0))) / std::erfc(angle / 0.7330756847961304);
    };
    double const closing = 0.4 * ratio(0.3);
    MyosinHead_s weak = {};
    bench.bind(weak, 1, 3, 5);
    bench.step({{4, closing - 1e-9}, {11, closing + 1e-9}});
    EXPECT_EQ(bench.counts, (std::vector<int>{1, 0, 0, 19, 0, 0}));
    EXPECT_NEAR(bench.site(3, 3).k_on_factor, 0.3, 1e-15);
    EXPECT_NEAR(bench.site(3, 5).k_on_factor, 0.1 * ratio(0.2), 1e-15);
    EXPECT_EQ(std::filesystem::exists("CaActivation3x2s_mutated.prm"), !healthy);
  }
}

TEST(ActivationFChain, FilamentsAboveTheHealthyShareAreMutated) {
  for (int const indicator : {0, 1}) {
    std::string const file =
        indicator == 0 ? "KbActivationExtensible_mutated.prm" : "CaActivation3x2s_mutated.prm";
    for (bool const mutated : {false, true}) {
      write_file("xi_mutated.dat", "9e7\n");
      Bench bench("", indicator, mutated ? 49 : 51);
      EXPECT_EQ(std::filesystem::exists(file), mutated);
      bench.step();
      double mean, sd;
      FlexChainParameter_s const chain = {0.518, 5.5e-9, 3.5, mutated ? 9e7 : 4.5e7, 0.2, -0.3};
      AnalyticalChainModel<double>(chain).pavsd(2, 5, -0.3, -0.3, mean, sd);
      EXPECT_NEAR(bench.dump()[5][0].sd, 0.518 * sd, 1e-6);
    }
  }
}

TEST(ActivationFChainDeathTest, RefusesALatticeWithoutChains) {
  write_file("ca_protocol.dat", "0 0.5 0 0 1\n");
  write_parameters("mg_old.prm", "rates", {});
  BareGeometry const bare;
  ActivationModelParameter const parameter = {&bare, nullptr, nullptr, 0.5, 0, 100};
  EXPECT_EXIT(ActivationFChainModel{parameter}, testing::ExitedWithCode(1), "four chains");
}

TEST(ActivationFChain, SmallTools) {
  EXPECT_FALSE(CheckCoordinates(0.2 + 9e-9, 0.2, 0.2 - 9e-9));
  EXPECT_TRUE(CheckCoordinates(0.2 + 2e-8, 0.2, 0.2));
  EXPECT_TRUE(CheckCoordinates(0.2, 0.2, 0.3));
  EXPECT_FALSE(ActivationFChainModel::IsPinned(3, {}));
  EXPECT_FALSE(ActivationFChainModel::IsPinned(3, {{1, 0}, {4, 2}}));
  EXPECT_TRUE(ActivationFChainModel::IsPinned(4, {{1, 0}, {4, 2}}));
}

}  // namespace
