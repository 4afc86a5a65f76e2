#include "activation/activation_state_data.h"

#include <algorithm>

#include "records/filament_data.h"

ActivationStateData::ActivationStateData(unsigned length)
    : segment_length(length),
      state(length),
      fibre(length),
      site(length),
      k_on_factor(length, 1.0),
      k_stroke_factor(length, 1.0) {}

bool ActivationStateData::is_inside(unsigned i, FilamentData const& data) const {
  return fibre[i] < data.bound_count.size() && site[i] < data.bound_count[fibre[i]].size();
}

bool ActivationStateData::head_bound(unsigned i, FilamentData const& data) const {
  return is_inside(i, data) && data.bound_count[fibre[i]][site[i]] != 0;
}

unsigned ActivationStateData::head_state(unsigned i, FilamentData const& data) const {
  if (!is_inside(i, data)) return 0;
  MyosinHead_s const* const head = data.sites[fibre[i]][site[i]].head;
  return head ? head->state : 0;
}

ActinSite_s* ActivationStateData::find_site(unsigned i, FilamentData& data) const {
  return is_inside(i, data) ? &data.sites[fibre[i]][site[i]] : nullptr;
}

unsigned ActivationStateData::n_heads_bound(FilamentData const& data) const {
  unsigned n = 0;
  for (unsigned i = 0; i < segment_length; ++i) n += head_bound(i, data) ? 1 : 0;
  return n;
}

void ActivationStateData::copy_to_filament(FilamentData& data,
                                           std::vector<unsigned> const& state_map) const {
  for (unsigned i = 0; i < segment_length; ++i) copy_place_to_filament(i, data, state_map);
}

void ActivationStateData::copy_place_to_filament(unsigned i, FilamentData& data,
                                                 std::vector<unsigned> const& state_map) const {
  ActinSite_s* const target = find_site(i, data);
  if (!target) return;
  target->k_on_factor = k_on_factor[i];
  target->k_stroke_factor = k_stroke_factor[i];
  data.most_factor = std::max({data.most_factor, k_on_factor[i], k_stroke_factor[i]});
  target->state = state_map[state[i]];
}
