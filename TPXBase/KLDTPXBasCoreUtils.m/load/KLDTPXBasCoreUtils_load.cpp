// KLDTPXBasCoreUtils_load.cpp: the shared library's load and unload hooks.
//
// This file is linked last into the library. Constructors of one shared object run in link
// order, so every static object of the library (the standard streams among them) is built
// before the load hook initialises the modules. At exit, the static objects' destructors run
// before the unload hook: tear-downs use heap objects and the C runtime only.
#include "KLDTPXBasCoreUtilsC.h"

namespace {

__attribute__((constructor)) void KldOnLoad() { DllMain(nullptr, 1, nullptr); }

__attribute__((destructor)) void KldOnUnload() { DllMain(nullptr, 0, nullptr); }

}  // namespace
