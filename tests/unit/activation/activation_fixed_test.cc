// Would catch: sites of fibre 0 drawn, another order of sites, a draw in every step, a site at a
// variate equal to the value switched off, factors or counts exchanged.

#include "activation/activation_fixed.h"

#include <gtest/gtest.h>

#include <cmath>

#include "records/filament_data.h"
#include "support/scripted_rand.h"
#include "support/work_dir.h"

namespace {

struct Bench {
  /// `row` is the protocol from its type on.
  explicit Bench(std::string const& row, std::vector<unsigned> nodes = {2, 3, 1, 2}) {
    write_file("ca_protocol.dat", "0 0.001 0 " + row + "\n");
    model = std::make_unique<ActivationFixedModel>(ActivationModelParameter{});
    data.initialize(nodes);
  }

  /// Draws of a step at that time.
  unsigned step(double time) {
    unsigned const before = ScriptedRand::draws();
    model->state_change(data, time, counts);
    EXPECT_TRUE(counts.empty());
    return ScriptedRand::draws() - before;
  }

  /// The sites of all fibres in order, 1 where switched on.
  std::vector<int> sites_on() const {
    std::vector<int> on;
    for (auto const& fibre : data.sites) {
      for (ActinSite_s const& site : fibre) {
        EXPECT_EQ(site.k_stroke_factor, site.k_on_factor);
        on.push_back(site.k_on_factor == 1.0 ? 1 : site.k_on_factor == 0.0 ? 0 : -1);
      }
    }
    return on;
  }

  void expect_info(double disabled, double enabled) const {
    std::vector<double> info;
    model->state_info(info);
    EXPECT_EQ(info, (std::vector<double>{disabled, enabled}));
  }

  std::unique_ptr<ActivationFixedModel> model;
  FilamentData data;
  std::vector<int> counts;
};

TEST(ActivationFixed, DrawsSiteBySiteFromFibreOne) {
  Bench bench("0 0.5");
  ActinSite_s& site = bench.data.sites[2][0];
  MyosinHead_s head = {};
  site = {1, 0.3, 0.3, 0.4, &head};
  ScriptedRand::script({0.4, 0.6, 0.6, 0.4, 0.6, 0.4});
  EXPECT_EQ(bench.step(0.0), 6u);
  EXPECT_EQ(bench.sites_on(), (std::vector<int>{1, 1, 0, 1, 1, 0, 1, 0}));
  bench.expect_info(3.0, 3.0);
  EXPECT_EQ(site.state, 0u);
  EXPECT_EQ(site.k_off_factor, 0.4);
  EXPECT_EQ(site.head, &head);
}

TEST(ActivationFixed, EndsOfTheRange) {
  Bench none("0 0");
  ScriptedRand::script({0.0, 0.0});
  none.step(0.0);
  none.expect_info(0.0, 6.0);
  Bench all("0 1");
  ScriptedRand::script({1.0});  // the largest draw alone isn't below a value of 1
  all.step(0.0);
  EXPECT_EQ(all.sites_on(), (std::vector<int>{1, 1, 1, 0, 0, 0, 0, 0}));
  all.expect_info(5.0, 1.0);
}

TEST(ActivationFixed, DrawsOnlyWhenTheValueChanges) {
  Bench constant("0 0.5");
  EXPECT_EQ(constant.step(0.0), 6u);
  std::vector<int> const drawn = constant.sites_on();
  EXPECT_EQ(constant.step(1.0), 0u);
  EXPECT_EQ(constant.sites_on(), drawn);
  Bench rising("1 0.1 0.2");
  for (double const time : {0.0, 1.0, 2.0}) {
    EXPECT_EQ(rising.step(time), 6u) << time;
    EXPECT_EQ(rising.step(time), 0u) << time;
  }
  std::vector<double> info;
  rising.model->state_info(info);
  EXPECT_EQ(info[0] + info[1], 6.0);  // of the last draw alone
}

TEST(ActivationFixed, ValueIsTheProbabilityOfOff) {
  unsigned const n = 100000;
  Bench bench("0 0.3", {1, n});
  bench.step(0.0);
  std::vector<double> info;
  bench.model->state_info(info);
  EXPECT_NEAR(info[0], 0.3 * n, 4.0 * std::sqrt(0.3 * 0.7 * n));
  EXPECT_EQ(info[0] + info[1], n);
}

}  // namespace
