#pragma once
/// Lattice of two thin filaments and crowns of six heads, in which a head is offered the site that
/// faces it best and its two neighbours on the same strand.
///
/// A small map says which heads face which thin filament: crown class 0 faces fibre 2, the classes
/// 1 and 2 face fibre 1. Among the sites in reach the one is sought whose azimuth stands closest to
/// the head, within 25 degrees (model C4) or 20 degrees (C3). It and the sites two before and two
/// behind are candidates of weight 1 as far as they are free; the neighbours may lie just out of
/// reach.
///
/// Azimuth of site s with period n:
///
///     C4: each site turns by almost half a circle, s (n - 1) (-pi / n)
///     C3: two strands half a turn apart, (s / 2) 2 pi / n, and pi more for odd s
///
/// Fibre 0 begins at 0 with the first crown at `myosin_offset`; the thin filaments begin at 0.
///
/// Units: lengths in nm, moduli in pN/nm^2, cross-sections in nm^2, angles in radians.
/// Refuses: lengths, spacings, periods, moduli and cross-sections not above 0, thin filaments of
/// fewer than two sites, fewer than one thick node, a model other than C3 and C4.

#include <valarray>
#include <vector>

#include "lattice/geometry.h"

class GeometryTolen : public Geometry {
 public:
  explicit GeometryTolen(GeometryParameter_s const&);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);

  void get_binding_sites(FilamentData const& data, MyosinHead_s const& head,
                         std::vector<BindingSite_s>& candidates) const override;
  std::optional<Facing_s> facing(MyosinHead_s const& head, unsigned fibre) const override;
  std::optional<double> azimuth_of_site(unsigned site) const override;
  unsigned faces_of_site() const override { return 1; }
  void initialize_filament(FilamentData& data) const override;

  /// Azimuth of a site, 0 to 2 pi.
  double get_actin_angle(unsigned site) const;

  // Diagnostics that no step of a run calls.

  /// Azimuth on a thin filament, 1 or 2, that faces the head.
  double get_head_azimuth(unsigned head, unsigned fibre) const {
    return head_azimuth[head][fibre - 1];
  }
  /// Appends the site with its angular distance from the head as weight, -99 beyond the limit;
  /// nothing if the head doesn't face that thin filament.
  void get_angles(unsigned head, unsigned crown, unsigned site, unsigned fibre,
                  std::vector<BindingSite_s>& out) const;

 private:
  /// Works out which head of which crown class faces which thin filament, and prints it.
  void create_umap();
  void create_head_azimuths();
  void tabulate_distances();
  /// Angular distance of a site from a head, or `beyond_limit`.
  double distance(unsigned head, unsigned site, unsigned fibre) const;
  bool faces(unsigned head, unsigned crown, unsigned fibre) const {
    return umap[fibre - 1][crown][head] > 0.0;
  }

  unsigned model_c4 = 0;
  double umap[2][3][3] = {};       ///< by thin filament, crown class, head: 0, or which target + 1
  double head_azimuth[3][2] = {};  ///< by head, thin filament
  std::valarray<double> distances[2][3];  ///< by thin filament and head, one for each site
};
