#include "mechanics/skyline_matrix.h"

#include <algorithm>
#include <cmath>

void SkylineMatrix::reshape(std::vector<unsigned> const& first) {
  rows.resize(first.size());
  std::size_t begin = 0;
  for (unsigned i = 0; i < first.size(); ++i) {
    rows[i] = {first[i], begin - first[i]};
    begin += i - first[i] + 1;
  }
  values.assign(begin, 0.0);
}

bool SkylineMatrix::eliminate(unsigned n) {
  inverse_pivots.resize(n);
  all_positive = true;
  double* const v = values.data();
  for (unsigned i = 0; i < rows.size(); ++i) {
    auto const [first, origin] = rows[i];
    // First the row of L D ...
    for (unsigned j = first + 1; j < i; ++j) {
      Row const& other = rows[j];
      double sum = v[origin + j];
      unsigned const end = std::min(j, n);
      for (unsigned k = std::max(first, other.first); k < end; ++k) {
        sum -= v[origin + k] * v[other.origin + k];
      }
      v[origin + j] = sum;
    }
    // ... then that of L, which leaves the pivot.
    double pivot = v[origin + i];
    unsigned const end = std::min(i, n);
    for (unsigned k = first; k < end; ++k) {
      double const l = v[origin + k] * inverse_pivots[k];
      pivot -= l * v[origin + k];
      v[origin + k] = l;
    }
    v[origin + i] = pivot;
    if (i >= n) continue;
    if (!(pivot > 0.0)) all_positive = false;
    inverse_pivots[i] = 1.0 / pivot;
    if (!std::isfinite(pivot) || !std::isfinite(inverse_pivots[i])) return false;
  }
  return true;
}

void SkylineMatrix::reduce(std::vector<double>& b) const {
  auto const n = static_cast<unsigned>(inverse_pivots.size());
  for (unsigned i = 0; i < rows.size(); ++i) {
    auto const [first, origin] = rows[i];
    double sum = b[i];
    unsigned const end = std::min(i, n);
    for (unsigned k = first; k < end; ++k) sum -= values[origin + k] * b[k];
    b[i] = sum;
  }
}

void SkylineMatrix::recover(std::vector<double>& b) const {
  auto const n = static_cast<unsigned>(inverse_pivots.size());
  for (unsigned i = 0; i < n; ++i) b[i] *= inverse_pivots[i];
  for (auto i = static_cast<unsigned>(rows.size()); i-- > 0;) {
    auto const [first, origin] = rows[i];
    double const x = b[i];
    unsigned const end = std::min(i, n);
    for (unsigned k = first; k < end; ++k) b[k] -= values[origin + k] * x;
  }
}
