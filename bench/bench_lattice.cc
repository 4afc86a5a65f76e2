#include "bench_lattice.h"

#include <cstdlib>
#include <fstream>

#include "control/run_state.h"
#include "elastic/XB_Models.h"
#include "kinetics/fixed_dt_mc.h"
#include "kinetics/model_huxley.h"
#include "lattice/geometry_vertebrae.h"
#include "mechanics/filament.h"
#include "mechanics/sarcomer.h"

namespace {

constexpr double dt = 0.0005;

void write_file(char const* name, char const* text) { std::ofstream(name) << text; }

void write_input() {
  write_file("huxley.prm",
             "subsection huxley\nset f1=10\nset g1=20\nset g2=200\nset g3=1\nset h=8\nend\n");
  write_file("xb_ConstantStiffness.prm", "subsection ConstantStiffness\nset k=1.7\nend\n");
  write_file("see_ConstantStiffness.prm", "subsection ConstantStiffness\nset k=60\nend\n");
  write_file("geom_vertebrae.prm", "");
}

}  // namespace

BenchLattice::BenchLattice(unsigned n_filaments) : home(std::filesystem::current_path()) {
  std::string pattern = (std::filesystem::temp_directory_path() / "tavelo-bench-XXXXXX").string();
  directory = mkdtemp(pattern.data());
  std::filesystem::current_path(directory);
  fOutputFile = std::fopen("TaveloOutput.lst", "wt");
  if (!std::freopen("stdout.txt", "w", stdout)) std::abort();
  write_input();
  std::srand(1);
  currentTimeStep = dt;
  timeForAll = 1.0;  // beyond the time of the filtered diagnostics
  XB_Model* const law = create_elastic_law("ConstantStiffness", "xb_");
  model = std::make_unique<ModelHuxley>(ModelParameter_s{law, "huxley.prm"});
  geometry = std::make_unique<GeometryVertebrae>(GeometryParameter_s{});
  stepper = std::make_unique<FixedTimeStepMC>(*model, *model, dt, nullptr);
  sarcomer = std::make_unique<Sarcomer>(parameter, *geometry);
  for (unsigned i = 0; i < n_filaments; ++i) {
    sarcomer->add_filament(new Filament(*geometry, *model, *model, *stepper, 1, nullptr));
  }
}

BenchLattice::~BenchLattice() {
  std::fclose(fOutputFile);
  fOutputFile = nullptr;
  std::filesystem::current_path(home);
  std::filesystem::remove_all(directory);
}

void BenchLattice::step() {
  state_change();
  solve();
  output();
}

void BenchLattice::state_change() { sarcomer->state_change(timeForAll, dt); }

void BenchLattice::solve() {
  sarcomer->set_boundary_mode(0, 0.0);
  sarcomer->assemble_and_solve(timeForAll, true);
}

void BenchLattice::output() { sarcomer->create_output(timeForAll); }

unsigned BenchLattice::n_heads() const {
  unsigned n = 0;
  for (auto const& filament : sarcomer->filaments) {
    n += static_cast<unsigned>(filament->data.heads.size());
  }
  return n;
}
