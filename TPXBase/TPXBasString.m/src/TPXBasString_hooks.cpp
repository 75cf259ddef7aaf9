// TPXBasString_hooks.cpp: initialise and finalise of the Unicode-string module.
#include "KLDTPXBasCoreUtils_Lifecycle.h"
#include "TPXOsConverter.h"
#include "kld_ModuleHook.h"

#include <clocale>

namespace {
int g_count = 0;
bool g_localeSet = false;  // whether this module has set the process's LC_CTYPE locale
}  // namespace

void TPXBasString_initialize(int& tally) {
  if (!kld::EnterUnit(g_count, tally)) return;
  // The allocation library converts its own names with the library's converter, which
  // lives until the process exits: a finalise leaves it registered.
  kld::RegisterOsConverter();
  if (!g_localeSet) {
    // Character classification follows the user's environment.
    std::setlocale(LC_CTYPE, "");
    g_localeSet = true;
  }
}

void TPXBasString_finalize(int& tally) {
  if (!kld::LeaveUnit(g_count, tally)) return;
  g_localeSet = false;  // a later first initialise sets the locale again
}
