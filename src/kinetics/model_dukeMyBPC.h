#pragma once
/// Duke's cycle for a protein-C link to actin, with the stroke switched off: detached (0) and bound
/// (1). State 2 can't be reached.
///
/// Law:     binding and its reverse as in ModelDuke
///
/// Always reads "model_dukeMyBPC.prm".

#include "kinetics/model_duke.h"

class ModelDukeMyBPC : public DukeCycle {
 public:
  explicit ModelDukeMyBPC(ModelParameter_s const& parameter);
};
