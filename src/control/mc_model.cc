#include "control/mc_model.h"

#include "activation/active_filament.h"
#include "base/run_state.h"
#include "control/interruption.h"
#include "kinetics/active_model.h"
#include "kinetics/fixed_dt_mc.h"
#include "lattice/geometry.h"
#include "mechanics/filament.h"
#include "mechanics/lattice_snapshot.h"
#include "mechanics/sarcomer.h"

REGISTER_COMPONENT(MCModel, MacroModel, MacroModelParameter, "MonteCarlo");

namespace {

constexpr char const* parameter_file = "numeric_mc.prm";

/// More half-sarcomeres than any machine's memory holds, and few enough to be counted in 32 bits.
constexpr std::uint64_t most_filaments = 10000000;

ActiveModel const& require_active(Model const* model, std::string const& activation) {
  if (auto const* active = dynamic_cast<ActiveModel const*>(model)) return *active;
  refuse(parameter_file, "activation", activation,
         "None, with a kinetic model that regulation has no influence on");
}

}  // namespace

MCModel::MCModel(MacroModelParameter const& parameter)
    : MacroModel(parameter), parameters(parameter_file) {
  geometry = create_component<Geometry>(parameters.geometry, GeometryParameter_s{}, parameter_file,
                                        "geometry");
  stepper = create_stepper();
  sarcomer = std::make_unique<Sarcomer>(parameters.sarcomer, *geometry);
  std::uint64_t const n = parameters.filaments * in_series();
  if (n > most_filaments) {
    refuse(parameter_file, "filaments times half-sarcomeres in series", std::to_string(n),
           "at most " + std::to_string(most_filaments));
  }
  for (std::uint64_t i = 0; i < n; ++i) {
    add_filament(is_series() && i % 2 == 1 ? -1 : 1);
    stop_if_interrupted();
  }
}

MCModel::~MCModel() = default;

std::uint64_t MCModel::in_series() const {
  return is_series() ? std::uint64_t{2} * parameters.full_sarcomer : 1;
}

std::unique_ptr<FixedTimeStepMC> MCModel::create_stepper() const {
  if (!is_regulated()) {
    return std::make_unique<FixedTimeStepMC>(*model_slow, *model_fast, model_proteinC);
  }
  return std::make_unique<FixedTimeStepMCActiv>(require_active(model_slow, parameters.activation),
                                                require_active(model_fast, parameters.activation),
                                                model_proteinC);
}

void MCModel::add_filament(int direction) {
  if (!is_regulated()) {
    sarcomer->add_filament(
        new Filament(*geometry, *model_slow, *model_fast, *stepper, direction, sarcomer->titin()));
    return;
  }
  sarcomer->add_filament(
      new ActiveFilament(*geometry, *model_slow, *model_fast, *stepper, parameters.activation,
                         parameters.caActivationModelIndicator, parameters.healtyChainPercent,
                         direction, sarcomer->titin()));
}

bool MCModel::force_iter(double time, double value, double& displacement) {
  step(time, {Prescribed::Quantity::force, value});
  displacement = sarcomer->results().actin_displacement;
  return true;
}

bool MCModel::displacement_iter(double time, double value, double& force) {
  step(time, {Prescribed::Quantity::length, value});
  force = sarcomer->results().force;
  return true;
}

void MCModel::step(double time, Prescribed const& wanted) {
  stepper->begin_step(geometry->reach());
  sarcomer->state_change(time, currentTimeStep);
  sarcomer->set_boundary_mode(of_lattice(wanted));
  sarcomer->assemble_and_solve(time, true);
}

/// A protocol gives the length of one half-sarcomere and the force of one filament.
Prescribed MCModel::of_lattice(Prescribed const& wanted) const {
  if (!wanted.is_length()) return {wanted.quantity, parameters.filaments * wanted.value};
  return {wanted.quantity, static_cast<double>(in_series()) * wanted.value};
}

void MCModel::writeResults(double time) { sarcomer->create_output(time); }

void MCModel::write_cb_states(std::ofstream& stream) {
  sarcomer->write_cb_states(stream, static_cast<int>(model_slow->n_states()));
}

void MCModel::create_distribution_output(double time) { sarcomer->create_distributions(time); }

void MCModel::write_lattice(double time) {
  write_lattice_snapshot(sarcomer->all_filaments(), time);
}

void MCModel::calculate_stiffness(double time, double displacement) {
  sarcomer->set_boundary_mode(of_lattice({Prescribed::Quantity::length, displacement + 1.0}));
  sarcomer->assemble_and_solve(time, false);
}

void MCModel::printActinSiteStates() { sarcomer->create_actinSites_output(); }

void MCModel::check_before_run(double longest_step) const {
  double const reach = geometry->reach();
  model_slow->check_before_run({longest_step, reach, false, model_fast});
  model_fast->check_before_run({longest_step, reach, true, model_slow});
}

Extent_s MCModel::extent() const {
  Extent_s extent;
  extent.lattice = parameters.geometry;
  extent.regulation = parameters.activation;
  extent.filaments = parameters.filaments;
  extent.in_series = static_cast<unsigned>(in_series());
  for (auto const& filament : sarcomer->all_filaments()) {
    for (auto const& head : filament->data.heads)
      ++(head.is_myosin() ? extent.heads : extent.links);
  }
  return extent;
}
