#pragma once
/// The plainest lattice: one thick filament with crowns of three heads, one thin filament, and no
/// angles. A head reaches every site within `xamax` along the axis, and its weight is the site's
/// own `k_on_factor`; the three heads of a crown see the same.
///
/// The first site stands level with the first crown.
///
/// Units: lengths in nm, moduli in pN/nm^2, cross-sections in nm^2.
/// Refuses: lengths, spacings, moduli and cross-sections not above 0, a thin filament of fewer than
/// two sites, fewer than one thick node.

#include "lattice/geometry.h"

class GeometrySimple : public Geometry {
 public:
  explicit GeometrySimple(GeometryParameter_s const&);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);

  void get_binding_sites(FilamentData const& data, MyosinHead_s const& head,
                         std::vector<BindingSite_s>& candidates) const override;
  double weight_bound(FilamentData const& data, MyosinHead_s const& head) const override;
  void initialize_filament(FilamentData& data) const override;
};
