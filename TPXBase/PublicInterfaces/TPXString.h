/// @file TPXString.h
/// The UTF-8 string whose positions, lengths and edits count characters, and its
/// iterator.
#ifndef TPXSTRING_H
#define TPXSTRING_H

#include "KLDTPXBasExport.h"
#include "TPXChar.h"
#include "atr_StringBase.h"

class DXLString;
class DXLUnicodeString;
class TPXString;

/// Walks the characters of a TPXString. A plain value, valid while its string is unchanged.
/// Made by TPXString::Begin and End. Moving before the first character or past the end is a
/// broken invariant (fatal), except a step back over bytes that do not end a character, which
/// throws TPXBasAssertException "prev !=0".
class KLDTPXBAS_API TPXStringiterator : public mem_AllocationOperators {
 public:
  /// Moves to the next character; moving past the end is fatal.
  TPXStringiterator& operator++();
  /// Moves to the previous character (see the class for the failures).
  TPXStringiterator& operator--();
  /// An iterator n characters further (n may be negative).
  TPXStringiterator operator+(int n) const;
  /// An iterator n characters back (n may be negative).
  TPXStringiterator operator-(int n) const;
  /// Index difference; both must walk the same string.
  int operator-(const TPXStringiterator& other) const;

  /// The character at the position; the empty character at the end.
  TPXChar Char() const;
  /// The bytes from the position to the end of the text; "" for a BAD string.
  const unsigned char* Code() const;
  /// The bytes from the position to the end of the text; "" for a BAD string.
  const char* CodeChar() const;
  /// The code point at the position (-1 at the end).
  int CodeAsUTF32() const;
  /// Bytes of the character at the position; 0 at the end.
  int ByteLength() const { return m_size; }
  /// Whether the position is the end.
  bool Done() const { return m_size == 0; }
  /// Whether a character is at the position.
  bool NotDone() const { return m_size != 0; }
  /// The character index of the position.
  int Index() const { return m_index; }
  /// The byte offset of the position.
  int BytePosition() const { return m_pos; }

 private:
  friend class TPXString;
  explicit TPXStringiterator(const TPXString* string);
  TPXStringiterator(const TPXString* string, int pos, int index);
  void SetSize();

  const TPXString* m_string;
  int m_pos;
  int m_index;
  int m_size;
};

/// A UTF-8 string indexed by character. Copies share one representation until one of them is
/// changed (atr_StringBase); a string and its copies belong to one thread at a time.
///
/// The text is always well formed by the lead-byte rules of the encoding routines
/// (atr_utf8.h): lead bytes 0x00-0x7F, 0xC0-0xF7 announce 1 to 4 bytes and every following
/// byte is a continuation byte. Overlong forms, encoded surrogates and codes up to 0x1FFFFF
/// are accepted. IsAscii() is true only when every byte is below 0x80; then
/// positions are byte offsets and indexing is constant time.
///
/// A failed Build... leaves the BAD value: IsBAD() is true, GetLengthInByte() gives
/// 2147483647, and the text reads as "" (CastToCharPtr, iteration, searches, conversions out,
/// which fail). Edits leave a BAD string BAD; a concatenation with a BAD operand is BAD.
/// Building or assigning a new text leaves BAD. Build... and Convert... never throw.
class KLDTPXBAS_API TPXString : public atr_StringBase {
 public:
  /// Outcome of a Build... or Convert...: Success (0) or Failure (1).
  enum Result { Success = 0, Failure = 1 };
  /// Which occurrences of a character Strip removes.
  enum TPXStripMode {
    /// Those at the start.
    TPXStripLeading = 1,
    /// Those at the end.
    TPXStripTrailing = 2,
    /// Those at the start and at the end.
    TPXStripBoth = 3,
    /// Every occurrence.
    TPXStripAll = 4
  };

  TPXString() = default;
  /// BuildFromUTF8(text): BAD when the text is not valid.
  TPXString(const char* text);  // NOLINT(google-explicit-constructor): literals are strings
  /// Shares other's text.
  TPXString(const TPXString& other) : atr_StringBase(other), m_isAscii(other.m_isAscii) {}
  /// Takes other's text; other is left empty.
  TPXString(TPXString&& other) noexcept
      : atr_StringBase(static_cast<atr_StringBase&&>(other)), m_isAscii(other.m_isAscii) {
    other.m_isAscii = true;
  }
  /// The platform string's text taken as UTF-8.
  explicit TPXString(const DXLString& text);
  /// The UTF-8 form of the platform's UTF-16 string; BAD when it holds a lone surrogate.
  explicit TPXString(const DXLUnicodeString& text);
  ~TPXString() = default;

  /// Shares other's text (a BAD other makes this string BAD).
  TPXString& operator=(const TPXString& other);
  /// Takes other's text; other is left empty.
  TPXString& operator=(TPXString&& other) noexcept;
  /// BuildFromUTF8(text): BAD when the text is not valid.
  TPXString& operator=(const char* text);

  /// Character i; i equal to the length gives the empty character. i past the length is
  /// fatal. Constant time when IsAscii(). A BAD string gives the empty character.
  TPXChar operator[](unsigned int i) const;

  /// This text followed by right's.
  TPXString operator+(const TPXString& right) const;
  /// This text followed by the UTF-8 text right.
  TPXString operator+(const char* right) const;
  /// Append(text).
  TPXString& operator+=(const TPXString& text) { return Append(text); }
  /// Appends text's characters (text may be this string).
  TPXString& Append(const TPXString& text);
  /// Appends the character c.
  TPXString& operator+=(const TPXChar& c);
  /// Appends the UTF-8 text; a text that is not valid makes this string BAD.
  TPXString& operator+=(const char* text);
  TPXString& operator+=(int value);                 ///< "%d"
  TPXString& operator+=(unsigned int value);        ///< "%u"
  TPXString& operator+=(long long value);           ///< decimal
  TPXString& operator+=(unsigned long long value);  ///< decimal

  /// Case change of ASCII letters only; a string with nothing to change keeps sharing.
  TPXString& ASCIIToLower();
  /// Upper case; see ASCIIToLower.
  TPXString& ASCIIToUpper();

  /// An iterator at the first character (at the end for an empty string).
  TPXStringiterator Begin() const;
  /// An iterator at the end, after the last character.
  TPXStringiterator End() const;

  /// Null or "" gives the empty string.
  Result BuildFromUTF8(const char* text);
  /// The first byteCount bytes (zero bytes are characters like any other).
  Result BuildFromUTF8(const char* text, unsigned int byteCount);
  /// unitCount UTF-16 units; lone or reversed surrogates and zero units fail.
  Result BuildFromUTF16(const unsigned short* units, unsigned int unitCount);
  /// A zero-terminated text of 16-bit characters, one code point per unit; surrogate units
  /// fail.
  Result BuildFromWChar(const unsigned short* text);
  /// A zero-terminated text in the process locale's encoding.
  Result BuildFromLocale(const char* text);
  /// @{
  /// value formatted by format, which must hold exactly one conversion for the value's type
  /// (int, unsigned: d i o u x X c; 64-bit: the same with "ll"; floating: a A e E f F g G,
  /// optionally "l"; flags, width and precision as digits). Anything else fails.
  Result BuildFromNum(int value, const char* format);
  Result BuildFromNum(unsigned int value, const char* format);
  Result BuildFromNum(double value, const char* format);
  Result BuildFromNum(long double value, const char* format);
  Result BuildFromNum(long long value, const char* format);
  Result BuildFromNum(unsigned long long value, const char* format);
  /// @}

  /// -1, 0 or 1 comparing bytes as unsigned values (a BAD string compares as "").
  int Compare(const TPXString& other) const;
  /// The same against the UTF-8 text (null compares as "").
  int Compare(const char* text) const;
  /// A hash of the bytes (sampled for texts of 400 bytes and more): 0 for an empty or BAD
  /// string, otherwise from 1 to 0x7FFFFFFF.
  unsigned int ComputeHashKey() const;

  /// Writes the text in the process locale's encoding, terminated, at out (null: measures);
  /// the length (negative on failure) goes to outLength when not null. Failure when the text
  /// holds a character the locale cannot represent, or the string is BAD.
  Result ConvertToLocale(char* out, unsigned int* outLength) const;
  /// Copies the bytes and a zero byte to out when not null; the byte count to length.
  Result ConvertToUTF8(char* out, unsigned int* length) const;
  /// UTF-16 units to out when not null (no terminator); their count to count.
  Result ConvertToUTF16(unsigned short* out, unsigned int* count) const;
  /// One unit per character, "?" above U+FFFF, then a zero unit; out needs
  /// GetLengthInChar() + 1 units. Null out does nothing.
  Result ConvertToWChar(unsigned short* out) const;
  /// @{
  /// Reads one value with sscanf and format (exactly one conversion of the value's type:
  /// floating types take "l"). Failure when nothing was read.
  Result ConvertToNum(int* out, const char* format) const;
  Result ConvertToNum(unsigned int* out, const char* format) const;
  Result ConvertToNum(double* out, const char* format) const;
  Result ConvertToNum(long double* out, const char* format) const;
  Result ConvertToNum(long long* out, const char* format) const;
  Result ConvertToNum(unsigned long long* out, const char* format) const;
  /// @}

  /// Character index of the first occurrence of pattern at or after start, or -1 (also for a
  /// start outside the string). An empty pattern is found at start.
  int FindPosition(const TPXString& pattern, int start) const;

  /// ReplaceSubString(position, 0, text): inserts text before character position.
  TPXString& Insert(int position, const TPXString& text);
  /// ReplaceSubString(start, count, empty): removes count characters at start.
  TPXString& Remove(int start, int count);
  /// Replaces every occurrence, scanning on after each replacement.
  TPXString& ReplaceAll(const TPXString& pattern, const TPXString& replacement);
  /// Replaces the first occurrence; gives its index or -1.
  int ReplaceSubString(const TPXString& pattern, const TPXString& replacement);
  /// Replaces count characters at start by text. Nothing happens when start is negative or at
  /// or past the end, count is negative, or start + count runs past the end.
  TPXString& ReplaceSubString(int start, int count, const TPXString& text);
  /// The same with text first resized to width characters (space fill, truncating).
  TPXString& ReplaceSubString(int start, int count, const TPXString& text, int width);

  /// Whether every byte is below 0x80.
  bool IsAscii() const { return m_isAscii; }
  /// Whether the string holds the BAD value.
  bool IsBAD() const { return m_Buff == BadBuffer(); }
  /// Whether the string has no bytes (also false for BAD).
  bool IsNull() const { return atr_StringBase::Length() == 0; }
  /// Number of characters (0 for BAD).
  int GetLengthInChar() const;
  /// GetLengthInChar().
  int Length() const { return GetLengthInChar(); }
  /// Number of bytes, terminator excluded; 2147483647 for BAD.
  int GetLengthInByte() const { return atr_StringBase::Length(); }
  /// The bytes; "" for the empty and the BAD string.
  const char* CastToCharPtr() const { return IsBAD() ? "" : atr_StringBase::CStr(); }

  /// Empties this string; copies sharing its text keep it.
  void Reset();
  /// Pads with fill up to length characters, or with truncate cuts down to length.
  TPXString& Resize(int length, const TPXChar& fill, int truncate);
  /// A copy without the occurrences of c that mode names.
  TPXString Strip(TPXStripMode mode, const TPXChar& c) const;
  /// Up to count characters from start; start past the end is fatal.
  TPXString SubString(int start, int count) const;

  /// Makes this string BAD; copies sharing its text keep it.
  void ToBAD();
  /// One byte per character: codes 32 to 126 as they are, others "?".
  DXLString ToDXL() const;
  /// The text as the platform's UTF-16 string; empty for BAD.
  DXLUnicodeString ToDXLU() const;

 private:
  friend class TPXStringiterator;
  enum BadString { Bad };
  explicit TPXString(BadString);

  static char* BadBuffer() { return reinterpret_cast<char*>(1); }
  /// The byte length of the readable text (0 for BAD).
  int ByteCount() const { return IsBAD() ? 0 : atr_StringBase::Length(); }
  /// Byte length of the character at byte pos (0 at the end).
  int StepAt(int pos) const;
  /// Byte offset of character index (the byte length for the end); -1 past the end.
  int ByteOffset(int index) const;
  /// The same for character target, knowing that character index (not above target) starts
  /// at byte pos.
  int ByteOffsetFrom(int pos, int index, int target) const;
  /// Character index of the character that starts at byte at, knowing that character index
  /// (not after it) starts at byte pos.
  int CharIndexAt(int pos, int index, int at) const;
  /// The character index of a long mixed text, built on first need and shared by every copy
  /// of the text; null for ASCII and short texts (and when memory is short): those are
  /// walked.
  const int* CharIndex() const;
  void SetBytes(const char* bytes, int count, bool isAscii);
  void Fill(const TPXString& text, unsigned int n);
  void Fill(const TPXChar& c, unsigned int n);
  void RefreshIsAscii();
  void AppendFormatted(const char* text);

  bool m_isAscii = true;
};

/// The UTF-8 text left followed by right's text.
KLDTPXBAS_API TPXString operator+(const char* left, const TPXString& right);

#endif  // TPXSTRING_H
