// TPXBasAtiThreadingModel.cpp: the threading model and its static facade.
#include "TPXBasAtiThreadingModel.h"

#include "TPXBasAtiDefaultThreadFact.h"
#include "omi_SingletonRegistry.h"

#include <cstdio>
#include <typeinfo>

template class omi_SingletonBase<TPXBasAtiModelSingleton>;
template class omi_Singleton<TPXBasAtiModelSingleton>;

TPXBasAtiModelSingleton::TPXBasAtiModelSingleton() : m_factory(nullptr), m_established(false) {
  try {
    m_factory = new TPXBasAtiDefaultThreadFact;
  } catch (...) {
    // The base constructor has published and registered this object already: undo both, so
    // that a failed creation leaves no instance behind.
    if (omi_SingletonRegistry* registry = omi_SingletonRegistry::Instance())
      registry->Remove(typeid(TPXBasAtiModelSingleton).name());
    instance = nullptr;
    throw;
  }
}

TPXBasAtiModelSingleton::~TPXBasAtiModelSingleton() {
  m_established = false;
  delete m_factory;
  m_factory = nullptr;
}

bool TPXBasAtiModelSingleton::setBehavior(TPXBasAtiThreadFactory* f) {
  if (f == nullptr) {
    std::fprintf(stderr,
                 "Error initializing threading behavior: new thread factory pointer is NULL");
    return false;
  }
  if (m_established) {
    std::fprintf(stderr,
                 "Error changing threading behavior: transition to %s threading model is not "
                 "allowed\n",
                 f->AsString());
    return false;
  }
  if (f == m_factory) {
    // Installing the factory already in force: nothing to upgrade and nothing to delete.
    m_established = true;
    return true;
  }
  m_factory->UpgradeAllIssuedPrimitives(f);  // a primitive left behind does not stop the switch
  delete m_factory;
  m_factory = f;
  m_established = true;
  return true;
}

bool TPXBasAtiModelSingleton::multiThread() const { return m_factory->multiThread(); }
const char* TPXBasAtiModelSingleton::AsString() const { return m_factory->AsString(); }

TPXBasAtiAtomicTemplate<unsigned int>* TPXBasAtiModelSingleton::newAtomic(unsigned int initial) {
  return m_factory->newAtomic(initial);
}

TPXBasAtiMutex* TPXBasAtiModelSingleton::newMutex() const { return m_factory->newMutex(); }
TPXBasAtiCondVar* TPXBasAtiModelSingleton::newCondVar() const { return m_factory->newCondVar(); }
TPXBasAtiBarrier* TPXBasAtiModelSingleton::newBarrier() const { return m_factory->newBarrier(); }
void TPXBasAtiModelSingleton::ReadMemoryBarrier() const { m_factory->ReadMemoryBarrier(); }
void TPXBasAtiModelSingleton::WriteMemoryBarrier() const { m_factory->WriteMemoryBarrier(); }
void TPXBasAtiModelSingleton::ReadWriteMemoryBarrier() const {
  m_factory->ReadWriteMemoryBarrier();
}
void TPXBasAtiModelSingleton::Relinquish() const { m_factory->Relinquish(); }
void TPXBasAtiModelSingleton::deleteMutex(TPXBasAtiMutex* m) { m_factory->deleteMutex(m); }

namespace {
TPXBasAtiModelSingleton& Model() { return omi_Singleton<TPXBasAtiModelSingleton>::Instance(); }
}  // namespace

TPXBasAtiThreadingModel::TPXBasAtiThreadingModel() { Model(); }

bool TPXBasAtiThreadingModel::setBehavior(TPXBasAtiThreadFactory* f) {
  return Model().setBehavior(f);
}
bool TPXBasAtiThreadingModel::established() { return Model().established(); }
bool TPXBasAtiThreadingModel::multiThread() { return Model().multiThread(); }
const char* TPXBasAtiThreadingModel::AsString() { return Model().AsString(); }
TPXBasAtiAtomicTemplate<unsigned int>* TPXBasAtiThreadingModel::newAtomic(unsigned int initial) {
  return Model().newAtomic(initial);
}
TPXBasAtiMutex* TPXBasAtiThreadingModel::newMutex() { return Model().newMutex(); }
TPXBasAtiCondVar* TPXBasAtiThreadingModel::newCondVar() { return Model().newCondVar(); }
TPXBasAtiBarrier* TPXBasAtiThreadingModel::newBarrier() { return Model().newBarrier(); }
void TPXBasAtiThreadingModel::ReadMemoryBarrier() { Model().ReadMemoryBarrier(); }
void TPXBasAtiThreadingModel::WriteMemoryBarrier() { Model().WriteMemoryBarrier(); }
void TPXBasAtiThreadingModel::ReadWriteMemoryBarrier() { Model().ReadWriteMemoryBarrier(); }
void TPXBasAtiThreadingModel::Relinquish() { Model().Relinquish(); }
void TPXBasAtiThreadingModel::deleteMutex(TPXBasAtiMutex* m) { Model().deleteMutex(m); }
void TPXBasAtiThreadingModel::Finalize() { omi_SingletonBase<TPXBasAtiModelSingleton>::Finalize(); }
