#include "kinetics/model.h"

#include <limits>

Model::Model(ModelParameter_s const& parameter, unsigned n)
    : n_states_(n),
      attached(std::make_unique<bool[]>(n)),
      xb_model(parameter.xb_model),
      file_name(parameter.file_name),
      transitions(n, std::vector<bool>(n, true)) {
  for (unsigned state = 0; state < n; ++state) transitions[state][state] = false;
}

double Model::power_stroke(unsigned) const { return 0.0; }

double Model::rate_bound(unsigned, double) const { return std::numeric_limits<double>::infinity(); }
