#pragma once
/// The kinetic models of a run, one for each kind of head.

#include "records/filament_data.h"

class Model;

/// None of them is owned.
struct HeadModels {
  Model const* slow;
  Model const* fast;
  Model const* protein_c;  ///< null where no head is of that kind

  Model const& of(MyosinHead_s const& head) const {
    switch (head.kind()) {
      case HeadKind::slow:
        return *slow;
      case HeadKind::fast:
        return *fast;
      case HeadKind::protein_c:
        break;
    }
    return *protein_c;
  }
};
