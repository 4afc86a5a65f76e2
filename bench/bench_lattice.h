#pragma once
/// A half-sarcomere in a temporary directory of its own, of vertebrate filaments unless another
/// lattice is named: Huxley heads with the parameters of examples/isometric, or heads of another
/// model with its default parameters.

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "mechanics/sarcomer_parameter.h"

class Filament;
class FixedTimeStepMC;
class Geometry;
class Model;
class Sarcomer;
class XB_Model;

using Clock = std::chrono::steady_clock;

inline double seconds_since(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

class BenchLattice {
 public:
  explicit BenchLattice(unsigned n_filaments, std::string const& model_name = "Huxley",
                        std::string const& lattice_name = "Vertebrae");
  ~BenchLattice();

  /// One step of 0.0005 s at constant length; the two halves can be had alone.
  void step();
  void state_change();
  void solve();
  void output();
  unsigned n_heads() const;
  /// One more model of that name, as the heads have it.
  std::unique_ptr<Model> make_model() const;

  std::unique_ptr<Geometry> geometry;
  std::unique_ptr<Model> model;
  std::unique_ptr<FixedTimeStepMC> stepper;
  std::unique_ptr<Sarcomer> sarcomer;

 private:
  SarcomerParameter_s parameter;
  std::string const model_name;
  XB_Model* law;
  std::filesystem::path home;
  std::filesystem::path directory;
  std::FILE* listing = nullptr;
};
