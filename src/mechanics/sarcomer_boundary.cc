// How the ends of the lattice are held, and how length or force comes onto it.

#include <deal.II/lac/affine_constraints.h>
#include <deal.II/lac/vector.h>

#include <algorithm>
#include <cstdio>

#include "lattice/geometry.h"
#include "mechanics/filament.h"
#include "mechanics/sarcomer.h"

namespace {

/// Carries a displacement across a junction into the mirrored half-sarcomere, whose positive
/// direction is the opposite one.
constexpr double across_junction = -1.0;

/// Ties the displacement of `a` to `factor` times that of `b`.
void tie(Sarcomer::Constraints& constraints, unsigned a, unsigned b, double factor) {
  constraints.add_line(a);
  auto const* entries = constraints.get_constraint_entries(a);
  bool const is_tied = entries && std::any_of(entries->begin(), entries->end(),
                                              [b](auto const& entry) { return entry.first == b; });
  if (!is_tied) constraints.add_entry(a, b, factor);
}

/// Holds all thick filaments at their first node and ties all actin ends to the first of them.
void hold_half_sarcomere(Sarcomer const& sarcomer, Sarcomer::Constraints& constraints,
                         Sarcomer::Values& values) {
  unsigned master = 0;
  bool has_master = false;
  for (auto const& filament : sarcomer.filaments) {
    for (unsigned fibre = 0; fibre < filament->n_fibre(); ++fibre) {
      if (!filament->get_geometry()->is_actin(fibre)) {
        values[filament->get_bnd_dof(0, fibre)] = 0.0;
        continue;
      }
      unsigned const d = filament->get_bnd_dof(1, fibre);
      if (has_master) {
        tie(constraints, d, master, 1.0);
      } else {
        master = d;
        has_master = true;
      }
    }
  }
}

unsigned first_actin_fibre(Filament const& filament) {
  unsigned fibre = 0;
  while (!filament.get_geometry()->is_actin(fibre)) ++fibre;
  return fibre;
}

}  // namespace

int Sarcomer::set_boundary_mode(unsigned mode, double value) {
  boundary_mode = mode;
  boundary_value =
      is_displacement_mode() ? value - see_displacement + see_initial_displacement : value;
  return 0;
}

void Sarcomer::create_bnd_displacement(Constraints& constraints, Values& values) {
  hold_half_sarcomere(*this, constraints, values);
  values[see_dof] = boundary_value;
}

void Sarcomer::create_bnd_force(Constraints& constraints, Vector& rhs, Values& values) {
  hold_half_sarcomere(*this, constraints, values);
  rhs[see_dof] = boundary_value;
}

void Sarcomer::create_fibre_bnd_displacement(Constraints& constraints, Values& values) {
  create_fibre_bnd(End::displacement, constraints, nullptr, values);
}

void Sarcomer::create_fibre_bnd_force(Constraints& constraints, Vector& rhs, Values& values) {
  create_fibre_bnd(End::force, constraints, &rhs, values);
}

/// Where a filament stands in the series of its row. Even junctions join thick filaments, odd ones
/// actin; entry p of `master_dofs` is the junction of places p and p + 1.
struct Sarcomer::Place {
  unsigned pos;
  bool is_first_row;
  bool is_mirrored;
};

void Sarcomer::create_fibre_bnd(End end, Constraints& constraints, Vector* rhs, Values& values) {
  unsigned const n_hs = series();
  if (filaments.size() % n_hs != 0) {
    std::printf("Number of half sarcomeres does not match the number of filaments in series!\n");
    std::fflush(stdout);
  }
  master_dofs.assign(n_hs - 1, 0);
  unsigned load_point = 0;
  for (unsigned i = 0; i < filaments.size(); ++i) {
    Filament const& filament = *filaments[i];
    unsigned const pos = i % n_hs;
    bool const is_mirrored = end == End::force ? pos % 2 == 1 : filament.direction == -1;
    Place const place = {pos, i / n_hs == 0, is_mirrored};
    unsigned const first_actin = first_actin_fibre(filament);
    for (unsigned fibre = 0; fibre < filament.n_fibre(); ++fibre) {
      if (!filament.get_geometry()->is_actin(fibre)) {
        join_thick_end(place, filament.get_bnd_dof(0, fibre), constraints);
        continue;
      }
      unsigned const d = filament.get_bnd_dof(1, fibre);
      bool const is_master = place.is_first_row && fibre == first_actin;
      if (pos == 0 && end == End::displacement) {
        values[d] = boundary_value;
      } else if (pos == 0 && is_master) {
        (*rhs)[d] = boundary_value;
        load_point = d;
      } else if (pos == 0) {
        tie(constraints, d, load_point, 1.0);
      } else if (pos == n_hs - 1) {
        values[d] = 0.0;
      } else {
        join_actin_end(place, d, is_master, constraints);
      }
    }
  }
}

void Sarcomer::join_thick_end(Place const& place, unsigned d, Constraints& constraints) {
  if (place.is_mirrored) {
    tie(constraints, d, master_dofs[place.pos - 1], across_junction);
  } else if (place.is_first_row) {
    master_dofs[place.pos] = d;
  } else {
    tie(constraints, d, master_dofs[place.pos], 1.0);
  }
}

void Sarcomer::join_actin_end(Place const& place, unsigned d, bool is_master,
                              Constraints& constraints) {
  if (!place.is_mirrored) {
    tie(constraints, d, master_dofs[place.pos - 1], across_junction);
  } else if (is_master) {
    master_dofs[place.pos] = d;
  } else {
    tie(constraints, d, master_dofs[place.pos], 1.0);
  }
}
