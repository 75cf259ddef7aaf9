// KLDTPXBasCoreUtils_Lifecycle.cpp: nested initialise and finalise of the whole library.
#include "KLDTPXBasCoreUtils_Lifecycle.h"

#include "KLDTPXBasCoreUtilsC.h"
#include "TPXBasGenericsLib.h"
#include "TPXBasPrfTrkLib.h"
#include "kld_ModuleHook.h"
#include "mem_Alloc.h"

namespace {

// Plain integers, as the loader and the hosts serialise their calls.
int g_libraryCount = 0;
int g_specificCount = 0;
int g_loaderTally = 0;
int g_plainTally = 0;

}  // namespace

void TPXBasCoreUtils_initialize(int& tally) {
  if (!kld::EnterUnit(g_libraryCount, tally)) return;
  TPXBasPrfTrkLib_initialize(tally);
  TPXBasGenericsLib_initialize(tally);
  TPXBasAlloc_initialize(tally);
  TPXBasString_initialize(tally);
  TPXBasPrf_initialize(tally);
  TPXBasExceptions_initialize(tally);
  TPXBasCam_initialize(tally);
  TPXBasAtr_initialize(tally);
  TPXBasAti_initialize(tally);
  TPXBasAio_initialize(tally);
  // The specific count rises after the modules, so that a host's own specific initialise
  // made earlier keeps its tally contribution.
  TPXBasCoreUtils_specific_initialize(tally);
}

void TPXBasCoreUtils_finalize(int& tally) {
  if (!kld::LeaveUnit(g_libraryCount, tally)) return;
  // Released before the modules go, mirroring the initialise order above.
  TPXBasCoreUtils_specific_finalize(tally);
  TPXBasAio_finalize(tally);
  TPXBasAti_finalize(tally);
  TPXBasAtr_finalize(tally);
  TPXBasCam_finalize(tally);
  TPXBasExceptions_finalize(tally);
  TPXBasPrf_finalize(tally);
  TPXBasString_finalize(tally);
  TPXBasAlloc_finalize(tally);
  TPXBasGenericsLib_finalize(tally);
  TPXBasPrfTrkLib_finalize(tally);
}

void TPXBasCoreUtils_specific_initialize(int& tally) { kld::EnterUnit(g_specificCount, tally); }

void TPXBasCoreUtils_specific_finalize(int& tally) { kld::LeaveUnit(g_specificCount, tally); }

const char* TPXBasCoreUtils_version(void) { return KLDTPXBASCOREUTILS_VERSION; }

// The plain entry points are called from C: an exception (memory running out in a module's
// set-up) must not reach the caller's frames, so it stops here and the library stays as far
// as it got.
void TPXBasCoreUtils_initializeC(void) {
  try {
    TPXBasCoreUtils_initialize(g_plainTally);
  } catch (...) {
  }
}

void TPXBasCoreUtils_finalizeC(void) {
  try {
    TPXBasCoreUtils_finalize(g_plainTally);
  } catch (...) {
  }
}

int DllMain(void*, unsigned long reason, void*) {
  switch (reason) {
    case 1:  // process attach
      TPXBasCoreUtils_initialize(g_loaderTally);
      break;
    case 0:  // process detach
      TPXBasCoreUtils_finalize(g_loaderTally);
      break;
    default:  // 2 and 3, thread attach and detach: nothing to do
      break;
  }
  return 1;
}
