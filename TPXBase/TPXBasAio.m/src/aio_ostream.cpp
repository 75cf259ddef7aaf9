// aio_ostream.cpp: formatted output of the output stream.
#include "aio_ostream.h"

#include "aio_istream.h"
#include "mem_Alloc.h"

#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <type_traits>

namespace {

// Size of the text buffer of print_double; longer texts take a heap buffer.
constexpr int kDoubleBufferSize = 1024;

// Bytes copied per block by copy().
constexpr int kCopyBlock = 16384;

// Removes the sign of a negative zero from a formatted number: "-0", "-0.000", "-0e+00" and
// the like. With a width in force the minus becomes a space so that the field keeps its width;
// otherwise it is deleted.
void RemoveNegativeZero(char* text, bool widthInForce) {
  char* p = text;
  while (*p == ' ') ++p;
  if (p[0] != '-' || p[1] != '0') return;
  const char* q = p + 1;
  while (*q == '0') ++q;
  // The decimal point is '.' unless a host switched LC_NUMERIC to a locale with another one.
  const char* point = std::localeconv()->decimal_point;
  const char dp = (point != nullptr && point[0] != '\0') ? point[0] : '.';
  if (*q == '.' || *q == dp) {
    ++q;
    while (*q == '0') ++q;
  }
  if (*q >= '0' && *q <= '9') return;  // a non-zero digit: the number is not zero
  if (widthInForce)
    *p = ' ';
  else
    std::memmove(p, p + 1, std::strlen(p + 1) + 1);
}

}  // namespace

void aio_ostream::postmortem() {
  m_state |= failbit;
  if (m_file != nullptr && std::ferror(m_file) != 0) m_state |= badbit;
}

int aio_ostream::getAlignFrmt(char* buf, int pos, bool alt) const {
  buf[pos++] = '%';
  if (alt) buf[pos++] = '#';
  if ((m_flags & adjustfield) == left) buf[pos++] = '-';
  buf[pos++] = '*';
  return pos;
}

void aio_ostream::widthUsed() {
  if ((m_flags & widthonce) != 0) {
    m_flags &= ~widthonce;
    m_width = 0;
  }
}

template <class T>
aio_ostream& aio_ostream::printValue(const char* conv, bool alt, T value) {
  if (m_file == nullptr) {
    m_state |= failbit;
    return *this;
  }
  char format[16];
  int r;
  if (m_width == 0) {
    int pos = 0;
    format[pos++] = '%';
    if (alt) format[pos++] = '#';
    std::strcpy(format + pos, conv);
    r = std::fprintf(m_file, format, value);
    if (r < 0) postmortem();
  } else {
    std::strcpy(format + getAlignFrmt(format, 0, alt), conv);
    r = std::fprintf(m_file, format, m_width, value);
    if (r < 0) postmortem();
    widthUsed();
  }
  return *this;
}

aio_ostream& aio_ostream::put(char c) {
  if (m_file == nullptr) {
    m_state |= failbit;
    return *this;
  }
  if (m_width == 0 || c == '\n') {
    if (std::fputc(static_cast<unsigned char>(c), m_file) == EOF) postmortem();
    return *this;
  }
  return printValue("c", false, static_cast<int>(c));
}

aio_ostream& aio_ostream::print(const char* s) {
  if (m_file == nullptr || s == nullptr) {
    m_state |= failbit;
    return *this;
  }
  if (m_width == 0) {
    if (std::fputs(s, m_file) == EOF) postmortem();
    return *this;
  }
  return printValue("s", false, s);
}

namespace {

// Integers are converted here rather than by fprintf: the digits are the same as those of the
// %d, %u, %o, %x conversions (and their ll forms), and the padding of printPadded is that of
// the width argument, but no format string is parsed for every number.
unsigned BaseOf(int flags) {
  switch (flags & aio_ios::basefield) {
    case aio_ios::oct:
      return 8;
    case aio_ios::hex:
      return 16;
    default:
      return 10;
  }
}

// Writes the digits of v backwards, ending just before end; returns the first digit.
template <class U>
char* FormatUnsigned(U v, unsigned base, char* end) {
  static const char kDigits[] = "0123456789abcdef";
  char* p = end;
  if (base == 16) {
    do *--p = kDigits[v & 15];
    while ((v >>= 4) != 0);
  } else if (base == 8) {
    do *--p = static_cast<char>('0' + (v & 7));
    while ((v >>= 3) != 0);
  } else {
    do *--p = static_cast<char>('0' + v % 10);
    while ((v /= 10) != 0);
  }
  return p;
}

// Octal and hexadecimal show a signed value's two's complement, as printf does.
template <class S>
char* FormatSigned(S v, unsigned base, char* end) {
  using U = std::make_unsigned_t<S>;
  if (base != 10 || v >= 0) return FormatUnsigned(static_cast<U>(v), base, end);
  char* p = FormatUnsigned(static_cast<U>(U{0} - static_cast<U>(v)), 10, end);
  *--p = '-';
  return p;
}

// Room for the longest integer text: 22 octal digits of 64 bits, a sign or a 0x prefix.
constexpr int kIntText = 32;

// Spaces written in blocks of this size for wide fields.
const char kSpaces[] = "                                                                ";

bool WriteSpaces(FILE* f, long long count) {
  while (count > 0) {
    const size_t block = count < 64 ? static_cast<size_t>(count) : 64;
    if (fwrite_unlocked(kSpaces, 1, block, f) != block) return false;
    count -= static_cast<long long>(block);
  }
  return true;
}

}  // namespace

aio_ostream& aio_ostream::printPadded(const char* text, int length) {
  if (m_file == nullptr) {
    m_state |= failbit;
    return *this;
  }
  const size_t size = static_cast<size_t>(length);
  if (m_width == 0) {
    if (std::fwrite(text, 1, size, m_file) != size) postmortem();
    return *this;
  }
  // As printf's '*': a negative width means left adjustment with its magnitude.
  long long width = m_width;
  bool leftAdjust = (m_flags & adjustfield) == left;
  if (width < 0) {
    leftAdjust = true;
    width = -width;
  }
  const long long pad = width > length ? width - length : 0;
  flockfile(m_file);
  bool ok = leftAdjust || WriteSpaces(m_file, pad);
  ok = ok && fwrite_unlocked(text, 1, size, m_file) == size;
  if (leftAdjust) ok = ok && WriteSpaces(m_file, pad);
  funlockfile(m_file);
  if (!ok) postmortem();
  widthUsed();
  return *this;
}

aio_ostream& aio_ostream::print_int(int v) {
  char text[kIntText];
  const char* first = FormatSigned(v, BaseOf(m_flags), text + kIntText);
  return printPadded(first, static_cast<int>(text + kIntText - first));
}

aio_ostream& aio_ostream::print_u_int(unsigned int v) {
  char text[kIntText];
  const char* first = FormatUnsigned(v, BaseOf(m_flags), text + kIntText);
  return printPadded(first, static_cast<int>(text + kIntText - first));
}

aio_ostream& aio_ostream::print_int64(long long v) {
  char text[kIntText];
  const char* first = FormatSigned(v, BaseOf(m_flags), text + kIntText);
  return printPadded(first, static_cast<int>(text + kIntText - first));
}

aio_ostream& aio_ostream::print_u_int64(unsigned long long v) {
  char text[kIntText];
  const char* first = FormatUnsigned(v, BaseOf(m_flags), text + kIntText);
  return printPadded(first, static_cast<int>(text + kIntText - first));
}

// "%#llx": a 0x prefix except for zero, which prints as 0.
aio_ostream& aio_ostream::print_address(const void* p) {
  const auto v = static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(p));
  char text[kIntText];
  char* first = FormatUnsigned(v, 16, text + kIntText);
  if (v != 0) {
    *--first = 'x';
    *--first = '0';
  }
  return printPadded(first, static_cast<int>(text + kIntText - first));
}

aio_ostream& aio_ostream::print_double(double d) {
  if (m_file == nullptr) {
    m_state |= failbit;
    return *this;
  }
  const bool alt = (m_flags & showpoint) != 0 && m_precision == 0;
  const char* conv;
  switch (m_flags & floatfield) {
    case scientific:
      conv = ".*e";
      break;
    case fixed:
      conv = ".*f";
      break;
    default:
      conv = ".*g";
  }
  const bool widthInForce = m_width != 0;
  char format[16];
  int pos = 0;
  if (widthInForce) {
    pos = getAlignFrmt(format, 0, alt);
  } else {
    format[pos++] = '%';
    if (alt) format[pos++] = '#';
  }
  std::strcpy(format + pos, conv);

  char local[kDoubleBufferSize];
  char* text = local;
  int n = widthInForce ? std::snprintf(local, sizeof local, format, m_width, m_precision, d)
                       : std::snprintf(local, sizeof local, format, m_precision, d);
  if (n >= kDoubleBufferSize) {
    // A width or precision that makes the text longer than the buffer: format it again on the
    // heap rather than cut it.
    text = static_cast<char*>(mem_Malloc(static_cast<size_t>(n) + 1));
    if (text == nullptr) {
      n = -1;
    } else {
      n = widthInForce
              ? std::snprintf(text, static_cast<size_t>(n) + 1, format, m_width, m_precision, d)
              : std::snprintf(text, static_cast<size_t>(n) + 1, format, m_precision, d);
    }
  }
  if (n < 0) {
    postmortem();
  } else {
    RemoveNegativeZero(text, widthInForce);
    if (std::fputs(text, m_file) < 0) postmortem();
  }
  if (text != local) mem_Free(text);
  if (widthInForce) widthUsed();
  return *this;
}

aio_ostream& aio_ostream::write(const char* buf, int n) {
  if (m_file == nullptr || n < 0) {
    m_state |= failbit;
    return *this;
  }
  if (std::fwrite(buf, 1, static_cast<size_t>(n), m_file) < static_cast<size_t>(n)) postmortem();
  return *this;
}

aio_ostream& aio_ostream::flush() {
  if (m_file == nullptr) {
    std::fflush(nullptr);
    m_state |= failbit;
    return *this;
  }
  if (std::fflush(m_file) == EOF) postmortem();
  return *this;
}

aio_ostream& aio_ostream::copy(aio_istream& in) {
  char block[kCopyBlock];
  while (in.rdstate() == 0) {
    const int got = in.read(block, kCopyBlock);
    if (m_file == nullptr) {
      m_state |= failbit;
      continue;
    }
    if (std::fwrite(block, 1, static_cast<size_t>(got), m_file) < static_cast<size_t>(got))
      postmortem();
  }
  if (m_file != nullptr && std::fflush(m_file) == EOF) postmortem();
  return *this;
}

aio_ostream& aio_ostream::adopt(int fd) {
  FILE* f = fdopen(fd, "wb");
  attach(f, f != nullptr);
  if (f == nullptr) m_state |= failbit;
  return *this;
}
