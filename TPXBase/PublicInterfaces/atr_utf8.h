/// @file atr_utf8.h
/// Stepping through, validating and converting byte texts between the library's
/// character encodings (none, the process locale, UTF-8, Latin-1) through UCS-4 code points.
#ifndef ATR_UTF8_H
#define ATR_UTF8_H

#include "KLDTPXBasExport.h"

/// Encoding identifiers: the rows of `atr_encodings`. Every routine below that takes an
/// identifier accepts 0 to 3; any other value is a broken invariant (fatal report
/// "AssertionFailed:!\"atr_utf8: Invalid encoding value\""), after which, should the fatal-error
/// service return, the routine carries on as if it had been given 0.
enum atr_EncodingEnm {
  atr_EncodingNone = 0,    ///< no encoding: nothing is valid, nothing converts
  atr_EncodingLocale = 1,  ///< the multibyte encoding of the process locale (LC_CTYPE)
  atr_EncodingUtf8 = 2,    ///< UTF-8, the library's internal form
  atr_EncodingLatin1 = 3   ///< ISO 8859-1
};

/// Number of rows of `atr_encodings` (valid identifiers are 0 to atr_EncodingCount - 1).
constexpr int atr_EncodingCount = 4;

/// One row of the encoding table: three routines that every conversion goes through.
///  - m_validate(text, n): whether the n bytes at text are a well-formed text of the encoding.
///  - m_toUcs4(text, length): the code point at text, or -1; stores the bytes it took (or 0 on
///    failure) in *length when length is not null.
///  - m_fromUcs4(out, codePoint): writes the encoded code point at out (only measures when out
///    is null) and gives the byte count, or -1 when the encoding cannot hold the code point.
/// The routines keep no state; the locale row follows the process locale of the moment.
struct atr_encoding {
  /// Whether the n bytes at text are a well-formed text of the encoding.
  bool (*m_validate)(const unsigned char* text, int n);
  /// The code point at text, or -1; the bytes taken (0 on failure) go to *length when
  /// length is not null.
  int (*m_toUcs4)(const unsigned char* text, int* length);
  /// Writes codePoint encoded at out (measures only when out is null) and gives the byte
  /// count, or -1 when the encoding cannot hold it.
  int (*m_fromUcs4)(unsigned char* out, int codePoint);
};

/// The process-wide table, indexed by encoding identifier.
extern KLDTPXBAS_API const atr_encoding atr_encodings[atr_EncodingCount];

// ---------------------------------------------------------------------------------------------
// UTF-8 stepping and coding. There is no check for overlong forms or surrogate code points.
// ---------------------------------------------------------------------------------------------

/// Bytes needed to encode codePoint: 1, 2, 3 or 4; 0 for 0x200000 and above (and for negative
/// values), which cannot be encoded.
KLDTPXBAS_API int atr_utf8_len(int codePoint);
/// @{
/// Sequence length announced by the lead byte at text: 1 to 4, or 0 for a continuation byte
/// (0x80 to 0xBF) or 0xF8 and above. Reads one byte.
KLDTPXBAS_API int atr_utf8_len(const unsigned char* text);
KLDTPXBAS_API int atr_utf8_len(const char* text);
/// @}

/// @{
/// text plus the sequence length of its lead byte; a continuation byte or an invalid lead byte
/// advances by 1. Trusts the lead byte: does not look at the bytes it steps over.
KLDTPXBAS_API const unsigned char* atr_utf8_next(const unsigned char* text);
KLDTPXBAS_API const char* atr_utf8_next(const char* text);
inline unsigned char* atr_utf8_next(unsigned char* text) {
  return const_cast<unsigned char*>(atr_utf8_next(static_cast<const unsigned char*>(text)));
}
inline char* atr_utf8_next(char* text) {
  return const_cast<char*>(atr_utf8_next(static_cast<const char*>(text)));
}
/// @}

/// @{
/// The start of the character that ends just before text, or null when the bytes before text
/// do not form one well-formed character. Looks at up to four bytes before text: the caller
/// guarantees they belong to the same buffer, or uses the form with `begin`.
KLDTPXBAS_API const unsigned char* atr_utf8_prev(const unsigned char* text);
KLDTPXBAS_API const char* atr_utf8_prev(const char* text);
/// @}
/// @{
/// The same, never looking before begin: null also when text is begin or when the character
/// would have to start before begin.
KLDTPXBAS_API const unsigned char* atr_utf8_prev(const unsigned char* text,
                                                 const unsigned char* begin);
KLDTPXBAS_API const char* atr_utf8_prev(const char* text, const char* begin);
/// @}

/// @{
/// The code point of the UTF-8 sequence at text, or -1 for a continuation or invalid lead byte
/// or a byte outside 0x80 to 0xBF where a continuation byte is expected. When length is not
/// null the lead byte's sequence length is stored there, also when it is 0 or the sequence is
/// broken. Stops at the first byte that is not a continuation byte, so a zero-terminated text
/// is never read past its terminator.
KLDTPXBAS_API int atr_utf8_to_ucs4(const unsigned char* text, int* length);
KLDTPXBAS_API int atr_utf8_to_ucs4(const char* text, int* length);
/// @}

/// @{
/// Writes the UTF-8 bytes of codePoint at out and gives their count (1 to 4); gives 0 and
/// writes nothing for code points from 0x200000 up (and negative ones). out must not be null.
KLDTPXBAS_API int atr_utf8_from_ucs4(unsigned char* out, int codePoint);
KLDTPXBAS_API int atr_utf8_from_ucs4(char* out, int codePoint);
/// @}

/// @{
/// The code point of the multibyte character of the process locale at text, reading at most
/// MB_CUR_MAX bytes; -1 for an invalid or incomplete character and for the zero byte. When
/// length is not null the bytes taken are stored there (0 on failure).
KLDTPXBAS_API int atr_locale_to_ucs4(const unsigned char* text, int* length);
KLDTPXBAS_API int atr_locale_to_ucs4(const char* text, int* length);
/// @}

/// @{
/// Writes codePoint in the process locale's encoding at out (only measures when out is null)
/// and gives the byte count (at most MB_CUR_MAX), or -1 when the locale cannot represent it.
KLDTPXBAS_API int atr_locale_from_ucs4(unsigned char* out, int codePoint);
KLDTPXBAS_API int atr_locale_from_ucs4(char* out, int codePoint);
/// @}

// ---------------------------------------------------------------------------------------------
// Validation and conversion. Byte counts are 32-bit; a negative count is invalid input.
// ---------------------------------------------------------------------------------------------

/// @{
/// Whether the zero-terminated text is well formed in encoding id (the terminator excluded).
KLDTPXBAS_API bool atr_encoding_validate(int id, const unsigned char* text);
KLDTPXBAS_API bool atr_encoding_validate(int id, const char* text);
/// @}
/// @{
/// Whether the n bytes at text are well formed in encoding id. No byte at or beyond text + n
/// is read. An empty text is valid in every encoding but 0.
KLDTPXBAS_API bool atr_encoding_validate_sized(int id, const unsigned char* text, int n);
KLDTPXBAS_API bool atr_encoding_validate_sized(int id, const char* text, int n);
/// @}

/// @{
/// Converts the inLength bytes at in from encoding fromId to encoding toId.
/// With out null only measures; otherwise writes at out, which must hold the measured count
/// (plus one when terminate is true: a zero byte is then stored after the text, not counted).
/// Gives the number of bytes produced, or
///   -1  invalid input (a byte sequence fromId cannot read, a character cut short by the end
///       of the input, any non-empty input of encoding 0), with nothing written past the point
///       reached and no terminator;
///   -2  a character toId cannot represent while replacement is the zero byte; otherwise
///       replacement is written in its place and counts as one byte.
/// No byte at or beyond in + inLength is read.
KLDTPXBAS_API int atr_encoding_convert(int toId, unsigned char* out, int fromId,
                                       const unsigned char* in, int inLength,
                                       unsigned char replacement, bool terminate);
KLDTPXBAS_API int atr_encoding_convert(int toId, char* out, int fromId, const char* in,
                                       int inLength, char replacement, bool terminate);
/// @}

/// @{
/// Converts the zero-terminated in from fromId to UTF-8, without replacement, terminated.
KLDTPXBAS_API int atr_utf8_from_encoding(unsigned char* out, int fromId, const unsigned char* in);
KLDTPXBAS_API int atr_utf8_from_encoding(char* out, int fromId, const char* in);
/// @}
/// @{
/// Converts n bytes at in from fromId to UTF-8, without replacement, terminated as asked.
KLDTPXBAS_API int atr_utf8_from_encoding_sized(unsigned char* out, int fromId,
                                               const unsigned char* in, int n, bool terminate);
KLDTPXBAS_API int atr_utf8_from_encoding_sized(char* out, int fromId, const char* in, int n,
                                               bool terminate);
/// @}

/// @{
/// Converts the zero-terminated UTF-8 in to toId with the replacement byte given, terminated.
KLDTPXBAS_API int atr_utf8_to_encoding(int toId, unsigned char* out, const unsigned char* in,
                                       unsigned char replacement);
KLDTPXBAS_API int atr_utf8_to_encoding(int toId, char* out, const char* in, char replacement);
/// @}
/// @{
/// Converts n bytes of UTF-8 at in to toId with the replacement byte given, terminated as asked.
KLDTPXBAS_API int atr_utf8_to_encoding_sized(int toId, unsigned char* out, const unsigned char* in,
                                             int n, unsigned char replacement, bool terminate);
KLDTPXBAS_API int atr_utf8_to_encoding_sized(int toId, char* out, const char* in, int n,
                                             char replacement, bool terminate);
/// @}

/// Decodes the n bytes of UTF-8 at in into one UCS-4 code point per character, by the rules of
/// atr_encoding_validate_sized(atr_EncodingUtf8, ...). Gives the number of code points, or -1
/// when the text is not well formed (nothing is then written). With out null
/// it only measures; otherwise out holds at least the measured count (n always suffices).
/// No byte at or beyond in + n is read.
KLDTPXBAS_API int atr_utf8_to_ucs4_sized(unsigned int* out, const unsigned char* in, int n);

#endif  // ATR_UTF8_H
