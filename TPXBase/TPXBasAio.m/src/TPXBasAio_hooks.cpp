// TPXBasAio_hooks.cpp: initialise and finalise of the stream I/O module.
#include "KLDTPXBasCoreUtils_Lifecycle.h"
#include "kld_ModuleHook.h"

namespace {
int g_count = 0;
}  // namespace

void TPXBasAio_initialize(int& tally) {
  if (!kld::EnterUnit(g_count, tally)) return;
  // Set-up: Attaches aio_cin, aio_cout and aio_cerr (added with the streams).
}

void TPXBasAio_finalize(int& tally) {
  if (!kld::LeaveUnit(g_count, tally)) return;
  // Tear-down: Nothing beyond counting.
}
