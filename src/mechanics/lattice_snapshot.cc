#include "mechanics/lattice_snapshot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <deque>

#include "base/output_file.h"
#include "elastic/XB_Models.h"
#include "lattice/geometry.h"
#include "lattice/geometry_tools.h"
#include "mechanics/filament_array.h"

namespace {

std::string name_at(char const* stem, double time) {
  char name[64];
  std::snprintf(name, sizeof name, "lattice_%s_%.10g.csv", stem, time);
  return name;
}

/// A filament and its place in the lattice.
struct Unit {
  Filament const& filament;
  Geometry const& lattice;
  std::size_t number;
  unsigned place;  ///< in its series, from the driven end on

  FilamentData const& data() const { return filament.data; }
};

/// Coordinate of a half-sarcomere's middle in its series, at rest, so that a node stands at origin
/// + direction * x. Neighbours share their middle or their thin filaments' ends.
double origin(Unit const& unit) {
  auto const& x = unit.data().x[1];
  return 0.0 - 2.0 * (unit.place / 2) * x[x.size() - 1];
}

/// First site that nebulin deficiency has left.
unsigned first_site(Unit const& unit, unsigned fibre) {
  FilamentData const& data = unit.data();
  if (data.nebulin_limit.empty()) return 0;
  return first_not_below(data.x[fibre], data.nebulin_limit[fibre - 1]);
}

/// Bearings at which heads see a thin filament, ascending from -pi on. It stands for all of these.
std::vector<double> bearings(Unit const& unit, unsigned fibre) {
  std::vector<double> found;
  for (MyosinHead_s const& head : unit.data().heads) {
    auto const facing = unit.lattice.facing(head, fibre);
    if (!facing) continue;
    double const bearing = normalise_angle(facing->bearing);
    auto const is_same = [&](double other) { return angular_distance(bearing, other) < 1e-6; };
    if (std::none_of(found.begin(), found.end(), is_same)) found.push_back(bearing);
  }
  std::sort(found.begin(), found.end());
  return found;
}

// Rows

struct Place {
  std::optional<double> bearing;
  double distance;
  double radius;
};

void write_fibre(FILE* file, Unit const& unit, unsigned fibre, unsigned first, Place const& place) {
  auto const position = unit.data().position(fibre);
  std::fprintf(file, "%zu,%u,%d,%lf,%u,%u,%lf,%lf", unit.number, unit.place,
               unit.filament.direction, origin(unit), fibre,
               fibre == 0 ? 0 : unit.lattice.faces_of_site(), position[first],
               position[position.size() - 1]);
  if (place.bearing) std::fprintf(file, ",%lf", *place.bearing);
  if (unit.lattice.cross_section()) std::fprintf(file, ",%lf,%lf", place.distance, place.radius);
  if (auto const force = unit.filament.titin_force()) std::fprintf(file, ",%lf", *force);
  std::fputc('\n', file);
}

void write_filament(FILE* file, Unit const& unit) {
  CrossSection_s const section = unit.lattice.cross_section().value_or(CrossSection_s{});
  bool const has_angles = unit.lattice.faces_of_site() > 0;
  auto const axis = has_angles ? std::optional<double>(0.0) : std::nullopt;
  write_fibre(file, unit, 0, 0, {axis, 0.0, section.radius_myosin});
  for (unsigned fibre = 1; fibre < unit.filament.n_fibre(); ++fibre) {
    unsigned const first = std::min(first_site(unit, fibre), unit.lattice.n_actin_nodes - 1);
    Place place = {std::nullopt, section.distance, section.radius_actin};
    if (!has_angles) write_fibre(file, unit, fibre, first, place);
    for (double const bearing : bearings(unit, fibre)) {
      place.bearing = bearing;
      write_fibre(file, unit, fibre, first, place);
    }
  }
}

void write_heads(FILE* file, Unit const& unit) {
  auto const section = unit.lattice.cross_section();
  auto const position = unit.data().position(0);
  unsigned number = 0;
  for (MyosinHead_s const& head : unit.data().heads) {
    std::fprintf(file, "%zu,%u,%u,%u,%u,%u,%lf", unit.number, number++, head.node - 1,
                 head.number_in_crown(), static_cast<unsigned>(head.kind()), head.state,
                 position[head.node]);
    if (auto const facing = unit.lattice.facing(head, 1)) {
      double const azimuth = normalise_angle(facing->azimuth);
      std::fprintf(file, ",%lf", azimuth);
      if (section) {
        std::fprintf(file, ",%lf,%lf", section->radius_myosin * std::cos(azimuth),
                     section->radius_myosin * std::sin(azimuth));
      }
    }
    std::fputc('\n', file);
  }
}

void write_bonds(FILE* file, Unit const& unit) {
  Filament const& filament = unit.filament;
  for (unsigned i = 0; i < unit.data().attached.size(); ++i) {
    MyosinHead_s const& head = *unit.data().attached[i];
    if (head.detach_pending == 1) continue;
    XB_Model const& law = filament.bond_law(head);
    double const strain = filament.bond_strain(i);
    std::fprintf(file, "%zu,%d,%u,%u,%lf,%lf,%lf,%lf,%lf", unit.number,
                 static_cast<int>(&head - unit.data().heads.data()), head.actin_fibre,
                 head.actin_site, filament.get_strain_euler(i), strain, law.GetStiffness(strain),
                 law.GetForce(strain), law.GetEnergy(strain));
    if (auto const facing = unit.lattice.facing(head, head.actin_fibre)) {
      double const face =
          *unit.lattice.azimuth_of_site(head.actin_site) + unit.lattice.bound_face(head) * M_PI;
      std::fprintf(file, ",%lf,%lf", normalise_angle(facing->bearing), normalise_angle(face));
    }
    std::fputc('\n', file);
  }
}

void write_sites(FILE* file, Unit const& unit) {
  for (unsigned fibre = 1; fibre < unit.filament.n_fibre(); ++fibre) {
    auto const position = unit.data().position(fibre);
    for (unsigned i = first_site(unit, fibre); i < position.size(); ++i) {
      ActinSite_s const& site = unit.data().sites[fibre][i];
      std::fprintf(file, "%zu,%u,%u,%u,%lf,%lf", unit.number, fibre, i, site.state,
                   site.k_on_factor, position[i]);
      if (auto const azimuth = unit.lattice.azimuth_of_site(i)) {
        std::fprintf(file, ",%lf", normalise_angle(*azimuth));
      }
      std::fputc('\n', file);
    }
  }
}

struct Part {
  char const* stem;
  char const* heading;
  void (*write)(FILE*, Unit const&);
};

constexpr Part parts[] = {
    {"filaments",
     "Filament,Place,Direction,Origin,Fibre,Faces,First,Last,Bearing,Distance,Radius,TitinForce\n",
     write_filament},
    {"heads", "Filament,Head,Crown,HeadInCrown,Kind,State,X,Azimuth,Y,Z\n", write_heads},
    {"bonds",
     "Filament,Head,Fibre,Site,Strain,StrainWithLever,Stiffness,Force,Energy,Bearing,Azimuth\n",
     write_bonds},
    {"sites", "Filament,Fibre,Site,State,BindingFactor,X,Azimuth\n", write_sites},
};

}  // namespace

void write_lattice_snapshot(FilamentArray const& filaments, double time) {
  std::deque<WholeFile> files;
  for (Part const& part : parts) {
    files.emplace_back(name_at(part.stem, time));
    FILE* const file = files.back().get();
    std::fputs(part.heading, file);
    for (std::size_t i = 0; i < filaments.size(); ++i) {
      auto const place = static_cast<unsigned>(i % filaments.series());
      part.write(file, {filaments[i], *filaments[i].get_geometry(), i, place});
    }
  }
  for (WholeFile& file : files) file.finish();
}
