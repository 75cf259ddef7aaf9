// TPXBasAtiBarrierDefault.cpp: the auto-upgrading and the single-threaded barrier.
#include "TPXBasAtiBarrierDefault.h"

#include "KLDTPXBasAssert.h"
#include "TPXBasAtiThreadFactory.h"

static constexpr const char kAssertPath[] = "TPXBase/TPXBasAti.m/src/TPXBasAtiBarrierDefault";

TPXBasAtiBarrierDefault::~TPXBasAtiBarrierDefault() {
  m_link.Leave(this);
  delete m_delegate;
  m_delegate = nullptr;
}

void TPXBasAtiBarrierDefault::BarrierSync(unsigned int n) {
  if (m_delegate != nullptr) m_delegate->BarrierSync(n);
}

int TPXBasAtiBarrierDefault::id() const { return m_delegate != nullptr ? m_delegate->id() : 303; }

bool TPXBasAtiBarrierDefault::UpgradeYourself(TPXBasAtiThreadFactory* f) {
  KLD_ASSERT(f);
  if (m_delegate != nullptr) return true;
  m_delegate = f->newBarrier();
  return m_delegate != nullptr;
}

void TPXBasAtiBarrierSingle::BarrierSync(unsigned int) {}
int TPXBasAtiBarrierSingle::id() const { return 302; }
