// TPXBasAtiSingleThreadFact.cpp: the single-threaded thread factory.
#include "TPXBasAtiSingleThreadFact.h"

#include "TPXBasAtiBarrierDefault.h"
#include "TPXBasAtiCondVarDefault.h"
#include "TPXBasAtiMutexDefault.h"

const char* const TPXBasAtiSingleThreadFact::stringID = "SINGLE_THREADED";

TPXBasAtiSingleThreadFact::~TPXBasAtiSingleThreadFact() {}

TPXBasAtiAtomicTemplate<unsigned int>* TPXBasAtiSingleThreadFact::newAtomic(
    unsigned int initial) const {
  return new TPXBasAtiAtomicTemplate<unsigned int>(initial);
}

TPXBasAtiMutex* TPXBasAtiSingleThreadFact::newMutex() const { return new TPXBasAtiMutexSingle; }

TPXBasAtiCondVar* TPXBasAtiSingleThreadFact::newCondVar() const {
  return new TPXBasAtiCondVarSingle;
}

TPXBasAtiBarrier* TPXBasAtiSingleThreadFact::newBarrier() const {
  return new TPXBasAtiBarrierSingle;
}

void TPXBasAtiSingleThreadFact::ReadWriteMemoryBarrier() const {}
void TPXBasAtiSingleThreadFact::WriteMemoryBarrier() const {}
void TPXBasAtiSingleThreadFact::ReadMemoryBarrier() const {}
void TPXBasAtiSingleThreadFact::Relinquish() const {}
bool TPXBasAtiSingleThreadFact::multiThread() const { return false; }
const char* TPXBasAtiSingleThreadFact::AsString() const { return stringID; }

// The caller hands back a mutex it no longer uses: destroying it is what keeps it from
// leaking, whichever factory issued it.
void TPXBasAtiSingleThreadFact::deleteMutex(TPXBasAtiMutex* m) { delete m; }
