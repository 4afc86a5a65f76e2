#include "support/small_lattice.h"

#include "base/run_state.h"
#include "lattice/geometry_vertebrae.h"
#include "mechanics/equilibrium.h"
#include "mechanics/titin_prestress.h"
#include "support/work_dir.h"

namespace {

char const* const geometry_settings =
    "myosin: myosin_offset=20 myosin_crowns=6 dx_myosin=10 e_mysoin=300 a_mysoin=10 "
    "slowHeads_percent=100 fastHeads_percent=0; actin: dx_actin=5 length_actin=100 e_actin1=200 "
    "a_actin1=10 e_actin2=260 a_actin2=10; titin: titin_length=10; protein-C: "
    "proteinCStartPosition=0 proteinCNumber=1";

}  // namespace

StrokeModel::StrokeModel(XB_Model* law, double stroke_of_2)
    : Model({law, ""}, 3), stroke(stroke_of_2) {
  attached[1] = attached[2] = true;
}

SmallLattice::SmallLattice(LatticeSettings const& wanted)
    : settings(wanted),
      filaments(wanted.full_sarcomer),
      see_law(wanted.see_stiffness),
      titin_law(wanted.titin_stiffness),
      see(see_law, wanted.see_damping, filaments),
      boundary(filaments, see),
      equilibrium(std::make_unique<Equilibrium>(parameter, filaments, see, boundary)) {
  currentTimeStep = step;
  write_settings("geom_vertebrae.prm", geometry_settings);
  geometry = std::make_unique<GeometryVertebrae>(GeometryParameter_s{});
  geometry->titin_enabled = wanted.titin_stiffness > 0.0 ? 1 : 0;
  geometry->proteinC_enabled = wanted.protein_c ? 1 : 0;
  if (geometry->titin_enabled == 1) {
    see.SetInitialPrescribedDisplacement(FindTitinForce(titin_law, *geometry));
  }
  stepper = std::make_unique<FixedTimeStepMC>(slow, fast, &protein_c);
  for (unsigned i = 0; i < wanted.filaments; ++i) {
    int const direction = wanted.full_sarcomer > 0 && i % 2 == 1 ? -1 : 1;
    filaments.add(
        std::make_unique<Filament>(*geometry, slow, fast, *stepper, direction, &titin_law));
  }
}

SmallLattice::~SmallLattice() = default;

MyosinHead_s& SmallLattice::bind(unsigned f, unsigned index, unsigned fibre, unsigned site,
                                 unsigned state, unsigned model) {
  FilamentData& data = filament(f).data;
  MyosinHead_s& head = data.heads[index];
  head.actin_fibre = fibre;
  head.actin_site = site;
  head.state = state;
  head.model_index = model;
  stepper->attach(data, head);
  data.attached.push_back(&head);
  filament(f).prepare_nodes();
  return head;
}

void SmallLattice::solve(Prescribed::Quantity quantity, double value) {
  boundary.set_boundary_mode({quantity, value});
  equilibrium->find(measured);
}

unsigned assemblies() { return static_cast<unsigned>(read_lines("SEE_velocity.csv").size()); }
