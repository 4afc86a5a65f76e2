#pragma once
/// A half-sarcomere of vertebrate filaments with Huxley heads, with the parameters of
/// examples/isometric, in a temporary directory of its own.

#include <filesystem>
#include <memory>

#include "mechanics/sarcomer_parameter.h"

class Filament;
class FixedTimeStepMC;
class Geometry;
class Model;
class Sarcomer;

class BenchLattice {
 public:
  explicit BenchLattice(unsigned n_filaments);
  ~BenchLattice();

  /// One step of 0.0005 s at constant length; the two halves can be had alone.
  void step();
  void state_change();
  void solve();
  void output();
  unsigned n_heads() const;

  std::unique_ptr<Geometry> geometry;
  std::unique_ptr<Model> model;
  std::unique_ptr<FixedTimeStepMC> stepper;
  std::unique_ptr<Sarcomer> sarcomer;

 private:
  SarcomerParameter_s parameter;
  std::filesystem::path home;
  std::filesystem::path directory;
};
