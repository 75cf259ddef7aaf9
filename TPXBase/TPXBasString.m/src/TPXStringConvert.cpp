// TPXStringConvert.cpp: building a TPXString from UTF-8, UTF-16, 16-bit characters, the
// process locale, numbers and the platform strings, and converting it back out.
#include "DXLString.h"
#include "DXLUnicodeString.h"
#include "TPXString.h"
#include "atr_utf8.h"
#include "atr_utf8Scan.h"

#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using atr_utf8Scan::ForEachCode;

namespace {

// _TPX_FAIL_ON_BAD, read once on first need: 0 unknown, 1 unset, 2 set.
int g_failOnBad = 0;

bool FailOnBad() {
  if (g_failOnBad == 0) g_failOnBad = std::getenv("_TPX_FAIL_ON_BAD") != nullptr ? 2 : 1;
  return g_failOnBad == 2;
}

enum class NumKind { Int, LongLong, Floating };

// Whether format holds exactly one conversion, and that of a value of kind: a mismatched or
// extra conversion would make the formatting routines read or write the wrong object.
bool OneConversion(const char* format, NumKind kind, bool scan) {
  if (format == nullptr) return false;
  int found = 0;
  for (const char* p = format; *p != 0; ++p) {
    if (*p != '%') continue;
    ++p;
    if (*p == '%') continue;
    if (!scan)
      while (*p != 0 && std::strchr("-+ #0", *p) != nullptr) ++p;
    while (std::isdigit(static_cast<unsigned char>(*p))) ++p;
    if (!scan && *p == '.') {
      ++p;
      while (std::isdigit(static_cast<unsigned char>(*p))) ++p;
    }
    int longs = 0;
    for (; *p == 'l'; ++p) ++longs;
    const char c = *p;
    if (c == 0) return false;
    bool ok = false;
    switch (kind) {
      case NumKind::Int:
        ok = longs == 0 && std::strchr(scan ? "diouxX" : "diouxXc", c) != nullptr;
        break;
      case NumKind::LongLong:
        ok = longs == 2 && std::strchr("diouxX", c) != nullptr;
        break;
      case NumKind::Floating:
        ok = (scan ? longs == 1 : longs <= 1) && std::strchr("aAeEfFgG", c) != nullptr;
        break;
    }
    if (!ok) return false;
    ++found;
  }
  return found == 1;
}

template <class T>
TPXString::Result Format(TPXString& s, T value, const char* format, NumKind kind) {
  if (!OneConversion(format, kind, false)) {
    s.ToBAD();
    return TPXString::Failure;
  }
  // A bounded buffer serves the usual numbers; a longer text is measured and made on the heap.
  char small[128];
  const int n = std::snprintf(small, sizeof small, format, value);
  if (n < 1) {
    s.ToBAD();
    return TPXString::Failure;
  }
  if (static_cast<std::size_t>(n) < sizeof small)
    return s.BuildFromUTF8(small, static_cast<unsigned>(n));
  char* big = new (mem_BuiltInAlloc{}) char[static_cast<std::size_t>(n) + 1];
  std::snprintf(big, static_cast<std::size_t>(n) + 1, format, value);
  const TPXString::Result r = s.BuildFromUTF8(big, static_cast<unsigned>(n));
  mem_deleteBuiltIn(big);
  return r;
}

template <class T>
TPXString::Result Scan(const TPXString& s, T* out, const char* format, NumKind kind) {
  if (out == nullptr || s.IsBAD() || !OneConversion(format, kind, true)) return TPXString::Failure;
  return std::sscanf(s.CastToCharPtr(), format, out) == 1 ? TPXString::Success : TPXString::Failure;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Building.
// ---------------------------------------------------------------------------------------------

TPXString::Result TPXString::BuildFromUTF8(const char* text) {
  if (text == nullptr) {
    Reset();
    return Success;
  }
  const std::size_t n = std::strlen(text);
  if (n > static_cast<std::size_t>(ATR_TO_END) - 1) {
    ToBAD();
    return Failure;
  }
  return BuildFromUTF8(text, static_cast<unsigned int>(n));
}

TPXString::Result TPXString::BuildFromUTF8(const char* text, unsigned int byteCount) {
  if (text == nullptr || byteCount == 0) {
    Reset();
    return Success;
  }
  const int kind =
      byteCount < static_cast<unsigned int>(ATR_TO_END)
          ? atr_utf8Scan::ValidateKind(reinterpret_cast<const unsigned char*>(text), byteCount)
          : atr_utf8Scan::kInvalid;
  if (kind == atr_utf8Scan::kInvalid) {
    ToBAD();
    return Failure;
  }
  SetBytes(text, static_cast<int>(byteCount), kind == 1);
  return Success;
}

TPXString::Result TPXString::BuildFromUTF16(const unsigned short* units, unsigned int unitCount) {
  if (units == nullptr || unitCount == 0) {
    Reset();
    return Success;
  }
  // Measure and check everything before anything is written.
  unsigned long long total = 0;
  bool ascii = true;
  for (unsigned int i = 0; i < unitCount; ++i) {
    const unsigned int u = units[i];
    if (u < 0x80) {
      if (u == 0) {
        ToBAD();
        return Failure;
      }
      ++total;
      continue;
    }
    ascii = false;
    if (u >= 0xD800 && u <= 0xDBFF) {
      if (i + 1 >= unitCount || units[i + 1] < 0xDC00 || units[i + 1] > 0xDFFF) {
        ToBAD();
        return Failure;
      }
      ++i;
      total += 4;
    } else if (u >= 0xDC00 && u <= 0xDFFF) {
      ToBAD();
      return Failure;
    } else {
      total += u < 0x800 ? 2 : 3;
    }
  }
  if (total >= static_cast<unsigned long long>(ATR_TO_END)) {
    ToBAD();
    return Failure;
  }
  const int bytes = static_cast<int>(total);
  Reset();
  isolate(bytes);
  char* out = m_Buff;
  for (unsigned int i = 0; i < unitCount; ++i) {
    unsigned int code = units[i];
    if (code >= 0xD800 && code <= 0xDBFF) {
      code = 0x10000 + (((code - 0xD800) << 10) | (units[i + 1] - 0xDC00u));
      ++i;
    }
    out += atr_utf8_from_ucs4(out, static_cast<int>(code));
  }
  *out = ATR_EOS;
  SetStringLength(bytes);
  m_isAscii = ascii;
  return Success;
}

TPXString::Result TPXString::BuildFromWChar(const unsigned short* text) {
  Reset();
  if (text == nullptr || *text == 0) return Success;
  unsigned long long total = 0;
  bool ascii = true;
  std::size_t count = 0;
  // Each unit is a code point of its own, surrogates included: they are not paired here.
  for (; text[count] != 0; ++count) {
    const unsigned int u = text[count];
    ascii = ascii && u < 0x80;
    total += u < 0x80 ? 1 : u < 0x800 ? 2 : 3;
    if (total >= static_cast<unsigned long long>(ATR_TO_END)) {
      ToBAD();
      return Failure;
    }
  }
  isolate(static_cast<int>(total));
  char* out = m_Buff;
  for (std::size_t i = 0; i < count; ++i) out += atr_utf8_from_ucs4(out, text[i]);
  *out = ATR_EOS;
  SetStringLength(static_cast<int>(total));
  m_isAscii = ascii;
  return Success;
}

TPXString::Result TPXString::BuildFromLocale(const char* text) {
  const TPXString keep(*this);  // text may be this string's own bytes
  Reset();
  if (text == nullptr || *text == 0) return Success;
  const int length = atr_utf8_from_encoding(static_cast<char*>(nullptr), atr_EncodingLocale, text);
  if (length == 0) return Success;
  if (length < 0 || length >= ATR_TO_END) {
    ToBAD();
    return Failure;
  }
  if (FailOnBad() && std::strchr(text, '\xC3') != nullptr)
    std::fprintf(stderr, "Possible conversion from UTF8: %s\n", text);
  isolate(length);
  const int written = atr_utf8_from_encoding(m_Buff, atr_EncodingLocale, text);
  // A locale's decoder could hand out a code point no UTF-8 text here may hold.
  const int kind = written == length
                       ? atr_utf8Scan::ValidateKind(reinterpret_cast<const unsigned char*>(m_Buff),
                                                    static_cast<std::size_t>(length))
                       : atr_utf8Scan::kInvalid;
  if (kind == atr_utf8Scan::kInvalid) {
    ToBAD();
    return Failure;
  }
  m_Buff[length] = ATR_EOS;
  SetStringLength(length);
  m_isAscii = kind == 1;
  return Success;
}

TPXString::Result TPXString::BuildFromNum(int value, const char* format) {
  return Format(*this, value, format, NumKind::Int);
}
TPXString::Result TPXString::BuildFromNum(unsigned int value, const char* format) {
  return Format(*this, value, format, NumKind::Int);
}
TPXString::Result TPXString::BuildFromNum(double value, const char* format) {
  return Format(*this, value, format, NumKind::Floating);
}
TPXString::Result TPXString::BuildFromNum(long double value, const char* format) {
  return Format(*this, static_cast<double>(value), format, NumKind::Floating);
}
TPXString::Result TPXString::BuildFromNum(long long value, const char* format) {
  return Format(*this, value, format, NumKind::LongLong);
}
TPXString::Result TPXString::BuildFromNum(unsigned long long value, const char* format) {
  return Format(*this, value, format, NumKind::LongLong);
}

TPXString::TPXString(const DXLString& text) { (void)BuildFromUTF8(text.CastToCharPtr()); }

TPXString::TPXString(const DXLUnicodeString& text) {
  const int units = text.GetLengthInChar();
  if (units <= 0) return;
  if (units > (ATR_TO_END - 1) / 4) {
    ToBAD();
    return;
  }
  int count = 4 * units;
  char* buffer = new (mem_BuiltInAlloc{}) char[static_cast<std::size_t>(count) + 1];
  if (text.ConvertToUTF8(buffer, count) != 0 || count < 0 || count > 4 * units) {
    ToBAD();
  } else {
    buffer[count] = 0;
    (void)BuildFromUTF8(buffer, static_cast<unsigned int>(count));
  }
  mem_deleteBuiltIn(buffer);
}

// ---------------------------------------------------------------------------------------------
// Converting out.
// ---------------------------------------------------------------------------------------------

TPXString::Result TPXString::ConvertToUTF8(char* out, unsigned int* length) const {
  const int n = ByteCount();
  if (out != nullptr) {
    if (n > 0) std::memcpy(out, m_Buff, static_cast<std::size_t>(n));
    out[n] = 0;
  }
  if (length != nullptr) *length = static_cast<unsigned int>(n);
  return IsBAD() ? Failure : Success;
}

TPXString::Result TPXString::ConvertToUTF16(unsigned short* out, unsigned int* count) const {
  const int n = ByteCount();
  const unsigned char* p = reinterpret_cast<const unsigned char*>(m_Buff);
  unsigned int units = 0;
  if (m_isAscii) {
    if (out != nullptr)
      for (int i = 0; i < n; ++i) out[i] = p[i];
    units = static_cast<unsigned int>(n);
  } else if (out == nullptr) {
    // Every character is one unit, a four-byte one two.
    for (int i = 0; i < n; ++i) units += ((p[i] & 0xC0) != 0x80) + (p[i] >= 0xF0);
  } else {
    ForEachCode(p, static_cast<std::size_t>(n), [out, &units](unsigned int code) {
      if (code > 0xFFFF) {
        out[units++] = static_cast<unsigned short>(0xD800 | ((code - 0x10000) >> 10));
        out[units++] = static_cast<unsigned short>(0xDC00 | (code & 0x3FF));
      } else {
        out[units++] = static_cast<unsigned short>(code);
      }
      return true;
    });
  }
  if (count != nullptr) *count = units;
  return IsBAD() ? Failure : Success;
}

TPXString::Result TPXString::ConvertToWChar(unsigned short* out) const {
  if (out == nullptr) return IsBAD() ? Failure : Success;
  const int n = ByteCount();
  const unsigned char* p = reinterpret_cast<const unsigned char*>(m_Buff);
  unsigned int units = 0;
  if (m_isAscii) {
    for (; units < static_cast<unsigned int>(n); ++units) out[units] = p[units];
  } else {
    ForEachCode(p, static_cast<std::size_t>(n), [out, &units](unsigned int code) {
      out[units++] = static_cast<unsigned short>(code > 0xFFFF ? '?' : code);
      return true;
    });
  }
  out[units] = 0;
  return IsBAD() ? Failure : Success;
}

TPXString::Result TPXString::ConvertToLocale(char* out, unsigned int* outLength) const {
  if (IsBAD()) {
    if (out != nullptr) *out = 0;
    if (outLength != nullptr) *outLength = static_cast<unsigned int>(-1);
    return Failure;
  }
  const int length =
      atr_utf8_to_encoding_sized(atr_EncodingLocale, out, CastToCharPtr(), ByteCount(), '\0', true);
  if (outLength != nullptr) *outLength = static_cast<unsigned int>(length);
  return length < 0 ? Failure : Success;
}

TPXString::Result TPXString::ConvertToNum(int* out, const char* format) const {
  return Scan(*this, out, format, NumKind::Int);
}
TPXString::Result TPXString::ConvertToNum(unsigned int* out, const char* format) const {
  return Scan(*this, out, format, NumKind::Int);
}
TPXString::Result TPXString::ConvertToNum(double* out, const char* format) const {
  return Scan(*this, out, format, NumKind::Floating);
}
TPXString::Result TPXString::ConvertToNum(long double* out, const char* format) const {
  double value = 0;
  if (out == nullptr || Scan(*this, &value, format, NumKind::Floating) != Success) return Failure;
  *out = value;
  return Success;
}
TPXString::Result TPXString::ConvertToNum(long long* out, const char* format) const {
  return Scan(*this, out, format, NumKind::LongLong);
}
TPXString::Result TPXString::ConvertToNum(unsigned long long* out, const char* format) const {
  return Scan(*this, out, format, NumKind::LongLong);
}

DXLString TPXString::ToDXL() const {
  const int n = ByteCount();
  const unsigned char* p = reinterpret_cast<const unsigned char*>(m_Buff);
  char* text = new (mem_BuiltInAlloc{}) char[static_cast<std::size_t>(n) + 1];
  int out = 0;
  ForEachCode(p, static_cast<std::size_t>(n), [text, &out](unsigned int code) {
    text[out++] = code >= 32 && code <= 126 ? static_cast<char>(code) : '?';
    return true;
  });
  text[out] = 0;
  DXLString result;
  try {
    result = text;
  } catch (...) {
    mem_deleteBuiltIn(text);
    throw;
  }
  mem_deleteBuiltIn(text);
  return result;
}

DXLUnicodeString TPXString::ToDXLU() const {
  DXLUnicodeString result;
  result.BuildFromUTF8(CastToCharPtr(), ByteCount());
  return result;
}
