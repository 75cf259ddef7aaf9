/// @file DXLUnicodeString.h
/// The platform's UTF-16 string class (stand-in).
#ifndef DXLUNICODESTRING_H
#define DXLUNICODESTRING_H

#include "DXLSysTSExport.h"

#include <string>

/// A string of UTF-16 code units. Its length counts code units (a character above U+FFFF
/// takes two), so 4 bytes per unit always hold its UTF-8 form.
class DXLSYSTS_API DXLUnicodeString {
 public:
  DXLUnicodeString();
  /// From count UTF-16 units (copied); no validation.
  DXLUnicodeString(const unsigned short* units, int count);
  /// Copies the code units of other.
  DXLUnicodeString(const DXLUnicodeString& other);
  /// Replaces the code units by a copy of other's.
  DXLUnicodeString& operator=(const DXLUnicodeString& other);
  ~DXLUnicodeString();

  /// Replaces the content by the UTF-16 form of byteCount UTF-8 bytes. Returns 0, or -1 for
  /// invalid UTF-8 (overlong, surrogate, above U+10FFFF, truncated), leaving the string empty.
  int BuildFromUTF8(const char* bytes, int byteCount);
  /// Number of UTF-16 code units.
  int GetLengthInChar() const;
  /// Writes the UTF-8 form into buffer, which holds byteCount bytes, and sets byteCount to the
  /// bytes written (no terminator). Returns 0, or -1 when the buffer is too small or the
  /// content holds an unpaired surrogate; byteCount is then 0.
  int ConvertToUTF8(char* buffer, int& byteCount) const;
  /// The code units and their number.
  const unsigned short* GetBuffer() const;

 private:
  std::u16string m_units;
};

#endif  // DXLUNICODESTRING_H
