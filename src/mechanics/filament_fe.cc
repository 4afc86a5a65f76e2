#include "mechanics/filament_fe.h"

#include <deal.II/lac/dynamic_sparsity_pattern.h>
#include <deal.II/lac/sparse_matrix.h>
#include <deal.II/lac/vector.h>

#include <cstdio>
#include <ostream>

#include "records/filament_data.h"

FilamentFEM::FilamentFEM(std::vector<MyosinHead_s*> const& attached_heads,
                         std::valarray<double> const& rest, std::valarray<double>& displacement,
                         double modulus, double area)
    : e(modulus), a(area), x(rest), u(displacement), attached(attached_heads) {}

void FilamentFEM::prepare_nodes(unsigned fibre) {
  mesh.clear();
  dofs.clear();
  // Heads come nearly in the order of their nodes, so the end is a good hint.
  auto const insert = [this](unsigned node) { mesh.insert(mesh.end(), {node, x[node]}); };
  insert(0);
  for (MyosinHead_s const* head : attached) {
    if (fibre == 0) {
      insert(head->node);
    } else if (head->actin_fibre == fibre) {
      insert(head->actin_site);
    }
  }
  insert(get_raw_nodes() - 1);
  unsigned number = 0;
  for (auto const& node : mesh) {
    dofs.emplace_hint(dofs.end(), node.first, Dof{number++, node.second});
  }
}

unsigned FilamentFEM::get_local_dof(unsigned node) const {
  auto const found = dofs.find(node);
  return found == dofs.end() ? 0 : found->second.number;
}

template <class Action>
void FilamentFEM::for_each_element(unsigned offset, Action action) const {
  if (dofs.empty()) return;
  for (auto first = dofs.begin(), second = first + 1; second != dofs.end(); ++first, ++second) {
    action(first->first, second->first, offset + first->second.number,
           offset + second->second.number, second->second.x - first->second.x);
  }
}

void FilamentFEM::create_sparsity(dealii::DynamicSparsityPattern& pattern, unsigned offset) const {
  if (dofs.empty()) return;
  // Row by row: a spring at a time would make every row grow three times.
  unsigned const last = n_dofs() - 1;
  for (unsigned i = 0; i <= last; ++i) {
    unsigned const row[] = {offset + i - 1, offset + i, offset + i + 1};
    pattern.add_entries(offset + i, row + (i == 0 ? 1 : 0), row + (i == last ? 2 : 3), true);
  }
}

void FilamentFEM::create_matrix(dealii::SparseMatrix<double>& matrix, unsigned offset) const {
  double const EA = e * a;
  for_each_element(offset, [&](unsigned, unsigned, unsigned i, unsigned j, double L) {
    if (L < 0.0) {
      std::printf("Negative Element length\n");
      std::fflush(stdout);
    }
    add_spring(matrix, i, j, EA / L);
  });
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
  for (auto const& dof : dofs) u[dof.first] += solution[offset + dof.second.number];
}

void FilamentFEM::straighten() {
  for (auto first = dofs.begin(), second = first + 1; second != dofs.end(); ++first, ++second) {
    unsigned const from = first->first;
    unsigned const span = second->first - from;
    double const slope = (u[from + span] - u[from]) / span;
    for (unsigned m = 1; m < span; ++m) u[from + m] = u[from] + m * slope;
  }
}

void add_spring(dealii::DynamicSparsityPattern& pattern, unsigned i, unsigned j) {
  pattern.add(i, i);
  pattern.add(i, j);
  pattern.add(j, i);
  pattern.add(j, j);
}

void add_spring(dealii::SparseMatrix<double>& matrix, unsigned i, unsigned j, double k) {
  if (k == 0.0) return;
  auto const add = [&](unsigned row, unsigned column, double value) {
    // Rows are short: walking one is quicker than a search.
    auto const end = matrix.end(row);
    auto place = matrix.begin(row);
    while (place != end && place->column() != column) ++place;
    if (place != end) place->value() += value;
  };
  matrix.diag_element(i) += k;
  add(i, j, -k);
  add(j, i, -k);
  matrix.diag_element(j) += k;
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

int fa_create_sparsity(FilamentFEM const& chain, dealii::DynamicSparsityPattern& pattern,
                       unsigned offset) {
  chain.create_sparsity(pattern, offset);
  return 0;
}

int fa_create_matrix(FilamentFEM const& chain, dealii::SparseMatrix<double>& matrix,
                     unsigned offset) {
  chain.create_matrix(matrix, offset);
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
