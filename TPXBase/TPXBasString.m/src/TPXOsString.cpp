// TPXOsString.cpp: OS strings, the process-wide converter and the C entry points.
#include "TPXOsString.h"

#include "TPXBasStringExceptions.h"
#include "TPXOsConverter.h"
#include "mem_ToOs.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

// The text of a TPXString has valid structure but may hold overlong forms and encoded
// surrogates. Texts that go to the system must spell exactly one name: an overlong 0xC0 0xAF
// would become "/" and 0xC0 0x80 a terminator, so they are refused here.
bool ShortestFormsOnly(const TPXString& text) {
  if (text.IsAscii()) return true;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text.CastToCharPtr());
  const unsigned char* end = p + text.GetLengthInByte();
  while (p < end) {
    const unsigned lead = *p;
    if (lead < 0x80) {
      ++p;
      continue;
    }
    const unsigned next = p + 1 < end ? p[1] : 0;
    if (lead < 0xC2 || (lead == 0xE0 && next < 0xA0) || (lead == 0xED && next >= 0xA0) ||
        (lead == 0xF0 && next < 0x90))
      return false;
    p += lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  }
  return true;
}

}  // namespace

TPXOsString::TPXOsString(const TPXString& text, OsType type) : m_type(type) { Convert(text); }

TPXOsString::TPXOsString(const char* utf8, OsType type) : m_type(type) {
  TPXString text;
  text.BuildFromUTF8(utf8);
  Convert(text);
}

TPXOsString::~TPXOsString() {
  if (m_type == OsUTF16)
    mem_deleteBuiltIn(static_cast<unsigned short*>(m_buffer));
  else
    mem_deleteBuiltIn(static_cast<char*>(m_buffer));
}

// A BAD string (the text was not UTF-8) has no form at all: converting its empty reading would
// hand the system a name nobody gave.
void TPXOsString::Convert(const TPXString& text) {
  if (m_type != OsUTF16 && m_type != OsLocale) return;
  if (text.IsBAD() || !ShortestFormsOnly(text)) {
    m_type = 0;
    return;
  }
  if (m_type == OsUTF16) {
    unsigned int units = 0;
    text.ConvertToUTF16(nullptr, &units);
    unsigned short* buffer = new (mem_BuiltInAlloc{}) unsigned short[units + 1]();
    text.ConvertToUTF16(buffer, &units);
    m_buffer = buffer;
    return;
  }
  unsigned int length = 0;
  if (text.ConvertToLocale(nullptr, &length) != TPXString::Success) {
    m_type = 0;
    return;
  }
  char* buffer = new (mem_BuiltInAlloc{}) char[length + 1]();
  text.ConvertToLocale(buffer, &length);
  m_buffer = buffer;
}

const unsigned short* TPXOsString::ToOS() const {
  if (m_type != OsUTF16) throw TPXBasOsStringConversion();
  return static_cast<const unsigned short*>(m_buffer);
}

const char* TPXOsString::ToLocale() const {
  if (m_type != OsLocale) throw TPXBasOsStringCast("Locale");
  return static_cast<const char*>(m_buffer);
}

TPXToOsBase::~TPXToOsBase() = default;
TPXToOs::~TPXToOs() = default;

const unsigned short* TPXToOs::ToUTF16(const char* utf8, unsigned short* out, int outBytes) {
  const TPXOsString os(utf8, TPXOsString::OsUTF16);
  const unsigned short* units = os.ToOS();
  std::size_t count = 0;
  while (units[count] != 0) ++count;
  std::size_t bytes = 2 * (count + 1);
  if (outBytes < 0) outBytes = 0;
  if (static_cast<std::size_t>(outBytes) < bytes) bytes = static_cast<std::size_t>(outBytes);
  if (out != nullptr) std::memcpy(out, units, bytes);
  return out;
}

const char* TPXToOs::ToLocale(const char* utf8, char* out, int outBytes) {
  const TPXOsString os(utf8, TPXOsString::OsLocale);
  const char* text = os.ToLocale();
  if (out != nullptr && outBytes > 0) std::strncpy(out, text, static_cast<std::size_t>(outBytes));
  return out;
}

namespace {

// A heap object rather than a static one: the library's unload hook runs after the C++
// statics are gone, and the allocation library may still hold the pointer until then.
TPXToOs* g_converter = nullptr;
bool g_exitHandlerSet = false;
bool g_converterGone = false;

void DestroyConverter() {
  if (mem_ToOs::Registered() == g_converter) mem_ToOs::Register(nullptr);
  delete g_converter;
  g_converter = nullptr;
  g_converterGone = true;
}

}  // namespace

void kld::RegisterOsConverter() {
  if (g_converter == nullptr) {
    if (g_converterGone) return;  // the process is exiting
    g_converter = new TPXToOs;
    if (!g_exitHandlerSet) {
      std::atexit(DestroyConverter);
      g_exitHandlerSet = true;
    }
  }
  mem_ToOs::Register(g_converter);
}

// The C entry points never let an exception out: it cannot cross a C caller's frames.
TPXOsString* TPXBasOsStringMake(const char* utf8) {
  try {
    TPXOsString* string = new TPXOsString(utf8, TPXOsString::OsUTF16);
    if (string->GetType() == TPXOsString::OsUTF16) return string;
    delete string;
  } catch (...) {
    // Memory ran out: the caller gets null.
  }
  return nullptr;
}

void TPXBasOsStringRelease(TPXOsString* string) { delete string; }

const unsigned short* TPXBasOsStringToOS(TPXOsString* string) {
  if (string == nullptr || string->GetType() != TPXOsString::OsUTF16) return nullptr;
  return string->ToOS();
}
