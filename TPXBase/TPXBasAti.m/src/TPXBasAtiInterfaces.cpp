// TPXBasAtiInterfaces.cpp: out-of-line parts of the threading interfaces.
#include "TPXBasAtiAtomicTemplate.h"
#include "TPXBasAtiBarrier.h"
#include "TPXBasAtiCondVar.h"
#include "TPXBasAtiMutex.h"
#include "TPXBasAtiThreadFactory.h"
#include "TPXBasAtiThreadTask.h"

// Each interface's vtable and type identity are emitted here, once for every client.
TPXBasAtiMutex::~TPXBasAtiMutex() {}
int TPXBasAtiMutex::id() const { return 111; }

TPXBasAtiCondVar::~TPXBasAtiCondVar() {}
int TPXBasAtiCondVar::id() const { return 500; }

TPXBasAtiBarrier::~TPXBasAtiBarrier() {}
int TPXBasAtiBarrier::id() const { return 301; }

TPXBasAtiThreadTask::~TPXBasAtiThreadTask() {}

const char* const TPXBasAtiThreadFactory::stringID = "DEFAULT_NO_THREADS";
TPXBasAtiThreadFactory::~TPXBasAtiThreadFactory() {}
const char* TPXBasAtiThreadFactory::AsString() const { return stringID; }
bool TPXBasAtiThreadFactory::UpgradeAllIssuedPrimitives(TPXBasAtiThreadFactory*) { return true; }

template class TPXBasAtiAtomicTemplate<int>;
template class TPXBasAtiAtomicTemplate<unsigned int>;
template class TPXBasAtiAtomicTemplate<double>;
