// aio_istream.cpp: reads, lines and scans of the input stream.
#include "aio_istream.h"

#include <cctype>
#include <cstdio>

void aio_istream::postmortem() {
  m_state |= failbit;
  if (m_file == nullptr) return;
  if (std::ferror(m_file) != 0)
    m_state |= badbit;
  else if (std::feof(m_file) != 0)
    m_state |= eofbit;
}

const char* aio_istream::baseFormat(const char* o, const char* x, const char* d) const {
  switch (m_flags & basefield) {
    case oct:
      return o;
    case hex:
      return x;
    default:
      return d;
  }
}

int aio_istream::get() {
  if (m_file == nullptr) {
    m_state |= failbit;
    return -1;
  }
  const int c = std::fgetc(m_file);
  if (c == EOF) postmortem();
  return c;
}

int aio_istream::peek() {
  if (m_file == nullptr) {
    m_state |= failbit;
    return -1;
  }
  const int c = std::getc(m_file);
  if (c == EOF) {
    postmortem();
    return -1;
  }
  std::ungetc(c, m_file);
  return c;
}

aio_istream& aio_istream::putback(char c) {
  if (m_file == nullptr) {
    m_state |= failbit;
    return *this;
  }
  // As unsigned char: the byte 0xFF must not turn into EOF, which ungetc refuses.
  if (std::ungetc(static_cast<unsigned char>(c), m_file) == EOF) postmortem();
  return *this;
}

int aio_istream::read(char* buf, int n) {
  if (m_file == nullptr || n < 0) {
    m_state |= failbit;
    return 0;
  }
  const int got = static_cast<int>(std::fread(buf, 1, static_cast<size_t>(n), m_file));
  if (got < n) {
    buf[got] = '\0';
    postmortem();
  }
  return got;
}

// Reads byte by byte under the file's lock rather than with fgets: the loop knows exactly how
// many bytes it stored, so a line holding NUL bytes is still recognised as complete, and no
// byte of buf past the ones read is ever looked at.
aio_istream& aio_istream::getline(char* buf, int n) {
  if (m_file == nullptr || n < 1) {
    m_state |= failbit;
    return *this;
  }
  int len = 0;
  bool complete = false;
  flockfile(m_file);
  while (len < n - 1) {
    const int c = getc_unlocked(m_file);
    if (c == EOF) break;
    buf[len++] = static_cast<char>(c);
    if (c == '\n') {
      complete = true;
      break;
    }
  }
  const bool error = ferror_unlocked(m_file) != 0;
  funlockfile(m_file);

  if (complete) {
    buf[len - 1] = '\0';
    return *this;
  }
  buf[len] = '\0';
  if (error || (len == 0 && n > 1)) {
    // Nothing read (end of file) or a read error: the input epilogue.
    postmortem();
    return *this;
  }
  // A line longer than n - 1 bytes, or a last line without a newline.
  m_state |= failbit | eofbit;
  return *this;
}

aio_istream& aio_istream::ignore(int n, int delim) {
  if (m_file == nullptr) {
    m_state |= failbit;
    return *this;
  }
  for (int i = 0; i < n; ++i) {
    const int c = std::getc(m_file);
    if (c == EOF) {
      if (std::ferror(m_file) != 0)
        postmortem();
      else
        m_state |= eofbit;
      break;
    }
    if (static_cast<signed char>(c) == delim) break;
  }
  return *this;
}

char aio_istream::scan_char() {
  if (m_file == nullptr) {
    m_state |= failbit;
    return 0;
  }
  char c = 0;
  if (std::fscanf(m_file, "%c", &c) == EOF) {
    postmortem();
    return 0;
  }
  return c;
}

aio_istream& aio_istream::scan_string(char* buf) {
  if (m_file == nullptr) {
    m_state |= failbit;
    return *this;
  }
  if (std::fscanf(m_file, "%s", buf) == EOF) {
    buf[0] = '\0';
    postmortem();
  }
  return *this;
}

aio_istream& aio_istream::scan_string(char* buf, int n) {
  if (m_file == nullptr || n < 1) {
    m_state |= failbit;
    return *this;
  }
  buf[0] = '\0';
  if (n == 1) {
    m_state |= failbit;
    return *this;
  }
  // " %n%<w>s%n": the two counts give the length of the word stored, NUL bytes included.
  char format[32];
  std::snprintf(format, sizeof format, " %%n%%%ds%%n", n - 1);
  int start = 0;
  int stop = 0;
  if (std::fscanf(m_file, format, &start, buf, &stop) == EOF) {
    buf[0] = '\0';
    postmortem();
    return *this;
  }
  if (stop - start == n - 1) {
    // The word filled buf: it was cut short unless white space or the end follows.
    const int c = std::getc(m_file);
    if (c != EOF) {
      std::ungetc(c, m_file);
      if (std::isspace(c) == 0) m_state |= failbit;
    }
  }
  return *this;
}

int aio_istream::scan_int() {
  if (m_file == nullptr) {
    m_state |= failbit;
    return 0;
  }
  int r;
  int value = 0;
  if ((m_flags & basefield) == oct || (m_flags & basefield) == hex) {
    unsigned int u = 0;
    r = std::fscanf(m_file, baseFormat("%o", "%x", "%u"), &u);
    value = static_cast<int>(u);
  } else {
    r = std::fscanf(m_file, "%d", &value);
  }
  if (r == EOF || r == 0) {
    postmortem();
    return 0;
  }
  return value;
}

unsigned int aio_istream::scan_u_int() {
  if (m_file == nullptr) {
    m_state |= failbit;
    return 0;
  }
  unsigned int value = 0;
  const int r = std::fscanf(m_file, baseFormat("%o", "%x", "%u"), &value);
  if (r == EOF || r == 0) {
    postmortem();
    return 0;
  }
  return value;
}

long long aio_istream::scan_int64() {
  if (m_file == nullptr) {
    m_state |= failbit;
    return 0;
  }
  int r;
  long long value = 0;
  if ((m_flags & basefield) == oct || (m_flags & basefield) == hex) {
    unsigned long long u = 0;
    r = std::fscanf(m_file, baseFormat("%llo", "%llx", "%llu"), &u);
    value = static_cast<long long>(u);
  } else {
    r = std::fscanf(m_file, "%lld", &value);
  }
  if (r == EOF || r == 0) {
    postmortem();
    return 0;
  }
  return value;
}

unsigned long long aio_istream::scan_u_int64() {
  if (m_file == nullptr) {
    m_state |= failbit;
    return 0;
  }
  unsigned long long value = 0;
  const int r = std::fscanf(m_file, baseFormat("%llo", "%llx", "%llu"), &value);
  if (r == EOF || r == 0) {
    postmortem();
    return 0;
  }
  return value;
}

double aio_istream::scan_double() {
  if (m_file == nullptr) {
    m_state |= failbit;
    return 0.0;
  }
  double value = 0.0;
  const int r = std::fscanf(m_file, "%lg", &value);
  if (r == EOF || r == 0) {
    postmortem();
    return 0.0;
  }
  return value;
}

float aio_istream::scan_float() {
  if (m_file == nullptr) {
    m_state |= failbit;
    return 0.0f;
  }
  float value = 0.0f;
  const int r = std::fscanf(m_file, "%e", &value);
  if (r == EOF || r == 0) {
    postmortem();
    return 0.0f;
  }
  return value;
}

aio_istream& aio_istream::adopt(int fd) {
  FILE* f = fdopen(fd, "r");
  attach(f, f != nullptr);
  if (f == nullptr) m_state |= failbit;
  return *this;
}
