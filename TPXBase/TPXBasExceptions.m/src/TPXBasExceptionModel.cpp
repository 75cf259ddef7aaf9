// TPXBasExceptionModel.cpp: the process-wide holder of the exception factory.
#include "TPXBasExceptionModel.h"

#include "TPXBasException.h"

template class omi_SingletonBase<TPXBasExceptionModelSingleton>;
template class omi_Singleton<TPXBasExceptionModelSingleton>;

namespace {
const char kAssertPath[] = "TPXBase/TPXBasExceptions.m/src/TPXBasExceptionModel";

const TPXBasExceptionFactory& Installed(const TPXBasExceptionFactory* factory) {
  // No factory: before the module's first initialise or after its last finalise.
  if (factory == nullptr) TPXBasAssertException("factory != 0").Throw(kAssertPath, __LINE__);
  return *factory;
}
}  // namespace

TPXBasExceptionModelSingleton::TPXBasExceptionModelSingleton() = default;

TPXBasExceptionModelSingleton::~TPXBasExceptionModelSingleton() {
  delete m_factory;
  m_factory = nullptr;
}

bool TPXBasExceptionModelSingleton::setBehavior(TPXBasExceptionFactory* factory) {
  TPXBasExceptionFactory* const old = m_factory;
  m_factory = factory;  // installed first, so that a destructor that throws leaves no dangling
  delete old;
  return true;
}

void TPXBasExceptionModelSingleton::throwExecException(int count) const {
  Installed(m_factory).throwExecException(count);
}

void TPXBasExceptionModelSingleton::throwPatternException(int offset, const char* message) const {
  Installed(m_factory).throwPatternException(offset, message);
}

bool TPXBasExceptionModel::setBehavior(TPXBasExceptionFactory* factory) {
  return omi_Singleton<TPXBasExceptionModelSingleton>::Instance().setBehavior(factory);
}

void TPXBasExceptionModel::throwExecException(int count) {
  omi_Singleton<TPXBasExceptionModelSingleton>::Instance().throwExecException(count);
}

void TPXBasExceptionModel::throwPatternException(int offset, const char* message) {
  omi_Singleton<TPXBasExceptionModelSingleton>::Instance().throwPatternException(offset, message);
}
