// TPXBasAtiCondVarDefault.cpp: the auto-upgrading and the single-threaded condition variable.
#include "TPXBasAtiCondVarDefault.h"

#include "KLDTPXBasAssert.h"
#include "TPXBasAtiThreadFactory.h"

static constexpr const char kAssertPath[] = "TPXBase/TPXBasAti.m/src/TPXBasAtiCondVarDefault";

const char* const TPXBasAtiCondVarDefault::m_stringID = "AUTO_UPGRADING_CONDVAR";
const char* const TPXBasAtiCondVarSingle::m_stringID = "SINGLE_THREADED_CONDVAR";

TPXBasAtiCondVarDefault::~TPXBasAtiCondVarDefault() {
  m_link.Leave(this);
  delete m_condVar;
  m_condVar = nullptr;
}

void TPXBasAtiCondVarDefault::Lock() {
  KLD_ASSERT(m_condVar != 0);
  m_condVar->Lock();
}

void TPXBasAtiCondVarDefault::Unlock() {
  KLD_ASSERT(m_condVar != 0);
  m_condVar->Unlock();
}

void TPXBasAtiCondVarDefault::WaitForSignal(int arg) {
  KLD_ASSERT(m_condVar != 0);
  m_condVar->WaitForSignal(arg);
}

void TPXBasAtiCondVarDefault::Signal() {
  KLD_ASSERT(m_condVar != 0);
  m_condVar->Signal();
}

int TPXBasAtiCondVarDefault::id() const { return m_condVar != nullptr ? m_condVar->id() : 501; }

const char* TPXBasAtiCondVarDefault::AsString() const { return m_stringID; }

bool TPXBasAtiCondVarDefault::UpgradeYourself(TPXBasAtiThreadFactory* f) {
  KLD_ASSERT(f != 0);
  if (m_condVar != nullptr) return true;
  m_condVar = f->newCondVar();
  return m_condVar != nullptr;
}

void TPXBasAtiCondVarSingle::Lock() {}
void TPXBasAtiCondVarSingle::Unlock() {}
void TPXBasAtiCondVarSingle::WaitForSignal(int) {}
void TPXBasAtiCondVarSingle::Signal() {}
int TPXBasAtiCondVarSingle::id() const { return 502; }
const char* TPXBasAtiCondVarSingle::AsString() const { return m_stringID; }
