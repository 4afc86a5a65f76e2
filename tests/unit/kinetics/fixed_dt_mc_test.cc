// Would catch: a draw too many or too few, outcomes in another order, a tie or u = 0 on the wrong
// side, a lost normalisation, a bond that is booked at one end only, a site that acts where it must
// not, a start distribution with its chain turned round.

#include "kinetics/fixed_dt_mc.h"

#include <cmath>

#include "base/run_state.h"
#include "kinetics/outcome_scale.h"
#include "support/bare_geometry.h"
#include "support/expect_refusal.h"
#include "support/rate_model.h"
#include "support/scripted_rand.h"
#include "support/work_dir.h"

namespace {

constexpr double one_step = 1.0 / 2147483647.0;  // between neighbouring variates

/// One head at 100 nm before two actin fibres.
struct Bench {
  Bench() {
    std::vector<unsigned> nodes = {2, 3, 3};
    data.initialize(nodes);
    data.x[0] = {0.0, 100.0};
    data.x[1] = {94.0, 102.0, 107.0};  // strains -6, 2, 7
    data.x[2] = {95.0, 100.0, 104.0};  // strains -5, 0, 4
    data.heads.assign(1, {1, 0, 0, unbound, unbound, 0, 0, 0});
  }

  MyosinHead_s& head() { return data.heads.front(); }

  void bind(unsigned fibre, unsigned site, unsigned state) {
    head().actin_fibre = fibre;
    head().actin_site = site;
    head().state = state;
  }

  /// One step of the head, which must take one number of the stream.
  void step(FixedTimeStepMC const& stepper, double u) {
    unsigned const before = ScriptedRand::draws();
    ScriptedRand::script({u});
    stepper.state_change(data, head(), candidates);
    EXPECT_EQ(ScriptedRand::draws(), before + 1);
  }

  /// The head after such a step of a copy.
  MyosinHead_s after(FixedTimeStepMC const& stepper, double u) const {
    Bench copy = *this;
    copy.step(stepper, u);
    return copy.head();
  }

  /// The variates up to a probability lead out of the state, and no others.
  void expect_to_move(FixedTimeStepMC const& stepper, double p) const {
    unsigned const state = data.heads.front().state;
    EXPECT_EQ(after(stepper, p + 1e-8).state, state) << p;
    if (p > 0.0) {
      EXPECT_NE(after(stepper, p - 1e-8).state, state) << p;
    }
  }

  FilamentData data;
  std::vector<BindingSite_s> candidates;
};

struct Stepper : testing::Test {
  Stepper() { currentTimeStep = 1.0; }
};

TEST_F(Stepper, OutcomesFollowTheTargetsThenTheCandidatesInTheirOrder) {
  RateModel const model(4, {1, 2}, [](double x, unsigned, unsigned to, ActinSite_s const&) {
    return to == 1 ? (x == 4.0 ? 0.1 : x == -6.0 ? 0.2 : 9.0) : 0.1;
  });
  FixedTimeStepMC const stepper(model, model, nullptr);
  Bench bench;
  bench.candidates = {{1.0, 2, 2}, {1.0, 0, 1}};
  struct {
    double end;
    unsigned state, fibre, site;
  } const scale[] = {{0.1, 1, 2, 2},
                     {0.3, 1, 1, 0},
                     {0.4, 2, 2, 2},
                     {0.5, 2, 1, 0},
                     {0.6, 3, unbound, unbound},
                     {1.0, 0, unbound, unbound}};
  double begin = 0.0;
  for (auto const& part : scale) {
    for (double const u : {begin + 1e-8, part.end - 1e-8}) {
      MyosinHead_s const head = bench.after(stepper, u);
      EXPECT_EQ(head.state, part.state) << "u " << u;
      EXPECT_EQ(head.actin_fibre, part.fibre) << "u " << u;
      EXPECT_EQ(head.actin_site, part.site) << "u " << u;
    }
    begin = part.end;
  }
}

/// What a scale of outcomes a and b gives at the variates 0, just above 0, and on and just above
/// 1/4 and 1/2, and at 1; '-' is staying.
std::string picks(double p_a, double p_b) {
  OutcomeScale<char, 2> scale;
  scale.add(p_a, 'a');
  scale.add(p_b, 'b');
  scale.close();
  std::string picked;
  for (double const u : {0.0, 1e-9, 0.25, 0.25 + 1e-9, 0.5, 0.5 + 1e-9, 1.0}) {
    char const* const outcome = scale.pick(u);
    picked += outcome ? *outcome : '-';
  }
  return picked;
}

TEST(OutcomeScale, TieGoesToTheLowerOutcomeZeroStaysAndAFullScaleLeavesNoStaying) {
  EXPECT_EQ(picks(0.25, 0.25), "-aabb--");
  EXPECT_EQ(picks(0.25, 0.75), "-aabbbb");
  EXPECT_EQ(picks(1.0, 3.0), "-aabbbb");
}

TEST_F(Stepper, WeightAndStepScaleTheProbabilityOfBinding) {
  currentTimeStep = 0.5;
  RateModel model(2, {1}, [](double x, unsigned, unsigned, ActinSite_s const&) {
    return x == 0.0 ? 0.0 : 0.2 * x;  // 0.4 at the strain 2, below 0 at -6
  });
  FixedTimeStepMC const stepper(model, model, nullptr);
  Bench bench;
  bench.expect_to_move(stepper, 0.0);
  bench.candidates = {{0.5, 1, 1}};
  bench.expect_to_move(stepper, 0.1);
  currentTimeStep = 0.25;
  bench.expect_to_move(stepper, 0.05);
  // A weight or a rate that isn't above 0 makes no outcome, wherever it stands in the list.
  bench.candidates = {{0.0, 2, 1}, {1.0, 1, 2}, {1.0, 0, 1}, {-0.5, 1, 1}, {0.5, 1, 1}};
  bench.expect_to_move(stepper, 0.05);
  EXPECT_EQ(bench.after(stepper, one_step).actin_site, 1u);
  // More than there is on the scale is told of a detached head, and only recorded of a bound one.
  run_facts.excess = {};
  testing::internal::CaptureStdout();
  currentTimeStep = 5.0;
  bench.after(stepper, 1.0);
  currentTimeStep = 10.0;
  bench.after(stepper, 1.0);
  Bench bound = bench;
  bound.bind(1, 1, 1);
  bound.after(stepper, 1.0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Internal Error!!!! Attach, Sum 2.000000e+00\n");
  EXPECT_EQ(run_facts.excess.draws, (std::map<std::string, long>{{"Attach", 1}, {"Bound", 1}}));
  model.transitions[0][1] = false;
  bench.expect_to_move(stepper, 0.0);
}

TEST_F(Stepper, BondIsMadeAndBrokenAtBothEnds) {
  RateModel const model(3, {1, 2}, {{{0, 1}, 0.5}, {{1, 2}, 1.0}, {{2, 0}, 1.0}});
  FixedTimeStepMC const stepper(model, model, nullptr);
  Bench bench;
  FilamentData& data = bench.data;
  // Made of the first candidate; those of a bound head are not looked at. A release waits.
  bench.candidates = {{1.0, 0, 2}, {1.0, 2, 1}};
  struct {
    unsigned state, detach_pending, bonds;
    int attachments, detachments;
  } const expected[] = {{1, 0, 1, 1, 0}, {2, 0, 1, 1, 0}, {0, 1, 1, 1, 1}, {0, 1, 0, 1, 1}};
  for (auto const& e : expected) {
    e.bonds == 1 ? bench.step(stepper, 0.25) : stepper.detach(data, bench.head());
    EXPECT_EQ(bench.head().state, e.state);
    EXPECT_EQ(bench.head().detach_pending, e.detach_pending);
    EXPECT_EQ(data.bound_count[0][1], e.bonds);
    EXPECT_EQ(data.bound_count[2][0], e.bonds);
    EXPECT_EQ(data.bound_count[0].sum() + data.bound_count[1].sum() + data.bound_count[2].sum(),
              2 * e.bonds);
    EXPECT_EQ(data.sites[2][0].head, e.bonds == 1 ? &bench.head() : nullptr);
    EXPECT_EQ(bench.head().actin_fibre, e.bonds == 1 ? 2u : 99999999u);
    EXPECT_EQ(bench.head().actin_site, e.bonds == 1 ? 0u : 99999999u);
    EXPECT_EQ(numberOfAtachments, e.attachments);
    EXPECT_EQ(numberOfDetachments, e.detachments);
  }
}

TEST_F(Stepper, SiteActsOnSlowAndFastHeadsOfTheActiveStepperOnly) {
  auto const law = [](double k, double elsewhere) {
    return [=](double x, unsigned from, unsigned to, ActinSite_s const& site) {
      if (from + to != 1) return elsewhere;
      if (site.state == 1 || x != 2.0) return 0.0;
      return k * (from == 0 ? site.k_on_factor : site.k_off_factor);
    };
  };
  // The links' model may have fewer states than that of the heads, or more, which don't count.
  for (unsigned const n_states : {2, 4}) {
    RateModel const slow(6 - n_states, {1}, law(0.2, 0.0)), fast(6 - n_states, {1}, law(0.4, 0.0));
    RateModel const protein_c(n_states, {1}, law(0.6, 0.9));
    FixedTimeStepMC const plain(slow, fast, &protein_c);
    FixedTimeStepMCActiv const active(slow, fast, &protein_c);
    for (unsigned const kind : {0, 1, 2, 7}) {
      double const k = kind == 0 ? 0.2 : kind == 1 ? 0.4 : 0.6;
      Bench detached;
      detached.head().model_index = kind;
      ActinSite_s& site = detached.data.sites[1][1];
      site.k_on_factor = 0.5;
      site.k_off_factor = 0.25;
      Bench bound = detached;
      bound.bind(1, 1, 1);
      detached.candidates = {{1.0, 1, 1}};
      bool const acts = kind < 2;
      detached.expect_to_move(plain, k);
      detached.expect_to_move(active, acts ? 0.5 * k : k);
      for (unsigned const state : {0, 1}) {
        bound.data.sites[1][1].state = state;
        bound.expect_to_move(plain, k);
        bound.expect_to_move(active, acts ? (1 - state) * 0.25 * k : k);
      }
    }
  }
}

TEST_F(Stepper, HeadIsAskedUpToItsBoundTimesTheFactorsOfTheSites) {
  struct Bounded : RateModel {
    using RateModel::RateModel;
    double rate_bound(unsigned, double) const override { return 0.3; }
  };
  Bounded const model(2, {1}, [](double, unsigned, unsigned, ActinSite_s const& site) {
    return 0.3 * site.k_off_factor;
  });
  FixedTimeStepMCActiv stepper(model, model, nullptr);
  stepper.begin_step(20.0);
  for (double const u : {0.5, 0.7}) {
    Bench bench;
    bench.bind(1, 1, 1);
    bench.data.sites[1][1].k_off_factor = bench.data.most_factor = 2.0;
    ScriptedRand::script({u});
    stepper.state_change(bench.data, bench.head(), BareGeometry(), bench.candidates);
    EXPECT_EQ(bench.head().state, u < 0.6 ? 0u : 1u);
  }
}

TEST_F(Stepper, RefusesRatesThatAreNoNumbers) {
  for (double const bad : {std::nan(""), HUGE_VAL}) {
    RateModel const model(2, {1}, {{{1, 0}, bad}});
    FixedTimeStepMC const stepper(model, model, nullptr);
    Bench bench;
    bench.bind(1, 1, 1);
    expect_refusal([&] { bench.step(stepper, 0.5); },
                   "the rate of state 1 to 0 at strain 2 nm.*is '(nan|inf)'; accepted: a finite");
  }
}

TEST_F(Stepper, CountsOfTransitionsBeginAnewWhenPrinted) {
  RateModel const model(2, {}, {{{0, 1}, 0.5}, {{1, 0}, 0.5}});
  FixedTimeStepMC stepper(model, model, nullptr);
  Bench bench;
  for (double const u : {0.25, 0.75, 0.25, 0.25}) bench.step(stepper, u);  // to 1, 1, 0, 1
  std::ostringstream text;
  stepper.print_transitions_slow(text);
  stepper.print_transitions_slow(text);
  EXPECT_EQ(text.str(), "2 1 \n0 0 \n");
}

TEST_F(Stepper, DetachedStatesChangeAtStrainZeroWithoutTheSites) {
  RateModel const model(2, {}, [](double x, unsigned, unsigned, ActinSite_s const& site) {
    bool const is_default = site.state == 0 && site.k_on_factor == 1.0 &&
                            site.k_stroke_factor == 1.0 && site.k_off_factor == 1.0;
    return x == 0.0 && is_default ? 0.3 : 0.9;
  });
  FixedTimeStepMCActiv const stepper(model, model, &model);
  Bench bench;
  for (auto& fibre : bench.data.sites) {
    for (ActinSite_s& site : fibre) site = {2, 0.0, 0.0, 0.0, nullptr};
  }
  bench.candidates = {{0.5, 2, 2}};
  for (unsigned const kind : {0, 1, 2}) {
    bench.head().model_index = kind;
    bench.expect_to_move(stepper, 0.3);
  }
}

/// Detached states 0, 4, 5 in a cycle with rates 1, 2, 4: occupancies as 1 : 1/2 : 1/4. Bound
/// states would turn that over.
RateModel::Rates const cycle = {
    {{0, 4}, 1.0}, {{4, 5}, 2.0}, {{5, 0}, 4.0}, {{0, 1}, 50.0}, {{1, 5}, 70.0}};

std::vector<unsigned> first_states(FixedTimeStepMC const& stepper, FilamentData& data) {
  unsigned const before = ScriptedRand::draws();
  stepper.initialize_filament(data);
  EXPECT_EQ(ScriptedRand::draws() - before, data.heads.size());
  std::vector<unsigned> states;
  for (MyosinHead_s const& head : data.heads) states.push_back(head.state);
  return states;
}

TEST_F(Stepper, StartTakesTheFirstRunningSumAboveTheVariate) {
  RateModel const slow(6, {1, 2, 3}, cycle);
  RateModel const protein_c(5, {1});
  FixedTimeStepMC const stepper(slow, slow, &protein_c);
  FilamentData data;
  data.heads.assign(4, {1, 0, 0, unbound, unbound, 0, 0, 0});
  data.heads[1].model_index = 1;
  ScriptedRand::script({4.0 / 7.0 - 1e-8, 4.0 / 7.0 + 1e-8, 6.0 / 7.0 - 1e-8, 6.0 / 7.0 + 1e-8});
  EXPECT_EQ(first_states(stepper, data), (std::vector<unsigned>{0, 4, 4, 5}));
  // Protein-C heads keep a drawn state only if it is a detached state of their own model.
  for (MyosinHead_s& head : data.heads) head.model_index = 2;
  ScriptedRand::script({0.9, 0.7, 0.0, 0.9});
  EXPECT_EQ(first_states(stepper, data), (std::vector<unsigned>{0, 4, 0, 0}));
  EXPECT_EQ(read_file("detached_states_init.csv"), "State 1,State 5,State 6\n1,2,1,\n3,1,0,\n");
  RateModel const four_is_bound(6, {4});
  FixedTimeStepMC const third(slow, slow, &four_is_bound);
  ScriptedRand::script({0.9, 0.7, 0.0, 0.9});
  EXPECT_EQ(first_states(third, data), (std::vector<unsigned>{5, 0, 0, 5}));
  // A single detached state draws too. No running sum lies above 1: that head keeps its state.
  RateModel const single(3, {0, 2});
  FixedTimeStepMC const other(single, single, nullptr);
  data.heads.assign(3, {1, 0, 2, unbound, unbound, 0, 0, 0});
  ScriptedRand::script({0.0, 1.0 - one_step, 1.0});
  EXPECT_EQ(first_states(other, data), (std::vector<unsigned>{1, 1, 2}));
  EXPECT_EQ(read_file("detached_states_init.csv"), "State 1,State 5,State 6\n2,\n");
}

}  // namespace
