#include "bench_lattice.h"

#include <cstdlib>
#include <fstream>

#include "base/run_state.h"
#include "base/uniform_variate.h"
#include "elastic/create_law.h"
#include "kinetics/fixed_dt_mc.h"
#include "kinetics/model.h"
#include "lattice/geometry.h"
#include "mechanics/filament.h"
#include "mechanics/sarcomer.h"

namespace {

constexpr double dt = 0.0005;

/// Huxley's two states, with the same rates.
constexpr char const* huxley_scheme = R"toml(
name = "Huxley"
energy_per_ATP = 100
[parameters]
f1 = 10
g1 = 20
g2 = 200
h = 8
[[state]]
name = "detached"
attached = false
[[state]]
name = "attached"
attached = true
[[transition]]
from = "detached"
to = "attached"
rate = "x >= 0 && x < h ? f1 / h * x : 0"
site = ["on"]
binding = { constant = "f1", range = [0, "h"] }
fuel = true
[[transition]]
from = "attached"
to = "detached"
rate = "x < 0 ? g2 : g1 / h * x"
site = ["off"]
fuel = true
)toml";

void write_file(char const* name, char const* text) { std::ofstream(name) << text; }

void write_input() {
  write_file("Huxley.prm",
             "subsection huxley\nset f1=10\nset g1=20\nset g2=200\nset g3=1\nset h=8\nend\n");
  write_file("Scheme.prm", huxley_scheme);
  write_file("xb_ConstantStiffness.prm", "subsection ConstantStiffness\nset k=1.7\nend\n");
  write_file("see_ConstantStiffness.prm", "subsection ConstantStiffness\nset k=60\nend\n");
  write_file("geom_vertebrae.prm", "");
  for (std::string const lattice : {"simple", "flight", "tolen"}) {
    write_file(("geom_" + lattice + ".prm").c_str(),
               "subsection see\nset see_stiffness=ConstantStiffness\nend\n");
  }
  write_file("model_huxleyMyBPC.prm", "");
  write_file("model_dukeMyBPC.prm", "");
  write_file("ca_protocol.dat", "0 1 0 0 1e-5\n");
}

}  // namespace

BenchLattice::BenchLattice(unsigned n_filaments, std::string const& name,
                           std::string const& lattice_name)
    : model_name(name), home(std::filesystem::current_path()) {
  std::string pattern = (std::filesystem::temp_directory_path() / "tavelo-bench-XXXXXX").string();
  directory = mkdtemp(pattern.data());
  std::filesystem::current_path(directory);
  listing = fOutputFile = std::fopen("TaveloOutput.lst", "wt");
  if (!std::freopen("stdout.txt", "w", stdout)) std::abort();
  write_file((model_name + ".prm").c_str(), "");
  write_input();
  seed_variates(1);
  currentTimeStep = dt;
  timeForAll = 1.0;  // beyond the time of the filtered diagnostics
  law = create_elastic_law("ConstantStiffness", "xb_");
  model = make_model();
  geometry = create_component<Geometry>(lattice_name, GeometryParameter_s{}, "bench", "geometry");
  stepper = std::make_unique<FixedTimeStepMC>(*model, *model, nullptr);
  sarcomer = std::make_unique<Sarcomer>(parameter, *geometry);
  for (unsigned i = 0; i < n_filaments; ++i) {
    sarcomer->add_filament(new Filament(*geometry, *model, *model, *stepper, 1, nullptr));
  }
}

BenchLattice::~BenchLattice() {
  std::fclose(listing);
  if (fOutputFile == listing) fOutputFile = nullptr;
  std::filesystem::current_path(home);
  std::filesystem::remove_all(directory);
}

std::unique_ptr<Model> BenchLattice::make_model() const {
  return create_component<Model>(model_name, ModelParameter_s{law, model_name + ".prm"}, "bench",
                                 "model");
}

void BenchLattice::step() {
  state_change();
  solve();
  output();
}

void BenchLattice::state_change() {
  stepper->begin_step(geometry->reach());
  sarcomer->state_change(timeForAll, dt);
}

void BenchLattice::solve() {
  sarcomer->set_boundary_mode({Prescribed::Quantity::length, 0.0});
  sarcomer->assemble_and_solve(timeForAll, true);
}

void BenchLattice::output() { sarcomer->create_output(timeForAll); }

unsigned BenchLattice::n_heads() const {
  unsigned n = 0;
  for (auto const& filament : sarcomer->all_filaments()) {
    n += static_cast<unsigned>(filament->data.heads.size());
  }
  return n;
}
