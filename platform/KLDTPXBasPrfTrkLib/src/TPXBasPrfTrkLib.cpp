// TPXBasPrfTrkLib.cpp: counting initialise and finalise of the stand-in sibling library.
#include "TPXBasPrfTrkLib.h"

namespace {
int g_count = 0;
}

void TPXBasPrfTrkLib_initialize(int& tally) {
  if (g_count++ == 0) ++tally;
}

void TPXBasPrfTrkLib_finalize(int& tally) {
  if (--g_count == 0) --tally;
}
