#pragma once
/// Writers over filaments and measures of a bond over its strain, for diagnostics.

#include <iosfwd>
#include <memory>
#include <vector>

class Filament;
class Model;

/// Diagnostic writers over a range of filaments; no step of a run calls them.
class Distribution {
 public:
  using Iterator = Filament* const*;

  int create_distribution() const { return 0; }
  int create_bridge_distribution() const { return 0; }
  /// The distances between neighbouring sites of fibres 1 and 2, one a line.
  void create_crowns_distribution(std::ostream& stream, Iterator first, Iterator last) const;
  /// Per head "index myosin actin fibre site"; `actin` is 0 for an unbound head.
  void create_xray_distribution(std::ostream& stream, Iterator first, Iterator last) const;
  /// Per head index the fraction of filaments in which that head is in each state.
  void create_state_distribution(std::ostream& stream, Iterator first, Iterator last) const;
};

/// The strain itself.
double DFuncStrain(double x, unsigned state, Model const* model);
/// Force and energy at strain `x`, for an elastic law of constant stiffness; any other is warned
/// of.
double DFuncForce(double x, unsigned state, Model const* model);
double DFuncEnergy(double x, unsigned state, Model const* model);
