#include "lattice/geometry_tools.h"

#include <deal.II/base/point.h>

#include <cmath>

namespace {

Point2 on_circle(Point2 const& centre, double radius, double angle) {
  return {centre[0] + radius * std::cos(angle), centre[1] + radius * std::sin(angle)};
}

double direction(Point2 const& from, Point2 const& to) {
  return std::atan2(to[1] - from[1], to[0] - from[0]);
}

Point2 difference(Point2 const& from, Point2 const& to) {
  return {to[0] - from[0], to[1] - from[1]};
}

}  // namespace

Facing_s facing_in_muscle(EndOnView_s const& view, double site_azimuth) {
  double const turn = site_azimuth - view.site_angle;
  return {view.head_angle + turn, std::atan2(view.actin_y, view.actin_x) + turn};
}

BondEnds_s ends_in_muscle(EndOnView_s const& view, double site_azimuth) {
  Facing_s const facing = facing_in_muscle(view, site_azimuth);
  Point2 const head = on_circle({0.0, 0.0}, view.radii.radius_b, facing.azimuth);
  double const distance = std::hypot(view.actin_x, view.actin_y);
  Point2 const axis = on_circle({0.0, 0.0}, distance, facing.bearing);
  Point2 const site = on_circle(axis, view.radii.radius_a, site_azimuth);
  return {head[0], head[1], site[0], site[1]};
}

double normalise_angle(double angle) {
  while (angle >= M_PI) angle -= 2.0 * M_PI;
  while (angle <= -M_PI) angle += 2.0 * M_PI;
  return angle;
}

double angular_distance(double a, double b) { return std::abs(normalise_angle(a - b)); }

bool check_sight(Point2 const& v, double angle) {
  return angular_distance(std::atan2(v[1], v[0]) + M_PI, angle) < M_PI_2;
}

bool find_angle(Point2 const& centre_a, Point2 const& centre_b, double angle_a, double angle_b,
                GeometryParameters_s const& radii, double& offset_b, double& offset_a) {
  Point2 const a = on_circle(centre_a, radii.radius_a, angle_a);
  Point2 const b = on_circle(centre_b, radii.radius_b, angle_b);
  if (!check_sight(difference(a, centre_b), angle_b)) return false;
  if (!check_sight(difference(b, centre_a), angle_a)) return false;
  offset_b = normalise_angle(direction(b, a) - angle_b);
  offset_a = normalise_angle(angle_a - direction(b, centre_a) - M_PI);
  return true;
}

std::pair<unsigned, unsigned> axial_reach(NodePositions const& position, double centre,
                                          double xamax) {
  unsigned const first = first_not_below(position, centre - xamax);
  unsigned end = first;
  // Every site passed here is visited by the caller anyway.
  while (end < position.size() && !(position[end] > centre + xamax)) ++end;
  return {first, end};
}
