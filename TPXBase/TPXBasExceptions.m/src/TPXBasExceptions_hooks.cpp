// TPXBasExceptions_hooks.cpp: initialise and finalise of the exceptions module.
#include "KLDTPXBasCoreUtils_Lifecycle.h"
#include "TPXBasExceptionModel.h"
#include "kld_ModuleHook.h"

#include <new>

namespace {
int g_count = 0;
}  // namespace

void TPXBasExceptions_initialize(int& tally) {
  if (!kld::EnterUnit(g_count, tally)) return;
  TPXBasExcDefaultFactory* factory = nullptr;
  try {
    factory = new TPXBasExcDefaultFactory;
  } catch (const std::bad_alloc&) {
    factory = nullptr;  // no factory: throwing through the model is then a caller error
  }
  try {
    TPXBasExceptionModel::setBehavior(factory);
  } catch (const std::bad_alloc&) {
    delete factory;  // the model itself could not be made; it is made on first use later
  }
}

void TPXBasExceptions_finalize(int& tally) {
  if (!kld::LeaveUnit(g_count, tally)) return;
  TPXBasExceptionModel::setBehavior(nullptr);
  omi_SingletonBase<TPXBasExceptionModelSingleton>::Finalize();
}
