/// @file atr_translate.h
/// Building translated messages from printf-style formats and typed arguments.
#ifndef ATR_TRANSLATE_H
#define ATR_TRANSLATE_H

#include "KLDTPXBasExport.h"
#include "TPXBasStringMode.h"
#include "atr_String.h"
#include "atr_StringBase.h"
#include "mem_AllocationOperators.h"

#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

struct atr_TemplateKey;

/// One message under construction: the format text, looked up in the translation dictionary
/// (atr_tr.h) and parsed once into a template with one placeholder per conversion.
///
/// Conversions are "%", an optional argument number with "$" ("%2$s"), flags, width and
/// precision made of digits, "l", "." and "-", and one of the letters E X c d e f g o s u x.
/// Anything else after a "%" is not a conversion: the "%" and its flags vanish and the rest
/// stays as text; "%%" is one "%". Argument n goes to the conversion with the n-th lowest
/// number; unnumbered conversions take the lowest numbers left free, in order of appearance.
///
/// Use: construct, give the arguments with atr_SubstituteFormat (n = 1, 2, ...), then Result.
/// A conversion without an argument shows as "%s"; extra arguments are ignored. Widths and
/// precisions of numeric conversions above atr_translate::MaxField count as MaxField; a text
/// ("%s") is justified to any width (its padding is allocated: std::bad_alloc when that fails). A
/// "%$" in the format text is a broken invariant (fatal "AssertionFailed:0"); in a translation from
/// the dictionary it makes the message fall back to the untranslated text. Belongs to one thread;
/// not copyable.
class KLDTPXBAS_API atr_translate {
 public:
  /// Largest width or precision a numeric conversion can ask for: numbers never need more
  /// than 1023 bytes. Texts are not bounded.
  static constexpr int MaxField = 512;

  /// Looks the text up, parses, numbers and orders the conversions. A null text gives the
  /// empty message.
  atr_translate(const char* text, TPXBasStringMode mode);
  ~atr_translate();
  atr_translate(const atr_translate&) = delete;
  atr_translate& operator=(const atr_translate&) = delete;

  /// The text of the conversion that receives argument n ("%" flags width precision letter,
  /// a length letter "l" before the letter dropped), or null when n is below 1 or above the
  /// number of conversions.
  const char* Format(int n) const;

  /// Sets the substitution of argument n from a UTF-8 text, applying the width, precision and
  /// "-" flag of conversion (a copy of value when conversion is null or plain "%s"). Width
  /// and precision count bytes. Nothing happens when n is out of range; null value is "".
  void AddSubstitution(int n, const char* value, const char* conversion);

  /// Sets the substitution of argument n to the length bytes of a finished UTF-8 text.
  /// Nothing happens when n is out of range.
  void SetSubstitution(int n, const char* value, int length);

  /// The assembled message in the encoding of mode. May be called more than once.
  atr_String Result(TPXBasStringMode mode) const;

  /// Removes the leading "0" of a three-digit exponent after the first "e" ("1.5e+005" to
  /// "1.5e+05"), in place.
  static void FixExponent(char* text);

 private:
  /// One conversion of the message.
  struct StrArgs : mem_AllocationOperatorsTiny {
    int m_number;          ///< argument number, 1-based (-10000 while unnumbered)
    char* m_format;        ///< "%" flags width precision letter, inside m_template's block
    char* m_substitution;  ///< formatted argument (UTF-8), null until substituted
    int m_length;          ///< bytes of m_substitution
    char m_small[24];      ///< holds a short substitution without an allocation
  };
  enum class ParseResult { Ok, DollarWithoutNumber };
  /// Messages with at most this many conversions keep them inside the object.
  static constexpr int kInlineArgs = 4;
  /// Templates (with their conversion texts and order) up to this size stay inside the object.
  static constexpr int kInlineBlock = 192;
  friend struct atr_translateParser;  // lists a text's conversions (atr_inspect.h)
  friend struct atr_DirectProgram;    // the one-pass form of a template (atr_FormatDirect)

  static int compare(const void* a, const void* b);
  void ReportIllegalPosition(int n) const;
  void Build(const char* text, TPXBasStringMode mode);
  bool Prepare(const char* text, bool translated);
  ParseResult Parse(const char* text);
  void Number();
  void Order();
  void Clear();
  char* NewBlock(size_t size);
  StrArgs* NewArgs(int count);
  bool Recall(const atr_TemplateKey& key);
  void Remember(const atr_TemplateKey& key) const;
  StrArgs* Receiver(int n) const;
  void Store(StrArgs* r, const char* value, int length, int padBefore, int padAfter);

  const char* m_text = nullptr;    ///< the format text in UTF-8
  atr_String m_utf8;               ///< holds m_text when the text had to be converted
  int m_count = 0;                 ///< conversions in the template
  StrArgs* m_args = nullptr;       ///< conversions in order of appearance
  StrArgs** m_byNumber = nullptr;  ///< the same, ordered by argument number (in m_block)
  char* m_template = nullptr;      ///< literal text, a zero byte per placeholder (in m_block)
  char* m_formats = nullptr;       ///< the conversion texts one after another (in m_block)
  char* m_block = nullptr;         ///< m_byNumber, template and conversion texts
  int m_templateBytes = 0;         ///< bytes of m_template, its terminator included
  int m_formatBytes = 0;           ///< bytes of the conversion texts, terminators included
  StrArgs m_inlineArgs[kInlineArgs];
  alignas(StrArgs*) char m_inlineBlock[kInlineBlock];
};

/// @{
/// Substitutes argument n of a message; one overload per argument type. Numbers are formatted
/// according to the letter of the receiving conversion (see atr_translate); texts are taken in
/// the encoding of mode; float and pointers ignore mode.
KLDTPXBAS_API void atr_SubstituteFormat(atr_translate& message, int n, int value,
                                        TPXBasStringMode mode);
KLDTPXBAS_API void atr_SubstituteFormat(atr_translate& message, int n, unsigned int value,
                                        TPXBasStringMode mode);
KLDTPXBAS_API void atr_SubstituteFormat(atr_translate& message, int n, long long value,
                                        TPXBasStringMode mode);
KLDTPXBAS_API void atr_SubstituteFormat(atr_translate& message, int n, unsigned long long value,
                                        TPXBasStringMode mode);
KLDTPXBAS_API void atr_SubstituteFormat(atr_translate& message, int n, float value,
                                        TPXBasStringMode mode);
KLDTPXBAS_API void atr_SubstituteFormat(atr_translate& message, int n, double value,
                                        TPXBasStringMode mode);
/// Substitutes argument n of a message with a text in the encoding of mode; a null text is
/// substituted as "".
KLDTPXBAS_API void atr_SubstituteFormat(atr_translate& message, int n, const char* value,
                                        TPXBasStringMode mode);
KLDTPXBAS_API void atr_SubstituteFormat(atr_translate& message, int n, const atr_StringBase& value,
                                        TPXBasStringMode mode);
/// Substitutes argument n of a message with the pointer's value as an unsigned integer of
/// its size; mode is ignored.
KLDTPXBAS_API void atr_SubstituteFormat(atr_translate& message, int n, const void* value,
                                        TPXBasStringMode mode);
/// Substitutes argument n of a message with a long or unsigned long (size_t among them),
/// formatted as the 64-bit integers they are here.
inline void atr_SubstituteFormat(atr_translate& message, int n, long value, TPXBasStringMode mode) {
  atr_SubstituteFormat(message, n, static_cast<long long>(value), mode);
}
inline void atr_SubstituteFormat(atr_translate& message, int n, unsigned long value,
                                 TPXBasStringMode mode) {
  atr_SubstituteFormat(message, n, static_cast<unsigned long long>(value), mode);
}
/// @}

/// Substitutes a pointer as an unsigned integer of the pointer's size, in UTF-8 mode.
template <int Size>
struct ForwardVoidPBySize;
template <>
/// The form for 32-bit pointers.
struct KLDTPXBAS_API ForwardVoidPBySize<4> {
  /// Substitutes argument n of message with value as a 32-bit unsigned integer.
  static void Format(atr_translate& message, int n, const void* value);
};
template <>
/// The form for 64-bit pointers.
struct KLDTPXBAS_API ForwardVoidPBySize<8> {
  /// Substitutes argument n of message with value as a 64-bit unsigned integer.
  static void Format(atr_translate& message, int n, const void* value);
};

/// The message of text without arguments: every conversion shows as "%s".
KLDTPXBAS_API atr_String atr(const char* text, TPXBasStringMode mode);

/// @cond internal
namespace atr_detail {
/// An argument that atr_FormatDirect formats itself: a text, or an int when text is null.
struct DirectArg {
  const char* text;
  int number;
};
template <class T>
struct IsDirect : std::false_type {};
template <>
struct IsDirect<const char*> : std::true_type {};
template <>
struct IsDirect<char*> : std::true_type {};
template <>
struct IsDirect<int> : std::true_type {};
inline DirectArg MakeDirect(const char* text) { return {text != nullptr ? text : "", 0}; }
inline DirectArg MakeDirect(int number) { return {nullptr, number}; }
}  // namespace atr_detail
/// @endcond

/// The message of text with count texts and ints in one pass, in UTF-8 mode: from this thread's
/// record of the template that text (the same address and bytes, the same dictionary) gave
/// before, when every conversion receives an argument and takes it without formatting (a
/// text for any conversion but a "%s" with flags, an int for "%s" and a bare "%d" or "%u").
/// The result is the one the general path gives. False, with out untouched, when the general
/// path must make the message.
KLDTPXBAS_API bool atr_FormatDirect(const char* text, const atr_detail::DirectArg* args, int count,
                                    TPXBasStringMode mode, atr_String& out);

/// The message of text with arguments args (argument i goes to conversion number i), for any
/// argument types that have an atr_SubstituteFormat overload: atr<const char*, int>(text,
/// file, line, mode). The form without template arguments deduces them. Texts and ints go
/// through atr_FormatDirect first.
template <class... Args>
atr_String atr(const char* text, Args... args, TPXBasStringMode mode) {
  if constexpr (sizeof...(Args) > 0 && (atr_detail::IsDirect<Args>::value && ...)) {
    const atr_detail::DirectArg direct[] = {atr_detail::MakeDirect(args)...};
    atr_String out;
    if (atr_FormatDirect(text, direct, static_cast<int>(sizeof...(Args)), mode, out)) return out;
  }
  atr_translate message(text, mode);
  int n = 0;
  (atr_SubstituteFormat(message, ++n, args, mode), ...);
  (void)n;
  return message.Result(mode);
}

/// @cond internal
// Argument types as atr passes them on: arrays of char and char* become const char*.
namespace atr_detail {
template <class T>
struct ArgType {
  using type = std::decay_t<T>;
};
template <>
struct ArgType<char*> {
  using type = const char*;
};
template <class T>
using ArgTypeT = typename ArgType<std::decay_t<T>>::type;

template <class Tuple, std::size_t... I>
atr_String CallAtr(const char* text, const Tuple& all, std::index_sequence<I...>) {
  return atr<ArgTypeT<std::tuple_element_t<I, Tuple>>...>(text, std::get<I>(all)...,
                                                          std::get<sizeof...(I)>(all));
}
}  // namespace atr_detail
/// @endcond

/// atr("Value %d of %s", 5, name, mode): the argument types are deduced (arrays of char and
/// char* are passed as const char*). The last argument must be the mode.
template <int = 0, class... All>
atr_String atr(const char* text, const All&... all) {
  static_assert(sizeof...(All) > 0, "atr takes a TPXBasStringMode as its last argument");
  using Last = std::tuple_element_t<sizeof...(All) - 1, std::tuple<All...>>;
  static_assert(std::is_same_v<Last, TPXBasStringMode>,
                "atr takes a TPXBasStringMode as its last argument");
  return atr_detail::CallAtr(text, std::tuple<const All&...>(all...),
                             std::make_index_sequence<sizeof...(All) - 1>());
}

/// @cond internal
// The instances the library itself uses, compiled once in the library.
extern template KLDTPXBAS_API atr_String atr<const char*>(const char*, const char*,
                                                          TPXBasStringMode);
extern template KLDTPXBAS_API atr_String atr<const char*, const char*, int>(const char*,
                                                                            const char*,
                                                                            const char*, int,
                                                                            TPXBasStringMode);
extern template KLDTPXBAS_API atr_String atr<int>(const char*, int, TPXBasStringMode);
extern template KLDTPXBAS_API atr_String atr<int, const char*>(const char*, int, const char*,
                                                               TPXBasStringMode);
/// @endcond

/// The text's translation (or the text itself, cut before a "\@" note) with no conversion
/// interpreted, in the encoding of mode. A null text gives the empty string.
KLDTPXBAS_API atr_String atr_raw(const char* text, TPXBasStringMode mode);

/// Rewrites one conversion text for a data size: "h" goes before the letter for sizes 1 to 3.
/// Holds, not owns, the conversion text; owns the rewritten one, valid until the next call.
class KLDTPXBAS_API atr_Fmt : public mem_AllocationOperators {
 public:
  /// 1 to 3 insert the length modifier "h"; the other sizes insert nothing.
  enum DataSize {
    SizeDefault = 0,        ///< no length modifier
    SizeShort = 1,          ///< short: "h"
    SizeUnsignedShort = 2,  ///< unsigned short: "h"
    SizeChar = 3,           ///< char: "h"
    SizeInt = 4,            ///< int: no length modifier
    SizeLongLong = 5        ///< long long: no length modifier inserted
  };

  /// Holds fmt, which must outlive the object; null is allowed (see Ok).
  explicit atr_Fmt(const char* fmt) : m_fmt(fmt) {}
  ~atr_Fmt();
  atr_Fmt(const atr_Fmt&) = delete;
  atr_Fmt& operator=(const atr_Fmt&) = delete;

  /// Whether a conversion text is held.
  bool Ok() const { return m_fmt != nullptr; }
  /// The last character of the conversion text (0 for a null or empty text).
  char Letter();
  /// The conversion text with its letter replaced by letter (when not 0) and "h" inserted
  /// before it for sizes 1 to 3. Null when the conversion text is null.
  const char* Format(DataSize size, char letter);
  /// "%", then "h" for sizes 1 to 3, then letter (or Letter() when letter is 0).
  const char* FormatNoWidth(DataSize size, char letter);

 private:
  char* Buffer();

  const char* m_fmt;
  char m_letter = 0;
  char* m_buffer = nullptr;
};

#endif  // ATR_TRANSLATE_H
