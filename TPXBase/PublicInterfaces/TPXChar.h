/// @file TPXChar.h
/// One Unicode character with its UTF-32 code and its UTF-8 bytes.
#ifndef TPXCHAR_H
#define TPXCHAR_H

#include "KLDTPXBasExport.h"
#include "mem_AllocationOperators.h"

/// One character: its code point (0 for the empty character) and its UTF-8 bytes followed by
/// a zero byte. A value type; a failed build leaves "?" (code 63) and reports failure.
class KLDTPXBAS_API TPXChar : public mem_AllocationOperators {
 public:
  /// Outcome of a build or conversion.
  enum Result {
    Success = 0,  ///< done
    Failure = 1   ///< not possible: the character is "?" (or, for ConvertToLocale, unchanged)
  };

  /// The empty character.
  TPXChar() : m_code(0), m_bytes{0, 0, 0, 0, 0} {}
  /// A byte below 0x80 gives that character, any other byte "?".
  TPXChar(char c);  // NOLINT(google-explicit-constructor): a char is a character
  /// @{
  /// Copies the code and the bytes.
  TPXChar(const TPXChar& other) = default;
  TPXChar& operator=(const TPXChar& other) = default;
  /// @}
  /// As the constructor from a char: a byte below 0x80 gives that character, any other "?".
  TPXChar& operator=(char c);
  /// As BuildFromUTF8; the result is ignored.
  TPXChar& operator=(const char* text);

  /// @{
  /// Compare the code points; 1 when the relation holds, else 0.
  int operator==(const TPXChar& other) const { return m_code == other.m_code; }
  int operator!=(const TPXChar& other) const { return m_code != other.m_code; }
  int operator<(const TPXChar& other) const { return m_code < other.m_code; }
  int operator<=(const TPXChar& other) const { return m_code <= other.m_code; }
  int operator>(const TPXChar& other) const { return m_code > other.m_code; }
  int operator>=(const TPXChar& other) const { return m_code >= other.m_code; }
  /// @}

  /// The code when below 128, else "?".
  operator char() const { return m_code < 128 ? static_cast<char>(m_code) : '?'; }

  /// Shifts an ASCII letter by 32; any other character is unchanged.
  void ASCIIToLower();
  /// Shifts an ASCII letter by -32; any other character is unchanged.
  void ASCIIToUpper();

  /// The first character of the zero-terminated UTF-8 text ("" or null: the empty character).
  /// An invalid or cut sequence gives "?" and failure (overlong forms and surrogates are
  /// characters like any other).
  Result BuildFromUTF8(const char* text);
  /// Encoded with atr_utf8_from_ucs4: a code from 0x200000 up gives "?" and failure.
  Result BuildFromUTF32(unsigned int code);
  /// The first multibyte character of the process locale at text; "?" and failure when the
  /// locale cannot read it.
  Result BuildFromLocale(const char* text);

  /// The UTF-8 bytes, zero-terminated; valid while the character lives and is not changed.
  const char* CastToCharPtr() const { return m_bytes; }
  /// The code point (0 for the empty character).
  unsigned int ConvertToUTF32() const { return m_code; }
  /// Whether the code point is below 0x80 (the empty character is).
  bool IsAscii() const { return m_code < 0x80; }
  /// Writes the character in the locale's encoding, terminated, at out (null: measures only);
  /// out must hold the measured length plus one. The length (negative when the locale cannot
  /// represent the character) goes to outLength when not null. Failure when negative.
  Result ConvertToLocale(char* out, unsigned int* outLength) const;

  /// The character BuildFromUTF8(text) gives.
  static TPXChar Make(const char* text);

 private:
  void SetUnknown();

  unsigned int m_code;
  char m_bytes[5];
};

#endif  // TPXCHAR_H
