// aio_ios.cpp: file, format settings and state of the streams.
#include "aio_ios.h"

aio_ios::~aio_ios() {
  if (m_owned) close();
}

aio_ios& aio_ios::attach(FILE* f, bool owned) {
  if (m_owned) close();
  m_file = f;
  m_owned = owned;
  return *this;
}

bool aio_ios::close() {
  bool failed = false;
  if (m_file != nullptr) {
    failed = std::fclose(m_file) != 0;
    m_file = nullptr;
  }
  m_state = 0;
  m_owned = false;
  return failed;
}

int aio_ios::fd() const { return m_file != nullptr ? fileno(m_file) : -1; }

unsigned int aio_ios::setf(int bits, int mask) {
  const int old = m_flags;
  if (mask == 0)
    m_flags |= bits;
  else
    m_flags = (m_flags & ~mask) | (bits & mask);
  return static_cast<unsigned int>(old);
}

unsigned int aio_ios::unsetf(int bits) {
  const int old = m_flags;
  m_flags &= ~bits;
  return static_cast<unsigned int>(old);
}

aio_ios& aio_ios::setprecision(int p) {
  m_precision = p;
  return *this;
}

aio_ios& aio_ios::setwidth(int w, bool keep) {
  m_width = w;
  if (!keep) m_flags |= widthonce;
  return *this;
}
