#pragma once
/// Angles between filaments that are seen end-on as circles, and the search along the axis.
///
/// Angles in radians, lengths in nm.

#include <utility>

#include "records/fibre_displacement.h"

namespace dealii {
template <int dim, typename Number>
class Point;
}

using Point2 = dealii::Point<2, double>;

/// Radii about the first and the second centre of `find_angle`, the thin and the thick filament's.
struct GeometryParameters_s {
  double radius_a;
  double radius_b;
};

/// One head and one face of a site seen end-on, the thick filament's axis being the origin.
struct EndOnView_s {
  double actin_x;  ///< axis of the thin filament
  double actin_y;
  double site_angle;  ///< azimuth of the site on the thin filament
  double head_angle;  ///< azimuth of the head on the thick filament
  GeometryParameters_s radii;
};

/// Where the two ends of a bond stand seen end-on, the thick filament's axis being the origin [nm].
struct BondEnds_s {
  double head_y;
  double head_z;
  double site_y;
  double site_z;
};

/// How a head stands seen end-on, in the muscle's own frame [rad].
struct Facing_s {
  double azimuth;  ///< of the head on the thick filament
  double bearing;  ///< from the thick filament's axis to that of the thin one that it looks at
};

/// Radii of the filaments and the distance of their axes [nm].
struct CrossSection_s {
  double radius_myosin;
  double radius_actin;
  double distance;
};

/// Head and thin filament of a view in the muscle's own frame.
Facing_s facing_in_muscle(EndOnView_s const& view, double site_azimuth);

/// The ends in the muscle's own frame, in which a site's azimuth is `site_azimuth`: a view is
/// turned to the thin filaments that its head looks at.
BondEnds_s ends_in_muscle(EndOnView_s const& view, double site_azimuth);

/// The angle shifted by full turns into the range above -pi up to and including pi.
double normalise_angle(double angle);

/// Size of the turn between two directions, 0 to pi.
double angular_distance(double a, double b);

/// Whether `angle` lies within 90 degrees (exclusive) of the direction opposite to `v`.
bool check_sight(Point2 const& v, double angle);

/// How two points on two circles see each other.
///
/// Point A lies on the circle about `centre_a` in direction `angle_a`, point B likewise. When
/// either faces away from the other's centre, returns false and writes nothing. Otherwise
/// `offset_b` is the bearing of A from B, measured from the direction in which B faces, and
/// `offset_a` how far A stands from the direction toward B as seen from `centre_a`.
bool find_angle(Point2 const& centre_a, Point2 const& centre_b, double angle_a, double angle_b,
                GeometryParameters_s const& radii, double& offset_b, double& offset_a);

/// Index of the first element that is not below the limit; the size if there is none.
template <class Ascending>
unsigned first_not_below(Ascending const& ascending, double limit);

/// Indices [first, end) of the sites whose position lies within `xamax` of `centre`, ends included.
std::pair<unsigned, unsigned> axial_reach(NodePositions const& position, double centre,
                                          double xamax);

template <class Ascending>
unsigned first_not_below(Ascending const& ascending, double limit) {
  auto const n = static_cast<unsigned>(ascending.size());
  if (n == 0 || !(ascending[0] < limit)) return 0;
  if (ascending[n - 1] < limit) return n;
  // Nodes are spaced evenly but for small strains: a guess by proportion misses by a node or two.
  double const share = (limit - ascending[0]) / (ascending[n - 1] - ascending[0]);
  auto i = static_cast<unsigned>(share * (n - 1));
  while (ascending[i] < limit) ++i;
  while (!(ascending[i - 1] < limit)) --i;
  return i;
}
