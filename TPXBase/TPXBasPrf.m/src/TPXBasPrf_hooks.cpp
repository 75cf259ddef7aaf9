// TPXBasPrf_hooks.cpp: initialise and finalise of the profiling module.
#include "KLDTPXBasCoreUtils_Lifecycle.h"
#include "kld_ModuleHook.h"

namespace {
int g_count = 0;
}  // namespace

void TPXBasPrf_initialize(int& tally) {
  if (!kld::EnterUnit(g_count, tally)) return;
  // Set-up: Nothing beyond counting.
}

void TPXBasPrf_finalize(int& tally) {
  if (!kld::LeaveUnit(g_count, tally)) return;
  // Tear-down: Nothing beyond counting.
}
