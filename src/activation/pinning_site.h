#pragma once
/// One pin of a flexible chain. Lists of pins are in ascending order of `site`.

#include <algorithm>
#include <vector>

#include "activation/fchain_model.h"

/// Who holds the chain.
enum : unsigned { by_troponin, by_weak_head, by_strong_head };

struct PinningSite_s {
  unsigned site;  ///< index along the chain
  unsigned type;  ///< 0 troponin, 1 weakly bound head, 2 strongly bound head
};

inline bool operator==(PinningSite_s const& a, PinningSite_s const& b) {
  return a.site == b.site && a.type == b.type;
}

/// The angle at which a pin holds the chain.
inline double pin_angle(PinningSite_s const& pin, FlexChainParameter_s const& fc) {
  if (pin.type == by_troponin) return fc.phi_minus;
  return pin.type == by_strong_head ? fc.phi_plus : 0.0;
}

/// Whether a site is in the list.
inline bool has_pin(std::vector<PinningSite_s> const& pins, unsigned site) {
  return std::binary_search(
      pins.begin(), pins.end(), PinningSite_s{site, by_troponin},
      [](PinningSite_s const& a, PinningSite_s const& b) { return a.site < b.site; });
}
