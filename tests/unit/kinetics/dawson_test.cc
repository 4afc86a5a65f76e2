// Would catch: a wrong term, sign or constant of Dawson's integral, an exponential that overflows.

#include "kinetics/dawson.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/quadrature.h"

namespace {

double dawson(double x) { return dawson_(&x); }

double quadrature(double x) {
  return integral([x](double t) { return std::exp(t * t - x * x); }, 0.0, x);
}

TEST(Dawson, AgreesWithQuadrature) {
  EXPECT_EQ(dawson(0.0), 0.0);
  for (double x = 0.01; x < 12.0; x += 0.01) {
    EXPECT_NEAR(dawson(x) / quadrature(x), 1.0, 5e-7) << x;  // the method's own accuracy
    EXPECT_EQ(dawson(-x), -dawson(x)) << x;
  }
  EXPECT_NEAR(dawson(1e6) * 2e6, 1.0, 5e-7);  // 1 / (2 x) far out
}

TEST(Exprot, HoldsItsEnds) {
  EXPECT_EQ(exprot(1.5), std::exp(1.5));
  EXPECT_NEAR(exprot(70.0) / std::exp(70.0), 1.0, 1e-14);
  EXPECT_NEAR(exprot(-70.0) / std::exp(-70.0), 1.0, 1e-14);
  EXPECT_EQ(exprot(1e9), exprot(70.0));
  EXPECT_EQ(exprot(-1e9), exprot(-70.0));
  double const x = -3.0;
  EXPECT_EQ(exprot_(&x), std::exp(x));
}

}  // namespace
