// Tables over the strain for the atlas, in the working directory; tools/draw_atlas calls it.
//
//   atlas_tables models             the registered kinetic models, a name a line
//   atlas_tables model NAME FILE    rates.dat, states.dat, and energy.dat where the model has free
//                                   energies; prints the attached states
//   atlas_tables law NAME           law.dat: strain, stiffness, force, and energy where the law has
//                                   one; parameters from xb_NAME.prm

#include <deal.II/base/multithread_info.h>

#include <cstdio>
#include <set>
#include <string>

#include "base/diagnostics.h"
#include "base/output_file.h"
#include "base/run_state.h"
#include "elastic/XB_Models.h"
#include "elastic/create_law.h"
#include "kinetics/model_3state.h"
#include "kinetics/model_6state.h"
#include "kinetics/model_brek_atpase_fiber.h"
#include "kinetics/model_scheme.h"
#include "kinetics/model_util.h"
#include "kinetics/rate_tools.h"

namespace {

using Models = Factory<Model, ModelParameter_s>;

constexpr double first = -15.0;  // nm
constexpr double end = 15.0001;
constexpr double step = 0.05;

void list_models() {
  for (auto const& type : Models::instance().types()) std::printf("%s\n", type.first.c_str());
}

/// Writes the free energies if the model is of this class.
template <class Class>
void write_energies(Model const& model) {
  auto const* const states = dynamic_cast<Class const*>(&model);
  if (!states) return;
  write_strain_table("energy.dat", first, end, step, [&](FILE* file, double x) {
    for (unsigned s = 0; s < model.n_states(); ++s) std::fprintf(file, "%e ", states->get_G(x, s));
  });
}

void write_model(std::string const& name, std::string const& file) {
  XB_Model* const law = create_elastic_law("ConstantStiffness", "xb_");
  auto const model = create_component<Model>(name, ModelParameter_s{law, file}, "atlas", "model");
  ModelUtil::print_rates(*model, first, end, step);
  ModelUtil::print_states(*model, first, end, step);
  write_energies<Model3State>(*model);
  write_energies<Model6State>(*model);
  write_energies<ModelBrekAtpaseFiber>(*model);
  write_energies<ModelScheme>(*model);
  std::printf("attached:");
  for (unsigned s = 0; s < model->n_states(); ++s) {
    if (model->attached[s]) std::printf(" %u", s);
  }
  std::printf("\n");
}

void write_law(std::string const& name) {
  std::set<std::string> const without_energy = {"SigmoidalStiffness", "ThreeLinearForce"};
  XB_Model const* const law = create_elastic_law(name, "xb_");
  if (!law) stop(name + ": no elastic law");
  write_strain_table("law.dat", first, end, step, [&](FILE* file, double x) {
    std::fprintf(file, "%e %e", law->GetStiffness(x), law->GetForce(x));
    if (without_energy.count(name) == 0) std::fprintf(file, " %e", law->GetEnergy(x));
  });
}

}  // namespace

int main(int argc, char** argv) {
  dealii::MultithreadInfo::set_thread_limit(1);
  std::string const what = argc > 1 ? argv[1] : "";
  if (what == "models" && argc == 2) {
    list_models();
    return 0;
  }
  fOutputFile = open_output("TaveloOutput.lst", "wt");
  if (what == "model" && argc == 4) {
    write_model(argv[2], argv[3]);
  } else if (what == "law" && argc == 3) {
    write_law(argv[2]);
  } else {
    stop("usage: atlas_tables models | model NAME FILE | law NAME");
  }
  close_output(fOutputFile, "TaveloOutput.lst");
  return 0;
}
