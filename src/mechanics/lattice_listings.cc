#include "mechanics/lattice_listings.h"

#include <deal.II/lac/vector.h>

#include <cmath>
#include <cstdio>
#include <numeric>

#include "base/output_file.h"
#include "base/run_state.h"
#include "elastic/XB_Models.h"
#include "mechanics/filament_array.h"

namespace {

constexpr int listing_step = 70000;

double standard_deviation(std::vector<double> const& values, double mean, double n) {
  double sum = 0.0;
  for (double const value : values) sum += (value - mean) * (value - mean);
  return std::sqrt(sum / n);
}

void write_crossbridge_listing(FilamentArray const& filaments) {
  std::vector<double> forces;
  for (auto const& filament : filaments) {
    for (unsigned i = 0; i < filament->data.attached.size(); ++i) {
      MyosinHead_s const& head = *filament->data.attached[i];
      if (!head.is_myosin()) continue;
      forces.push_back(filament->bond_law(head).GetForce(filament->bond_strain(i)));
    }
  }
  auto const n = static_cast<double>(forces.size());
  double const mean = std::accumulate(forces.begin(), forces.end(), 0.0) / n;
  constexpr char const* name = "CB_Listing_file.dat";
  std::ofstream stream = open_output_stream(name);
  stream << "Middle cb force = " << mean << '\n';
  stream << "Standard deviation cb force = " << standard_deviation(forces, mean, n) << '\n';
  flush_output(stream, name);
}

}  // namespace

void write_actin_force_listing(FilamentArray const& filaments, dealii::Vector<double> const& rhs) {
  if (t_timeStep != listing_step) return;
  std::vector<double> forces;
  filaments.for_each_row([&](Filament const& filament) {
    forces.push_back(rhs[filament.get_bnd_dof(1, 1)]);
    forces.push_back(rhs[filament.get_bnd_dof(1, filament.shown_actin_fibre())]);
  });
  double const n = 2.0 * static_cast<double>(filaments.size());
  double const mean = std::accumulate(forces.begin(), forces.end(), 0.0) / n;
  constexpr char const* name = "ActinForceListing.dat";
  std::ofstream stream = open_output_stream(name);
  for (std::size_t i = 0; i < forces.size(); ++i) stream << i << ": " << forces[i] << '\n';
  stream << "Actin force middle: " << mean << '\n';
  stream << "Actin force standard deviation: " << standard_deviation(forces, mean, n) << '\n';
  flush_output(stream, name);
}

void create_displacement(FilamentArray const& filaments, std::ostream& stream, double time) {
  if (filaments.empty()) return;
  stream << time << '\n';
  filaments.front().write_displacement(stream);
}

void PrintMonomerStatistics(FilamentArray const& filaments) {
  std::printf("Stampam podatke o monomerima...\n");
  bool const is_first = t_timeStep == 1;
  if (!is_first && t_timeStep != listing_step) return;
  std::string const name = is_first ? "MonomerStatsInitial.dat" : "MonomerStats.dat";
  std::ofstream stream = open_output_stream(name);
  stream.precision(15);
  for (auto const& filament : filaments) {
    for (unsigned fibre = 1; fibre < filament->n_fibre(); ++fibre) {
      std::valarray<double> const& rest = filament->data.x[fibre];
      NodePositions const now = filament->data.position(fibre);
      for (unsigned i = 0; i < now.size(); ++i) stream << (is_first ? rest[i] : now[i]) << ' ';
      stream << '\n';
    }
  }
  flush_output(stream, name);
  if (!is_first) write_crossbridge_listing(filaments);
}
