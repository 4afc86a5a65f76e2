#pragma once
/// The filaments of a lattice in their order: all half-sarcomeres in series of the first row, then
/// those of the second row, and so on. Rows stand in parallel; the first filament of each shows the
/// row's force and displacement.
///
/// Degrees of freedom: filament after filament, then one more, the outer end of the series elastic
/// element.

#include <memory>
#include <string>
#include <vector>

#include "mechanics/filament.h"

class FilamentArray {
 public:
  /// `full_sarcomer` sarcomeres in series; 0 for a single half-sarcomere.
  explicit FilamentArray(unsigned full_sarcomer);

  void add(std::unique_ptr<Filament> filament);

  auto begin() const { return filaments.begin(); }
  auto end() const { return filaments.end(); }
  bool empty() const { return filaments.empty(); }
  std::size_t size() const { return filaments.size(); }
  Filament& front() const { return *filaments.front(); }
  Filament& operator[](std::size_t i) const { return *filaments[i]; }

  /// Half-sarcomeres in series, 1 for a single one.
  unsigned series() const { return n_series; }
  bool is_series() const { return in_series; }
  /// Rows in parallel.
  std::size_t rows() const { return size() / n_series; }
  /// Calls `action(filament)` for the first filament of every row.
  template <class Action>
  void for_each_row(Action action) const {
    for (std::size_t i = 0; i < size(); i += n_series) action(*filaments[i]);
  }

  /// Bonds of all filaments that hold.
  unsigned n_attached() const;
  /// Displacement of the actin end that the series elastic element hangs on: the last node of fibre
  /// 1 of the first filament.
  double get_last_actin_displacement() const { return front().get_last_actin_displacement(); }

  /// Builds the mesh of every filament from its bonds and numbers all degrees of freedom; returns
  /// how many there are.
  unsigned number_dofs() const;
  /// What stands at a degree of freedom, in words.
  std::string place_of(unsigned dof) const;

 private:
  bool const in_series;
  unsigned const n_series;
  std::vector<std::unique_ptr<Filament>> filaments;
};
