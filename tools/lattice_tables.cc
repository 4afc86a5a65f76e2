// Tables of a lattice, with the parameters of its file, for its drawing; in the working directory.
//
//   lattice_tables lattices    the registered lattices, a name a line
//   lattice_tables NAME        nodes.csv, candidates.csv (of a filament at rest) and, where the
//                              lattice has angles, end_on.csv

#include <deal.II/base/multithread_info.h>
#include <deal.II/base/point.h>

#include <cmath>
#include <cstdio>
#include <string>

#include "base/diagnostics.h"
#include "base/output_file.h"
#include "base/run_state.h"
#include "lattice/geometry_flight.h"
#include "lattice/geometry_tolen.h"
#include "lattice/geometry_vertebrae.h"
#include "records/filament_data.h"

namespace {

using Lattices = Factory<Geometry, GeometryParameter_s>;

void write_nodes(FilamentData const& data) {
  OutputFile const file("nodes.csv", "wt");
  std::fprintf(file.get(), "fibre,node,x\n");
  for (std::size_t fibre = 0; fibre < data.x.size(); ++fibre) {
    for (std::size_t node = 0; node < data.x[fibre].size(); ++node) {
      std::fprintf(file.get(), "%zu,%zu,%g\n", fibre, node, data.x[fibre][node]);
    }
  }
  file.flush();
}

void write_candidates(Geometry const& lattice, FilamentData const& data) {
  OutputFile const file("candidates.csv", "wt");
  std::fprintf(file.get(), "node,crown,head,fibre,site,weight\n");
  for (MyosinHead_s const& head : data.heads) {
    std::vector<BindingSite_s> candidates;
    lattice.get_binding_sites(data, head, candidates);
    for (BindingSite_s const& c : candidates) {
      std::fprintf(file.get(), "%u,%u,%u,%u,%u,%g\n", head.node, head.crown_class(),
                   head.number_in_crown(), c.fibre, c.site, c.weight);
    }
  }
  file.flush();
}

/// Rows of end_on.csv: points in nm; weight 0 for a face that the head can't bind.
class EndOnTable {
 public:
  EndOnTable() : file("end_on.csv", "wt") {
    std::fprintf(file.get(),
                 "crown,head,fibre,site,myosin_x,myosin_y,actin_x,actin_y,head_x,head_y,"
                 "site_x,site_y,weight\n");
  }
  ~EndOnTable() { file.flush(); }
  EndOnTable(EndOnTable const&) = delete;
  EndOnTable& operator=(EndOnTable const&) = delete;

  void place(unsigned crown, unsigned head, unsigned fibre, unsigned site) {
    std::fprintf(file.get(), "%u,%u,%u,%u,", crown, head, fibre, site);
  }
  void add(EndOnView_s const& view, double weight) {
    double const b = view.head_angle;
    double const a = view.site_angle;
    std::fprintf(file.get(), "0,0,%g,%g,%g,%g,%g,%g,%g\n", view.actin_x, view.actin_y,
                 view.radii.radius_b * std::cos(b), view.radii.radius_b * std::sin(b),
                 view.actin_x + view.radii.radius_a * std::cos(a),
                 view.actin_y + view.radii.radius_a * std::sin(a), weight);
  }
  /// The thin filament is the origin, and no distances are given: those drawn are the vertebrates'.
  void add(double site_angle, double head_angle, double weight) {
    double const c = std::cos(head_angle);
    double const s = std::sin(head_angle);
    std::fprintf(file.get(), "%g,%g,0,0,%g,%g,%g,%g,%g\n", 30.0 * c, 30.0 * s, 23.0 * c, 23.0 * s,
                 3.5 * std::cos(site_angle), 3.5 * std::sin(site_angle), weight);
  }

 private:
  OutputFile file;
};

constexpr unsigned phases = 26;  // a full turn in each of the lattices

/// Calls `function(crown, head, fibre, site)` for each entry.
template <class Function>
void for_each_entry(unsigned crowns, unsigned heads, unsigned fibres, Function function) {
  for (unsigned crown = 0; crown < crowns; ++crown) {
    for (unsigned head = 0; head < heads; ++head) {
      for (unsigned fibre = 1; fibre <= fibres; ++fibre) {
        for (unsigned site = 0; site < phases; ++site) function(crown, head, fibre, site);
      }
    }
  }
}

void write_end_on(GeometryVertebrae const& lattice) {
  EndOnTable table;
  for_each_entry(3, 3, 2, [&](unsigned crown, unsigned head, unsigned fibre, unsigned site) {
    std::vector<BindingSite_s> out;
    lattice.get_angles_cached(head, crown, site, fibre, out);
    table.place(crown, head, fibre, site);
    table.add(lattice.end_on(head, crown, site, fibre), out.empty() ? 0.0 : out[0].weight);
  });
}

void write_end_on(GeometryFlight const& lattice) {
  EndOnTable table;
  for_each_entry(2, 4, 3, [&](unsigned crown, unsigned head, unsigned fibre, unsigned site) {
    std::vector<BindingSite_s> out;
    lattice.get_angles_cached(head, crown, site, fibre, out, 1.0);
    for (unsigned const face : {0u, 1u}) {
      EndOnView_s const view = lattice.end_on(head, crown, site, fibre, face);
      double offset_b = 0.0;
      double offset_a = 0.0;
      bool const in_sight = find_angle({view.actin_x, view.actin_y}, {0.0, 0.0}, view.site_angle,
                                       view.head_angle, view.radii, offset_b, offset_a);
      table.place(crown, head, fibre, site);
      table.add(view, in_sight && !out.empty() ? out[0].weight : 0.0);
    }
  });
}

void write_end_on(GeometryTolen const& lattice) {
  EndOnTable table;
  for_each_entry(3, 3, 2, [&](unsigned crown, unsigned head, unsigned fibre, unsigned site) {
    std::vector<BindingSite_s> out;
    lattice.get_angles(head, crown, site, fibre, out);
    if (out.empty()) return;
    table.place(crown, head, fibre, site);
    table.add(lattice.get_actin_angle(site), lattice.get_head_azimuth(head, fibre),
              out[0].weight < 0.0 ? 0.0 : 1.0);
  });
}

/// Writes the table if the lattice is of this class.
template <class Class>
void write_end_on_if(Geometry const& lattice) {
  if (auto const* const angular = dynamic_cast<Class const*>(&lattice)) write_end_on(*angular);
}

}  // namespace

int main(int argc, char** argv) {
  dealii::MultithreadInfo::set_thread_limit(1);
  if (argc != 2) stop("usage: lattice_tables lattices | NAME");
  std::string const name = argv[1];
  if (name == "lattices") {
    for (auto const& type : Lattices::instance().types()) std::printf("%s\n", type.first.c_str());
    return 0;
  }
  fOutputFile = open_output("TaveloOutput.lst", "wt");
  auto const lattice =
      create_component<Geometry>(name, GeometryParameter_s{}, "lattice_tables", "geometry");
  FilamentData data;
  lattice->initialize_filament(data);
  write_nodes(data);
  write_candidates(*lattice, data);
  write_end_on_if<GeometryVertebrae>(*lattice);
  write_end_on_if<GeometryFlight>(*lattice);
  write_end_on_if<GeometryTolen>(*lattice);
  close_output(fOutputFile, "TaveloOutput.lst");
  return 0;
}
