// Would catch: a key without its row in docs/parameters, a row without its key, a wrong default.

#include <deal.II/base/parameter_handler.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "activation/activation_2s.h"
#include "activation/ca_activation_3x2s.h"
#include "activation/ca_activation_3x3s.h"
#include "activation/fchain_model.h"
#include "activation/kb_activation_extensible.h"
#include "activation/kb_activation_rigid.h"
#include "control/mcModelParameters.h"
#include "control/simulation.h"
#include "elastic/XB_Models.h"
#include "elastic/XB_StiffnessFunction.h"
#include "elastic/XB_TwoPartSigmoidalStiffness.h"
#include "kinetics/model_brek_atpase_fiber.h"
#include "kinetics/model_duke.h"
#include "kinetics/model_dukeMyBPC.h"
#include "kinetics/model_huxley.h"
#include "kinetics/model_huxleyMyBPC.h"
#include "kinetics/model_rombel.h"
#include "kinetics/model_tolen9_C3.h"
#include "kinetics/model_vorn.h"
#include "lattice/geometry_flight.h"
#include "lattice/geometry_simple.h"
#include "lattice/geometry_tolen.h"
#include "lattice/geometry_vertebrae.h"

namespace {

namespace fs = std::filesystem;

using Rows = std::map<std::string, std::string>;  // "section/key" to default

std::string trimmed(std::string const& text) {
  auto const first = text.find_first_not_of(" `");
  return first == std::string::npos ? ""
                                    : text.substr(first, text.find_last_not_of(" `") - first + 1);
}

template <class Component>
Rows declared() {
  dealii::ParameterHandler handler;
  Component::declare_parameters(handler);
  std::ostringstream text;
  handler.print_parameters(text, dealii::ParameterHandler::ShortText);
  std::istringstream lines(text.str());
  Rows rows;
  std::string section;
  for (std::string line; std::getline(lines, line);) {
    line = trimmed(line);
    if (line.rfind("subsection ", 0) == 0) section = line.substr(11);
    if (line.rfind("set ", 0) != 0) continue;
    auto const equals = line.find('=');
    rows[section + "/" + trimmed(line.substr(4, equals - 4))] = trimmed(line.substr(equals + 1));
  }
  return rows;
}

Rows documented(fs::path const& page) {
  std::ifstream file(page);
  Rows rows;
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("| ", 0) != 0 || line.find('`') == std::string::npos) continue;
    std::vector<std::string> cells;
    std::istringstream stream(line.substr(1));
    for (std::string cell; std::getline(stream, cell, '|');) cells.push_back(trimmed(cell));
    rows[cells.at(0) + "/" + cells.at(1)] = cells.at(2) == "(empty)" ? "" : cells.at(2);
  }
  return rows;
}

TEST(ParameterDocs, NameEveryKeyWithItsDefaultAndNoOther) {
  std::map<std::string, Rows> const pages = {
      {"simulation.md", declared<SimParameter>()},
      {"numeric_mc.md", declared<McModelParameters>()},
      {"geom_flight.md", declared<GeometryFlight>()},
      {"geom_simple.md", declared<GeometrySimple>()},
      {"geom_tolen.md", declared<GeometryTolen>()},
      {"geom_vertebrae.md", declared<GeometryVertebrae>()},
      {"model_brek_atpase_fiber.md", declared<ModelBrekAtpaseFiber>()},
      {"model_duke.md", declared<ModelDuke>()},
      {"model_dukeMyBPC.md", declared<ModelDukeMyBPC>()},
      {"model_huxley.md", declared<ModelHuxley>()},
      {"model_huxleyMyBPC.md", declared<ModelHuxleyMyBPC>()},
      {"model_rombel.md", declared<ModelRombel>()},
      {"model_vorn.md", declared<ModelVorn>()},
      {"model_tolen9_C3.md", declared<ModelTolen9_C3>()},
      {"mg_old.md", declared<FChainModel>()},
      {"ConstantStiffness.md", declared<XB_ConstantStiffness>()},
      {"SigmoidalStiffness.md", declared<XB_SigmoidalStiffness>()},
      {"StiffnessFunction.md", declared<XB_StiffnessFunction>()},
      {"ThreeLinearForce.md", declared<XB_ThreeLinearForce>()},
      {"TwoPartSigmoidalStiffness.md", declared<XB_TwoPartSigmoidalStiffness>()},
      {"activ_2s.md", declared<Activation2SModel>()},
      {"CaActivation3x3s.md", declared<CaActivation3x3SModel>()},
      {"CaActivation3x2s.md", declared<CaActivation3x2SModel>()},
      {"KbActivationRigid.md", declared<KbActivationModelR>()},
      {"KbActivationExtensible.md", declared<KbActivationModelE>()},
  };
  fs::path const docs = fs::path(TAVELO_SOURCE_DIR) / "docs" / "parameters";
  for (auto const& [page, rows] : pages) EXPECT_EQ(documented(docs / page), rows) << page;
  for (auto const& entry : fs::directory_iterator(docs)) {
    std::string const name = entry.path().filename().string();
    EXPECT_TRUE(name == "README.md" || pages.count(name)) << name << " has no declared keys";
  }
}

}  // namespace
