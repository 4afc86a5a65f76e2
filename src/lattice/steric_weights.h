#pragma once
/// How well heads and sites face each other: one steric weight for each angular phase of a site,
/// crown class and head of a crown, on each thin filament, worked out once.
///
/// Law:     weight = (1 + cos(n offset_b)) (1 + cos(2 offset_a))
/// Symbols: offset_b bearing of the site from the head, offset_a turn of the site away from the
///          head (see `find_angle`), n a number of the lattice
/// Refuses: lattices in which no head can see any site
///
/// The table holds the weights scaled to a mean of 1 over all pairs that can bind. Phases of sites
/// repeat along the filament. In a time step looking up remains.

#include <functional>
#include <optional>
#include <string>
#include <valarray>
#include <vector>

#include "lattice/geometry_tools.h"
#include "records/filament_data.h"

/// Weight, not yet scaled, of a head against the face of a site; none for a pair that doesn't see
/// each other or whose bearing is 60 degrees or more.
std::optional<double> steric_weight(EndOnView_s const& view, double n);

class StericWeights {
 public:
  /// How many of each there are.
  struct Shape_s {
    unsigned phases;
    unsigned crown_classes;
    unsigned heads;  ///< in a crown
    unsigned thin_filaments;
  };

  /// Appends what binds a head and a site of a phase, with the weight of `steric_weight`.
  using Look = std::function<void(unsigned head, unsigned crown, unsigned phase, unsigned fibre,
                                  std::vector<BindingSite_s>& out)>;

  StericWeights() = default;
  /// Fills the table with the first that `look` finds for each entry; more than one is reported
  /// under the lattice's name. `file_name` is what a refusal names.
  StericWeights(Shape_s const& shape, Look const& look, std::string const& lattice,
                std::string const& file_name);

  /// The scaled weight of any site; not above 0 if the head can't bind it or there is no such thin
  /// filament.
  double of(unsigned head, unsigned crown, unsigned site, unsigned fibre) const;

  /// The largest sum of weights above 0 that any `n` neighbouring sites have for a head.
  double most(unsigned head, unsigned crown, unsigned fibre, unsigned n) const {
    auto const& sums = window_sums[fibre - 1];
    std::size_t const i = head + shape.heads * crown;
    unsigned const whole_turns = n / shape.phases;
    return sums[entries_per_phase() * (n % shape.phases) + i] +
           whole_turns * sums[entries_per_phase() * shape.phases + i];
  }

  /// Calls `function(site, weight)` for those of the sites [first, end) that face the head, in
  /// ascending order. Most in reach don't, so this comes before a look at the site itself.
  template <class Function>
  void for_each_seen(unsigned head, unsigned crown, unsigned fibre, unsigned first, unsigned end,
                     Function function) const;

 private:
  std::size_t entries_per_phase() const { return std::size_t{shape.crown_classes} * shape.heads; }
  std::size_t index(unsigned head, unsigned crown, unsigned site) const {
    return head + shape.heads * crown + entries_per_phase() * (site % shape.phases);
  }

  Shape_s shape = {};
  std::valarray<double> find_window_sums(std::valarray<double> const& weights) const;

  std::vector<std::valarray<double>> tables;       ///< one for each thin filament, fibre 1 first
  std::vector<std::valarray<double>> window_sums;  ///< likewise, by number of sites up to a period
};

template <class Function>
void StericWeights::for_each_seen(unsigned head, unsigned crown, unsigned fibre, unsigned first,
                                  unsigned end, Function function) const {
  auto const& weights = tables[fibre - 1];
  std::size_t i = index(head, crown, first);
  for (unsigned site = first; site < end; ++site, i += entries_per_phase()) {
    if (i >= weights.size()) i -= weights.size();
    if (weights[i] > 0.0) function(site, weights[i]);
  }
}
