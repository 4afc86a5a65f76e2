#pragma once
/// A lattice small enough to calculate by hand, whose bonds a test makes itself, with the rooms of
/// a `Sarcomer` open to look into.
///
/// Each filament has 7 thick nodes, at 0 and at 20, 30 .. 70 nm, with three heads on each but the
/// first (heads 0, 1, 2 on node 1 and so on), and two thin filaments of 20 sites, 5 nm apart from
/// 0 to 95 nm. All heads are slow until `bind` says otherwise.

#include <memory>
#include <string>

#include "elastic/XB_Models.h"
#include "kinetics/fixed_dt_mc.h"
#include "kinetics/model.h"
#include "lattice/geometry.h"
#include "mechanics/boundary.h"
#include "mechanics/filament_array.h"
#include "mechanics/measured.h"
#include "mechanics/sarcomer_parameter.h"
#include "mechanics/series_elastic_element.h"

class Equilibrium;

/// A linear spring that may tell the solver another stiffness than it has.
struct TestSpring : XB_Model {
  explicit TestSpring(double stiffness) : TestSpring(stiffness, stiffness) {}
  TestSpring(double stiffness, double told_stiffness) : k(stiffness), told(told_stiffness) {}
  double GetStiffness(double) const override { return told; }
  double GetForce(double x) const override { return k * x; }
  double GetEnergy(double x) const override { return 0.5 * k * x * x; }
  bool IsNonLinear() const override { return k != told; }
  double k;
  double told;
};

/// States 0 detached, 1 bound, 2 bound after the stroke; the rates start at 0.
struct StrokeModel : Model {
  StrokeModel(XB_Model* law, double stroke_of_2);
  bool IsPowerStrokeState(int state) const override { return state == 2; }
  double get_k(double, unsigned from, unsigned to) const override { return k[from][to]; }
  double power_stroke(unsigned state) const override { return state == 2 ? stroke : 0.0; }
  double stroke;
  double k[3][3] = {};
};

struct LatticeSettings {
  unsigned filaments = 1;
  unsigned full_sarcomer = 0;
  double see_stiffness = 30.0;
  double see_damping = 0.0;
  double titin_stiffness = 0.0;  ///< no titin unless above 0
  bool protein_c = false;        ///< one crown, the first, with three protein-C heads more
};

class SmallLattice {
 public:
  /// E times A of each fibre, stiffness of the bonds of each model [pN/nm], and strokes [nm].
  static constexpr double EA[] = {3000.0, 2000.0, 2600.0};
  static constexpr double bond_k[] = {1.5, 2.5, 0.8};
  static constexpr double strokes[] = {4.0, 7.0, 9.0};
  static constexpr double thick_length = 70.0;
  static constexpr double titin_rest = 20.0;  ///< extension of titin without displacements
  static constexpr double step = 0.5;         ///< `currentTimeStep`

  explicit SmallLattice(LatticeSettings const& settings = {});
  ~SmallLattice();

  Filament& filament(unsigned i = 0) { return filaments[i]; }
  /// Makes a bond and appends it to `attached`; bind in the order of the heads.
  MyosinHead_s& bind(unsigned filament, unsigned head, unsigned fibre, unsigned site,
                     unsigned state = 1, unsigned model = 0);
  /// Prescribes and solves.
  void solve(Prescribed::Quantity quantity, double value);
  void solve_length(double value) { solve(Prescribed::Quantity::length, value); }
  void solve_force(double value) { solve(Prescribed::Quantity::force, value); }

  LatticeSettings const settings;
  SarcomerParameter_s parameter;
  TestSpring slow_law{bond_k[0]}, fast_law{bond_k[1]}, protein_c_law{bond_k[2]};
  StrokeModel slow{&slow_law, strokes[0]};
  StrokeModel fast{&fast_law, strokes[1]};
  StrokeModel protein_c{&protein_c_law, strokes[2]};
  std::unique_ptr<Geometry> geometry;
  std::unique_ptr<FixedTimeStepMC> stepper;
  FilamentArray filaments;
  TestSpring see_law;
  TestSpring titin_law;
  SeriesElasticElement see;
  Boundary boundary;
  std::unique_ptr<Equilibrium> equilibrium;
  Measured measured;
};

/// Assemblies so far, one in each pass of a solve and one before the first: the lines of
/// "SEE_velocity.csv".
unsigned assemblies();
