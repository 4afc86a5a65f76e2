#include "mechanics/filament_fe.h"

#include <deal.II/lac/vector.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <ostream>

#include "records/filament_data.h"

namespace {

double find_least_spacing(std::valarray<double> const& x) {
  double least = std::numeric_limits<double>::infinity();
  for (std::size_t i = 1; i < x.size(); ++i) least = std::min(least, x[i] - x[i - 1]);
  return least;
}

/// Heads stand in the order of their nodes, and bind sites nearly so: few elements move.
void insert_ascending(std::vector<unsigned>& nodes, unsigned node) {
  auto const at =
      std::find_if(nodes.rbegin(), nodes.rend(), [node](unsigned n) { return n <= node; }).base();
  if (at == nodes.begin() || *(at - 1) != node) nodes.insert(at, node);
}

}  // namespace

FilamentFEM::FilamentFEM(std::vector<MyosinHead_s*> const& attached_heads,
                         std::valarray<double> const& rest, FibreDisplacement& displacement,
                         double modulus, double area)
    : e(modulus),
      a(area),
      least_rest_spacing(find_least_spacing(rest)),
      x(rest),
      u(displacement),
      attached(attached_heads) {}

void FilamentFEM::prepare_nodes(unsigned fibre) {
  nodes.assign(1, 0);
  for (MyosinHead_s const* head : attached) {
    if (fibre == 0) {
      insert_ascending(nodes, head->node);
    } else if (head->actin_fibre == fibre) {
      insert_ascending(nodes, head->actin_site);
    }
  }
  insert_ascending(nodes, get_raw_nodes() - 1);
  u.set_knots(nodes, x);
}

unsigned FilamentFEM::get_local_dof(unsigned node) const {
  unsigned const number = u.knot_before(node);
  return u.get_knots()[number].node == node ? number : 0;
}

void FilamentFEM::report_negative_length() const {
  std::printf("Negative Element length\n");
  std::fflush(stdout);
}

void FilamentFEM::create_rhs(dealii::Vector<double>& rhs, unsigned offset) const {
  double const EA = e * a;
  for_each_element(offset, [&](unsigned i, unsigned j, double L, double extension) {
    double const f = EA * extension / L;
    rhs[i] += f;
    rhs[j] -= f;
  });
}

void FilamentFEM::interpolate_displacement(dealii::Vector<double> const& solution,
                                           unsigned offset) {
  for (unsigned i = 0; i < n_dofs(); ++i) u.move_knot(i, solution[offset + i]);
}

void FilamentFEM::straighten() { least_slope = u.straighten(); }

int fa_count_dofs(FilamentFEM const& chain, unsigned& sum, unsigned) {
  sum += chain.n_dofs();
  return 0;
}

int fa_prepare_nodes(FilamentFEM& chain, unsigned& counter, unsigned) {
  chain.prepare_nodes(counter++);
  return 0;
}

int fa_assign_offset(FilamentFEM const&, std::vector<unsigned>& offsets, unsigned offset) {
  offsets.push_back(offset);
  return 0;
}

int fa_create_rhs(FilamentFEM const& chain, dealii::Vector<double>& rhs, unsigned offset) {
  chain.create_rhs(rhs, offset);
  return 0;
}

int fa_interpolate(FilamentFEM& chain, dealii::Vector<double> const& solution, unsigned offset) {
  chain.interpolate_displacement(solution, offset);
  return 0;
}

int fa_write_displacement(FilamentFEM const& chain, std::ostream& stream, unsigned) {
  for (unsigned node = 0; node < chain.get_raw_nodes(); ++node) {
    stream << chain.get_x(node) << ' ' << chain.get_u(node) << '\n';
  }
  stream << '\n';
  return 0;
}
