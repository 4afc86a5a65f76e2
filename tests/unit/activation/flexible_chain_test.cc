// Would catch: a part of a chain that is kept although its pins changed, a site that changes
// unseen.

#include "activation/flexible_chain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "support/work_dir.h"

namespace {

constexpr unsigned n_sites = 60;

/// A troponin on every seventh site, some of which let go, and heads that come, go and stroke.
std::vector<PinningSite_s> some_holders(std::mt19937& random, std::vector<unsigned>& heads) {
  unsigned& one = heads[random() % n_sites];
  one = static_cast<unsigned>(random() % 3);  // none, weak, strong
  std::vector<PinningSite_s> holders;
  for (unsigned site = 0; site < n_sites; ++site) {
    if (heads[site] != 0) {
      holders.push_back({site, heads[site] == 1 ? by_weak_head : by_strong_head});
    } else if (site % 7 == 3 && random() % 8 != 0) {
      holders.push_back({site, by_troponin});
    }
  }
  return holders;
}

bool same(std::valarray<double> const& a, std::valarray<double> const& b) {
  return std::equal(std::begin(a), std::end(a), std::begin(b), std::end(b));
}

TEST(FlexibleChain, WhatIsKeptIsWhatAFreshChainFinds) {
  FChainModel const model;
  FlexibleChainSolver solver(model, n_sites);
  FlexibleChain_s chain(n_sites);
  std::mt19937 random(1);
  std::vector<unsigned> heads(n_sites, 0);
  std::vector<PinningSite_s> holders;
  for (int step = 0; step < 400; ++step) {
    if (step % 3 != 1) holders = some_holders(random, heads);  // else as they were
    FlexibleChain_s const before = chain;
    std::vector<char> has_changed(n_sites, false), all(n_sites, false);
    solver.update(chain, holders, has_changed);
    FlexibleChain_s fresh(n_sites);
    FlexibleChainSolver(model, n_sites).update(fresh, holders, all);
    ASSERT_TRUE(same(chain.mean, fresh.mean) && same(chain.sd, fresh.sd)) << step;
    ASSERT_TRUE(same(chain.mean_weak, fresh.mean_weak) && same(chain.sd_weak, fresh.sd_weak));
    ASSERT_TRUE(same(chain.curvature_factor, fresh.curvature_factor)) << step;
    for (unsigned i = 0; i < n_sites; ++i) {
      if (has_changed[i]) continue;
      ASSERT_EQ(chain.mean[i], before.mean[i]) << step << ' ' << i;
      ASSERT_EQ(chain.sd[i], before.sd[i]) << step << ' ' << i;
      ASSERT_EQ(chain.mean_weak[i], before.mean_weak[i]) << step << ' ' << i;
      ASSERT_EQ(chain.sd_weak[i], before.sd_weak[i]) << step << ' ' << i;
    }
  }
}

}  // namespace
