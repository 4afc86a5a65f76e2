#pragma once
/// Registered lattices with default parameters but for some settings.

#include <gtest/gtest.h>

#include <cctype>
#include <memory>

#include "lattice/geometry.h"
#include "records/filament_data.h"
#include "support/work_dir.h"

inline std::string parameter_file_of(std::string lattice) {
  lattice[0] = static_cast<char>(std::tolower(lattice[0]));
  return "geom_" + lattice + ".prm";
}

inline std::unique_ptr<Geometry> read_lattice(std::string const& name,
                                              std::string const& settings) {
  write_settings(parameter_file_of(name), settings);
  return std::unique_ptr<Geometry>(
      Factory<Geometry, GeometryParameter_s>::instance().create_type(name, {}));
}

/// The same, while what the lattice prints goes nowhere.
inline std::unique_ptr<Geometry> make_lattice(std::string const& name,
                                              std::string const& settings = "") {
  testing::internal::CaptureStdout();
  auto lattice = read_lattice(name, settings);
  testing::internal::GetCapturedStdout();
  return lattice;
}

inline FilamentData filament_of(Geometry const& lattice) {
  FilamentData data;
  lattice.initialize_filament(data);
  return data;
}
