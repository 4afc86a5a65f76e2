#include "kinetics/model_util.h"

#include <deal.II/lac/full_matrix.h>
#include <deal.II/lac/vector.h>

#include <algorithm>
#include <cmath>

#include "kinetics/model.h"
#include "kinetics/rate_tools.h"

namespace {

using Matrix = dealii::FullMatrix<double>;
using Vector = dealii::Vector<double>;

Vector solve(Matrix matrix, Vector const& b) {
  matrix.gauss_jordan();
  Vector solution(b.size());
  matrix.vmult(solution, b);
  return solution;
}

/// Occupancies of the detached states: generator times occupancies is 0, and they sum to 1.
Vector detached_occupancies(Model const& model, std::vector<unsigned> const& states) {
  auto const m = static_cast<unsigned>(states.size());
  Matrix A(m, m);
  for (unsigned i = 0; i < m; ++i) {
    for (unsigned j = 0; j < m; ++j) {
      A(i, j) += model.get_k(0.0, states[j], states[i]);
      A(i, i) -= model.get_k(0.0, states[i], states[j]);
    }
  }
  for (unsigned j = 0; j < m; ++j) A(m - 1, j) = 1.0;
  Vector b(m);
  b(m - 1) = 1.0;
  return solve(A, b);
}

/// All rates at a strain, (to, from), with an empty diagonal.
Matrix rate_table(Model const& model, double x) {
  unsigned const n = model.n_states();
  Matrix K(n, n);
  for (unsigned from = 0; from < n; ++from) {
    for (unsigned to = 0; to < n; ++to) {
      if (from != to) K(to, from) = model.get_k(x, from, to);
    }
  }
  return K;
}

/// States that some rate leads into, in ascending order.
std::vector<unsigned> active_states(Matrix const& K) {
  std::vector<unsigned> active;
  for (unsigned to = 0; to < K.m(); ++to) {
    double inflow = 0.0;
    for (unsigned from = 0; from < K.n(); ++from) inflow += K(to, from);
    if (std::abs(inflow) > 1e-9) active.push_back(to);
  }
  return active;
}

/// Occupancies of at least two active states; the first is eliminated by the sum being 1.
std::vector<double> active_occupancies(Matrix const& K, std::vector<unsigned> const& active) {
  auto const m = static_cast<unsigned>(active.size());
  Matrix R(m, m);
  for (unsigned i = 0; i < m; ++i) {
    for (unsigned j = 0; j < m; ++j) R(i, j) = K(active[i], active[j]);
  }
  for (unsigned c = 0; c < m; ++c) {
    double outflow = 0.0;
    for (unsigned r = 0; r < m; ++r) {
      if (r != c) outflow += R(r, c);
    }
    R(c, c) = -outflow;
  }
  Matrix A(m - 1, m - 1);
  Vector b(m - 1);
  for (unsigned i = 1; i < m; ++i) {
    for (unsigned j = 1; j < m; ++j) A(i - 1, j - 1) = R(i, j) - R(i, 0);
    b(i - 1) = -R(i, 0);
  }
  Vector const y = solve(A, b);
  std::vector<double> q(m);
  double sum = 0.0;
  for (unsigned i = 1; i < m; ++i) {
    q[i] = y(i - 1);
    sum += y(i - 1);
  }
  q[0] = 1.0 - sum;
  return q;
}

}  // namespace

void ModelUtil::get_detached_states(Model const& model, std::vector<double>& p) {
  p.resize(std::max<std::size_t>(p.size(), model.n_states()), 0.0);
  std::vector<unsigned> detached;
  for (unsigned s = 0; s < model.n_states(); ++s) {
    if (!model.attached[s]) detached.push_back(s);
    if (model.attached[s]) p[s] = 0.0;
  }
  if (detached.size() == 1) {
    p[detached[0]] = 1.0;
    return;
  }
  Vector const q = detached_occupancies(model, detached);
  for (unsigned i = 0; i < detached.size(); ++i) p[detached[i]] = q(i);
}

void ModelUtil::get_states(Model const& model, double x, std::vector<double>& p) {
  Matrix const K = rate_table(model, x);
  std::vector<unsigned> const active = active_states(K);
  p.resize(std::max<std::size_t>(p.size(), model.n_states()), 0.0);
  std::fill_n(p.begin(), model.n_states(), 0.0);
  if (active.empty()) return;
  std::vector<double> const q =
      active.size() == 1 ? std::vector<double>{1.0} : active_occupancies(K, active);
  for (std::size_t i = 0; i < active.size(); ++i) p[active[i]] = q[i];
}

void ModelUtil::print_rates(Model const& model, double x0, double x1, double dx) {
  write_strain_table("rates.dat", x0, x1, dx, [&](FILE* file, double x) {
    for (unsigned from = 0; from < model.n_states(); ++from) {
      for (unsigned to = 0; to < model.n_states(); ++to) {
        if (to != from) std::fprintf(file, "%e ", model.get_k(x, from, to));
      }
    }
  });
}

void ModelUtil::print_states(Model const& model, double x0, double x1, double dx) {
  std::vector<double> p;
  write_strain_table("states.dat", x0, x1, dx, [&](FILE* file, double x) {
    get_states(model, x, p);
    for (double const value : p) std::fprintf(file, "%e ", value);
  });
}
