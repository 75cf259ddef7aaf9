// TPXBasExceptions_hooks.cpp: initialise and finalise of the exceptions module.
#include "KLDTPXBasCoreUtils_Lifecycle.h"
#include "kld_ModuleHook.h"

namespace {
int g_count = 0;
}  // namespace

void TPXBasExceptions_initialize(int& tally) {
  if (!kld::EnterUnit(g_count, tally)) return;
  // Set-up: Installs the default exception factory (added with the exception classes).
}

void TPXBasExceptions_finalize(int& tally) {
  if (!kld::LeaveUnit(g_count, tally)) return;
  // Tear-down: Uninstalls the factory and destroys the exception model (added with the exception
  // classes).
}
