#pragma once
/// Mean and standard deviation of the angle of a flexible chain at each site, from the two nearest
/// pins.
///
/// Law:     an elastic beam on an elastic bed, y'''' + 4 xi^4 y = 0 between pins. The energies of
///          the two spans beside a site are quadratic in its angle and slope; with the slope
///          eliminated they give a normal distribution of the angle. Six coefficients w0 .. w5 of
///          the dimensionless length x = (sites * actin_distance) * xi describe one span.
/// Symbols: y angle, xi inverse length scale [1/m], x beyond 5 counts as 5
/// Source:  D. A. Smith, R. Maytum and M. A. Geeves, Biophys. J. 84 (2003) 3155
/// Assumes: nothing beyond the nearest pin on each side is felt; each end of the chain is
///          like a pin at the angle -0.1, 10 sites beyond its first or last site

#include <valarray>
#include <vector>

#include "activation/pinning_site.h"

/// `Number` is double.
template <class Number>
class AnalyticalChainModel {
 public:
  /// Coefficients of one span; `w1` and `w2` are equal.
  struct WelksValue_s {
    Number w0, w1, w2, w3, w4, w5;
  };

  explicit AnalyticalChainModel(FlexChainParameter_s const& chain);

  /// The coefficients at the dimensionless length `x`.
  void compute_welks(Number x, WelksValue_s& w) const;
  /// The coefficients of a span of `n` sites, from the table where it reaches.
  void welks(int n, WelksValue_s& w) const;
  /// The point `n1` sites from a pin at `phi1` and, to the other side, `n2` sites from one at
  /// `phi2`; `sd` without the scale `sd_fac`.
  void pavsd(int n1, int n2, Number phi1, Number phi2, Number& mean, Number& sd) const;
  void initialise_welks_table();
  /// Fills the first `n` elements of both arrays. Without pins the mean is 0 and the deviation that
  /// of the free chain.
  void compute_chain(std::vector<PinningSite_s> const& pins, unsigned n,
                     std::valarray<Number>& mean, std::valarray<Number>& sd);
  /// Fills both arrays from a pin to the next one, both included.
  void compute_span(PinningSite_s a, PinningSite_s b, std::valarray<Number>& mean,
                    std::valarray<Number>& sd);

 private:
  Number length_of(int n) const { return n * fc.actin_distance * fc.xi; }
  void compute_welks_beyond_table(int n, WelksValue_s& w) const;
  void extend_table(unsigned n);
  /// `pavsd` from the coefficients of both spans.
  static void join(WelksValue_s const& W1, WelksValue_s const& W2, Number phi1, Number phi2,
                   Number& mean, Number& sd);
  /// What holds a run of sites on one side: an angle, `gap` sites from the run's nearest site.
  struct Hold_s {
    Number angle;
    unsigned gap;
  };
  /// Fills the sites from `first` to before `end`; the table reaches over the run and its gaps.
  void fill(unsigned first, unsigned end, Hold_s left, Hold_s right, std::valarray<Number>& mean,
            std::valarray<Number>& sd) const;

  int table_size = 0;
  /// Entry 0 serves all lengths beyond 5, entry i a span of i sites. What follows after
  /// `table_size` entries are the long spans of the chains seen so far.
  std::vector<WelksValue_s> table;
  FlexChainParameter_s const fc;
};
