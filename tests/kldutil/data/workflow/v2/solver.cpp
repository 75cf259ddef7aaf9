// A solver's start-up messages.
#include "KLDTPXBasCoreUtils.h"

atr_String MeshMessage(const char* file, int nodes) {
  return atr("Reading mesh %s (%d nodes)", file, nodes, TPXBasStringMode(false));
}

atr_String StepMessage(int step, double time) {
  return atr<int, double>("Step %d at time %g"
                          " seconds",
                          step, time, TPXBasStringMode(false));
}

atr_String Converged(int iterations) {
  return atr("Converged after %d iterations", iterations, TPXBasStringMode(false));
}
