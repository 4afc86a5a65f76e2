#pragma once
/// Lattice of an insect flight muscle: a thick filament with crowns of four heads and three thin
/// filaments beside it.
///
/// As in the vertebrate lattice a table, made once, holds the steric weight of each angular phase
/// of a site, crown class and head of a crown on each thin filament,
///
///     weight = (1 + cos(3 offset_b)) (1 + cos(2 offset_a)),
///
/// with `offset_b` the bearing of the site from the head (less than 60 degrees) and `offset_a` the
/// turn of the site away from the head, scaled to a mean of 1 over all pairs that can bind. A site
/// has two faces, half a turn apart. A candidate's weight is the table's times the site's
/// `k_on_factor`.
///
/// The first sites stand level with the first crown. All heads are slow ones.
///
/// Units: lengths in nm, moduli in pN/nm^2, cross-sections in nm^2.
/// Refuses: lengths, spacings, periods, moduli and cross-sections not above 0, thin filaments of
/// fewer than two sites, fewer than one thick node.

#include "lattice/geometry.h"
#include "lattice/steric_weights.h"

class GeometryFlight : public Geometry {
 public:
  explicit GeometryFlight(GeometryParameter_s const&);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);

  void get_binding_sites(FilamentData const& data, MyosinHead_s const& head,
                         std::vector<BindingSite_s>& candidates) const override;
  double weight_bound(FilamentData const& data, MyosinHead_s const& head) const override;
  std::optional<BondEnds_s> bond_ends(MyosinHead_s const& head) const override;
  std::optional<Facing_s> facing(MyosinHead_s const& head, unsigned fibre) const override;
  std::optional<double> azimuth_of_site(unsigned site) const override;
  unsigned faces_of_site() const override { return 2; }
  unsigned bound_face(MyosinHead_s const& head) const override;
  std::optional<CrossSection_s> cross_section() const override;
  void initialize_filament(FilamentData& data) const override;

  /// Places one head against a face, 0 or 1, of a site.
  EndOnView_s end_on(unsigned head, unsigned crown, unsigned site, unsigned fibre,
                     unsigned face) const;
  /// Looks from that head at both faces of that site and appends a candidate, its weight not yet
  /// scaled, for each that it can bind.
  void get_angles(unsigned head, unsigned crown, unsigned site, unsigned fibre,
                  std::vector<BindingSite_s>& out) const;

  // Diagnostics that no step of a run calls.

  /// `get_angles` from the table, with the scaled weight times `factor`.
  void get_angles_cached(unsigned head, unsigned crown, unsigned site, unsigned fibre,
                         std::vector<BindingSite_s>& out, double factor) const;

 private:
  /// Azimuth of a site's first face.
  double site_azimuth(unsigned site) const;
  EndOnView_s view_of_bond(MyosinHead_s const& head, unsigned face) const;

  double radius_actin = 0.0;
  double radius_myosin = 0.0;
  double d_actin_myosin = 0.0;
  StericWeights weights;
};
