#pragma once

/// Series count and the limits at which the iteration ends: root mean square and largest entry of
/// the correction [nm] and of the out-of-balance force [pN].
struct SarcomerParameter_s {
  unsigned full_sarcomer = 0;  ///< sarcomeres in series; 0 for a single half-sarcomere
  double dispSqLimit = 1.0e-6;
  double dispCBLimit = 1.0e-6;
  double forceSqLimit = 1.0e-6;
  double forceCBLimit = 1.0e-6;
};
