#pragma once
/// Contents of "numeric_mc.prm": size and kind of the lattice, and the limits of the iteration.
///
/// Refuses negative counts. A limit that is too small for rounding ends the run without
/// convergence.

#include <string>

#include "mechanics/sarcomer_parameter.h"

namespace dealii {
class ParameterHandler;
}

class McModelParameters {
 public:
  McModelParameters() = default;
  explicit McModelParameters(std::string const& file_name);
  virtual ~McModelParameters() = default;

  static void declare_parameters(dealii::ParameterHandler& handler);
  void get_parameters(dealii::ParameterHandler& handler);
  void WriteToTaveloOutput() const;

  int caActivationModelIndicator = 0;
  int healtyChainPercent = 100;
  SarcomerParameter_s sarcomer;
  std::string geometry;
  std::string activation;
  unsigned filaments = 0;
  unsigned full_sarcomer = 0;

 private:
  std::string file_name;
};
