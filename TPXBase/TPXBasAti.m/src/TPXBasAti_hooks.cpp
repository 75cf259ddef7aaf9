// TPXBasAti_hooks.cpp: initialise and finalise of the threading module.
#include "KLDTPXBasCoreUtils_Lifecycle.h"
#include "TPXBasAtiGlobalLock.h"
#include "TPXBasAtiThreadingModel.h"
#include "kld_ModuleHook.h"

namespace {
int g_count = 0;
}  // namespace

void TPXBasAti_initialize(int& tally) {
  if (!kld::EnterUnit(g_count, tally)) return;
  TPXBasAtiGlobalLock::Initialize();
}

// Runs from the unload hook after the library's static objects are gone: the model and its
// factory are heap objects, and the global lock is plain static data that stays usable.
void TPXBasAti_finalize(int& tally) {
  if (!kld::LeaveUnit(g_count, tally)) return;
  TPXBasAtiThreadingModel::Finalize();
  TPXBasAtiGlobalLock::Finalize();
}
