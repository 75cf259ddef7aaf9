// TPXBasAio_hooks.cpp: initialise and finalise of the stream I/O module.
#include "KLDTPXBasCoreUtils_Lifecycle.h"
#include "aio_stdstreams.h"
#include "kld_ModuleHook.h"

#include <cstdio>

namespace {
int g_count = 0;
}  // namespace

// The standard objects are constant-initialised, so they exist before the load hook runs.
// Attached not owned: the library never closes the process's standard files.
void TPXBasAio_initialize(int& tally) {
  if (!kld::EnterUnit(g_count, tally)) return;
  aio_cin.attach(stdin, false);
  aio_cout.attach(stdout, false);
  aio_cerr.attach(stderr, false);
}

// The standard objects stay attached: tear-downs of the modules finalised after this one, and
// code running after the unload hook, may still write to aio_cerr.
void TPXBasAio_finalize(int& tally) {
  if (!kld::LeaveUnit(g_count, tally)) return;
}
