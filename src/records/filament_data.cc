#include "records/filament_data.h"

void FilamentData::initialize(std::vector<unsigned> const& node_counts) {
  for (unsigned const n : node_counts) {
    bound_count.emplace_back(0u, n);
    sites.emplace_back(n);
    x.emplace_back(0.0, n);
    u.emplace_back(n);
  }
}
