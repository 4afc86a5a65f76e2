#include "mechanics/snapshots.h"

#include <cstdio>
#include <sstream>

#include "base/output_file.h"
#include "elastic/XB_Models.h"
#include "lattice/geometry.h"
#include "lattice/geometry_tools.h"
#include "mechanics/filament_array.h"

namespace {

std::string name_at(char const* stem, double time) {
  std::ostringstream name;
  name << stem << time << ".csv";
  return name.str();
}

/// Which head holds the bond, counted from 0, and where its ends stand seen end-on [nm]; the row
/// ends before these where the lattice doesn't say.
void write_place(FILE* file, Filament const& filament, MyosinHead_s const& head) {
  auto const number = &head - filament.data.heads.data();
  std::fprintf(file, "%d,%u,%u,%u", static_cast<int>(number), head.node - 1, head.number_in_crown(),
               static_cast<unsigned>(head.kind()));
  if (auto const ends = filament.get_geometry()->bond_ends(head)) {
    std::fprintf(file, ",%lf,%lf,%lf,%lf", ends->head_y, ends->head_z, ends->site_y, ends->site_z);
  }
  std::fputc('\n', file);
}

}  // namespace

void write_snapshots(FilamentArray const& filaments, double time) {
  WholeFile distributions(name_at("distributions_", time));
  WholeFile xray(name_at("x_ray_data_", time));
  WholeFile places(name_at("bonds_", time));
  std::fprintf(distributions.get(), "X,Stiffness,Force,Energy,State\n");
  std::fprintf(xray.get(), "Filament, Actin, Strained, Node, InitCoordinate, Coordinate, Force\n");
  std::fprintf(places.get(), "Head,Crown,HeadInCrown,Kind,HeadY,HeadZ,SiteY,SiteZ\n");
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
      write_place(places.get(), filament, h);
    }
  }
  for (WholeFile* const file : {&distributions, &xray, &places}) file->finish();
}
