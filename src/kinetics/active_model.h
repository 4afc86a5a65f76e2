#pragma once
/// A kinetic model whose rates depend on what regulation has made of the site.

#include "kinetics/model.h"

struct ActinSite_s;

class ActiveModel : public Model {
 public:
  ActiveModel(ModelParameter_s const& parameter, unsigned n) : Model(parameter, n) {}

  /// The rate for a site that is open, with all factors 1.
  double get_k(double x, unsigned from, unsigned to) const final;
  /// The rate for a head of strain `x` that faces `site`.
  virtual double get_k(double x, unsigned from, unsigned to, ActinSite_s const& site) const = 0;
};
