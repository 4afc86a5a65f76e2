#include "mechanics/titin_prestress.h"

#include <cmath>

#include "base/diagnostics.h"
#include "elastic/XB_Models.h"
#include "lattice/geometry.h"

double FindTitinForce(XB_Model const& titin, Geometry const& geometry) {
  constexpr int most_rounds = 100000;
  double const K = geometry.myosin_stiffness;
  double const M = geometry.actin_end - geometry.titin_length - geometry.titin_extension;
  double x = geometry.titin_extension;
  for (int round = 0; round < most_rounds; ++round) {
    double const titin_force = titin.GetForce(x);
    double const overshoot = titin_force / K + M + geometry.titin_length + x - geometry.actin_end;
    x -= overshoot;
    if (!(std::abs(overshoot) > 1e-8)) {
      if (!std::isfinite(overshoot)) break;
      return titin_force;
    }
  }
  stop("titin prestress: no extension of titin balances the thick filament (stiffness " + shown(K) +
       " pN/nm); titin must be softer than the thick filament");
}
