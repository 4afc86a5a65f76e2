#pragma once
/// What is checked of a scheme before a run, over the strains of its range.

#include <string>
#include <vector>

#include "scheme/scheme.h"

/// Ends the run over states that can't be reached or left, detached states among which the heads'
/// first state is undetermined, and rates that are negative or not finite somewhere.
void refuse_unsound(Scheme const& scheme);

/// What is unusual: cycles whose rates disagree with their energies, transitions that hide a cycle
/// from that check. The texts name file, states, strain and energy.
std::vector<std::string> cycle_warnings(Scheme const& scheme);

/// The state whose rates add up to most at a strain of at most `reach` [nm] in size, for sites of
/// the factors 1 and a head with one site.
struct FastestState_s {
  unsigned state = 0;
  double strain = 0.0;
  double rate = 0.0;
};
FastestState_s fastest_state(Scheme const& scheme, double reach);
