#include "elastic/create_law.h"

#include <map>
#include <memory>
#include <vector>

#include "base/diagnostics.h"
#include "elastic/XB_Models.h"
#include "elastic/XB_StiffnessFunction.h"
#include "elastic/XB_TwoPartSigmoidalStiffness.h"

namespace {

template <class Law>
std::unique_ptr<XB_Model> create(std::string const& file_name) {
  return std::make_unique<Law>(file_name);
}

}  // namespace

XB_Model* create_elastic_law(std::string const& name, std::string const& prefix) {
  using Creator = std::unique_ptr<XB_Model> (*)(std::string const&);
  static std::map<std::string, Creator> const creators = {
      {"ConstantStiffness", create<XB_ConstantStiffness>},
      {"SigmoidalStiffness", create<XB_SigmoidalStiffness>},
      {"StiffnessFunction", create<XB_StiffnessFunction>},
      {"ThreeLinearForce", create<XB_ThreeLinearForce>},
      {"TwoPartSigmoidalStiffness", create<XB_TwoPartSigmoidalStiffness>},
  };
  static std::vector<std::unique_ptr<XB_Model>> laws;
  auto const found = creators.find(name);
  if (found == creators.end()) return nullptr;
  laws.push_back(found->second(prefix + name + ".prm"));
  return laws.back().get();
}

XB_Model* create_passive_law(std::string const& name, std::string const& prefix) {
  XB_Model* const law = create_elastic_law(name, prefix);
  if (law && law->GetStiffness(0.0) < 0.0) {
    refuse(law->file_name, "the stiffness without extension", shown(law->GetStiffness(0.0)),
           "a number of at least 0");
  }
  return law;
}
