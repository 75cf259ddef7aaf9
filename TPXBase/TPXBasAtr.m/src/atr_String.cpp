// atr_String.cpp: concatenation, sub-strings, fields, placeholders and encoding conversion.
#include "atr_String.h"

#include "KLDTPXBasAssert.h"
#include "atr_StringBaseImpl.h"
#include "atr_utf8.h"

#include <cstdio>
#include <cstring>

static constexpr const char kAssertPath[] = "TPXBase/TPXBasAtr.m/src/atr_StringBase";

namespace {

constexpr unsigned kLargest = static_cast<unsigned>(ATR_TO_END);
constexpr char kTranscodingError[] = "****ERROR: Transcoding Error: ";

unsigned Min(unsigned a, unsigned b) { return a < b ? a : b; }

// Finds field n of the length bytes at text. False when the text ends before the field
// starts, or the field is empty.
bool FindField(const char* text, int length, unsigned n, char separator, const char** begin,
               const char** end) {
  const char* p = text;
  const char* const stop = text + length;
  for (unsigned passed = 0; passed < n; ++passed) {
    const void* next = std::memchr(p, separator, static_cast<std::size_t>(stop - p));
    if (next == nullptr) return false;
    p = static_cast<const char*>(next) + 1;
  }
  const void* next = std::memchr(p, separator, static_cast<std::size_t>(stop - p));
  const char* const fieldEnd = next != nullptr ? static_cast<const char*>(next) : stop;
  if (fieldEnd == p) return false;
  *begin = p;
  *end = fieldEnd;
  return true;
}

// "%<position>$<type>", or "%<type>" for position 0.
void Placeholder(char (&buf)[24], int position, char type) {
  if (position != 0)
    std::snprintf(buf, sizeof buf, "%%%d$%c", position, type);
  else
    std::snprintf(buf, sizeof buf, "%%%c", type);
}

bool AllAscii(const char* text, int length) {
  for (int i = 0; i < length; ++i)
    if (static_cast<unsigned char>(text[i]) >= 0x80) return false;
  return true;
}

int LocaleToUtf8(char* out, const char* in, int n) {
  return atr_utf8_from_encoding_sized(out, atr_EncodingLocale, in, n, true);
}

int Utf8ToLocale(char* out, const char* in, int n) {
  return atr_utf8_to_encoding_sized(atr_EncodingLocale, out, in, n, '\0', true);
}

}  // namespace

atr_String atr_MakeAtrString(const char* text) { return atr_String(text); }

atr_String atr_MakeAtrString(const atr_StringBasePrv& other) {
  if (other.Length() == 0) return atr_String();
  return atr_String(other.CStr(), other.Length());
}

atr_String::atr_String(const char* text, unsigned int n)
    : atr_StringBase(text, static_cast<int>(Min(n, kLargest))) {}

atr_String operator+(atr_String left, const atr_String& right) {
  left.Append(right);
  return left;
}

atr_String atr_String::SubstrElsewhere(unsigned int start, unsigned int n) const {
  const unsigned length = Length();
  KLD_ASSERT((start <= length) && "Substr: start out of range");
  atr_String part;
  part.replicate(CStr() + start, static_cast<int>(Min(Min(length - start, n), kLargest)), 0);
  return part;
}

atr_String atr_String::extract(unsigned int n, char separator) const {
  atr_String result;
  const char* begin;
  const char* end;
  if (Empty() || !FindField(CStr(), atr_StringBase::Length(), n, separator, &begin, &end))
    return result;
  const int length = static_cast<int>(end - begin);
  result.allocate(length + 1, 0);
  std::memcpy(result.m_Buff, begin, static_cast<std::size_t>(length));
  result.m_Buff[length] = ATR_EOS;
  result.SetStringLength(length);
  return result;
}

atr_String atr_String::extract(unsigned int n, char separator, char quote) const {
  atr_String result;
  const char* begin;
  const char* end;
  if (Empty() || !FindField(CStr(), atr_StringBase::Length(), n, separator, &begin, &end))
    return result;
  result.allocate(static_cast<int>(end - begin) + 1, 0);
  int length = 0;
  for (const char* p = begin; p < end; ++p) {
    if (*p == quote) {
      if (p + 1 == end || p[1] != quote) continue;  // a lone quote is dropped
      ++p;                                          // a doubled quote gives one
    }
    result.m_Buff[length++] = *p;
  }
  result.m_Buff[length] = ATR_EOS;
  result.SetStringLength(length);
  return result;
}

atr_String& atr_String::ReplaceNonTranslated(int position, const atr_StringBase& value) {
  char placeholder[24];
  Placeholder(placeholder, position, 's');
  Substitute(placeholder, value.CStr(), 1);
  return *this;
}

atr_String& atr_String::ReplaceNonTranslated(int position, int value) {
  char placeholder[24];
  Placeholder(placeholder, position, 'd');
  char text[16];
  std::snprintf(text, sizeof text, "%d", value);
  Substitute(placeholder, text, 1);
  return *this;
}

atr_String& atr_String::ReplaceNonTranslated(int position, const char* value) {
  char placeholder[24];
  Placeholder(placeholder, position, 's');
  Substitute(placeholder, value != nullptr ? value : "", 1);
  return *this;
}

atr_String& atr_String::ReplaceNonTranslated(const char* key, const char* value) {
  Substitute(key, value != nullptr ? value : "", 1);
  return *this;
}

atr_String& atr_String::ReplaceNonTranslated(const char* key, const atr_StringBase& value) {
  Substitute(key, value.CStr(), 1);
  return *this;
}

atr_String atr_String::LocaleToUTF8() const { return Transcoded(LocaleToUtf8); }

atr_String atr_String::UTF8ToLocale() const { return Transcoded(Utf8ToLocale); }

atr_String atr_String::Transcoded(int (*convert)(char* out, const char* in, int n)) const {
  const char* const text = CStr();
  const int length = atr_StringBase::Length();
  if (AllAscii(text, length)) return *this;
  const int measured = convert(nullptr, text, length);
  if (measured < 0) {
    atr_String failed(kTranscodingError);
    failed.atr_StringBase::Append(text, length);
    return failed;
  }
  atr_String result;
  result.allocate(measured, 0);
  convert(result.m_Buff, text, length);
  result.SetStringLength(measured);
  return result;
}
