#pragma once
/// Mean angle of a flexible chain at each site, with all pins acting together.
///
/// Law:     y'''' + 4 xi^4 y = 0 between pins: an elastic beam on an elastic bed. The chain goes on
///          for 20 sites beyond each end. With h = actin_distance, row i of the equations is
///          -(1, -4, 6, -4, 1) / h^3 . y  -  4 xi^4 (1, 4, 1) h / 6 . y  =  0
/// Symbols: y angle, xi inverse length scale [1/m]
/// Assumes: the first node of the extended chain is held at 0, the last one is free: the rows there
///          lose the terms that fall outside
/// Refuses: nothing; any list of pins within the chain has a solution
///
/// The band is factorised as L D L^T without pivoting: it is definite. Work arrays are kept from
/// call to call; nothing else is.

#include <valarray>
#include <vector>

#include "activation/pinning_site.h"

class FEMFlexChainModel {
 public:
  explicit FEMFlexChainModel(FlexChainParameter_s const& chain);

  /// Fills the first `n` elements of `mean`.
  void compute_chain(std::vector<PinningSite_s> const& pins, unsigned n,
                     std::valarray<double>& mean);
  /// Solves for `x` the symmetric pentadiagonal system of N >= 4 unknowns: `diag` on the main
  /// diagonal, `off1[k]` between unknowns k and k + 1, `off2[k]` between k and k + 2.
  void p_solve_sym(unsigned N, double diag, double const* off1, double const* off2,
                   double const* rhs, double* x);

 private:
  /// Moves the column of a node that is held at an angle to the right-hand side and cuts it out.
  void constrain(unsigned node, double angle);

  FlexChainParameter_s const fc;
  double const h3;                         ///< cube of the sites' distance
  double const p;                          ///< share of the elastic bed in the first off-diagonal
  double const near;                       ///< first off-diagonal, before pins cut it
  double const diagonal;                   ///< main diagonal
  std::vector<double> off1, off2, rhs, x;  ///< the band and its two sides
  std::vector<double> pivot, factor1, factor2;  ///< of the factorisation
};
