// TPXBasCamMemoryErrorHandler.cpp: the default out-of-memory report.
#include "TPXBasCamMemoryErrorHandler.h"

#include <cstdio>

TPXBasCamMemoryErrorHandler::~TPXBasCamMemoryErrorHandler() {}

void TPXBasCamMemoryErrorHandler::OutOfMemory() {
  std::fprintf(stderr, "Error: program out of memory!\n");
  std::fprintf(stderr,
               "       please set a break point at TPXBasCamMemoryErrorHandler::OutOfMemory() "
               "for more information\n");
  std::fflush(stderr);
}
