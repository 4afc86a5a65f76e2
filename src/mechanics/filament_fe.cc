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

}  // namespace

FilamentFEM::FilamentFEM(std::vector<MyosinHead_s*> const& attached_heads,
                         std::valarray<double> const& rest, std::valarray<double>& displacement,
                         double modulus, double area)
    : local_numbers(rest.size(), 0),
      e(modulus),
      a(area),
      least_rest_spacing(find_least_spacing(rest)),
      x(rest),
      u(displacement),
      attached(attached_heads) {}

void FilamentFEM::prepare_nodes(unsigned fibre) {
  nodes.assign({0, get_raw_nodes() - 1});
  for (MyosinHead_s const* head : attached) {
    if (fibre == 0) {
      nodes.push_back(head->node);
    } else if (head->actin_fibre == fibre) {
      nodes.push_back(head->actin_site);
    }
  }
  std::sort(nodes.begin(), nodes.end());
  nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
  dofs.clear();
  for (unsigned const node : nodes) {
    local_numbers[node] = n_dofs();
    dofs.push_back({node, x[node]});
  }
}

unsigned FilamentFEM::get_local_dof(unsigned node) const {
  unsigned const number = local_numbers[node];
  bool const has_dof = number < n_dofs() && dofs[number].node == node;
  return has_dof ? number : 0;
}

void FilamentFEM::report_negative_length() const {
  std::printf("Negative Element length\n");
  std::fflush(stdout);
}

void FilamentFEM::create_rhs(dealii::Vector<double>& rhs, unsigned offset) const {
  double const EA = e * a;
  for_each_element(offset, [&](unsigned n1, unsigned n2, unsigned i, unsigned j, double L) {
    double const f = EA * (u[n2] - u[n1]) / L;
    rhs[i] += f;
    rhs[j] -= f;
  });
}

void FilamentFEM::interpolate_displacement(dealii::Vector<double> const& solution,
                                           unsigned offset) {
  for (unsigned i = 0; i < dofs.size(); ++i) u[dofs[i].node] += solution[offset + i];
}

void FilamentFEM::straighten() {
  least_slope = std::numeric_limits<double>::infinity();
  for (unsigned i = 1; i < dofs.size(); ++i) {
    unsigned const from = dofs[i - 1].node;
    unsigned const span = dofs[i].node - from;
    double const slope = (u[from + span] - u[from]) / span;
    least_slope = std::min(least_slope, slope);
    for (unsigned m = 1; m < span; ++m) u[from + m] = u[from] + m * slope;
  }
}

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
