#include "mechanics/sarcomer.h"

#include <cstdio>

#include "base/diagnostics.h"
#include "elastic/XB_Models.h"
#include "elastic/create_law.h"
#include "lattice/geometry.h"
#include "mechanics/equilibrium.h"
#include "mechanics/snapshots.h"
#include "mechanics/titin_prestress.h"

namespace {

/// Creates the law that a section of the lattice's file asks for; only two kinds can stand there.
XB_Model const& create_series_law(Geometry const& geometry, std::string const& section,
                                  std::string const& name, char const* message) {
  bool const is_series_law = name == "ConstantStiffness" || name == "StiffnessFunction";
  if (is_series_law) return *create_passive_law(name, section + "_");
  stop_with_message(message, geometry.parameter_file_name + ", section " + section + ": " +
                                 section + "_stiffness is '" + name +
                                 "'; accepted: ConstantStiffness or StiffnessFunction");
}

}  // namespace

void VectorAdd(std::vector<int>& a, std::vector<int> const& b) {
  if (a.size() != b.size()) {
    stop_with_message("Error: vectors addition!", "segment counts of " + std::to_string(a.size()) +
                                                      " and " + std::to_string(b.size()) +
                                                      " states can't be added");
  }
  for (std::size_t i = 0; i < a.size(); ++i) a[i] += b[i];
}

Sarcomer::Sarcomer(SarcomerParameter_s const& param, Geometry const& lattice)
    : filaments(param.full_sarcomer),
      geometry(lattice),
      see(create_series_law(geometry, "see", geometry.see_stiffness, "No See stiffness model? "),
          geometry.see_damping_factor, filaments),
      boundary(filaments, see),
      equilibrium(std::make_unique<Equilibrium>(param, filaments, see, boundary)) {
  if (geometry.titin_enabled == 1) create_titin();
}

Sarcomer::~Sarcomer() = default;

void Sarcomer::create_titin() {
  titin_model =
      &create_series_law(geometry, "titin", geometry.titin_stiffness, "No Titin stiffness model? ");
  double const titin_force = FindTitinForce(*titin_model, geometry);
  see.SetInitialPrescribedDisplacement(titin_force);
  std::printf("Force Titin: %g\n", titin_force);
  std::printf("See Force: %g\n", see.spring_force(see.initial_displacement));
  std::printf("SetInitialPrescribedDisplacement: %g\n", see.initial_displacement);
}

bool Sarcomer::add_filament(Filament* filament) {
  filaments.add(std::unique_ptr<Filament>(filament));
  return true;
}

int Sarcomer::state_change(double time, double dt) {
  for (auto const& filament : filaments) filament->state_change(time, dt);
  std::vector<int> sums;
  for (auto const& filament : filaments) {
    if (filament == *filaments.begin()) {
      sums = filament->activation_states;
    } else {
      VectorAdd(sums, filament->activation_states);
    }
  }
  files.write_segment_states(time, sums);
  return 0;
}

void Sarcomer::set_boundary_mode(Prescribed const& wanted) { boundary.set_boundary_mode(wanted); }

int Sarcomer::assemble_and_solve(double time, bool update) {
  if (filaments.empty()) return -1;
  if (update) {
    equilibrium->find(measured);
  } else {
    equilibrium->probe_stiffness(measured,
                                 [&](double stiffness) { files.write_stiffness(time, stiffness); });
  }
  return 1;
}

int Sarcomer::create_output(double time) {
  if (filaments.empty()) {
    files.write_time(time);
    return -1;
  }
  files.write_measured(time, measured, filaments.front().proteinC_enabled != 0);
  return 0;
}

int Sarcomer::write_cb_states(std::ofstream& stream, int n_states) {
  files.write_cb_states(filaments, stream, n_states);
  return 0;
}

void Sarcomer::create_actinSites_output() { files.write_actin_sites(filaments); }

int Sarcomer::create_distributions(double time) const {
  write_snapshots(filaments, time);
  return 0;
}
