// Would catch: an angle range open at the wrong end, a sight that includes its limit, A and B or
// the signs of their offsets exchanged, a reach that misses a site at its very end.

#include "lattice/geometry_tools.h"

#include <deal.II/base/point.h>
#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(GeometryTools, AnglesAreNormalisedUpToAndIncludingPi) {
  EXPECT_EQ(normalise_angle(-M_PI), M_PI);
  EXPECT_EQ(normalise_angle(M_PI), M_PI);
  EXPECT_NEAR(normalise_angle(5.5 * M_PI), -0.5 * M_PI, 1e-14);
  EXPECT_NEAR(angular_distance(-3.0, 3.0), 2.0 * M_PI - 6.0, 1e-14);
}

TEST(GeometryTools, SightEndsShortOfNinetyDegrees) {
  Point2 const v(1.0, 0.0);  // what it comes from lies at pi
  EXPECT_FALSE(check_sight(v, M_PI_2));
  EXPECT_TRUE(check_sight(v, M_PI_2 + 1e-9));
  EXPECT_FALSE(check_sight(v, -M_PI_2 + 1e-9));
  double b = 9.0, a = 8.0;
  for (auto const& [angle_a, angle_b] : {std::pair(0.0, 0.0), {M_PI, M_PI}, {M_PI, 1.7}}) {
    EXPECT_FALSE(find_angle({10.0, 0.0}, {0.0, 0.0}, angle_a, angle_b, {2.0, 3.0}, b, a));
  }
  EXPECT_EQ(b + a, 17.0);
}

TEST(GeometryTools, OffsetsTurnWithTheirOwnPoint) {
  double b = 9.0, a = 9.0;
  ASSERT_TRUE(find_angle({10.0, 0.0}, {0.0, 0.0}, M_PI, 0.0, {2.0, 3.0}, b, a));  // face to face
  EXPECT_NEAR(b, 0.0, 1e-15);
  EXPECT_NEAR(a, 0.0, 1e-15);
  // A = (10, 2) on its circle at 90 degrees, B = (3, 3) at 45 degrees. Seen from B, A lies along
  // (7, -1) and the centre of A along (7, -3).
  ASSERT_TRUE(find_angle({10.0, 0.0}, {0.0, 0.0}, M_PI_2, M_PI_4, {2.0, 3.0 * M_SQRT2}, b, a));
  EXPECT_NEAR(b, -std::atan(4.0 / 3.0), 1e-14);
  EXPECT_NEAR(a, -std::atan(7.0 / 3.0), 1e-14);
  // The mirror image, moved as a whole.
  ASSERT_TRUE(find_angle({15.0, -4.0}, {5.0, -4.0}, -M_PI_2, -M_PI_4, {2.0, 3.0 * M_SQRT2}, b, a));
  EXPECT_NEAR(b, std::atan(4.0 / 3.0), 1e-14);
  EXPECT_NEAR(a, std::atan(7.0 / 3.0), 1e-14);
}

TEST(GeometryTools, ReachHoldsBothItsEnds) {
  using Range = std::pair<unsigned, unsigned>;
  std::valarray<double> const x = {0.0, 1.0, 2.0, 3.0, 4.0};
  FibreDisplacement const u(5);
  NodePositions const position(x, u);
  EXPECT_EQ(axial_reach(position, 2.0, 1.0), Range(1, 4));
  EXPECT_EQ(axial_reach(position, 2.0, 0.75), Range(2, 3));
  EXPECT_EQ(axial_reach(position, 0.5, 9.0), Range(0, 5));
  EXPECT_EQ(axial_reach(position, -5.0, 1.0), Range(0, 0));
  EXPECT_EQ(axial_reach(position, 9.0, 1.0), Range(5, 5));
}

}  // namespace
