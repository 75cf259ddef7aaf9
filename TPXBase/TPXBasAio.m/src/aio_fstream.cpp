// aio_fstream.cpp: opening named files, and 64-bit seek and tell.
#include "aio_fstream.h"

#include "TPXOsString.h"

#include <stdio.h>
#include <unistd.h>

namespace {

// fseeko/ftello: off_t is 64-bit here, so positions beyond 2 GiB work.
bool SeekFile(FILE* f, long long offset, aio_ios::seek_dir origin) {
  return fseeko(f, static_cast<off_t>(offset), static_cast<int>(origin)) == 0;
}

long long TellFile(FILE* f) { return f != nullptr ? static_cast<long long>(ftello(f)) : -1; }

// "wx" creates the file exclusively: a file that appears between the existence check and the
// open is not truncated.
const char* WriteMode(bool fresh) { return fresh ? "wbx" : "ab"; }

}  // namespace

aio_ifstream& aio_ifstream::open(const char* name) {
  const TPXOsString os(name, TPXOsString::OsLocale);
  const char* local = os.ToLocale();  // throws before the stream is touched
  if (access(local, R_OK) == 0) {
    if (FILE* f = std::fopen(local, "r")) attach(f, true);
  } else {
    clear(failbit);
  }
  return *this;
}

aio_ifstream& aio_ifstream::seekg(long long offset, aio_ios::seek_dir origin) {
  if (m_file == nullptr)
    m_state |= failbit;
  else
    SeekFile(m_file, offset, origin);
  return *this;
}

long long aio_ifstream::tellg() const { return TellFile(m_file); }

aio_ifstreamCae& aio_ifstreamCae::open(const char* name) {
  if (access(name, R_OK) == 0) {
    if (FILE* f = std::fopen(name, "r")) attach(f, true);
  } else {
    clear(failbit);
  }
  return *this;
}

aio_ifstreamCae& aio_ifstreamCae::seekg(long long offset, aio_ios::seek_dir origin) {
  if (m_file == nullptr)
    m_state |= failbit;
  else
    SeekFile(m_file, offset, origin);
  return *this;
}

long long aio_ifstreamCae::tellg() const { return TellFile(m_file); }

aio_ofstream& aio_ofstream::open(const char* name, bool fresh) {
  const TPXOsString os(name, TPXOsString::OsLocale);
  const char* local = os.ToLocale();  // throws before the stream is touched
  if (fresh && access(local, F_OK) == 0) {
    clear(failbit);
  } else if (FILE* f = std::fopen(local, WriteMode(fresh))) {
    attach(f, true);
  } else {
    clear(failbit);
  }
  return *this;
}

aio_ofstream& aio_ofstream::seekp(long long offset, aio_ios::seek_dir origin) {
  if (m_file == nullptr)
    m_state |= failbit;
  else
    SeekFile(m_file, offset, origin);
  return *this;
}

long long aio_ofstream::tellp() const { return TellFile(m_file); }

aio_ofstreamCae& aio_ofstreamCae::open(const char* name, bool fresh) {
  if (fresh && access(name, F_OK) == 0) {
    clear(failbit);
    return *this;
  }
  FILE* f = std::fopen(name, WriteMode(fresh));
  attach(f, f != nullptr);
  return *this;
}

aio_ofstreamCae& aio_ofstreamCae::seekp(long long offset, aio_ios::seek_dir origin) {
  if (m_file == nullptr)
    m_state |= failbit;
  else
    SeekFile(m_file, offset, origin);
  return *this;
}

long long aio_ofstreamCae::tellp() const { return TellFile(m_file); }
