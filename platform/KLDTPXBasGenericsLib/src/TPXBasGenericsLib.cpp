// TPXBasGenericsLib.cpp: counting initialise and finalise of the stand-in sibling library.
#include "TPXBasGenericsLib.h"

namespace {
int g_count = 0;
}

void TPXBasGenericsLib_initialize(int& tally) {
  if (g_count++ == 0) ++tally;
}

void TPXBasGenericsLib_finalize(int& tally) {
  if (--g_count == 0) --tally;
}
