// TPXBasAtiDefaultThreadFact.cpp: the default (auto-upgrading) thread factory.
#include "TPXBasAtiDefaultThreadFact.h"

#include "KLDTPXBasAssert.h"
#include "TPXBasAtiAtomicDefault.h"
#include "TPXBasAtiBarrierDefault.h"
#include "TPXBasAtiCondVarDefault.h"
#include "TPXBasAtiMutexDefault.h"

static constexpr const char kAssertPath[] = "TPXBase/TPXBasAti.m/src/TPXBasAtiDefaultThreadFact";

const char* const TPXBasAtiDefaultThreadFact::m_stringID = "AUTO_UPGRADING";

namespace {

// Registers a new placeholder; if the registry cannot grow, the placeholder is destroyed
// and the allocation failure goes on to the caller, so nothing leaks.
template <class Primitive>
Primitive* Enrol(TPXBasAtiRegistry& registry, Primitive* p, TPXBasAtiRegistryLink& link) {
  try {
    registry.Register(p, link);
  } catch (...) {
    delete p;
    throw;
  }
  return p;
}

}  // namespace

TPXBasAtiDefaultThreadFact::~TPXBasAtiDefaultThreadFact() {}

TPXBasAtiAtomicTemplate<unsigned int>* TPXBasAtiDefaultThreadFact::newAtomic(
    unsigned int initial) const {
  TPXBasAtiAtomicDefault* a = new TPXBasAtiAtomicDefault(initial);
  KLD_ASSERT(a);
  return a;
}

TPXBasAtiMutex* TPXBasAtiDefaultThreadFact::newMutex() const {
  TPXBasAtiMutexDefault* m = new TPXBasAtiMutexDefault;
  KLD_ASSERT(m);
  return Enrol(m_registry, m, m->m_link);
}

TPXBasAtiCondVar* TPXBasAtiDefaultThreadFact::newCondVar() const {
  TPXBasAtiCondVarDefault* m = new TPXBasAtiCondVarDefault;
  KLD_ASSERT(m);
  return Enrol(m_registry, m, m->m_link);
}

TPXBasAtiBarrier* TPXBasAtiDefaultThreadFact::newBarrier() const {
  TPXBasAtiBarrierDefault* b = new TPXBasAtiBarrierDefault;
  KLD_ASSERT(b);
  return Enrol(m_registry, b, b->m_link);
}

void TPXBasAtiDefaultThreadFact::ReadWriteMemoryBarrier() const {}
void TPXBasAtiDefaultThreadFact::WriteMemoryBarrier() const {}
void TPXBasAtiDefaultThreadFact::ReadMemoryBarrier() const {}
void TPXBasAtiDefaultThreadFact::Relinquish() const {}
bool TPXBasAtiDefaultThreadFact::multiThread() const { return false; }
const char* TPXBasAtiDefaultThreadFact::AsString() const { return m_stringID; }

bool TPXBasAtiDefaultThreadFact::UpgradeAllIssuedPrimitives(TPXBasAtiThreadFactory* f) {
  KLD_ASSERT(f != 0);
  bool result = true;
  TPXBasAtiRegistryIterator it(m_registry);
  for (it.First(); !it.IsDone(); it.Next()) {
    if (TPXBasAtiUpgradable* entry = it.CurrentValue()) {
      const bool upgraded = entry->UpgradeYourself(f);  // every entry, even after a failure
      result = result && upgraded;
    }
  }
  return result;
}

void TPXBasAtiDefaultThreadFact::deleteMutex(TPXBasAtiMutex* m) {
  TPXBasAtiMutexDefault* cast = dynamic_cast<TPXBasAtiMutexDefault*>(m);
  m_registry.Expunge(cast);
  if (cast != nullptr) delete cast;
}

void TPXBasAtiDefaultThreadFact::deleteMutex(TPXBasAtiMutexDefault* m) { m_registry.Delete(m); }
