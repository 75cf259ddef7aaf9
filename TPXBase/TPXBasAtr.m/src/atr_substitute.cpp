// atr_substitute.cpp: formatting one argument for the conversion that receives it.
#include "atr_decimal.h"
#include "atr_translate.h"
#include "mem_Alloc.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

constexpr int kNumberBuffer = 1024;

enum class LetterKind { String, Floating, Integer };

LetterKind KindOf(char letter) {
  switch (letter) {
    case 'E':
    case 'e':
    case 'f':
    case 'g':
      return LetterKind::Floating;
    case 's':
      return LetterKind::String;
    default:
      return LetterKind::Integer;
  }
}

char LetterOf(const char* conversion) { return conversion[std::strlen(conversion) - 1]; }

/// Reads a decimal number with an optional sign, as "%d" of scanf would; false when there is
/// none. Saturates instead of overflowing.
bool ReadInt(const char*& p, int& value) {
  const char* q = p;
  bool negative = *q == '-';
  if (*q == '-' || *q == '+') ++q;
  if (*q < '0' || *q > '9') return false;
  long long v = 0;
  for (; *q >= '0' && *q <= '9'; ++q)
    if (v < 1000000000) v = v * 10 + (*q - '0');
  if (v > 1000000000) v = 1000000000;
  value = static_cast<int>(negative ? -v : v);
  p = q;
  return true;
}

int Bounded(int value) { return value > atr_translate::MaxField ? atr_translate::MaxField : value; }

/// Rebuilds a conversion text in a form the formatting library reads in one way only: the
/// flags "-" and "0", the width and the precision as written (each at most
/// atr_translate::MaxField), then lengthModifier and letter. Characters the conversion
/// carries beyond that ("l", a second "." or "-") are left out.
void CanonicalFormat(char* out, const char* conversion, const char* lengthModifier, char letter) {
  const char* p = conversion + 1;
  bool left = false, zero = false;
  for (; *p == '-' || *p == '0'; ++p) (*p == '-' ? left : zero) = true;
  int width = -1, precision = -1;
  if (*p >= '1' && *p <= '9') ReadInt(p, width);
  if (*p == '.') {
    ++p;
    if (!ReadInt(p, precision)) precision = 0;
  }
  if (letter == 'c') {  // neither zero padding nor a precision applies to a character
    zero = false;
    precision = -1;
  }
  *out++ = '%';
  if (left) *out++ = '-';
  if (zero) *out++ = '0';
  if (width >= 0) out += std::sprintf(out, "%d", Bounded(width));
  if (precision >= 0) out += std::sprintf(out, ".%d", Bounded(precision));
  while (*lengthModifier != '\0') *out++ = *lengthModifier++;
  *out++ = letter;
  *out = '\0';
}

/// Formats one number into the fixed buffer and makes it the substitution of argument n.
template <class T>
void Put(atr_translate& message, int n, const char* format, T value, bool fixExponent = false) {
  char buffer[kNumberBuffer];
  int length = std::snprintf(buffer, sizeof(buffer), format, value);
  if (length < 0) length = 0;
  if (length >= kNumberBuffer) length = kNumberBuffer - 1;  // cannot happen with bounded fields
  if (fixExponent) {
    atr_translate::FixExponent(buffer);
    length = static_cast<int>(std::strlen(buffer));
  }
  message.SetSubstitution(n, buffer, length);
}

/// Writes a decimal number straight into the substitution: what "%d", "%u" and their 64-bit
/// forms give without flags, width or precision.
void PutDecimal(atr_translate& message, int n, unsigned long long magnitude, bool negative) {
  char buffer[atr_decimal::kLongest];
  char* const end = buffer + sizeof(buffer);
  const char* p = atr_decimal::Write(end, magnitude, negative);
  message.SetSubstitution(n, p, static_cast<int>(end - p));
}

void PutSigned(atr_translate& message, int n, long long value) {
  char buffer[atr_decimal::kLongest];
  char* const end = buffer + sizeof(buffer);
  const char* p = atr_decimal::WriteSigned(end, value);
  message.SetSubstitution(n, p, static_cast<int>(end - p));
}

/// True for a conversion that is "%" and its letter only.
bool IsBare(const char* conversion) { return conversion[1] != '\0' && conversion[2] == '\0'; }

void PutAsDouble(atr_translate& message, int n, char letter, double value) {
  const char format[] = {'%', letter, '\0'};
  Put(message, n, format, value);
}

bool IsAscii(const char* text) {
  for (; *text != '\0'; ++text)
    if (static_cast<unsigned char>(*text) >= 0x80) return false;
  return true;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Substitutions.
// ---------------------------------------------------------------------------------------------

void atr_translate::Store(StrArgs* r, const char* value, int length, int padBefore, int padAfter) {
  // A zero byte would end the message early: the substitution ends there instead.
  const void* zero = std::memchr(value, '\0', static_cast<size_t>(length));
  if (zero != nullptr) length = static_cast<int>(static_cast<const char*>(zero) - value);
  size_t total = static_cast<size_t>(length) + padBefore + padAfter;
  // The inline buffer is taken only when it is free, so that value may be the old text.
  char* target = total < sizeof(r->m_small) && r->m_substitution != r->m_small
                     ? r->m_small
                     : new (mem_BuiltInAlloc{}) char[total + 1];
  std::memset(target, ' ', static_cast<size_t>(padBefore));
  std::memmove(target + padBefore, value, static_cast<size_t>(length));
  std::memset(target + padBefore + length, ' ', static_cast<size_t>(padAfter));
  target[total] = '\0';
  if (r->m_substitution != r->m_small) mem_Free(r->m_substitution);
  r->m_substitution = target;
  r->m_length = static_cast<int>(total);
}

void atr_translate::SetSubstitution(int n, const char* value, int length) {
  StrArgs* r = Receiver(n);
  if (r == nullptr) return;
  if (value == nullptr || length < 0) length = 0;
  Store(r, value != nullptr ? value : "", length, 0, 0);
}

void atr_translate::AddSubstitution(int n, const char* value, const char* conversion) {
  StrArgs* r = Receiver(n);
  if (r == nullptr) return;
  if (value == nullptr) value = "";
  int length = static_cast<int>(std::strlen(value));
  if (conversion == nullptr || conversion[0] == '\0' || conversion[1] == 's') {
    Store(r, value, length, 0, 0);
    return;
  }
  bool left = conversion[1] == '-';
  const char* p = conversion + 1 + (left ? 1 : 0);
  int width = -1, precision = -1;
  if (*p == '.') {
    ++p;
    ReadInt(p, precision);
  } else if (ReadInt(p, width) && *p == '.') {
    ++p;
    ReadInt(p, precision);
  }
  // Texts are justified in bytes to any width: only numbers go through the fixed buffer.
  int taken = precision < 0 || precision > length ? length : precision;
  int pad = width - taken;
  if (pad < 0) pad = 0;
  if (left)
    Store(r, value, taken, 0, pad);
  else
    Store(r, value, taken, width != -1 ? pad : 0, 0);
}

void atr_SubstituteFormat(atr_translate& message, int n, int value, TPXBasStringMode) {
  const char* conversion = message.Format(n);
  if (conversion == nullptr) return;
  char letter = LetterOf(conversion);
  char format[64];
  switch (KindOf(letter)) {
    case LetterKind::String:
      return PutSigned(message, n, value);
    case LetterKind::Floating:
      return PutAsDouble(message, n, letter, value);
    case LetterKind::Integer:
      if (letter == 'd' && IsBare(conversion)) return PutSigned(message, n, value);
      if (letter == 'u' && IsBare(conversion))
        return PutDecimal(message, n, static_cast<unsigned int>(value), false);
      CanonicalFormat(format, conversion, "", letter);
      if (letter == 'c' || letter == 'd') return Put(message, n, format, value);
      return Put(message, n, format, static_cast<unsigned int>(value));
  }
}

void atr_SubstituteFormat(atr_translate& message, int n, unsigned int value, TPXBasStringMode) {
  const char* conversion = message.Format(n);
  if (conversion == nullptr) return;
  char letter = LetterOf(conversion);
  char format[64];
  switch (KindOf(letter)) {
    case LetterKind::String:
      return PutDecimal(message, n, value, false);
    case LetterKind::Floating:
      return PutAsDouble(message, n, letter, value);
    case LetterKind::Integer:
      if ((letter == 'd' || letter == 'u') && IsBare(conversion))
        return PutDecimal(message, n, value, false);
      CanonicalFormat(format, conversion, "", letter == 'd' ? 'u' : letter);
      if (letter == 'c') return Put(message, n, format, static_cast<int>(value));
      return Put(message, n, format, value);
  }
}

namespace {

template <class T>
void Put64(atr_translate& message, int n, T value, bool isUnsigned) {
  const char* conversion = message.Format(n);
  if (conversion == nullptr) return;
  char letter = LetterOf(conversion);
  char format[64];
  switch (KindOf(letter)) {
    case LetterKind::String:
      if (isUnsigned) return PutDecimal(message, n, static_cast<unsigned long long>(value), false);
      return PutSigned(message, n, static_cast<long long>(value));
    case LetterKind::Floating:
      return PutAsDouble(message, n, letter, static_cast<double>(value));
    case LetterKind::Integer:
      if ((letter == 'u' || (letter == 'd' && isUnsigned)) && IsBare(conversion))
        return PutDecimal(message, n, static_cast<unsigned long long>(value), false);
      if (letter == 'd' && IsBare(conversion))
        return PutSigned(message, n, static_cast<long long>(value));
      if (letter == 'c') {  // the low byte, as a character
        CanonicalFormat(format, conversion, "", 'c');
        return Put(message, n, format, static_cast<int>(static_cast<unsigned char>(value & 0xFF)));
      }
      if (letter == 'd' && !isUnsigned) {
        CanonicalFormat(format, conversion, "ll", 'd');
        return Put(message, n, format, static_cast<long long>(value));
      }
      CanonicalFormat(format, conversion, "ll", letter == 'd' ? 'u' : letter);
      return Put(message, n, format, static_cast<unsigned long long>(value));
  }
}

}  // namespace

void atr_SubstituteFormat(atr_translate& message, int n, long long value, TPXBasStringMode) {
  Put64(message, n, value, false);
}

void atr_SubstituteFormat(atr_translate& message, int n, unsigned long long value,
                          TPXBasStringMode) {
  Put64(message, n, value, true);
}

void atr_SubstituteFormat(atr_translate& message, int n, double value, TPXBasStringMode) {
  const char* conversion = message.Format(n);
  if (conversion == nullptr) return;
  char letter = LetterOf(conversion);
  if (KindOf(letter) != LetterKind::Floating) return Put(message, n, "%e", value);
  char format[64];
  CanonicalFormat(format, conversion, "", letter);
  Put(message, n, format, value, true);
}

void atr_SubstituteFormat(atr_translate& message, int n, float value, TPXBasStringMode) {
  atr_SubstituteFormat(message, n, static_cast<double>(value), TPXBasStringMode(false));
}

void atr_SubstituteFormat(atr_translate& message, int n, const char* value, TPXBasStringMode mode) {
  const char* conversion = message.Format(n);
  if (conversion == nullptr) return;
  const char* text = value != nullptr ? value : "";
  atr_String converted;
  if (mode.IsLocale() && !IsAscii(text)) {
    converted = TPXBasAtrStringMode::ModalToUTF8(atr_MakeAtrString(text), mode);
    text = converted.CStr();
  }
  if (LetterOf(conversion) == 's')
    message.AddSubstitution(n, text, conversion);
  else  // a text given to a numeric conversion is shown as it is
    message.SetSubstitution(n, text, static_cast<int>(std::strlen(text)));
}

void atr_SubstituteFormat(atr_translate& message, int n, const atr_StringBase& value,
                          TPXBasStringMode mode) {
  atr_StringBasePrv view(value);  // shares value's storage
  atr_SubstituteFormat(message, n, view.CStr(), mode);
}

void atr_SubstituteFormat(atr_translate& message, int n, const void* value, TPXBasStringMode) {
  ForwardVoidPBySize<sizeof(void*)>::Format(message, n, value);
}

void ForwardVoidPBySize<4>::Format(atr_translate& message, int n, const void* value) {
  atr_SubstituteFormat(message, n,
                       static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(value)),
                       TPXBasStringMode(false));
}

void ForwardVoidPBySize<8>::Format(atr_translate& message, int n, const void* value) {
  atr_SubstituteFormat(message, n,
                       static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(value)),
                       TPXBasStringMode(false));
}

template atr_String atr<const char*>(const char*, const char*, TPXBasStringMode);
template atr_String atr<const char*, const char*, int>(const char*, const char*, const char*, int,
                                                       TPXBasStringMode);
template atr_String atr<int>(const char*, int, TPXBasStringMode);
template atr_String atr<int, const char*>(const char*, int, const char*, TPXBasStringMode);

// ---------------------------------------------------------------------------------------------
// atr_Fmt.
// ---------------------------------------------------------------------------------------------

atr_Fmt::~atr_Fmt() { mem_deleteBuiltIn(m_buffer); }

char atr_Fmt::Letter() {
  if (m_letter == 0 && m_fmt != nullptr && m_fmt[0] != '\0') m_letter = LetterOf(m_fmt);
  return m_letter;
}

char* atr_Fmt::Buffer() {
  if (m_buffer == nullptr) {
    size_t length = m_fmt != nullptr ? std::strlen(m_fmt) : 0;
    // Room for the conversion text plus "h", and for the longest short form "%hX".
    m_buffer = new (mem_BuiltInAlloc{}) char[length + 2 > 4 ? length + 2 : 4];
  }
  return m_buffer;
}

const char* atr_Fmt::Format(DataSize size, char letter) {
  if (m_fmt == nullptr) return nullptr;
  char* out = Buffer();
  size_t length = std::strlen(m_fmt);
  std::memcpy(out, m_fmt, length + 1);
  if (length == 0) return out;
  if (letter != 0) out[length - 1] = letter;
  if (size >= 1 && size <= 3) {
    out[length] = out[length - 1];
    out[length - 1] = 'h';
    out[length + 1] = '\0';
  }
  return out;
}

const char* atr_Fmt::FormatNoWidth(DataSize size, char letter) {
  char* out = Buffer();
  char* p = out;
  *p++ = '%';
  if (size >= 1 && size <= 3) *p++ = 'h';
  *p++ = letter != 0 ? letter : Letter();
  *p = '\0';
  return out;
}
