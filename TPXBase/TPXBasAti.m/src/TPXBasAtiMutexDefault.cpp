// TPXBasAtiMutexDefault.cpp: the auto-upgrading and the single-threaded mutex.
#include "TPXBasAtiMutexDefault.h"

#include "KLDTPXBasAssert.h"
#include "TPXBasAtiThreadFactory.h"

static constexpr const char kAssertPath[] = "TPXBase/TPXBasAti.m/src/TPXBasAtiMutexDefault";

const char* const TPXBasAtiMutexDefault::m_stringID = "AUTO_UPGRADING_MUTEX";
const char* const TPXBasAtiMutexSingle::m_stringID = "SINGLE_THREADED_MUTEX";

TPXBasAtiMutexDefault::~TPXBasAtiMutexDefault() {
  m_link.Leave(this);
  delete m_delegate;
  m_delegate = nullptr;
}

// The placeholder path falls straight through to the return: before the switch a lock costs
// little more than the call itself; after it, the real lock dominates anyway.
void TPXBasAtiMutexDefault::Lock() {
  if (__builtin_expect(m_delegate == nullptr, 1)) return;
  m_delegate->Lock();
}

void TPXBasAtiMutexDefault::Unlock() {
  if (__builtin_expect(m_delegate == nullptr, 1)) return;
  m_delegate->Unlock();
}

int TPXBasAtiMutexDefault::TryLock() { return m_delegate != nullptr ? m_delegate->TryLock() : 1; }

int TPXBasAtiMutexDefault::id() const { return m_delegate != nullptr ? m_delegate->id() : 200; }

const char* TPXBasAtiMutexDefault::AsString() const { return m_stringID; }

bool TPXBasAtiMutexDefault::UpgradeYourself(TPXBasAtiThreadFactory* f) {
  KLD_ASSERT(f != 0);
  // A second upgrade keeps the lock it has: replacing it could drop a lock that is held.
  if (m_delegate != nullptr) return true;
  m_delegate = f->newMutex();
  return m_delegate != nullptr;
}

void TPXBasAtiMutexSingle::Lock() {}
void TPXBasAtiMutexSingle::Unlock() {}
int TPXBasAtiMutexSingle::TryLock() { return 1; }
int TPXBasAtiMutexSingle::id() const { return 112; }
const char* TPXBasAtiMutexSingle::AsString() const { return m_stringID; }
