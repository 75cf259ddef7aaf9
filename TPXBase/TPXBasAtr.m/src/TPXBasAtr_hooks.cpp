// TPXBasAtr_hooks.cpp: initialise and finalise of the byte-string and translation module.
#include "KLDTPXBasCoreUtils_Lifecycle.h"
#include "kld_ModuleHook.h"

namespace {
int g_count = 0;
}  // namespace

void TPXBasAtr_initialize(int& tally) {
  if (!kld::EnterUnit(g_count, tally)) return;
  // Set-up: String statistics and the natural-order switch (added with the byte strings).
}

void TPXBasAtr_finalize(int& tally) {
  if (!kld::LeaveUnit(g_count, tally)) return;
  // Tear-down: Releases the dictionary, then reports and destroys the string statistics.
}
