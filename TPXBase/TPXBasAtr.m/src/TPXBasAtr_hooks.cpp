// TPXBasAtr_hooks.cpp: initialise and finalise of the byte-string and translation module.
#include "KLDTPXBasCoreUtils_Lifecycle.h"
#include "atr_NatOrder.h"
#include "atr_StringBase.h"
#include "atr_TemplateCache.h"
#include "atr_tr.h"
#include "kld_ModuleHook.h"

#include <cstdlib>

namespace {
int g_count = 0;
}  // namespace

void TPXBasAtr_initialize(int& tally) {
  if (!kld::EnterUnit(g_count, tally)) return;
  // Set-up: String statistics and the natural-order switch (added with the byte strings).
  atr_StringBase::Initialize();
  // Natural order is on unless KLD_USE_NATURAL_ORDER_SORT exists, whatever its value.
  atr_setNaturalOrder(std::getenv("KLD_USE_NATURAL_ORDER_SORT") ? 0 : 1);
}

void TPXBasAtr_finalize(int& tally) {
  if (!kld::LeaveUnit(g_count, tally)) return;
  // Tear-down: Releases the dictionary, then reports and destroys the string statistics.
  atr_trReleaseDB();
  atr_TemplateCache::Clear();  // this thread's kept templates; other threads free theirs at exit
  atr_StringBase::Finalize();
}
