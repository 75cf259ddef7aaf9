// aio_tempfile.cpp: uniquely named temporary files.
#include "aio_tempfile.h"

#include "TPXString.h"
#include "mem_Alloc.h"

#include <cstdio>
#include <cstring>
#include <stdlib.h>
#include <unistd.h>

namespace {

// An empty value counts as unset: it names no directory.
const char* TempDirectory() {
  const char* dir = std::getenv("TMPDIR");
  if (dir == nullptr || dir[0] == '\0') dir = std::getenv("TEMP");
  if (dir == nullptr || dir[0] == '\0') return nullptr;
  return dir;
}

}  // namespace

FILE* aio_createTempFile(char*& name) {
  name = nullptr;
  const char* dir = TempDirectory();
  if (dir == nullptr) {
    std::fprintf(stderr,
                 "*** Error: Cannot determine the name of the temporary directory on this "
                 "machine.\n");
    std::fprintf(stderr,
                 "***        Please check if TMPDIR or TEMP are set and point to a writable "
                 "directory\n");
    std::abort();
  }

  // "<dir>/utlXXXXXX", without doubling a separator the directory already ends with.
  const size_t dirLength = std::strlen(dir);
  const bool slash = dir[dirLength - 1] == '/';
  char* path = static_cast<char*>(mem_Malloc(dirLength + 11));
  int fd = -1;
  if (path != nullptr) {
    std::memcpy(path, dir, dirLength);
    std::strcpy(path + dirLength, slash ? "utlXXXXXX" : "/utlXXXXXX");
    fd = mkstemp(path);
  }
  if (fd == -1) {
    std::fprintf(stderr, "*** Error: Cannot create a temporary file in %s\n", dir);
    std::fflush(nullptr);
    std::abort();
  }

  FILE* file = fdopen(fd, "w+b");
  if (file == nullptr) close(fd);
  if (access(path, R_OK | W_OK) == -1) {
    std::fprintf(stderr, "*** Error: Cannot write a temporary file %s\n", path);
    std::abort();
  }

  // The path is in the locale's encoding; a path that is not valid there goes out as it is.
  TPXString utf8;
  const char* text = utf8.BuildFromLocale(path) == TPXString::Success ? utf8.CastToCharPtr() : path;
  const size_t length = std::strlen(text);
  name = static_cast<char*>(mem_OperatorNewThrowBuiltin(length + 1));
  std::memset(name, 0, length + 1);
  std::memcpy(name, text, length);
  mem_Free(path);
  return file;
}
