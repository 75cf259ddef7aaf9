// DXLFatalError.cpp: report on standard error and abort.
#include "DXLFatalError.h"

#include <cstdio>
#include <cstdlib>

void DXLFatalError(const char* message, const char*, const char*, const char*,
                   const char* sourcePath, int line) {
  std::fprintf(stderr, "%s [%s:%d]\n", message != nullptr ? message : "",
               sourcePath != nullptr ? sourcePath : "", line);
  std::fflush(stderr);
  std::abort();
}
