// What an experimenter reads: force, displacements, bonds and state populations.

#include <deal.II/lac/vector.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "base/diagnostics.h"
#include "base/run_state.h"
#include "elastic/XB_Models.h"
#include "kinetics/model.h"
#include "mechanics/filament.h"
#include "mechanics/sarcomer.h"

namespace {

/// Step at which the listings of forces and monomers are written.
constexpr int listing_step = 70000;

/// The thin filament whose end shows the displacement: fibre 2, or the last one there is.
unsigned shown_actin_fibre(Filament const& filament) {
  return std::min(2u, filament.n_fibre() - 1);
}

bool is_myosin(MyosinHead_s const& head) { return head.model_index < 2; }

double standard_deviation(std::vector<double> const& values, double mean, double n) {
  double sum = 0.0;
  for (double const value : values) sum += (value - mean) * (value - mean);
  return std::sqrt(sum / n);
}

}  // namespace

template <class Action>
void Sarcomer::for_each_row(Action action) const {
  for (std::size_t i = 0; i < filaments.size(); i += series()) action(*filaments[i]);
}

unsigned Sarcomer::n_attached() const {
  unsigned sum = 0;
  for (auto const& filament : filaments) sum += filament->n_attached();
  return sum;
}

void Sarcomer::CalculateResults(Vector const& du, Vector const& rhs) {
  if (filaments.empty()) stop_with_message("Nemamo ni jedan filament!", "the lattice is empty");
  double F = 0.0;
  double Dm = 0.0;
  double Da = 0.0;
  for_each_row([&](Filament const& filament) {
    F += rhs[filament.get_bnd_dof(0, 0)];
    Dm += du[filament.get_bnd_dof(1, 0)];
    Da += du[filament.get_bnd_dof(1, shown_actin_fibre(filament))];
  });
  auto const rows = static_cast<double>(filaments.size() / series());
  count_bonds();
  myosin_displacement += Dm / rows;
  actin_displacement += Da / rows;
  force = -(F / rows);
  if (t_timeStep == listing_step) write_actin_force_listing(rhs);
}

void Sarcomer::count_bonds() {
  unsigned crossbridges = 0;
  unsigned proteinC_bonds = 0;
  for (auto const& filament : filaments) {
    if (filament->proteinC_enabled == 0) {
      crossbridges += filament->n_attached();
      continue;
    }
    for (MyosinHead_s const* head : filament->data.attached) {
      if (head->detach_pending == 1) continue;
      ++(is_myosin(*head) ? crossbridges : proteinC_bonds);
    }
  }
  auto const N = static_cast<double>(filaments.size());
  cb_per_filament = crossbridges / N;
  if (filaments.front()->proteinC_enabled != 0) cb_proteinC_per_filament = proteinC_bonds / N;
}

void Sarcomer::write_actin_force_listing(Vector const& rhs) const {
  std::vector<double> forces;
  for_each_row([&](Filament const& filament) {
    forces.push_back(rhs[filament.get_bnd_dof(1, 1)]);
    forces.push_back(rhs[filament.get_bnd_dof(1, shown_actin_fibre(filament))]);
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

int Sarcomer::create_output(double time) {
  FILE* const file = result_file.get();
  std::fprintf(file, "%13.11lf,", time);
  if (filaments.empty()) {
    result_file.flush();
    return -1;
  }
  std::fprintf(file, "%13.5e,%13.5e,%13.5e,%13.5e,", -force, myosin_displacement,
               actin_displacement, cb_per_filament);
  if (filaments.front()->proteinC_enabled != 0) {
    std::fprintf(file, "%13.5e,", cb_proteinC_per_filament);
  }
  std::fprintf(file, "\n");
  result_file.flush();
  return 0;
}

int Sarcomer::write_cb_states(std::ofstream& stream, int n_states) {
  std::vector<int> attached_counts(static_cast<std::size_t>(n_states), 0);
  std::vector<int> all_counts(static_cast<std::size_t>(n_states), 0);
  for (auto const& filament : filaments) {
    for (MyosinHead_s const* head : filament->data.attached) {
      if (is_myosin(*head)) ++attached_counts[head->state];
    }
    for (MyosinHead_s const& head : filament->data.heads) {
      if (is_myosin(head)) ++all_counts[head.state];
    }
  }
  for (int const count : attached_counts) stream << count << ',';
  end_row(stream, "cb_states_file.csv");

  // This file is never cleared: it grows across the runs of a directory.
  if (!myosin_head_states_file.get()) {
    myosin_head_states_file = OutputFile("Myosin_head_states.csv", "a");
  }
  for (int const count : all_counts) std::fprintf(myosin_head_states_file.get(), "%d,", count);
  std::fprintf(myosin_head_states_file.get(), "\n");
  myosin_head_states_file.flush();
  return 0;
}

void Sarcomer::create_actinSites_output() {
  FILE* const file = actin_sites_file.get();
  auto const n_actin = [](Filament const& filament) { return filament.n_fibre() - 1; };
  std::fprintf(file, "Filament count, Actin per filament\n");
  std::fprintf(file, "%d,%d\n", static_cast<int>(filaments.size()),
               filaments.empty() ? 0 : static_cast<int>(n_actin(*filaments.front())));
  for (std::size_t f = 0; f < filaments.size(); ++f) {
    auto const& sites = filaments[f]->data.sites;
    for (unsigned fibre = 1; fibre <= n_actin(*filaments[f]); ++fibre) {
      std::fprintf(file, "Filament,Actin,Site count\n");
      std::fprintf(file, "%d,%d,%d\n", static_cast<int>(f + 1), static_cast<int>(fibre),
                   static_cast<int>(sites[fibre].size()));
      std::fprintf(file, "Site state (0-open;1-blocked;2-closed)\n");
      for (ActinSite_s const& site : sites[fibre]) std::fprintf(file, "%u\n", site.state);
    }
  }
  actin_sites_file.flush();
}

int Sarcomer::create_stiffness_output(Vector const& solution, Vector const& reaction) {
  if (filaments.empty()) return -1;
  double r = 0.0;
  double s = 0.0;
  for_each_row([&](Filament const& filament) {
    r += reaction[filament.get_bnd_dof(0, 0)];
    s += solution[filament.get_bnd_dof(1, 1)];
  });
  auto const rows = static_cast<double>(filaments.size() / series());
  std::fprintf(stiffness_file.get(), "%e\n",
               (-(r / rows) - force) / (s / rows - actin_displacement));
  stiffness_file.flush();
  return 0;
}

int Sarcomer::create_displacement(std::ostream& stream, double time) {
  if (filaments.empty()) return 0;
  stream << time << '\n';
  filaments.front()->write_displacement(stream);
  return 0;
}

void Sarcomer::PrintMonomerStatistics() {
  std::printf("Stampam podatke o monomerima...\n");
  bool const is_first = t_timeStep == 1;
  if (!is_first && t_timeStep != listing_step) return;
  std::string const name = is_first ? "MonomerStatsInitial.dat" : "MonomerStats.dat";
  std::ofstream stream = open_output_stream(name);
  stream.precision(15);
  for (auto const& filament : filaments) {
    for (unsigned fibre = 1; fibre < filament->n_fibre(); ++fibre) {
      auto const& nodes = is_first ? filament->data.x[fibre] : filament->data.position[fibre];
      for (double const coordinate : nodes) stream << coordinate << ' ';
      stream << '\n';
    }
  }
  flush_output(stream, name);
  if (!is_first) write_crossbridge_listing();
}

void Sarcomer::write_crossbridge_listing() const {
  std::vector<double> forces;
  for (auto const& filament : filaments) {
    for (unsigned i = 0; i < filament->data.attached.size(); ++i) {
      MyosinHead_s const& head = *filament->data.attached[i];
      if (!is_myosin(head)) continue;
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
