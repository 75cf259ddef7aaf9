// TPXBasCam_hooks.cpp: initialise and finalise of the cache-manager module.
#include "KLDTPXBasCoreUtils_Lifecycle.h"
#include "TPXBasCamCacheManager.h"
#include "kld_ModuleHook.h"

namespace {
int g_count = 0;
}  // namespace

void TPXBasCam_initialize(int& tally) {
  if (!kld::EnterUnit(g_count, tally)) return;
  // Nothing beyond counting: the cache manager is created on first use.
}

// The size recorder and the allocation holder belong to their clients and stay.
void TPXBasCam_finalize(int& tally) {
  if (!kld::LeaveUnit(g_count, tally)) return;
  TPXBasAtiGlobalSingleton<TPXBasCamCacheManager>::Finalize();
}
