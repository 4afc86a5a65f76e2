#pragma once
/// Lattices with default parameters but for some "section: key = value" settings.

#include <string>
#include <vector>

#include "lattice/geometry.h"
#include "records/filament_data.h"
#include "support/work_dir.h"

inline void write_settings(std::string const& file, std::vector<std::string> const& settings) {
  std::string text;
  for (std::string const& setting : settings) {
    auto const colon = setting.find(':');
    text += "subsection " + setting.substr(0, colon) + "\n  set" + setting.substr(colon + 1) +
            "\nend\n";
  }
  write_file(file, text);
}

inline FilamentData filament_of(Geometry const& lattice) {
  FilamentData data;
  lattice.initialize_filament(data);
  return data;
}

inline std::vector<BindingSite_s> candidates_of(Geometry const& lattice, FilamentData const& data,
                                                MyosinHead_s const& head) {
  std::vector<BindingSite_s> candidates;
  lattice.get_binding_sites(data, head, candidates);
  return candidates;
}
