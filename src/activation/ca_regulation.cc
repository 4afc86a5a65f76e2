#include "activation/ca_regulation.h"

#include <algorithm>

#include "activation/segment_layout.h"
#include "base/parameter_file.h"

/// One reversible step of the scheme: its keys with their defaults, and where its constants stand.
struct CaRegulation::Step_s {
  char const* section;
  char const* K_key;
  char const* K_default;
  double CaRegulation::*K;
  char const* forward_name;
  double CaRegulation::*forward;
  char const* backward_key;
  char const* backward_default;
  double CaRegulation::*backward;
  bool at_open_position;  ///< belongs to models with three positions
  bool with_two_ions;     ///< is read only where two ions bind
};

// In the order of the listings, three steps a group.
CaRegulation::Step_s const CaRegulation::steps[9] = {
    {"Ca_regulation", "K_Ca", "120000.0", &CaRegulation::K_Ca, "k_Ca_on", &CaRegulation::k_Ca_on,
     "k_Ca_off", "750.0", &CaRegulation::k_Ca_off, false, false},
    {"Ca_regulation", "K_Ca_p", "24000000.0", &CaRegulation::K_Ca_p, "k_Ca_on_p",
     &CaRegulation::k_Ca_on_p, "k_Ca_off_p", "75.0", &CaRegulation::k_Ca_off_p, false, false},
    {"Ca_regulation", "K_Ca_s", "24000000.0", &CaRegulation::K_Ca_s, "k_Ca_on_s",
     &CaRegulation::k_Ca_on_s, "k_Ca_off_s", "75.0", &CaRegulation::k_Ca_off_s, true, false},
    {"Blocket2Closed_regulation", "K_TnB", "0.00206", &CaRegulation::K_TnB, "k_b_c",
     &CaRegulation::k_b_c, "k_c_b", "3750.0", &CaRegulation::k_c_b, false, false},
    {"Blocket2Closed_regulation", "K_TnB_p", "0.4125", &CaRegulation::K_TnB_p, "k_b_c_p",
     &CaRegulation::k_b_c_p, "k_c_b_p", "375.0", &CaRegulation::k_c_b_p, false, false},
    {"Blocket2Closed_regulation", "K_TnB_s", "82.500", &CaRegulation::K_TnB_s, "k_b_c_s",
     &CaRegulation::k_b_c_s, "k_c_b_s", "37.500", &CaRegulation::k_c_b_s, false, true},
    {"Closed2Open_regulation", "K_TnT", "0.105", &CaRegulation::K_TnT, "k_c_o",
     &CaRegulation::k_c_o, "k_o_c", "3000.0", &CaRegulation::k_o_c, true, false},
    {"Closed2Open_regulation", "K_TnT_p", "0.105", &CaRegulation::K_TnT_p, "k_c_o_p",
     &CaRegulation::k_c_o_p, "k_o_c_p", "3000.0", &CaRegulation::k_o_c_p, true, false},
    {"Closed2Open_regulation", "K_TnT_s", "0.105", &CaRegulation::K_TnT_s, "k_c_o_s",
     &CaRegulation::k_c_o_s, "k_o_c_s", "3000.0", &CaRegulation::k_o_c_s, true, true},
};

bool CaRegulation::has(Step_s const& step) const {
  return positions == 3 || !step.at_open_position;
}

void CaRegulation::declare_parameters(dealii::ParameterHandler& handler, unsigned positions) {
  ParameterSection(handler, "structure").declare_integer("segment_length", "7");
  for (Step_s const& step : steps) {
    if (positions < 3 && step.at_open_position) continue;
    ParameterSection const section(handler, step.section);
    section.declare_double(step.K_key, step.K_default);
    section.declare_double(step.backward_key, step.backward_default);
  }
}

void CaRegulation::get_parameters(dealii::ParameterHandler& handler) {
  segment_length = read_segment_length(ParameterSection(handler, "structure", file_name));
  for (Step_s const& step : steps) {
    if (!has(step) || (step.with_two_ions && !binds_two())) continue;
    ParameterSection const section(handler, step.section, file_name);
    this->*step.K = section.non_negative(step.K_key);
    this->*step.backward = section.non_negative(step.backward_key);
    this->*step.forward = this->*step.K * this->*step.backward;
  }
}

void CaRegulation::set_calcium(double Ca) {
  if (Ca == calcium) return;
  calcium = Ca;
  double const ion_on[] = {k_Ca_on * Ca, k_Ca_on_p * Ca, k_Ca_on_s * Ca};
  double const ion_off[] = {k_Ca_off, k_Ca_off_p, k_Ca_off_s};
  double const b_c[] = {k_b_c, k_b_c_p, k_b_c_s};
  double const c_b[] = {k_c_b, k_c_b_p, k_c_b_s};
  double const c_o[] = {k_c_o, k_c_o_p, k_c_o_s};
  double const o_c[] = {k_o_c, k_o_c_p, k_o_c_s};
  unsigned const most_ions = binds_two() ? 2 : 1;
  auto const set = [this](unsigned a, unsigned b, double forward, double backward) {
    rates[a][b] = forward;
    rates[b][a] = backward;
  };
  for (unsigned p = 0; p < positions; ++p) {
    for (unsigned c = 0; c < most_ions; ++c) set(3 * p + c, 3 * p + c + 1, ion_on[p], ion_off[p]);
  }
  for (unsigned c = 0; c <= most_ions; ++c) {
    set(c, 3 + c, b_c[c], c_b[c]);
    if (positions == 3) set(3 + c, 6 + c, c_o[c], o_c[c]);
  }
  std::transform(rates.begin(), rates.end(), moves.begin(), moves_of<9>);
}

void CaRegulation::list_constants(FILE* file) const {
  struct Group_s {
    char const* heading;
    int width;
  };
  constexpr Group_s groups[] = {{"# Ca constants:\n", 10},
                                {"# Blocked/Close Regulation:\n", 7},
                                {"# Closed/Open Regulation:\n", 7}};
  for (unsigned i = 0; i < 3 * positions; ++i) {
    auto const& [heading, width] = groups[i / 3];
    if (i % 3 == 0) std::fputs(heading, file);
    Step_s const& step = steps[i];
    if (!has(step)) continue;
    std::fprintf(file, "\t%-*s = %lf\n", width, step.K_key, this->*step.K);
    std::fprintf(file, "\t%-*s = %lf\n", width, step.forward_name, this->*step.forward);
    std::fprintf(file, "\t%-*s = %lf\n", width, step.backward_key, this->*step.backward);
    std::fputs(i % 3 == 2 ? "\n\n" : "\n", file);
  }
}
