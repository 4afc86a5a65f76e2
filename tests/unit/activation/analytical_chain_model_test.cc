// Would catch: any coefficient of a span wrong, spans exchanged, a table that gives other values
// than the formulas, the free ends or the scale of the deviation wrong.

#include "activation/analytical_chain_model.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/beam.h"

namespace {

using Chain = AnalyticalChainModel<double>;
using Pins = std::vector<PinningSite_s>;

constexpr FlexChainParameter_s parameter(double xi) { return {0.518, 5.5e-9, 3.5, xi, 0.2, -0.3}; }
constexpr FlexChainParameter_s chain = parameter(4.5e7);

struct Profile {
  Profile(Pins const& pins, unsigned n, FlexChainParameter_s const& fc = chain)
      : mean(77.0, n), sd(77.0, n) {
    Chain(fc).compute_chain(pins, n, mean, sd);
  }
  std::valarray<double> mean, sd;
};

// Between two pins of an endless chain the closed expressions are exact; the beam's error is of
// second order in the mesh, so two meshes tell the limit.
TEST(AnalyticalChain, IsExactBetweenTwoPins) {
  unsigned const gap = 9;
  Profile const profile({{30, 0}, {30 + gap, 2}}, 70);
  auto const beam = [&](unsigned fine) {
    Beam const result{60 * fine, 5.5e-9 / fine, 4.5e7};
    std::map<unsigned, double> const held = {{25 * fine, -0.3}, {(25 + gap) * fine, 0.2}};
    return std::make_pair(result.angles(held), result.variances(held));
  };
  auto const [coarse_mean, coarse_variance] = beam(2);
  auto const [fine_mean, fine_variance] = beam(4);
  for (unsigned i = 0; i <= gap; ++i) {
    auto const limit = [i](auto const& coarse, auto const& fine) {
      return (4.0 * fine[4 * (25 + i)] - coarse[2 * (25 + i)]) / 3.0;
    };
    EXPECT_NEAR(profile.mean[30 + i], limit(coarse_mean, fine_mean), 2e-5) << i;
    double const sd = 0.518 * std::sqrt(limit(coarse_variance, fine_variance));
    EXPECT_NEAR(profile.sd[30 + i], sd, 2e-4) << i;
  }
}

TEST(AnalyticalChain, FeelsTheNearestPinOnEachSideOnly) {
  Profile const all({{2, 2}, {10, 0}, {17, 2}, {18, 0}, {30, 1}}, 40);
  Profile const two({{10, 0}, {17, 2}}, 40);
  for (unsigned i = 10; i <= 17; ++i) {
    EXPECT_EQ(all.mean[i], two.mean[i]);
    EXPECT_EQ(all.sd[i], two.sd[i]);
  }
  for (unsigned const pin : {2u, 10u, 17u, 18u, 30u}) EXPECT_EQ(all.sd[pin], 0.0);
  EXPECT_EQ(all.mean[18], -0.3);
  EXPECT_EQ(all.mean[30], 0.0);
}

TEST(AnalyticalChain, EndsLikeAPinTenSitesBeyondTheLast) {
  Chain analytical(chain);
  Profile const profile({{4, 2}}, 9);
  for (unsigned i = 1; i <= 4; ++i) {
    double mean, sd;
    analytical.pavsd(14 - static_cast<int>(i), static_cast<int>(i), -0.1, 0.2, mean, sd);
    for (unsigned const site : {4 - i, 4 + i}) {
      EXPECT_NEAR(profile.mean[site], mean, 1e-14);
      EXPECT_NEAR(profile.sd[site], sd * 0.518, 1e-14);
    }
  }
  Profile const free({}, 9);
  EXPECT_TRUE((free.mean == 0.0).min() && (free.sd == 0.518).min());
}

// At the lower xi spans of 40 sites and more are shorter than 5, beyond which all are alike.
TEST(AnalyticalChain, TableHoldsWhatTheFormulasGive) {
  auto const coefficients = [](Chain::WelksValue_s const& w) {
    return std::vector<double>{w.w0, w.w1, w.w2, w.w3, w.w4, w.w5};
  };
  for (double const xi : {4.5e7, 1e7}) {
    Chain analytical(parameter(xi));
    for (unsigned const seen : {1u, 200u}) {
      std::valarray<double> mean(seen), sd(seen);
      analytical.compute_chain({{0, 0}}, seen, mean, sd);
      for (int n = 1; n < 250; ++n) {
        Chain::WelksValue_s found, expected;
        analytical.compute_welks(std::min(n * 5.5e-9 * xi, 5.0), expected);
        analytical.welks(n, found);
        EXPECT_EQ(coefficients(found), coefficients(expected)) << n;
      }
    }
  }
}

}  // namespace
