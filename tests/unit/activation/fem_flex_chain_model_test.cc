// Would catch: wrong stencils, a pin moved or its column not cut, ends held or freed the other way
// round, a factorisation that is right for constant bands only.

#include "activation/fem_flex_chain_model.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/beam.h"

namespace {

constexpr double xi = 4.5e7;
constexpr double spacing = 5.5e-9;
constexpr FlexChainParameter_s chain = {0.518, spacing, 3.5, xi, 0.2, -0.3};
using Pins = std::vector<PinningSite_s>;

std::valarray<double> means(Pins const& pins, unsigned n, FlexChainParameter_s const& fc = chain) {
  std::valarray<double> mean(77.0, n);
  FEMFlexChainModel(fc).compute_chain(pins, n, mean);
  return mean;
}

TEST(FEMFlexChain, IsTheBeamOnABedWithAllPinsActing) {
  for (Pins const& pins :
       {Pins{}, Pins{{0, 0}}, Pins{{34, 2}}, Pins{{3, 0}, {4, 2}, {5, 1}, {33, 2}},
        Pins{{0, 2}, {10, 0}, {12, 0}, {34, 1}}}) {
    std::valarray<double> const mean = means(pins, 35);
    std::map<unsigned, double> held = {{0, 0.0}};
    for (PinningSite_s const& pin : pins) held[pin.site + 20] = pin_angle(pin, chain);
    auto const expected = Beam{75, spacing, xi}.angles(held);
    for (unsigned i = 0; i < 35; ++i) EXPECT_NEAR(mean[i], expected[i + 20], 1e-12) << i;
    for (PinningSite_s const& pin : pins) {
      EXPECT_DOUBLE_EQ(mean[pin.site], pin_angle(pin, chain));
    }
  }
}

// Around a single pin the beam falls off as exp(-x) (cos x + sin x). The pin's load acts on one
// node only, where elements would spread it: an error of second order in the mesh, at most
// (xi h)^2 / 12 of the angle at xi h = 0.25.
TEST(FEMFlexChain, ConvergesToTheExactBeam) {
  double worst[2] = {};
  for (unsigned const fine : {1u, 2u}) {
    FlexChainParameter_s fc = chain;
    fc.actin_distance /= fine;
    unsigned const pin = 100 * fine;
    std::valarray<double> const mean = means({{pin, 2}}, 2 * pin, fc);
    for (unsigned i = 0; i < 40 * fine; ++i) {
      double const x = i * fc.actin_distance * xi;
      double const exact = 0.2 * std::exp(-x) * (std::cos(x) + std::sin(x));
      double& error = worst[fine - 1];
      error = std::max(error, std::abs(mean[pin + i] - exact));
      EXPECT_NEAR(mean[pin - i], mean[pin + i], 1e-12);
    }
  }
  EXPECT_LT(worst[0], 0.2 * std::pow(xi * spacing, 2) / 4);
  EXPECT_NEAR(worst[0] / worst[1], 4.0, 0.4);
}

}  // namespace
