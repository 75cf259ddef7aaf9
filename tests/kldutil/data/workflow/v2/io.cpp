#include "KLDTPXBasCoreUtils.h"

atr_String Written(const char* file, int bytes) {
  return atr("Results written to %s (%d bytes)", file, bytes, TPXBasStringMode(false));
}
