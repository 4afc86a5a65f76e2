// Would catch: a table looked up at the wrong strain, a wrong end of the grid, a cache that
// outlives its strain or is not used, a site that acts on Exact, transitions that don't follow the
// constants, rescaling of the wrong constants, a stroke of C6 that is not diffusion over its law's
// barrier.

#include "kinetics/model_tolen9_C3.h"

#include <gtest/gtest.h>

#include <cmath>

#include "records/filament_data.h"
#include "support/kinetic_model.h"
#include "support/quadrature.h"

namespace {

/// A linear spring that counts how often its stiffness is asked for, once per evaluation of the
/// rates.
struct CountedSpring : Spring {
  CountedSpring() : Spring(1.3) {}
  double GetStiffness(double) const override {
    ++asked;
    return k;
  }
  mutable unsigned asked = 0;
};

/// A scheme on a grid from -10 to 10 nm, whose strains are exact.
std::unique_ptr<ModelTolen9_C3> make_scheme(std::string const& name, XB_Model& law,
                                            std::string const& more = "") {
  std::string const settings = nine_states(name) + "; numerics: xs=-10 xe=10 dx=0.5" + more;
  auto* const model = dynamic_cast<ModelTolen9_C3*>(make_model("Tolen9", law, settings).release());
  return std::unique_ptr<ModelTolen9_C3>(model);
}

TEST(NineStateModel, BuildsItsTransitionsTablesAndFiles) {
  CountedSpring law;
  auto const model = make_scheme("C3", law, "; rates: k_13=0 k_82=3");
  EXPECT_FALSE(model->transitions[0][2]);
  EXPECT_TRUE(model->transitions[7][1]);
  EXPECT_TRUE(model->transitions[2][0]);
  EXPECT_FALSE(model->transitions[2][4]);
  EXPECT_TRUE(model->transitions[4][2] && model->transitions[6][2]);
  EXPECT_FALSE(model->transitions[5][3] || model->transitions[7][3]);
  EXPECT_EQ(law.asked, 2u * 40u);  // one evaluation per strain and pass
  EXPECT_EQ(read_file("model_tolen_integral.dat"), "0 0\n1 0.5\n");
}

TEST(NineStateModel, StepTakesTheGridStrainAboveAndLinearGoesOnFromThere) {
  CountedSpring law;
  auto const step = make_scheme("C7", law, "; numerics: interpolation=Step");
  auto const linear = make_scheme("C7", law);
  struct {
    double x, grid_x;
    bool is_end;  // which holds
  } const cases[] = {{1.0, 1.5, false},    {1.2, 1.5, false},
                     {-10.0, -9.5, false}, {-9.9, -9.5, false},    // in the first interval
                     {-10.3, -9.5, false}, {-10.8, -10.0, false},  // less than two steps below
                     {-11.0, -10.0, true}, {-99.0, -10.0, true},
                     {8.9, 9.0, false},    {9.0, 9.5, true},  // the last interval and beyond
                     {9.4, 9.5, true},     {1e300, 9.5, true}};
  for (auto const& [x, grid_x, is_end] : cases) {
    for (unsigned i = 0; i < 81; ++i) {
      unsigned const from = i / 9, to = i % 9;
      double const y0 = step->get_k_exact(grid_x, from, to);
      double const y1 = step->get_k_exact(grid_x + 0.5, from, to);
      double const line = is_end ? y0 : y0 + (x - grid_x) / 0.5 * (y1 - y0);
      EXPECT_EQ(step->get_k(x, from, to), y0) << from << to << ' ' << x;
      EXPECT_NEAR(linear->get_k(x, from, to), line, 1e-9 * (1.0 + std::abs(line))) << i << ' ' << x;
    }
  }
}

TEST(NineStateModel, ExactWorksOutEachStrainOnce) {
  CountedSpring law;
  auto const model = make_scheme("C7", law, "; numerics: interpolation=Exact");
  double const first = model->get_k(1.2, 8, 0);
  unsigned const asked = law.asked;
  for (unsigned i = 0; i < 81; ++i) model->get_k(1.2, i / 9, i % 9);
  EXPECT_EQ(law.asked, asked);
  EXPECT_NE(model->get_k(1.3, 8, 0), first);
  EXPECT_EQ(law.asked, asked + 1);
  EXPECT_EQ(model->get_k(1.2, 8, 0), first);
  EXPECT_EQ(model->get_k(99.0, 8, 0), 70.0);  // the limit, beyond the grid as well
  ActinSite_s site;
  site.k_on_factor = 0.25;
  EXPECT_EQ(model->get_k(1.2, 0, 8, site), model->get_k(1.2, 0, 8));
}

TEST(NineStateModel, RescalesTheFourConstantsOfBinding) {
  CountedSpring law;
  std::string const rates = "; rates: k_28=40 k_26=5 k_37=20";
  auto const wide = make_scheme("C7", law, rates);
  auto const narrow = make_scheme("C7", law, rates + "; misc: dco=1");
  // In C7 the states 2 and 3 exchange at constant rates, so that the bound fraction is a box of
  // 141 points of 0.1 nm, its half width taken as 14.1 nm. Neighbours 5.5 m away add the part of
  // the box beyond 5.5 m - 14.1: 22.7, 17.2, 11.7, 6.2 and 0.7 of 28.2 nm on either side.
  double const factor = 100.0 / wide->get_k(0.0, 2, 3);
  EXPECT_NEAR(factor, 1.0 + 2.0 * 58.5 / 28.2, 0.01);
  EXPECT_DOUBLE_EQ(narrow->get_k(0.0, 2, 3), 100.0);
  auto const ratio = [&](double x, unsigned from, unsigned to) {  // within both reaches
    return narrow->get_k_exact(x, from, to) / wide->get_k_exact(x, from, to);
  };
  EXPECT_NEAR(ratio(0.3, 0, 8), factor, 1e-9);
  EXPECT_NEAR(ratio(-7.0, 1, 7), factor, 1e-9);
  EXPECT_NEAR(ratio(0.3, 1, 5), factor, 1e-9);
  EXPECT_EQ(ratio(0.3, 3, 4), 1.0);
  EXPECT_EQ(ratio(-7.0, 2, 6), 1.0);
}

TEST(NineStateModel, C6StrokesOverTheBarrierOfItsLaw) {
  XB_ConstantStiffness law("");
  law.k = 8.0;
  auto const model =
      make_scheme("C6", law, "; numerics: interpolation=Exact; rates: k_45=70 k_57=60");
  auto const energy = [](double p) { return 4.0 * p * p; };
  for (double const x : {-6.0, -4.0, -1.7, -0.3}) {
    auto const resistance = [&](double u) { return std::exp((energy(x + u) - energy(x)) / 4.0); };
    double const k = 70.0 * 3.5 / integral(resistance, 0.0, 3.5);
    EXPECT_NEAR(model->get_k(x, 3, 4), std::min(k, 4000.0), 2e-3 * k) << x;
    double const balance = std::exp(-(energy(x + 7.5) - energy(x + 3.5)) / 4.0) * 60.0 / 100.0;
    double const forward = model->get_k(x, 4, 6);
    if (forward < 4000.0) {
      EXPECT_NEAR(forward / model->get_k(x, 6, 4) / balance, 1.0, 1e-9) << x;
    }
    double const end = std::exp(-(energy(x + 8.5) - energy(x + 7.5)) / 4.0);
    EXPECT_NEAR(model->get_k(x, 7, 0), 2.0 * 5000.0 * end / (end + 1.0), 1e-6) << x;
  }
  EXPECT_EQ(model->get_k(-6.1, 3, 2), 90.0);
  EXPECT_EQ(model->get_k(5.1, 3, 2), 70.0);
}

}  // namespace
