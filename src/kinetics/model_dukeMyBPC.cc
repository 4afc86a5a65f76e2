#include "kinetics/model_dukeMyBPC.h"

#include <cstdio>

REGISTER_MODEL(ModelDukeMyBPC, "DukeMyBPC");

ModelDukeMyBPC::ModelDukeMyBPC(ModelParameter_s const& parameter) : DukeCycle(parameter) {
  std::printf("<<<<<<<<<<<<<<<<<<<<<<DukeMyBPC>>>>>>>>>>>>>>>>>>>>>>>> \n");
  rate_type = {{{0, 1, 0}, {2, 0, 0}, {0, 0, 0}}};
  set_up("model_dukeMyBPC.prm");
}
