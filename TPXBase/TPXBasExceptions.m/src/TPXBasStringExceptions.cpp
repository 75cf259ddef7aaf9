// TPXBasStringExceptions.cpp: the exceptions of failed string conversions.
#include "TPXBasStringExceptions.h"

#include "atr_translate.h"

namespace {
const TPXBasStringMode kUtf8(false);
}  // namespace

TPXBasOsStringConversion::TPXBasOsStringConversion() = default;
TPXBasOsStringConversion::TPXBasOsStringConversion(const TPXBasOsStringConversion& other) = default;
TPXBasOsStringConversion::~TPXBasOsStringConversion() = default;
atr_String TPXBasOsStringConversion::AsString(TPXBasStringMode) const {
  return atr("Trouble coverting string to current locale", kUtf8);
}
void TPXBasOsStringConversion::Propagate() const { throw TPXBasOsStringConversion(*this); }
TPXBasException* TPXBasOsStringConversion::Clone() const {
  return new TPXBasOsStringConversion(*this);
}
int TPXBasOsStringConversion::GetCode() const { return 309; }

TPXBasOsStringCast::TPXBasOsStringCast(const char* type)
    : m_type(atr<const char*>("%s", type, kUtf8)) {}
TPXBasOsStringCast::TPXBasOsStringCast(const TPXBasOsStringCast& other) = default;
TPXBasOsStringCast::~TPXBasOsStringCast() = default;
atr_String TPXBasOsStringCast::AsString(TPXBasStringMode) const {
  return atr<const char*>("Attempt to access OS string using unexpected format: %s", m_type.CStr(),
                          kUtf8);
}
void TPXBasOsStringCast::Propagate() const { throw TPXBasOsStringCast(*this); }
TPXBasException* TPXBasOsStringCast::Clone() const { return new TPXBasOsStringCast(*this); }
int TPXBasOsStringCast::GetCode() const { return 310; }

TPXBasToUTF8Exception::TPXBasToUTF8Exception(const char* localeString)
    : m_localeString(atr<const char*>("%s", localeString, kUtf8)) {}
TPXBasToUTF8Exception::TPXBasToUTF8Exception(const TPXBasToUTF8Exception& other) = default;
TPXBasToUTF8Exception::~TPXBasToUTF8Exception() = default;
atr_String TPXBasToUTF8Exception::AsString(TPXBasStringMode) const {
  return atr<const char*>("Trouble converting string to UTF8: %s", m_localeString.CStr(), kUtf8);
}
void TPXBasToUTF8Exception::Propagate() const { throw TPXBasToUTF8Exception(*this); }
TPXBasException* TPXBasToUTF8Exception::Clone() const { return new TPXBasToUTF8Exception(*this); }
int TPXBasToUTF8Exception::GetCode() const { return 311; }

TPXBasFromUTF8Exception::TPXBasFromUTF8Exception(const TPXString& text) : m_utfString(text) {}
TPXBasFromUTF8Exception::TPXBasFromUTF8Exception(const TPXBasFromUTF8Exception& other) = default;
TPXBasFromUTF8Exception::~TPXBasFromUTF8Exception() = default;
atr_String TPXBasFromUTF8Exception::AsString(TPXBasStringMode) const {
  return atr<const char*>("Trouble converting string to current locale: %s",
                          m_utfString.CastToCharPtr(), kUtf8);
}
void TPXBasFromUTF8Exception::Propagate() const { throw TPXBasFromUTF8Exception(*this); }
TPXBasException* TPXBasFromUTF8Exception::Clone() const {
  return new TPXBasFromUTF8Exception(*this);
}
int TPXBasFromUTF8Exception::GetCode() const { return 312; }
