#include "mechanics/snapshots.h"

#include <cstdio>
#include <sstream>

#include "base/output_file.h"
#include "elastic/XB_Models.h"
#include "mechanics/filament_array.h"

namespace {

std::string name_at(char const* stem, double time) {
  std::ostringstream name;
  name << stem << time << ".csv";
  return name.str();
}

}  // namespace

void write_snapshots(FilamentArray const& filaments, double time) {
  OutputFile const distributions(name_at("distributions_", time), "wt");
  OutputFile const xray(name_at("x_ray_data_", time), "wt");
  std::fprintf(distributions.get(), "X,Stiffness,Force,Energy,State\n");
  std::fprintf(xray.get(), "Filament, Actin, Strained, Node, InitCoordinate, Coordinate, Force\n");
  for (std::size_t f = 0; f < filaments.size(); ++f) {
    Filament const& filament = filaments[f];
    FilamentData const& data = filament.data;
    unsigned const n = filament.n_attached();
    for (unsigned i = 0; i < n; ++i) {
      MyosinHead_s const& h = *data.attached[i];
      XB_Model const& law = filament.bond_law(h);
      double const X = filament.bond_strain(i);
      double const F = law.GetForce(X);
      std::fprintf(distributions.get(), "%lf,%lf,%lf,%lf,%d\n", filament.get_strain_euler(i),
                   law.GetStiffness(X), F, law.GetEnergy(X), static_cast<int>(h.state));
      std::fprintf(xray.get(), "%d,%d,%d,%d,%lf,%lf,%lf\n", static_cast<int>(f),
                   static_cast<int>(h.actin_fibre), static_cast<int>(h.actin_site & 1u),
                   static_cast<int>(h.actin_site), data.x[h.actin_fibre][h.actin_site],
                   data.position(h.actin_fibre)[h.actin_site], F);
    }
  }
  distributions.flush();
  xray.flush();
}
