/// @file atr_String.h
/// The library's public byte string and its higher operations.
#ifndef ATR_STRING_H
#define ATR_STRING_H

#include "KLDTPXBasExport.h"
#include "atr_StringBase.h"
#include "atr_StringBasePrv.h"

class atr_String;

/// A copy of the text, not translated; null gives the empty string.
KLDTPXBAS_API atr_String atr_MakeAtrString(const char* text);
/// A copy of the other string's text (its own storage, not shared).
KLDTPXBAS_API atr_String atr_MakeAtrString(const atr_StringBasePrv& other);

/// The byte string in which messages, names and reports travel.
///
/// Copies share one reference-counted representation until one of them is changed (see
/// atr_StringBase); a string and its copies belong to one thread at a time. Positions and
/// lengths are unsigned here and limited to 2147483647 where they reach the representation.
/// From a text, an atr_String is made with atr_MakeAtrString or by the message formatting
/// entry points; its text constructors are private so that no text becomes a message by
/// accident. Nothing here throws except std::bad_alloc; a position past the text is fatal.
class KLDTPXBAS_API atr_String : public atr_StringBase {
 public:
  atr_String() = default;
  /// Shares other's text; never allocates.
  atr_String(const atr_String& other) = default;
  /// Takes other's text; other is left empty.
  atr_String(atr_String&& other) noexcept = default;
  ~atr_String() = default;
  /// Shares other's text.
  atr_String& operator=(const atr_String& other) = default;
  /// Takes other's text; other is left empty.
  atr_String& operator=(atr_String&& other) noexcept = default;

  /// The decimal text of value ("%d").
  explicit atr_String(int value) : atr_StringBase(value) {}

  /// The text, zero-terminated; "" for the empty string. Valid until the next edit.
  const char* CStr() const { return atr_StringBase::CStr(); }
  /// The same as CStr().
  const char* text() const { return atr_StringBase::CStr(); }
  /// Bytes of text, terminator excluded.
  unsigned int Length() const { return static_cast<unsigned int>(atr_StringBase::Length()); }
  /// Whether the text has no bytes.
  bool Empty() const { return atr_StringBase::Empty(); }

  // Read-only queries of the representation (positions as there; "not found" is Length()).
  using atr_StringBase::Compare;
  using atr_StringBase::Find;
  using atr_StringBase::rfind;
  /// Const: ix may be Length() (the terminator). Non-const: ix < Length(), and the text is
  /// made this string's own first, even when the caller only reads through the reference.
  using atr_StringBase::operator[];

  /// Appends the other string's text (which may be this string's own).
  atr_String& Append(const atr_String& other) {
    atr_StringBase::Append(other);
    return *this;
  }

  /// The bytes from start, at most n of them. start past the end is fatal
  /// ("Substr: start out of range"). The result always has storage of its own.
  atr_String Substr(unsigned int start, unsigned int n) const {
    const unsigned int length = Length();
    const unsigned int count = length - start < n ? length - start : n;
    if (start > length || count > static_cast<unsigned int>(kLongestInline))
      return SubstrElsewhere(start, n);
    // The header and the text are complete before the result refers to them: the result may
    // not be assumed apart from this string, which would otherwise be read again.
    const char* const from = CStr() + start;
    atr_StringRep* const rep = NewBlock(static_cast<int>(count), static_cast<int>(count));
    char* const buff = rep->InlineText();
    CopyBytes(buff, from, count);
    buff[count] = ATR_EOS;
    atr_String part;
    part.m_StringRep = rep;
    part.m_Buff = buff;
    return part;
  }

  /// Field n (from 0) of a list separated by separator; empty when there is no such field.
  atr_String extract(unsigned int n, char separator) const;
  /// The same field, with quote characters removed: a doubled quote gives one quote, a lone
  /// quote is dropped. A separator between quotes still ends the field.
  atr_String extract(unsigned int n, char separator, char quote) const;

  /// Replaces the first "%<position>$s" (position 0: "%s") by value's text.
  atr_String& ReplaceNonTranslated(int position, const atr_StringBase& value);
  /// Replaces the first "%<position>$d" (position 0: "%d") by the decimal text of value.
  atr_String& ReplaceNonTranslated(int position, int value);
  /// Replaces the first "%<position>$s" (position 0: "%s") by value (null: "").
  atr_String& ReplaceNonTranslated(int position, const char* value);
  /// Replaces the first occurrence of key (null or "": nothing) by value (null: "").
  atr_String& ReplaceNonTranslated(const char* key, const char* value);
  /// Replaces the first occurrence of key (null or "": nothing) by value's text.
  atr_String& ReplaceNonTranslated(const char* key, const atr_StringBase& value);

  /// Breaks every line of text so that it fits width columns where words allow (a word is
  /// never split). With keepBroken, a text that already holds a line break comes back as it
  /// was. A text not longer than width comes back shared. Width 0 is taken as 1.
  static atr_String AddLineBreaks(const atr_String& text, unsigned int width, bool keepBroken);
  /// Breaks one line at blanks: a line ends with the word that reaches width visible columns
  /// (bytes; the markers of the translation testing mode are invisible). Width 0 is taken
  /// as 1: one word per line.
  static atr_String BreakLineString(const atr_String& text, unsigned int width);

  /// The text converted from the process locale's encoding to UTF-8, or
  /// "****ERROR: Transcoding Error: " followed by the text when it is not valid in the locale.
  /// A text of ASCII bytes only comes back shared.
  atr_String LocaleToUTF8() const;
  /// The text converted from UTF-8 to the process locale's encoding, or the error text above
  /// when it is not valid UTF-8 or holds a character the locale cannot represent.
  atr_String UTF8ToLocale() const;

 private:
  friend KLDTPXBAS_API atr_String atr_MakeAtrString(const char* text);
  friend KLDTPXBAS_API atr_String atr_MakeAtrString(const atr_StringBasePrv& other);

  /// Copies the text; null gives the empty string.
  explicit atr_String(const char* text) : atr_StringBase(text) {}
  /// Copies n bytes (at most 2147483647).
  atr_String(const char* text, unsigned int n);

  /// Substr of a text too long for a size class, or with start out of range (fatal).
  atr_String SubstrElsewhere(unsigned int start, unsigned int n) const;
  /// This string converted by convert (measure with a null output, then write and terminate),
  /// this string itself when it holds ASCII bytes only, or the transcoding error text.
  atr_String Transcoded(int (*convert)(char* out, const char* in, int n)) const;
};

/// left with right's text appended; left is taken by value, so its storage is copied first
/// only when it is shared.
KLDTPXBAS_API atr_String operator+(atr_String left, const atr_String& right);

/// Whether the translation testing mode is on: KALDER_LANG, KLD_QA_PRINT and QFN_DICT_DIR all
/// exist (any value) at the first call. Fixed for the life of the process.
KLDTPXBAS_API bool atr_i18nTesting();
/// The marker of the translation testing mode (U+30BD U+30FC) in the process locale's encoding
/// at the first call, or "" when the locale cannot represent it. Fixed for the process.
KLDTPXBAS_API const char* atr_i18nExtraCharacters();

#endif  // ATR_STRING_H
