#include "lattice/geometry.h"

void Geometry::get_binding_sites(FilamentData const&, MyosinHead_s const&,
                                 std::vector<BindingSite_s>&) const {}

void Geometry::n_actin_segments(unsigned, std::vector<unsigned>&) const {}

unsigned Geometry::get_fibre(unsigned, unsigned, unsigned, unsigned) const { return 0; }

unsigned Geometry::get_site(unsigned, unsigned, unsigned, unsigned) const { return 0; }

void Geometry::fibre_stiffness(std::vector<double> const& moduli, std::vector<double> const& areas,
                               unsigned fibre, double& e, double& a) {
  bool const known = fibre < moduli.size() && fibre < areas.size();
  e = known ? moduli[fibre] : 0.0;
  a = known ? areas[fibre] : 0.0;
}
