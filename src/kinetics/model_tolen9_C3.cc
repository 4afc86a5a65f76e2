#include "kinetics/model_tolen9_C3.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "base/diagnostics.h"
#include "base/parameter_file.h"
#include "base/run_state.h"
#include "elastic/XB_Models.h"
#include "kinetics/dawson.h"
#include "kinetics/rate_tools.h"
#include "records/filament_data.h"

REGISTER_MODEL(ModelTolen9_C3, "Tolen9");

namespace {

constexpr double most_grid_points = 1e6;  // 650 MB
constexpr double widest_reach = 1e3;      // nm

struct RateKey {
  char const* name;
  char const* value;
  int from() const { return name[2] - '0'; }
  int to() const { return name[3] - '0'; }
};

constexpr RateKey rate_keys[] = {
    {"k_13", "100.0"},  {"k_31", "10.0"},   {"k_94", "80.0"},    {"k_49", "8.0"},
    {"k_32", "0.1"},    {"k_23", "1e-3"},   {"k_21", "1.0"},     {"k_12", "0.0"},
    {"k_19", "100.0"},  {"k_91", "10.0"},   {"k_26", "5.0"},     {"k_62", "0.2"},
    {"k_34", "100.0"},  {"k_43", "10.0"},   {"k_45", "10000.0"}, {"k_54", "200.0"},
    {"k_57", "2.0e5"},  {"k_75", "100.0"},  {"k_68", "2.0e5"},   {"k_86", "100.0"},
    {"k_56", "50.0"},   {"k_65", "5.0"},    {"k_78", "80.0"},    {"k_87", "8.0"},
    {"k_81", "5000.0"}, {"k_18", "5000.0"}, {"k_53", "0.0"},     {"k_14", "0.0"},
    {"k_41", "0.0"},    {"k_95", "0.0"},    {"k_59", "0.0"},     {"k_36", "0.0"},
    {"k_63", "0.0"},    {"k_37", "0.0"},    {"k_73", "0.0"},     {"k_67", "0.0"},
    {"k_76", "0.0"},    {"k_28", "0.0"},    {"k_82", "0.0"}};

constexpr char const* state_sections[] = {"state4", "state5", "state6",
                                          "state7", "state8", "state9"};

/// The place of a selected name among the names of its selection.
unsigned selected(std::string const& name, std::initializer_list<char const*> names) {
  return static_cast<unsigned>(std::find(names.begin(), names.end(), name) - names.begin());
}

bool is_regulated_binding(unsigned from, unsigned to) {
  return (from == 0 && to == 8) || (from == 1 && (to == 5 || to == 7)) || (from == 2 && to == 3);
}

}  // namespace

// Construction

ModelTolen9_C3::ModelTolen9_C3(ModelParameter_s const& parameter) : ActiveModel(parameter, 9) {
  copy_integral();
  load_parameters(*this, file_name);
  set_states();
  set_transitions();
  fill_tables();
  RescaleBindFactor();
  fill_tables();
  set_rate_bounds();
  WriteToTaveloOutput();
}

void ModelTolen9_C3::copy_integral() {
  MyDiscreteFunction const& table = xb_model->GetIntegralFunction();
  if (table.points.empty()) {
    refuse(file_name, "xb_model", "a law without an integral table",
           "ConstantStiffness or StiffnessFunction");
  }
  integral.SetFunction(table.points);
  integral.PrintFunctionAtFile("model_tolen_integral.dat");
}

void ModelTolen9_C3::set_states() {
  double const h = block.h;
  double const h_hd = block.h + block.hd;
  for (unsigned state = variant == C7 ? 4 : 3; state < 9; ++state) attached[state] = true;
  double const levers[5][5] = {{h, h, h_hd, h_hd, 0.0},
                               {h, h, h_hd, h_hd, 0.0},
                               {h, h + block.ha, h_hd, h_hd + block.hb, h_hd + block.ht},
                               {h, h, h_hd, h_hd, 0.0},
                               {0.0, h, h_hd, h_hd, 0.0}};
  std::copy_n(levers[variant], 5, power_strokes + 4);
}

void ModelTolen9_C3::set_transitions() {
  for (unsigned from = 0; from < 9; ++from) {
    for (unsigned to = 0; to < 9; ++to) transitions[from][to] = k[from + 1][to + 1] > 0.0;
  }
  // Releases that the limits of a range can open.
  transitions[4][2] = transitions[6][2] = true;
  if (variant == C6) transitions[5][3] = transitions[7][3] = true;
}

void ModelTolen9_C3::fill_tables() {
  rate_tables.clear();
  x_grid.clear();
  cached_x = xs - 5.0;  // no strain of the grid, so that the constants of now are in force
  for (double x = xs; x < xe; x += dx) {
    if (!(x + dx > x)) stop(file_name + ": the strain grid has no end: dx is lost in its strains");
    evaluate(x);
    rate_tables.push_back(rk);
    x_grid.push_back(x);
  }
}

void ModelTolen9_C3::RescaleBindFactor() {
  double const factor = binding_overlap_factor(
      [this](double x) { return ActiveModel::get_k(x, 2, 3); },
      [this](double x) { return ActiveModel::get_k(x, 3, 2); }, dco, file_name);
  std::printf("bind_rescaling_factor = %g\n", factor);
  k[1][9] /= factor;
  k[2][6] /= factor;
  k[2][8] /= factor;
  k[3][4] /= factor;
}

void ModelTolen9_C3::set_rate_bounds() {
  rate_bounds.fill(std::numeric_limits<double>::infinity());
  if (interpolation == exact) return;
  for (unsigned from = 0; from < 9; ++from) {
    rate_bounds[from] = 0.0;
    for (std::size_t row = 0; row < rate_tables.size(); ++row) {
      rate_bounds[from] = std::max(rate_bounds[from], highest_sum(from, row));
    }
  }
}

/// Bound of the sum of a state's rates where they come from a row of the table.
double ModelTolen9_C3::highest_sum(unsigned from, std::size_t row) const {
  bool const is_line = interpolation == linear && row + 1 < rate_tables.size();
  double sum = 0.0;
  for (unsigned to = 0; to < 9; ++to) {
    if (!transitions[from][to] || !(attached[from] || attached[to])) continue;
    double const y0 = rate_tables[row][to * 9 + from];
    double const y1 = is_line ? rate_tables[row + 1][to * 9 + from] : y0;
    // A line is followed backwards from its row, by two steps at most, or towards the next row.
    sum += std::max(y0, y0 + 2.0 * (y0 - y1));
  }
  return sum;
}

void ModelTolen9_C3::WriteToTaveloOutput() const {
  std::fprintf(fOutputFile, "\t*** tTOLEN9 MODEL ********************\n\n");
}

// Rates

double ModelTolen9_C3::get_k(double x, unsigned from, unsigned to, ActinSite_s const& site) const {
  if (interpolation == exact) return get_k_exact(x, from, to);
  double const rate = table_rate(x, to * 9 + from);
  return is_regulated_binding(from, to) ? rate * site.k_on_factor : rate;
}

double ModelTolen9_C3::table_rate(double x, std::size_t entry) const {
  auto const n = static_cast<long>(rate_tables.size());
  double const steps = (x - xs) / dx;
  if (steps <= -2.0) return rate_tables.front()[entry];
  if (!(steps < static_cast<double>(n))) return rate_tables.back()[entry];
  long const i = static_cast<long>(steps) + 1;
  if (i >= n - 1) return rate_tables.back()[entry];
  double const y0 = rate_tables[i][entry];
  if (interpolation == step) return y0;
  double const y1 = rate_tables[i + 1][entry];
  return y0 + (x - x_grid[i]) * (y1 - y0) / (x_grid[i + 1] - x_grid[i]);
}

double ModelTolen9_C3::get_k_exact(double x, unsigned from, unsigned to) const {
  if (x != cached_x) evaluate(x);
  return rk[to * 9 + from];
}

void ModelTolen9_C3::evaluate(double x) const {
  static constexpr RateRoutine* routines[] = {xratesc_, xratesc4_, xratesc5_, nullptr, xratesc7_};
  constexpr int n = 9;
  for (unsigned from = 0; from < 9; ++from) {
    for (unsigned to = 0; to < 9; ++to) rk[to * 9 + from] = k[from + 1][to + 1];
  }
  block.K = xb_model->GetStiffness(x);
  if (variant == C6) {
    set_elastic_values(x);
    XRates(x, rk.data());
  } else {
    routines[variant](block, &x, rk.data(), nullptr, &dco, nullptr, &n, nullptr);
  }
  require_rates(x);
  cached_x = x;
}

void ModelTolen9_C3::set_elastic_values(double x) const {
  double const pb = x + block.h;
  double const pc = x + block.h + block.hd;
  double const pe = x + block.h + block.hd + block.ht;
  double const levers[] = {x, pb, pb, pc, pc, x};  // states 4 to 9, counted from 1
  for (int i = 0; i < 6; ++i) {
    block.force[i + 3] = xb_model->GetForce(levers[i]);
    block.energy[i + 3] = xb_model->GetEnergy(levers[i]);
  }
  block.energy[9] = xb_model->GetEnergy(pe);
}

void ModelTolen9_C3::XRates(double x, double* rates) const {
  RateBlock_s const& b = block;
  double const hh = b.h + b.hd;
  RateLaws s(b, b.KbT, dco, rates, [this](double z) { return integral.GetY(z); });
  std::copy_n(b.force, 9, s.t + 1);
  std::copy_n(b.energy, 10, s.v + 1);
  s.load(4, true);
  s.bind(1, 9, b.eta1, x);
  s.bind(3, 4, b.eta3, x);
  s.bind(2, 6, b.eta2, x + b.h);
  s.bind(2, 8, b.eta2, x + hh);
  s.bind(3, 5, b.eta3, x + b.h);
  s.bind(3, 7, b.eta3, x + hh);
  s.stroke(4, 5, x, b.h);
  s.stroke(5, 7, x + b.h, b.hd);
  s.stroke(6, 8, x + b.h, b.hd);
  s.cap(4, 5, 4000.0);
  s.cap(5, 7, 4000.0);
  s.cap(6, 8, 4000.0);

  double const e = exprot(-(s.v[10] - s.v[8]) / b.KbT);
  s.rate(8, 1) = (b.kkstar + 1.0) * s.k(8, 1) * e / (e * b.kkstar + 1.0);
  for (int const to : {7, 6, 2}) s.rate(8, to) *= b.phod;

  s.limit(4, 3, x, b.gm[3], b.gp[3]);
  s.limit(5, 3, x + b.h, b.gm[4], b.gp[4]);
  s.limit(6, 2, x + b.h, b.gm[5], b.gp[5]);
  s.limit(7, 3, x + hh, b.gm[6], b.gp[6]);
  s.limit(8, 2, x + hh, b.gm[7], b.gp[7]);
  s.limit(9, 1, x, b.gm[8], b.gp[8]);
  s.cap_all();
}

void ModelTolen9_C3::require_rates(double x) const {
  for (int i = 0; i < 81; ++i) {
    if (std::isfinite(rk[i]) && rk[i] >= 0.0) continue;
    stop(file_name + ": the rate of state " + std::to_string(i % 9 + 1) + " to " +
         std::to_string(i / 9 + 1) + " at strain " + shown(x) + " nm is " + shown(rk[i]) +
         "; strokes and the stiffness of the crossbridge must be above 0, and a stiff law needs a "
         "narrower strain grid");
  }
}

// Parameters

void ModelTolen9_C3::declare_parameters(dealii::ParameterHandler& handler) {
  {
    ParameterSection const numerics(handler, "numerics");
    numerics.declare_double("dx", "0.02");
    numerics.declare_double("xs", "-20.0");
    numerics.declare_double("xe", "20.0");
    numerics.declare_selection("interpolation", "Linear", "Linear|Exact|Step");
  }
  {
    ParameterSection const tolen(handler, "tolen");
    tolen.declare_selection("model", "C7", "C3|C4|C5|C6|C7");
    tolen.declare_double("KbT", "4.0");
  }
  for (char const* const name : state_sections) {
    ParameterSection const state(handler, name);
    for (char const* const key : {"cc", "ccm", "dm", "dp", "gm", "gp"}) {
      state.declare_double(key, "0.0");
    }
  }
  {
    ParameterSection const powerstroke(handler, "powerstroke");
    powerstroke.declare_double("h", "4.0");
    powerstroke.declare_double("hd", "4.0");
    powerstroke.declare_double("ht", "1.0");
    powerstroke.declare_double("ha", "0.0");
    powerstroke.declare_double("hb", "0.0");
  }
  {
    ParameterSection const misc(handler, "misc");
    misc.declare_double("dco", "7.0");
    misc.declare_double("kmax", "1e6");
    misc.declare_double("gmax", "1e5");
    for (char const* const key : {"eta1", "eta2", "eta3", "eta4", "eta5"}) {
      misc.declare_double(key, "10.0");
    }
    misc.declare_double("g1", "314");
    misc.declare_double("g2", "631");
    misc.declare_double("g3", "1e9");
    for (char const* const key : {"lambda", "phod", "kkstar"}) misc.declare_double(key, "1.0");
  }
  ParameterSection const rates(handler, "rates");
  for (RateKey const& key : rate_keys) rates.declare_double(key.name, key.value);
}

void ModelTolen9_C3::get_parameters(dealii::ParameterHandler& handler) {
  get_grid(handler);
  {
    ParameterSection const tolen(handler, "tolen", file_name);
    variant = selected(tolen.text("model"), {"C3", "C4", "C5", "C6", "C7"});
    block.KbT = tolen.positive("KbT");
  }
  for (int i = 3; i < 9; ++i) {
    ParameterSection const state(handler, state_sections[i - 3], file_name);
    block.cc[i] = state.number("cc");
    block.ccm[i] = state.number("ccm");
    block.dm[i] = state.number("dm");
    block.dp[i] = state.number("dp");
    block.gm[i] = state.non_negative("gm");
    block.gp[i] = state.non_negative("gp");
  }
  get_powerstroke(handler);
  get_misc(handler);
  ParameterSection const rates(handler, "rates", file_name);
  for (RateKey const& key : rate_keys) k[key.from()][key.to()] = rates.non_negative(key.name);
}

void ModelTolen9_C3::get_grid(dealii::ParameterHandler& handler) {
  ParameterSection const numerics(handler, "numerics", file_name);
  dx = numerics.positive("dx");
  xs = numerics.number("xs");
  xe = numerics.number("xe");
  interpolation = selected(numerics.text("interpolation"), {"Linear", "Step", "Exact"});
  if (!(xs < xe)) numerics.refuse_value("xe", "a number above xs");
  if (!((xe - xs) / dx < most_grid_points)) {
    numerics.refuse_value("dx", "a number that makes fewer than 1000000 steps from xs to xe");
  }
}

void ModelTolen9_C3::get_powerstroke(dealii::ParameterHandler& handler) {
  ParameterSection const powerstroke(handler, "powerstroke", file_name);
  bool const has_end_barrier = variant == C3 || variant == C4 || variant == C5;
  block.h = powerstroke.positive("h");
  block.hd = powerstroke.positive("hd");
  block.ht = has_end_barrier ? powerstroke.positive("ht") : powerstroke.number("ht");
  block.ha = variant == C5 ? powerstroke.positive("ha") : powerstroke.number("ha");
  block.hb = variant == C5 ? powerstroke.positive("hb") : powerstroke.number("hb");
  if (variant == C5 && !(block.hd + block.hb - block.ha > 0.0)) {
    powerstroke.refuse_value("ha", "a number below hd + hb");
  }
}

void ModelTolen9_C3::get_misc(dealii::ParameterHandler& handler) {
  ParameterSection const misc(handler, "misc", file_name);
  dco = misc.non_negative("dco");
  if (dco > widest_reach) misc.refuse_value("dco", "a number from 0 to 1000");
  block.kmax = misc.positive("kmax");
  block.gmax = misc.non_negative("gmax");
  block.eta1 = misc.non_negative("eta1");
  block.eta2 = misc.non_negative("eta2");
  block.eta3 = misc.non_negative("eta3");
  block.eta4 = misc.non_negative("eta4");
  block.eta5 = misc.non_negative("eta5");
  block.g1 = misc.positive("g1");
  block.g2 = misc.positive("g2");
  block.g3 = misc.positive("g3");
  block.lambda = misc.non_negative("lambda");
  block.phod = misc.non_negative("phod");
  block.kkstar = misc.non_negative("kkstar");
}
