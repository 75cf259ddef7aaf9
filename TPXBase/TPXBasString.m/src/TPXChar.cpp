// TPXChar.cpp: one Unicode character built from UTF-8, UTF-32 or the process locale.
#include "TPXChar.h"

#include "TPXBasException.h"
#include "atr_utf8.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <cwchar>

// Reports of the exceptions raised here name this file.
static constexpr const char kAssertPath[] = "TPXBase/TPXBasString.m/src/TPXChar";

namespace {
/// The first code point UTF-8 cannot encode in four bytes.
constexpr unsigned int kNoEncoding = 0x200000;
}  // namespace

TPXChar::TPXChar(char c) : m_code(0), m_bytes{0, 0, 0, 0, 0} { *this = c; }

TPXChar& TPXChar::operator=(char c) {
  const unsigned char byte = static_cast<unsigned char>(c);
  m_code = byte < 0x80 ? byte : '?';
  m_bytes[0] = static_cast<char>(m_code);
  m_bytes[1] = 0;
  return *this;
}

TPXChar& TPXChar::operator=(const char* text) {
  (void)BuildFromUTF8(text);
  return *this;
}

void TPXChar::SetUnknown() {
  m_code = '?';
  m_bytes[0] = '?';
  m_bytes[1] = 0;
}

void TPXChar::ASCIIToLower() {
  if (m_bytes[0] >= 'A' && m_bytes[0] <= 'Z') {
    m_bytes[0] = static_cast<char>(m_bytes[0] + 32);
    m_code = static_cast<unsigned char>(m_bytes[0]);
  }
}

void TPXChar::ASCIIToUpper() {
  if (m_bytes[0] >= 'a' && m_bytes[0] <= 'z') {
    m_bytes[0] = static_cast<char>(m_bytes[0] - 32);
    m_code = static_cast<unsigned char>(m_bytes[0]);
  }
}

TPXChar::Result TPXChar::BuildFromUTF8(const char* text) {
  if (text == nullptr || *text == 0) {
    *this = TPXChar();
    return Success;
  }
  int length = 0;
  const int code = atr_utf8_to_ucs4(text, &length);
  if (code < 0) {
    SetUnknown();
    return Failure;
  }
  if (!(length > 0 && length <= 4)) {
    TPXBasAssertException failure("length >0 && length <=4");
    failure.Throw(kAssertPath, __LINE__);
  }
  m_code = static_cast<unsigned int>(code);
  std::memcpy(m_bytes, text, static_cast<std::size_t>(length));
  m_bytes[length] = 0;
  return Success;
}

TPXChar::Result TPXChar::BuildFromUTF32(unsigned int code) {
  char bytes[4];
  const int length = code < kNoEncoding ? atr_utf8_from_ucs4(bytes, static_cast<int>(code)) : 0;
  if (length <= 0) {
    SetUnknown();
    return Failure;
  }
  m_code = code;
  std::memcpy(m_bytes, bytes, static_cast<std::size_t>(length));
  m_bytes[length] = 0;
  return Success;
}

TPXChar::Result TPXChar::BuildFromLocale(const char* text) {
  if (text == nullptr || *text == 0) {
    *this = TPXChar();
    return Success;
  }
  // The platform's wide character is 32 bits: every character of the locale decodes.
  std::mbstate_t state{};
  wchar_t wide = 0;
  const std::size_t limit = strnlen(text, MB_CUR_MAX);
  const std::size_t taken = std::mbrtowc(&wide, text, limit, &state);
  if (taken == 0 || taken > limit || wide < 0) {
    SetUnknown();
    return Failure;
  }
  return BuildFromUTF32(static_cast<unsigned int>(wide));
}

TPXChar::Result TPXChar::ConvertToLocale(char* out, unsigned int* outLength) const {
  const int length = atr_utf8_to_encoding(atr_EncodingLocale, out, m_bytes, '\0');
  if (outLength != nullptr) *outLength = static_cast<unsigned int>(length);
  return length < 0 ? Failure : Success;
}

TPXChar TPXChar::Make(const char* text) {
  TPXChar c;
  (void)c.BuildFromUTF8(text);
  return c;
}
