#include "mechanics/filament.h"

#include <deal.II/lac/vector.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>

#include "elastic/XB_Models.h"
#include "kinetics/fixed_dt_mc.h"
#include "kinetics/model.h"
#include "lattice/geometry.h"

Filament::Filament(Geometry const& lattice, Model const& slow, Model const& fast,
                   FixedTimeStepMC const& mc, int sense, XB_Model const* titin)
    : direction(sense),
      geometry(&lattice),
      models{&slow, &fast, mc.get_proteinC_model()},
      titin_law(titin),
      stepper(&mc) {
  geometry->initialize_filament(data);
  stepper->initialize_filament(data);
  unsigned const n = static_cast<unsigned>(data.x.size());
  chains.reserve(n);
  for (unsigned fibre = 0; fibre < n; ++fibre) {
    double e = 0.0;
    double a = 0.0;
    geometry->get_fibre_stiffness(fibre, e, a);
    chains.emplace_back(data.attached, data.x[fibre], data.u[fibre], e, a);
  }
  proteinC_enabled = geometry->proteinC_enabled;
}

int Filament::state_change(double, double) {
  data.longest_bond = longest_bond();
  data.attached.clear();
  data.attached.reserve(data.heads.size());
  renew_weight_bounds();
  for (MyosinHead_s& head : data.heads) {
    if (head.detach_pending == 1) {
      head.detach_pending = 0;
      stepper->detach(data, head);
    }
    stepper->state_change(data, head, *geometry, candidates);
    if (models.of(head).attached[head.state] || head.detach_pending == 1)
      data.attached.push_back(&head);
  }
  is_meshed = false;
  return 0;
}

/// Between neighbouring sites of any thin filament, which is straight between its degrees of
/// freedom.
double Filament::least_site_spacing() const {
  double least = std::numeric_limits<double>::infinity();
  for (unsigned fibre = 1; fibre < n_fibre(); ++fibre) {
    least = std::min(least, chains[fibre].least_spacing());
  }
  return least;
}

void Filament::renew_weight_bounds() {
  unsigned const most = geometry->most_sites_in_reach(least_site_spacing());
  if (most == data.most_sites_in_reach) return;
  data.most_sites_in_reach = most;
  for (MyosinHead_s const& head : data.heads) {
    data.weight_bounds.resize(
        std::max<std::size_t>(data.weight_bounds.size(), head.crown_code + 1));
    data.weight_bounds[head.crown_code] = geometry->weight_bound(data, head);
  }
}

// Mesh and numbering

int Filament::prepare_nodes() {
  if (bonds_differ_from_mesh()) make_mesh();
  is_meshed = true;
  myosin_bonds = proteinC_bonds = 0;
  for (std::size_t i = 0; i < bonds.size(); ++i) {
    MyosinHead_s const& head = *data.attached[i];
    bonds[i].stroke = stroke(head);
    if (head.detach_pending != 1) ++(head.is_myosin() ? myosin_bonds : proteinC_bonds);
  }
  return 0;
}

void Filament::make_mesh() {
  unsigned counter = 0;
  do_for_all(fa_prepare_nodes, counter, 0);
  fibre_offsets.clear();
  do_for_all(fa_assign_offset, fibre_offsets, 0);
  total_dofs = 0;
  do_for_all(fa_count_dofs, total_dofs, 0);
  bonds.clear();
  for (MyosinHead_s const* head : data.attached) {
    unsigned const fibre = head->actin_fibre;
    bonds.push_back({head->node, fibre, head->actin_site, head->carries_force(),
                     chains[0].get_local_dof(head->node),
                     fibre_offsets[fibre] + chains[fibre].get_local_dof(head->actin_site),
                     data.x[0][head->node], data.x[fibre][head->actin_site], 0.0,
                     &bond_law(*head)});
  }
  ++mesh_count;
}

bool Filament::bonds_differ_from_mesh() const {
  auto const is_same = [](MyosinHead_s const* head, Bond const& bond) {
    return head->node == bond.node && head->actin_fibre == bond.fibre &&
           head->actin_site == bond.site && head->carries_force() == bond.carries_force;
  };
  return mesh_count == 0 || !std::equal(data.attached.begin(), data.attached.end(), bonds.begin(),
                                        bonds.end(), is_same);
}

unsigned Filament::n_states() const { return models.slow->n_states(); }

unsigned Filament::n_attached() const {
  return static_cast<unsigned>(
      std::count_if(data.attached.begin(), data.attached.end(),
                    [](MyosinHead_s const* head) { return head->detach_pending != 1; }));
}

// Positions

double Filament::get_last_actin_displacement() const {
  return chains[1].get_u(chains[1].get_raw_nodes() - 1);
}

double Filament::get_actin_position(unsigned fibre, unsigned node) const {
  return chains[fibre].get_x(node) + chains[fibre].get_u(node);
}

void Filament::get_crossbridge_positions(unsigned index, double& myosin, double& actin) const {
  MyosinHead_s const& head = *data.attached[index];
  myosin = data.position(0)[head.node];
  actin = data.position(head.actin_fibre)[head.actin_site];
}

double Filament::get_strain_euler(unsigned index) const {
  double myosin = 0.0;
  double actin = 0.0;
  get_crossbridge_positions(index, myosin, actin);
  return actin - myosin;
}

// Bonds

double Filament::stroke(MyosinHead_s const& head) const {
  return head.is_myosin() ? models.of(head).power_stroke(head.state) : 0.0;
}

double Filament::bond_strain(unsigned index) const {
  return get_strain_euler(index) + stroke(*data.attached[index]);
}

XB_Model const& Filament::bond_law(MyosinHead_s const& head) const {
  return *models.of(head).xb_model;
}

double Filament::bond_stiffness(unsigned index) const {
  MyosinHead_s const& head = *data.attached[index];
  return head.carries_force() ? bond_law(head).GetStiffness(bond_strain(index)) : 0.0;
}

double Filament::bond_force(unsigned index) const {
  MyosinHead_s const& head = *data.attached[index];
  return head.carries_force() ? bond_law(head).GetForce(bond_strain(index)) : 0.0;
}

// In a pass of the iteration the records of heads and sites would not fit the cache.

double Filament::length(Bond const& bond) const {
  FilamentFEM const& actin = chains[bond.fibre];
  double const at_site =
      bond.actin_x + actin.get_u_of_dof(bond.actin_dof - fibre_offsets[bond.fibre]);
  return at_site - (bond.myosin_x + chains[0].get_u_of_dof(bond.myosin_dof));
}

double Filament::stiffness(Bond const& bond) const {
  return bond.carries_force ? bond.law->GetStiffness(length(bond) + bond.stroke) : 0.0;
}

double Filament::force(Bond const& bond) const {
  return bond.carries_force ? bond.law->GetForce(length(bond) + bond.stroke) : 0.0;
}

// Titin

bool Filament::has_titin() const { return geometry->titin_enabled == 1; }

double Filament::titin_strain() const {
  double const last_myosin = chains[0].get_u(chains[0].get_raw_nodes() - 1);
  return get_last_actin_displacement() + geometry->titin_extension - last_myosin;
}

bool Filament::has_constant_springs() const {
  return std::none_of(bonds.begin(), bonds.end(),
                      [](Bond const& bond) { return bond.law->IsNonLinear(); });
}

std::optional<double> Filament::titin_force() const {
  if (!has_titin()) return std::nullopt;
  return titin_law->GetForce(titin_strain());
}

double Filament::titin_stiffness() const {
  // The rest value: titin enters the iteration with a constant stiffness.
  return titin_law->GetStiffness(geometry->titin_extension);
}

// The filament's share of the system

int Filament::create_rhs(dealii::Vector<double>& rhs) const {
  do_for_all(fa_create_rhs, rhs, offset);
  if (has_titin()) {
    double const f = titin_law->GetForce(titin_strain());
    rhs[get_bnd_dof(1, 0)] += f;
    rhs[get_bnd_dof(1, 1)] -= f;
  }
  for (Bond const& bond : bonds) {
    double const f = force(bond);
    rhs[offset + bond.myosin_dof] += f;
    rhs[offset + bond.actin_dof] -= f;
  }
  return 0;
}

// The solution's way back

void Filament::correct(dealii::Vector<double> const& solution) {
  do_for_all(fa_interpolate, solution, offset);
  InterpolateDisplacements();
}

void Filament::InterpolateDisplacements() {
  for (FilamentFEM& chain : chains) chain.straighten();
}

double Filament::longest_bond() const {
  if (!is_meshed) return std::numeric_limits<double>::infinity();
  double longest = 0.0;
  for (Bond const& bond : bonds) longest = std::max(longest, std::abs(length(bond)));
  return longest;
}

// Diagnostics

unsigned Filament::n_in_state(unsigned state) const {
  return static_cast<unsigned>(
      std::count_if(data.attached.begin(), data.attached.end(),
                    [state](MyosinHead_s const* head) { return head->state == state; }));
}

double Filament::get_myosin_position(unsigned head) const {
  unsigned const node = data.heads[head].node;
  return chains[0].get_x(node) + chains[0].get_u(node);
}

double Filament::get_strain(unsigned index) const {
  MyosinHead_s const& head = *data.attached[index];
  return data.x[head.actin_fibre][head.actin_site] - data.x[0][head.node];
}

void Filament::resetDisplacement() {
  for (FibreDisplacement& u : data.u) u.fill(0.0);
}

void Filament::write_displacement(std::ostream& stream) const {
  do_for_all(fa_write_displacement, stream, 0);
}

void Filament::WriteCBCharacteristics(std::ofstream& stream, int number) const {
  stream << number << '\n';
  for (unsigned i = 0; i < data.attached.size(); ++i) {
    stream << bond_strain(i) << ',' << bond_stiffness(i) << ',' << bond_force(i) << '\n';
  }
}

void Filament::writeActinNodeForces(FILE* file, int fibre) const {
  for (unsigned i = 0; i < data.attached.size(); ++i) {
    MyosinHead_s const& head = *data.attached[i];
    if (!head.is_myosin() || static_cast<int>(head.actin_fibre) != fibre) continue;
    double const force = bond_law(head).GetForce(bond_strain(i));
    std::fprintf(file, "%u,%lf\n", head.actin_site, -force);
  }
}
