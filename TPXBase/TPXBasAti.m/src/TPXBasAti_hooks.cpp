// TPXBasAti_hooks.cpp: initialise and finalise of the threading module.
#include "KLDTPXBasCoreUtils_Lifecycle.h"
#include "kld_ModuleHook.h"

namespace {
int g_count = 0;
}  // namespace

void TPXBasAti_initialize(int& tally) {
  if (!kld::EnterUnit(g_count, tally)) return;
  // Set-up: Creates the global lock (added with the threading module).
}

void TPXBasAti_finalize(int& tally) {
  if (!kld::LeaveUnit(g_count, tally)) return;
  // Tear-down: Destroys the threading model, then the global lock.
}
