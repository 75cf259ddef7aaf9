/// @file DXLString.h
/// The platform's byte string class (stand-in).
#ifndef DXLSTRING_H
#define DXLSTRING_H

#include "DXLSysTSExport.h"

#include <string>

/// A byte string of the platform. Holds its own copy of the text; never null.
class DXLSYSTS_API DXLString {
 public:
  DXLString();
  /// Copies text; null gives the empty string.
  DXLString(const char* text);  // NOLINT(google-explicit-constructor): platform conversion
  /// Copies the text of other.
  DXLString(const DXLString& other);
  /// Replaces the text by a copy of other's.
  DXLString& operator=(const DXLString& other);
  /// Replaces the text by a copy of text; null gives the empty string.
  DXLString& operator=(const char* text);
  ~DXLString();

  /// The text, terminated; valid until the next assignment.
  const char* CastToCharPtr() const;

 private:
  std::string m_text;
};

#endif  // DXLSTRING_H
