#pragma once
/// Lattice of vertebrate muscle: a thick filament with crowns of three heads between two thin
/// filaments whose sites form a double helix.
///
/// Its core is a table made once: for each angular phase of a site, crown class and head of a
/// crown, the steric weight with which the head may bind that site on each thin filament,
///
///     weight = (1 + cos(3.95 offset_b)) (1 + cos(2 offset_a)),
///
/// with `offset_b` the bearing of the site from the head (at most 60 degrees) and `offset_a` the
/// turn of the site away from the head; the weights are scaled to a mean of 1 over all pairs that
/// can bind. In a time step a search along the axis and a look-up remain.
///
/// Options: nebulin deficiency (thin filaments of distributed length), titin, slow and fast heads
/// by crown, protein-C heads on every third crown.
///
/// Units: lengths in nm, moduli in pN/nm^2, cross-sections in nm^2.
/// Refuses: lengths, spacings, periods, moduli and cross-sections not above 0, thin filaments of
/// fewer than two sites, negative counts, more protein-C crowns than qualify.

#include "lattice/geometry.h"
#include "lattice/steric_weights.h"

class GeometryVertebrae : public Geometry {
 public:
  explicit GeometryVertebrae(GeometryParameter_s const&);

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);
  void WriteToTaveloOutput() const;

  void get_binding_sites(FilamentData const& data, MyosinHead_s const& head,
                         std::vector<BindingSite_s>& candidates) const override;
  double weight_bound(FilamentData const& data, MyosinHead_s const& head) const override;
  std::optional<BondEnds_s> bond_ends(MyosinHead_s const& head) const override;
  std::optional<Facing_s> facing(MyosinHead_s const& head, unsigned fibre) const override;
  std::optional<double> azimuth_of_site(unsigned site) const override;
  unsigned faces_of_site() const override { return 1; }
  std::optional<CrossSection_s> cross_section() const override;
  void initialize_filament(FilamentData& data) const override;

  /// Chains 0 and 1 are the even and odd sites of fibre 1, chains 2 and 3 those of fibre 2.
  unsigned n_actin_chains() const override { return n_chains; }
  void n_actin_segments(unsigned segment_size, std::vector<unsigned>& segments) const override;
  unsigned get_fibre(unsigned segment_size, unsigned chain, unsigned segment,
                     unsigned index) const override;
  unsigned get_site(unsigned segment_size, unsigned chain, unsigned segment,
                    unsigned index) const override;

  /// Places one head against one site.
  EndOnView_s end_on(unsigned head, unsigned crown, unsigned site, unsigned fibre) const;
  /// Looks from that head at that site and appends at most one candidate, its weight not yet
  /// scaled.
  void get_angles(unsigned head, unsigned crown, unsigned site, unsigned fibre,
                  std::vector<BindingSite_s>& out) const;
  /// Azimuth of a site: odd and even sites are the two strands, half a turn apart.
  double get_actin_angle(unsigned site) const;

  // Diagnostics that no step of a run calls.

  /// `get_angles` from the table, with the scaled weight.
  void get_angles_cached(unsigned head, unsigned crown, unsigned site, unsigned fibre,
                         std::vector<BindingSite_s>& out) const;

 private:
  void get_myosin_parameters(dealii::ParameterHandler& handler);
  void get_actin_parameters(dealii::ParameterHandler& handler);
  void get_proteinC_parameters(dealii::ParameterHandler& handler);
  double draw_actin_length() const;
  void initialize_heads(FilamentData& data) const;
  unsigned n_heads() const;

  double slow_fraction = 0.0;
  double a_offset = 0.0;
  double radius_actin = 0.0;
  double radius_myosin = 0.0;
  double d_actin_myosin = 0.0;
  StericWeights weights;
  unsigned n_chains = 4;
  unsigned nebulinDeficiency = 0;
  double slow_percent = 0.0;
  double fast_percent = 0.0;
};
