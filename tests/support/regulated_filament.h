#pragma once
/// Two thin filaments of few sites under an activation model: four chains, of every other site.

#include <gtest/gtest.h>

#include <map>

#include "activation/activation.h"
#include "base/run_state.h"
#include "lattice/geometry_vertebrae.h"
#include "records/filament_data.h"
#include "support/scripted_rand.h"
#include "support/work_dir.h"

struct RegulatedFilament {
  /// What the model reads is written before. It takes `first_variates` when it is made, and `draws`
  /// numbers in a step.
  RegulatedFilament(std::string const& name, unsigned nodes, unsigned draws, double dt,
                    int indicator = 0, int healthy_percent = 100,
                    std::vector<double> const& first_variates = {}, Model const* heads = nullptr)
      : n_draws(draws) {
    write_settings("geom_vertebrae.prm", "actin: dx_actin=1 length_actin=" + std::to_string(nodes));
    geometry = std::make_unique<GeometryVertebrae>(GeometryParameter_s{});
    geometry->initialize_filament(data);
    currentTimeStep = dt;
    ScriptedRand::script(first_variates);
    model = create_component<ActivationModel>(
        name, ActivationModelParameter{geometry.get(), heads, heads, indicator, healthy_percent},
        "", "");
    EXPECT_EQ(ScriptedRand::unused(), 0u);
  }

  /// A step that uses `n_draws` numbers: these, counted from 0, and `others`.
  void step(std::map<unsigned, double> const& variates = {}, double time = 0.0,
            double others = 1.0) {
    std::vector<double> script(n_draws, others);
    for (auto const& [draw, variate] : variates) script.at(draw) = variate;
    ScriptedRand::script(script);
    unsigned const before = ScriptedRand::draws();
    model->state_change(data, time, counts);
    EXPECT_EQ(ScriptedRand::draws() - before, n_draws);
  }

  std::vector<double> info() const {
    std::vector<double> result;
    model->state_info(result);
    return result;
  }

  /// What the model appends to "TroponinAngles.csv".
  std::string dump() const {
    FILE* const file = std::fopen("dump", "wb");
    model->write_state_data(data, file, true);
    std::fclose(file);
    return read_file("dump");
  }

  void bind(MyosinHead_s& head, unsigned fibre, unsigned node) {
    head.actin_fibre = fibre;
    head.actin_site = node;
    data.attached.push_back(&head);
    data.bound_count[fibre][node] = 1;
    data.sites[fibre][node].head = &head;
  }

  unsigned n_draws;
  std::unique_ptr<GeometryVertebrae> geometry;
  FilamentData data;
  std::unique_ptr<ActivationModel> model;
  std::vector<int> counts;
};
