// TPXBasExcDefaultFactory.cpp: the factory base and the factory the library installs.
#include "TPXBasException.h"
#include "TPXBasExceptionModel.h"

// The reports of the exceptions thrown here name this file.
static constexpr const char kSourcePath[] =
    "TPXBase/TPXBasExceptions.m/src/TPXBasExcDefaultFactory";

TPXBasExceptionFactory::~TPXBasExceptionFactory() = default;
TPXBasExcDefaultFactory::~TPXBasExcDefaultFactory() = default;

void TPXBasExcDefaultFactory::throwPatternException(int offset, const char* message) const {
  TPXBasPatternException(offset, message).Throw(kSourcePath, __LINE__);
}

void TPXBasExcDefaultFactory::throwExecException(int count) const {
  TPXBasExecException(count).Throw(kSourcePath, __LINE__);
}
