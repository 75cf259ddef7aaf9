// TPXBasAtiGlobalLock.cpp: the process-wide recursive lock of global singletons.
#include "TPXBasAtiGlobalLock.h"

#include "KLDTPXBasAssert.h"

#include <pthread.h>

static constexpr const char kAssertPath[] = "TPXBase/TPXBasAti.m/src/TPXBasAtiGlobalLock";

namespace {
// Statically initialised, with no constructor or destructor: the lock works before any C++
// static object is built and after all of them are destroyed (the unload hook's tear-downs
// take it), and it is never released.
pthread_mutex_t g_lock = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
}  // namespace

void* TPXBasAtiGlobalLock::m_lock = nullptr;

void TPXBasAtiGlobalLock::Initialize() { m_lock = &g_lock; }

void TPXBasAtiGlobalLock::Finalize() {}

void TPXBasAtiGlobalLock::Lock() {
  KLD_ASSERT(m_lock != 0);
  pthread_mutex_lock(static_cast<pthread_mutex_t*>(m_lock));
}

void TPXBasAtiGlobalLock::Unlock() {
  KLD_ASSERT(m_lock != 0);
  pthread_mutex_unlock(static_cast<pthread_mutex_t*>(m_lock));
}

TPXBasAtiGlobalLock::TPXBasAtiGlobalLock() { Lock(); }

TPXBasAtiGlobalLock::~TPXBasAtiGlobalLock() { Unlock(); }
