#pragma once
/// One regulatory segment: a run of consecutive sites of one chain that regulate together.

#include <vector>

struct ActinSite_s;
struct FilamentData;

class ActivationStateData {
 public:
  explicit ActivationStateData(unsigned length);

  unsigned get_segment_length() const { return segment_length; }
  /// The site at place `i`; null for a place past the fibre's end.
  ActinSite_s* find_site(unsigned i, FilamentData& data) const;
  /// Whether the site at place `i` carries a head; false for a place past the fibre's end.
  bool head_bound(unsigned i, FilamentData const& data) const;
  /// Kinetic state of the head there; 0 without a head or past the end.
  unsigned head_state(unsigned i, FilamentData const& data) const;
  /// Places of the segment that carry a head.
  unsigned n_heads_bound(FilamentData const& data) const;
  bool heads_bound(FilamentData const& data) const { return n_heads_bound(data) != 0; }
  /// Writes both factors and the mapped state into the filament's sites; leaves `k_off_factor` and
  /// `head` alone and skips places past the end.
  void copy_to_filament(FilamentData& data, std::vector<unsigned> const& state_map) const;
  /// The same for one place.
  void copy_place_to_filament(unsigned i, FilamentData& data,
                              std::vector<unsigned> const& state_map) const;

  unsigned segment_length;
  unsigned status = 0;          ///< the segment's state in a regulation model
  std::vector<unsigned> state;  ///< the model's state of each site
  std::vector<unsigned> fibre;
  std::vector<unsigned> site;
  std::vector<double> k_on_factor;
  std::vector<double> k_stroke_factor;

 private:
  bool is_inside(unsigned i, FilamentData const& data) const;
};
