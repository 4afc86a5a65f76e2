// Would catch: segments drawn in another order or with more than one draw, a chain that moves with
// its segments and not a step later, the wrong weak heads pinning, factors on the wrong nodes, a
// curvature other than the circle's, files or scales of the wrong regulation.

#include "activation/activation_fchain.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <filesystem>
#include <sstream>

#include "kinetics/model.h"
#include "support/regulated_filament.h"

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

/// With 70 nodes, four chains of 35 sites in 5 segments. With steps of 0.5 a segment opens on a
/// variate below 0.5 (kb) or 0.4 (calcium, without any) and closes on one below the chain's
/// probability, under calcium 0.4 in a free chain.
struct Bench : RegulatedFilament {
  explicit Bench(std::string const& rates = "km=1 kps=1", int indicator = 0,
                 int healthy_percent = 100)
      : RegulatedFilament((write_inputs(rates, indicator), "FChain"), 70, 20, 0.5, indicator,
                          healthy_percent, {0.5}, &heads) {}

  static void write_inputs(std::string const& rates, int indicator) {
    write_settings("mg_old.prm", "rates: " + rates);
    write_settings("KbActivationExtensible.prm", "rates: kt_eff=2");
    write_file("ca_protocol.dat", indicator < 1 ? "0 0.5 0 0 1\n" : "0 0.5 0 0 0\n");
  }

  ActinSite_s& site(unsigned chain, unsigned i) {
    return data.sites[chain / 2 + 1][2 * i + chain % 2];
  }

  MyosinHead_s& bind(unsigned state, unsigned chain, unsigned i) {
    MyosinHead_s& head = bound_heads.emplace_back();
    head.state = state;
    RegulatedFilament::bind(head, chain / 2 + 1, 2 * i + chain % 2);
    return head;
  }

  /// The lines of "TroponinAngles.csv" at hand: by site, then by chain.
  std::vector<Site_s> rows() const {
    std::string text = dump();
    std::replace(text.begin(), text.end(), ',', ' ');
    std::istringstream cells(text);
    std::vector<Site_s> result;
    for (Site_s s; cells >> s.mean >> s.sd >> s.state;) result.push_back(s);
    return result;
  }

  Site_s row(unsigned chain, unsigned i) const { return rows().at(4 * i + chain); }

  std::string states(unsigned chain) const {
    std::string text;
    for (unsigned i = 0; i < 35; ++i) text += std::to_string(row(chain, i).state);
    return text;
  }

  static Heads const heads;
  std::deque<MyosinHead_s> bound_heads;
};

Heads const Bench::heads;

std::string const blocked = "1110111", open = "1111111";  // a segment

TEST(ActivationFChain, StartsBlocked) {
  Bench bench;
  bench.step();
  EXPECT_EQ(bench.counts, (std::vector<int>{20, 0, 0, 0, 0, 0}));
  EXPECT_EQ(bench.info(), (std::vector<double>{20, 120, 0, 0}));
  for (unsigned chain = 0; chain < 4; ++chain) {
    EXPECT_EQ(bench.states(chain), blocked + blocked + blocked + blocked + blocked);
    for (unsigned i = 0; i < 35; ++i) {
      bool const troponin = i % 7 == 3;
      EXPECT_EQ(bench.row(chain, i).mean == -0.3, troponin);
      ActinSite_s const& site = bench.site(chain, i);
      EXPECT_EQ(site.state, troponin ? 1u : 2u);
      EXPECT_EQ(site.k_on_factor > 0.0, !troponin);
      EXPECT_EQ(site.k_stroke_factor, site.k_on_factor);
    }
  }
}

TEST(ActivationFChain, SegmentsOpenInOrderAndTheChainFollowsAStepLater) {
  Bench bench;
  bench.step({{2, 0.49}, {3, 0.51}, {5, 0.0}, {19, 0.3}});
  EXPECT_EQ(bench.counts, (std::vector<int>{17, 3, 0, 0, 0, 0}));
  EXPECT_EQ(bench.states(0), blocked + blocked + open + blocked + blocked);
  EXPECT_EQ(bench.states(1), open + blocked + blocked + blocked + blocked);
  EXPECT_EQ(bench.states(3), blocked + blocked + blocked + blocked + open);
  for (bool const pinned : {true, false}) {
    EXPECT_EQ(bench.row(0, 17).sd == 0.0, pinned);
    EXPECT_EQ(bench.site(0, 17).state, 2u);
    EXPECT_EQ(bench.site(0, 17).k_on_factor == 0.0, pinned);
    bench.step();
  }
}

TEST(ActivationFChain, FreeChainAndItsClosing) {
  Bench bench("km=1");
  bench.step({}, 0.0, 0.1);
  double const p = 0.5 * std::erfc(0.3 / (0.518 * std::sqrt(2.0)));  // closes below p kt_eff dt
  bench.step({{6, p - 1e-6}, {7, p + 1e-6}});
  EXPECT_EQ(bench.counts, (std::vector<int>{1, 19, 0, 0, 0, 0}));
  EXPECT_EQ(bench.states(1), open + blocked + open + open + open);
  for (Site_s const& row : bench.rows()) {
    EXPECT_EQ(row.mean, 0.0);
    EXPECT_EQ(row.sd, 0.518);
  }
  for (unsigned i = 0; i < 35; ++i) {
    EXPECT_NEAR(bench.site(1, i).k_on_factor, i == 10 ? 0.0 : 0.5, 1e-15);
  }
}

TEST(ActivationFChain, HeadsHoldTheirSites) {
  Bench bench;
  bench.step({{10, 0.1}});
  bench.bind(2, 2, 1);
  MyosinHead_s& weak = bench.bind(1, 2, 5);
  bench.bind(2, 2, 10);  // at the troponin of a blocked segment
  bench.step();
  EXPECT_EQ(bench.site(2, 1).state, 0u);
  EXPECT_EQ(bench.site(2, 1).k_on_factor, 0.0);
  EXPECT_EQ(bench.site(2, 5).state, 2u);
  EXPECT_EQ(bench.site(2, 10).state, 1u);
  bench.step();
  EXPECT_EQ(bench.states(2), "1311121" + blocked + blocked + blocked + blocked);
  EXPECT_EQ(bench.row(2, 1).mean, 0.2);
  EXPECT_EQ(bench.row(2, 10).mean, -0.3);
  weak.state = 2;  // makes its stroke, and the other one leaves
  bench.data.bound_count[2][2] = 0;
  bench.step();
  EXPECT_EQ(bench.states(2).substr(0, 7), "1111131");
}

// A weak head pins where the chain leans to the blocking side, if it is the nearest to a troponin
// without a strong head between them: here those at 8 and 20 aren't, and 29 is on the open side.
TEST(ActivationFChain, WeakHeadsNextToTroponinPin) {
  Bench bench;
  bench.step({{1, 0.1}, {2, 0.1}});
  for (unsigned const site : {5, 8, 20, 22, 25, 29, 33}) bench.bind(1, 0, site);
  for (unsigned const site : {12, 28}) bench.bind(2, 0, site);
  bench.step();
  bench.step();

  std::vector<PinningSite_s> const pins = {{3, 0},  {5, 1},  {12, 2}, {22, 1}, {24, 0},
                                           {25, 1}, {28, 2}, {31, 0}, {33, 1}};
  std::vector<PinningSite_s> const all_pins = {{3, 0},  {5, 1},  {8, 1},  {12, 2},
                                               {20, 1}, {22, 1}, {24, 0}, {25, 1},
                                               {28, 2}, {29, 1}, {31, 0}, {33, 1}};
  FChainModel const chain;
  AnalyticalChainModel<double> analytical(*chain.get_fc_parameter());
  std::valarray<double> mean(35), sd(35), all_mean(35), all_sd(35);
  analytical.compute_chain(pins, 35, mean, sd);
  analytical.compute_chain(all_pins, 35, all_mean, all_sd);
  FEMFlexChainModel(*chain.get_fc_parameter()).compute_chain(pins, 35, mean);
  for (unsigned i = 0; i < 35; ++i) {
    Site_s const found = bench.row(0, i);
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
  Bench bench("k_cur=1000");
  bench.step({{6, 0.1}});  // of chain 1, so that troponins at 3 and 17 stand beside the head
  bench.bind(2, 1, 8);
  bench.bind(2, 3, 0);  // at the very start of its chain, which has no curvature
  bench.step();
  bench.step();
  FEMFlexChainModel chain(*FChainModel().get_fc_parameter());
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
  EXPECT_FALSE(CheckCoordinates(0.2 + 9e-9, 0.2, 0.2 - 9e-9));
  EXPECT_TRUE(CheckCoordinates(0.2 + 2e-8, 0.2, 0.2) && CheckCoordinates(0.2, 0.2, 0.3));
  EXPECT_EQ(bench.site(1, 9).k_off_factor, 1.0);  // not pinned
  EXPECT_EQ(bench.site(0, 8).k_off_factor, 1.0);
  EXPECT_EQ(bench.row(3, 0).mean, 0.2);
  EXPECT_EQ(bench.site(3, 0).k_off_factor, 1.0);
  EXPECT_GT(bench.site(3, 3).k_off_factor, 1.0);
}

// Scales and closing rates hold for a chain without pins: there they are nearly those of the files,
// as the deviation that they are divided by differs a little from sd_fac.
TEST(ActivationFChain, CalciumScalesByTheFreeChain) {
  write_settings("CaActivation3x2s.prm", "Blocket2Closed_regulation: k_c_b=0.8 K_TnB=1");
  Bench bench("km=0.3 kps=0.1", 1);
  bench.step();
  bench.step({}, 0.0, 0.1);
  EXPECT_EQ(bench.counts, (std::vector<int>{0, 0, 0, 20, 0, 0}));
  auto const ratio = [](double angle) {
    return std::erfc(angle / (0.518 * std::sqrt(2.0))) / std::erfc(angle / 0.7330756847961304);
  };
  double const closing = 0.4 * ratio(0.3);
  bench.bind(1, 3, 5);
  bench.step({{4, closing - 1e-9}, {11, closing + 1e-9}});
  EXPECT_EQ(bench.counts, (std::vector<int>{1, 0, 0, 19, 0, 0}));
  EXPECT_NEAR(bench.site(3, 3).k_on_factor, 0.3, 1e-15);
  EXPECT_NEAR(bench.site(3, 5).k_on_factor, 0.1 * ratio(0.2), 1e-15);
}

TEST(ActivationFChain, FilamentsAboveTheHealthyShareAreMutated) {
  for (auto const& [indicator, file] : {std::make_pair(0, "KbActivationExtensible_mutated.prm"),
                                        {1, "CaActivation3x2s_mutated.prm"}}) {
    for (bool const mutated : {false, true}) {
      write_file("xi_mutated.dat", "9e7\n");
      Bench bench("", indicator, mutated ? 49 : 51);
      EXPECT_EQ(std::filesystem::exists(file), mutated);
      bench.step();
      double mean, sd;
      FlexChainParameter_s const chain = {0.518, 5.5e-9, 3.5, mutated ? 9e7 : 4.5e7, 0.2, -0.3};
      AnalyticalChainModel<double>(chain).pavsd(2, 5, -0.3, -0.3, mean, sd);
      EXPECT_NEAR(bench.row(0, 5).sd, 0.518 * sd, 1e-6);
    }
  }
}

}  // namespace
