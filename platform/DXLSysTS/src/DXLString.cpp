// DXLString.cpp: the platform byte string.
#include "DXLString.h"

DXLString::DXLString() = default;
DXLString::DXLString(const char* text) : m_text(text != nullptr ? text : "") {}
DXLString::DXLString(const DXLString& other) = default;
DXLString& DXLString::operator=(const DXLString& other) = default;
DXLString& DXLString::operator=(const char* text) {
  m_text = text != nullptr ? text : "";
  return *this;
}
DXLString::~DXLString() = default;
const char* DXLString::CastToCharPtr() const { return m_text.c_str(); }
