#pragma once
/// One pin of a flexible chain. Lists of pins are in ascending order of `site`.

#include "activation/fchain_model.h"

struct PinningSite_s {
  unsigned site;  ///< index along the chain
  unsigned type;  ///< 0 troponin, 1 weakly bound head, 2 strongly bound head
};

/// The angle at which a pin holds the chain.
inline double pin_angle(PinningSite_s const& pin, FlexChainParameter_s const& fc) {
  if (pin.type == 0) return fc.phi_minus;
  return pin.type == 2 ? fc.phi_plus : 0.0;
}
