#include "mechanics/measured.h"

#include <deal.II/lac/vector.h>

#include "base/diagnostics.h"
#include "mechanics/filament_array.h"

void Measured::CalculateResults(FilamentArray const& filaments, dealii::Vector<double> const& du,
                                dealii::Vector<double> const& rhs) {
  if (filaments.empty()) stop_with_message("Nemamo ni jedan filament!", "the lattice is empty");
  double F = 0.0;
  double Dm = 0.0;
  double Da = 0.0;
  filaments.for_each_row([&](Filament const& filament) {
    F += rhs[filament.get_bnd_dof(0, 0)];
    Dm += du[filament.get_bnd_dof(1, 0)];
    Da += du[filament.get_bnd_dof(1, filament.shown_actin_fibre())];
  });
  auto const rows = static_cast<double>(filaments.rows());
  count_bonds(filaments);
  myosin_displacement += Dm / rows;
  actin_displacement += Da / rows;
  force = -(F / rows);
}

void Measured::count_bonds(FilamentArray const& filaments) {
  unsigned crossbridges = 0;
  unsigned proteinC_bonds = 0;
  for (auto const& filament : filaments) {
    bool const counts_apart = filament->proteinC_enabled != 0;
    crossbridges += filament->n_myosin_bonds();
    (counts_apart ? proteinC_bonds : crossbridges) += filament->n_proteinC_bonds();
  }
  auto const N = static_cast<double>(filaments.size());
  cb_per_filament = crossbridges / N;
  if (filaments.front().proteinC_enabled != 0) cb_proteinC_per_filament = proteinC_bonds / N;
}

double Measured::stiffness(FilamentArray const& filaments, dealii::Vector<double> const& solution,
                           dealii::Vector<double> const& reaction) const {
  double r = 0.0;
  double s = 0.0;
  filaments.for_each_row([&](Filament const& filament) {
    r += reaction[filament.get_bnd_dof(0, 0)];
    s += solution[filament.get_bnd_dof(1, 1)];
  });
  auto const rows = static_cast<double>(filaments.rows());
  return (-(r / rows) - force) / (s / rows - actin_displacement);
}
