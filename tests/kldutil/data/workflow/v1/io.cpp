#include "KLDTPXBasCoreUtils.h"

atr_String Written(const char* file) {
  return atr("Results written to %s", file, TPXBasStringMode(false));
}

atr_String Again() {
  return atr_raw("Solver ready", TPXBasStringMode(false));
}
