// aio_strstream.cpp: output string stream backed by a temporary file.
#include "aio_strstream.h"

#include "TPXOsString.h"
#include "aio_istream.h"
#include "aio_tempfile.h"
#include "mem_Alloc.h"
#include "mem_AllocationOperators.h"

#include <climits>
#include <cstdlib>
#include <stdio.h>
#include <unistd.h>

namespace {

void* StringAllocate(unsigned int size) { return mem_AllocationOperators::operator new(size); }

// The name is UTF-8 made from the locale's form of the path, so it converts back; a path that
// was not valid in the locale was kept byte for byte and goes out as it is. Never throws: a
// destructor calls it.
void RemoveFile(const char* name) {
  const char* path = name;
  TPXOsString* os = nullptr;
  try {
    os = new TPXOsString(name, TPXOsString::OsLocale);
    if (os->GetType() == TPXOsString::OsLocale) path = os->ToLocale();
  } catch (...) {
    // Out of memory: the bytes as they are name the file in every ASCII path.
  }
  unlink(path);
  if (access(path, F_OK) != -1) {
    std::fprintf(stderr, "*** Error: file %s cannot be deleted\n", name);
    std::abort();
  }
  delete os;
}

}  // namespace

aio_ostrstream::aio_ostrstream() {
  FILE* f = aio_createTempFile(m_name);
  attach(f, f != nullptr);
}

aio_ostrstream::~aio_ostrstream() {
  mem_Free(m_string);
  if (m_file != nullptr) {
    std::fflush(m_file);
    close();
  }
  if (m_name != nullptr) {
    RemoveFile(m_name);
    mem_Free(m_name);
  }
}

char* aio_ostrstream::adoptString(void* (*allocate)(unsigned int)) {
  if (m_file == nullptr) {
    m_state |= failbit;
    char* empty = static_cast<char*>(allocate(1));
    if (empty != nullptr) empty[0] = '\0';
    return empty;
  }
  if (std::fflush(m_file) == EOF) postmortem();
  const long long n = ftello(m_file);
  if (n < 0 || n >= static_cast<long long>(UINT_MAX)) {
    m_state |= failbit;
    return nullptr;
  }
  char* buffer = static_cast<char*>(allocate(static_cast<unsigned int>(n) + 1));
  if (buffer == nullptr) return nullptr;

  // A second stream on the same file reads the text from its start; it does not own the
  // file, so it leaves it open.
  aio_istream reader;
  reader.attach(m_file, false);
  long long done = 0;
  if (fseeko(m_file, 0, SEEK_SET) == 0) {
    while (done < n) {
      const long long left = n - done;
      const int chunk = left > INT_MAX ? INT_MAX : static_cast<int>(left);
      const int got = reader.read(buffer + done, chunk);
      done += got;
      if (got < chunk) break;
    }
  }
  if (done < n) m_state |= failbit;
  buffer[done] = '\0';
  buffer[n] = '\0';
  // Writing goes on at the end of the text.
  fseeko(m_file, static_cast<off_t>(n), SEEK_SET);
  return buffer;
}

char* aio_ostrstream::str() {
  mem_Free(m_string);
  m_string = nullptr;
  m_string = adoptString(&StringAllocate);
  return m_string;
}
