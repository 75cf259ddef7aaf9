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

// The placeholder path only counts its holds: before the switch a lock costs little more
// than the call itself; after it, the real lock dominates anyway.
void TPXBasAtiMutexDefault::Lock() {
  if (__builtin_expect(m_delegate == nullptr, 1)) {
    ++m_held;
    return;
  }
  m_delegate->Lock();
}

// After the switch, holds carried over from the placeholder are given back one by one, and
// only the last one unlocks the real mutex; m_held then changes only under that mutex.
void TPXBasAtiMutexDefault::Unlock() {
  if (__builtin_expect(m_delegate == nullptr, 1)) {
    --m_held;
    return;
  }
  if (__builtin_expect(m_held > 0, 0) && --m_held > 0) return;
  m_delegate->Unlock();
}

int TPXBasAtiMutexDefault::TryLock() {
  if (m_delegate != nullptr) return m_delegate->TryLock();
  ++m_held;
  return 1;
}

int TPXBasAtiMutexDefault::id() const { return m_delegate != nullptr ? m_delegate->id() : 200; }

const char* TPXBasAtiMutexDefault::AsString() const { return m_stringID; }

// The switch happens while the process is single-threaded, in the thread that holds any held
// placeholder: that thread takes the real mutex, so its unlocks after the switch release a
// mutex that really is locked.
bool TPXBasAtiMutexDefault::UpgradeYourself(TPXBasAtiThreadFactory* f) {
  KLD_ASSERT(f != 0);
  // A second upgrade keeps the lock it has: replacing it could drop a lock that is held.
  if (m_delegate != nullptr) return true;
  TPXBasAtiMutex* real = f->newMutex();
  if (real == nullptr) return false;
  if (m_held > 0)
    real->Lock();
  else
    m_held = 0;  // more unlocks than locks before the switch carry nothing over
  m_delegate = real;
  return true;
}

void TPXBasAtiMutexSingle::Lock() {}
void TPXBasAtiMutexSingle::Unlock() {}
int TPXBasAtiMutexSingle::TryLock() { return 1; }
int TPXBasAtiMutexSingle::id() const { return 112; }
const char* TPXBasAtiMutexSingle::AsString() const { return m_stringID; }
