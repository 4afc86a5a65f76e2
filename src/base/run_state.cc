#include "base/run_state.h"

FILE* fOutputFile = nullptr;
FILE* fIterationNorms = nullptr;
FILE* fConvergenceListing = nullptr;

int t_timeStep = 0;
double timeForAll = 0.0;
double currentTimeStep = 0.0;

bool refuses_missing_parameters = false;
bool discards_outputs = false;

int numberOfAtachments = 0;
int numberOfDetachments = 0;

RunFacts_s run_facts;

void advance_clock(double step) {
  ++t_timeStep;
  currentTimeStep = step;
  timeForAll += step;
}
