#include "mechanics/boundary.h"

#include <cstdio>

#include "lattice/geometry.h"
#include "mechanics/filament_array.h"
#include "mechanics/series_elastic_element.h"

namespace {

/// Carries a displacement across a junction into the mirrored half-sarcomere, whose positive
/// direction is the opposite one.
constexpr double across_junction = -1.0;

bool is_actin(Filament const& filament, unsigned fibre) {
  return filament.get_geometry()->is_actin(fibre);
}

/// The nodes of a series that half-sarcomeres share. Junction p stands between places p and p + 1;
/// even ones join thick filaments, odd ones actin. The first node that a junction meets in the
/// first row becomes its master, which all others follow.
class Junctions {
 public:
  Junctions(unsigned n, std::vector<Ends::Tie>& all_ties) : masters(n, none), ties(all_ties) {}

  void join(unsigned junction, unsigned dof, double factor) {
    if (masters[junction] == none) {
      masters[junction] = dof;
    } else {
      ties.push_back({dof, masters[junction], factor});
    }
  }

 private:
  static constexpr unsigned none = ~0u;
  std::vector<unsigned> masters;
  std::vector<Ends::Tie>& ties;
};

}  // namespace

Boundary::Boundary(FilamentArray const& array, SeriesElasticElement const& element)
    : filaments(array), see(element) {}

void Boundary::set_boundary_mode(Prescribed const& wanted) {
  prescribed = wanted;
  if (wanted.is_length())
    prescribed.value = wanted.value - see.displacement + see.initial_displacement;
}

Ends Boundary::create() const { return filaments.is_series() ? create_fibre_bnd() : create_bnd(); }

Ends Boundary::create_bnd() const {
  Ends ends{{}, {}, see.outer_dof, prescribed};
  unsigned const master = see.inner_dof();
  for (auto const& filament : filaments) {
    for (unsigned fibre = 0; fibre < filament->n_fibre(); ++fibre) {
      if (!is_actin(*filament, fibre)) {
        ends.held.push_back(filament->get_bnd_dof(0, fibre));
      } else if (unsigned const d = filament->get_bnd_dof(1, fibre); d != master) {
        ends.ties.push_back({d, master, 1.0});
      }
    }
  }
  return ends;
}

Ends Boundary::create_fibre_bnd() const {
  Ends ends{{}, {}, see.inner_dof(), prescribed};
  unsigned const n_hs = filaments.series();
  if (filaments.size() % n_hs != 0) {
    std::printf("Number of half sarcomeres does not match the number of filaments in series!\n");
    std::fflush(stdout);
  }
  Junctions junctions(n_hs - 1, ends.ties);
  for (std::size_t i = 0; i < filaments.size(); ++i) {
    Filament const& filament = filaments[i];
    auto const pos = static_cast<unsigned>(i % n_hs);
    bool const is_mirrored = pos % 2 == 1;
    for (unsigned fibre = 0; fibre < filament.n_fibre(); ++fibre) {
      if (!is_actin(filament, fibre)) {
        unsigned const d = filament.get_bnd_dof(0, fibre);
        junctions.join(is_mirrored ? pos - 1 : pos, d, is_mirrored ? across_junction : 1.0);
        continue;
      }
      unsigned const d = filament.get_bnd_dof(1, fibre);
      if (pos == 0) {
        if (d != ends.driven) ends.ties.push_back({d, ends.driven, 1.0});
      } else if (pos == n_hs - 1) {
        ends.held.push_back(d);
      } else {
        junctions.join(is_mirrored ? pos : pos - 1, d, is_mirrored ? 1.0 : across_junction);
      }
    }
  }
  return ends;
}
