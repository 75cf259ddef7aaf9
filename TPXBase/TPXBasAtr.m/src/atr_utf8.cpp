// atr_utf8.cpp: the encoding table and the UTF-8, Latin-1 and locale routines behind it.
#include "atr_utf8.h"

#include "KLDTPXBasAssert.h"
#include "atr_utf8Scan.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <type_traits>

static constexpr const char kAssertPath[] = "TPXBase/TPXBasAtr.m/src/atr_utf8";

using atr_utf8Scan::kHighBits;
using atr_utf8Scan::kSequenceLength;
using atr_utf8Scan::Load64;
using UChar = unsigned char;

namespace {

inline const UChar* U(const char* text) { return reinterpret_cast<const UChar*>(text); }
inline UChar* U(char* text) { return reinterpret_cast<UChar*>(text); }

// An identifier outside the table is a broken invariant; should the fatal-error service
// return, the routine goes on with the empty encoding, which reads and writes nothing.
int CheckedId(int id) {
  if (id >= 0 && id < atr_EncodingCount) return id;
  KLD_ASSERT(!"atr_utf8: Invalid encoding value");
  return atr_EncodingNone;
}

constexpr int kFirstByteMask[5] = {0, 0x7F, 0x1F, 0x0F, 0x07};

// The locale routines use restartable conversions with a fresh state per character: the
// result is that of mblen/mbtowc/wctomb for every stateless encoding, and no hidden state is
// shared between threads.
inline std::size_t LocaleMax() { return MB_CUR_MAX; }

// ---- Readers that never look at or beyond `end`. Each gives the code point or -1 and stores
// ---- the bytes it took in *len.

struct NoneCodec {
  static constexpr bool kAsciiIdentity = false;
  static int Read(const UChar*, const UChar*, int* len) {
    *len = 0;
    return -1;
  }
  static int Write(UChar*, int) { return -1; }
};

struct LocaleCodec {
  static constexpr bool kAsciiIdentity = false;
  static int Read(const UChar* p, const UChar* end, int* len) {
    std::size_t avail = static_cast<std::size_t>(end - p);
    std::size_t max = LocaleMax();
    std::mbstate_t state{};
    wchar_t wc = 0;
    std::size_t r =
        std::mbrtowc(&wc, reinterpret_cast<const char*>(p), avail < max ? avail : max, &state);
    if (r == 0 || r > max || wc < 0) {  // zero byte, invalid (size_t)-1, incomplete (size_t)-2
      *len = 0;
      return -1;
    }
    *len = static_cast<int>(r);
    return static_cast<int>(wc);
  }
  static int Write(UChar* out, int codePoint) { return atr_locale_from_ucs4(out, codePoint); }
};

struct Utf8Codec {
  static constexpr bool kAsciiIdentity = true;
  static int Read(const UChar* p, const UChar* end, int* len) {
    int n = kSequenceLength[*p];
    *len = n;
    if (n == 1) return *p;
    if (n == 0) return -1;
    // The end of the input counts as a byte that is not a continuation byte.
    if (end - p < n) return -1;
    int cp = *p & kFirstByteMask[n];
    for (int i = 1; i < n; ++i) {
      if ((p[i] & 0xC0) != 0x80) return -1;
      cp = (cp << 6) | (p[i] & 0x3F);
    }
    return cp;
  }
  // Unlike atr_utf8_from_ucs4, a code point UTF-8 cannot hold is -1 here, so that a
  // conversion reports it (or writes the replacement) instead of dropping it silently.
  static int Write(UChar* out, int codePoint) {
    int n = atr_utf8_len(codePoint);
    if (n == 0) return -1;
    return out ? atr_utf8_from_ucs4(out, codePoint) : n;
  }
};

struct Latin1Codec {
  static constexpr bool kAsciiIdentity = true;
  static int Read(const UChar* p, const UChar*, int* len) {
    *len = 1;
    return *p;
  }
  static int Write(UChar* out, int codePoint) {
    if (codePoint < 0 || codePoint > 0xFF) return -1;
    if (out) *out = static_cast<UChar>(codePoint);
    return 1;
  }
};

// Results above INT_MAX cannot be reported; they come back as this and are refused.
constexpr long long kTooLong = -3;

inline long long Finish(long long total) { return total > INT_MAX ? kTooLong : total; }

// Length of the ASCII run at p (bytes below 0x80), eight bytes at a time.
inline std::size_t AsciiRun(const UChar* p, const UChar* end) {
  const UChar* q = p;
  while (end - q >= 8) {
    std::uint64_t high = Load64(q) & kHighBits;
    if (high) return static_cast<std::size_t>(q - p) + atr_utf8Scan::FirstHighByte(high);
    q += 8;
  }
  while (q < end && *q < 0x80) ++q;
  return static_cast<std::size_t>(q - p);
}

// Writes the code points of the well-formed UTF-8 [p, end) with the target.
template <class Dst>
long long WriteDecoded(UChar* out, const UChar* p, const UChar* end, UChar replacement) {
  long long total = 0;
  const bool complete = atr_utf8Scan::ForEachCode(
      p, static_cast<std::size_t>(end - p), [out, replacement, &total](unsigned int code) {
        int n = Dst::Write(out ? out + total : nullptr, static_cast<int>(code));
        if (n < 0) {
          if (replacement == 0) return false;
          if (out) out[total] = replacement;
          n = 1;
        }
        total += n;
        return true;
      });
  return complete ? Finish(total) : -2;
}

// The general conversion: read one code point with the source, write it with the target.
template <class Src, class Dst>
long long Convert(UChar* out, const UChar* p, const UChar* end, UChar replacement) {
  if constexpr (std::is_same_v<Src, Utf8Codec>) {
    // Well-formed UTF-8 is decoded in blocks (ASCII that the target copies as it is excepted);
    // other text is read character by character below, so that the output stops exactly at
    // the first fault.
    const int kind = atr_utf8Scan::ValidateKind(p, static_cast<std::size_t>(end - p));
    if (kind == 0 || (kind == 1 && !Dst::kAsciiIdentity))
      return WriteDecoded<Dst>(out, p, end, replacement);
  }
  long long total = 0;
  while (p < end) {
    if constexpr (Src::kAsciiIdentity && Dst::kAsciiIdentity) {
      // ASCII reads and writes as itself in both: copy whole runs.
      std::size_t run = AsciiRun(p, end);
      if (run) {
        if (out) std::memcpy(out + total, p, run);
        total += static_cast<long long>(run);
        p += run;
        if (p == end) break;
      }
    }
    int len = 0;
    int cp = Src::Read(p, end, &len);
    if (cp < 0) return -1;
    p += len;
    int n = Dst::Write(out ? out + total : nullptr, cp);
    if (n < 0) {
      if (replacement == 0) return -2;
      if (out) out[total] = replacement;
      n = 1;
    }
    total += n;
  }
  return Finish(total);
}

// Latin-1 to UTF-8 never fails: every byte from 0x80 up becomes two, the others stay.
template <>
long long Convert<Latin1Codec, Utf8Codec>(UChar* out, const UChar* p, const UChar* end, UChar) {
  const std::size_t n = static_cast<std::size_t>(end - p);
  if (!out) return Finish(static_cast<long long>(atr_utf8Scan::Latin1ToUtf8Length(p, n)));
  return Finish(static_cast<long long>(atr_utf8Scan::Latin1ToUtf8(out, p, n)));
}

// Latin-1 to Latin-1 is a copy.
template <>
long long Convert<Latin1Codec, Latin1Codec>(UChar* out, const UChar* p, const UChar* end, UChar) {
  if (out && end != p) std::memcpy(out, p, static_cast<std::size_t>(end - p));
  return end - p;
}

using ConvertFn = long long (*)(UChar*, const UChar*, const UChar*, UChar);

template <class Src>
struct Row {
  static constexpr ConvertFn kTo[atr_EncodingCount] = {
      &Convert<Src, NoneCodec>, &Convert<Src, LocaleCodec>, &Convert<Src, Utf8Codec>,
      &Convert<Src, Latin1Codec>};
};

// kConverters[from][to]
constexpr const ConvertFn* kConverters[atr_EncodingCount] = {
    Row<NoneCodec>::kTo, Row<LocaleCodec>::kTo, Row<Utf8Codec>::kTo, Row<Latin1Codec>::kTo};

// ---- Validation over [p, end).

bool ValidateNone(const UChar*, int) { return false; }

bool ValidateLocale(const UChar* text, int n) {
  if (n < 0) return false;
  const UChar* end = text + n;
  int len = 0;
  for (const UChar* p = text; p < end; p += len)
    if (LocaleCodec::Read(p, end, &len) < 0) return false;
  return true;
}

bool ValidateUtf8(const UChar* text, int n) {
  if (n < 0) return false;
  return atr_utf8Scan::Utf8Valid(text, text + n);
}

bool ValidateLatin1(const UChar* text, int n) {
  if (n < 0) return false;
  const UChar* p = text;
  const UChar* end = text + n;
  for (;;) {
    // Whole words below 0x7F are clean; any other word is decided byte by byte.
    while (end - p >= 8 && atr_utf8Scan::AllBelow7F(Load64(p))) p += 8;
    const UChar* stop = end - p >= 8 ? p + 8 : end;
    if (p == stop) return true;
    for (; p < stop; ++p)
      if (*p >= 0x7F && *p <= 0x9F) return false;
  }
}

// ---- The routines of the table rows.

int NoneToUcs4(const UChar*, int* length) {
  if (length) *length = 0;
  return -1;
}
int NoneFromUcs4(UChar*, int) { return -1; }

int LocaleToUcs4(const UChar* text, int* length) { return atr_locale_to_ucs4(text, length); }
int LocaleFromUcs4(UChar* out, int codePoint) { return atr_locale_from_ucs4(out, codePoint); }

int Utf8ToUcs4(const UChar* text, int* length) { return atr_utf8_to_ucs4(text, length); }
int Utf8FromUcs4(UChar* out, int codePoint) { return Utf8Codec::Write(out, codePoint); }

int Latin1ToUcs4(const UChar* text, int* length) {
  if (length) *length = 1;
  return *text;
}
int Latin1FromUcs4(UChar* out, int codePoint) { return Latin1Codec::Write(out, codePoint); }

inline int TextLength(const UChar* text) {
  std::size_t n = std::strlen(reinterpret_cast<const char*>(text));
  return n > static_cast<std::size_t>(INT_MAX) ? -1 : static_cast<int>(n);
}

}  // namespace

const atr_encoding atr_encodings[atr_EncodingCount] = {
    {&ValidateNone, &NoneToUcs4, &NoneFromUcs4},
    {&ValidateLocale, &LocaleToUcs4, &LocaleFromUcs4},
    {&ValidateUtf8, &Utf8ToUcs4, &Utf8FromUcs4},
    {&ValidateLatin1, &Latin1ToUcs4, &Latin1FromUcs4},
};

// ---------------------------------------------------------------------------------------------
// UTF-8 stepping and coding.

int atr_utf8_len(int codePoint) {
  unsigned int cp = static_cast<unsigned int>(codePoint);
  if (cp < 0x80) return 1;
  if (cp < 0x800) return 2;
  if (cp < 0x10000) return 3;
  if (cp < 0x200000) return 4;
  return 0;
}

int atr_utf8_len(const unsigned char* text) { return kSequenceLength[*text]; }
int atr_utf8_len(const char* text) { return kSequenceLength[*U(text)]; }

const unsigned char* atr_utf8_next(const unsigned char* text) {
  int n = kSequenceLength[*text];
  return text + (n ? n : 1);
}
const char* atr_utf8_next(const char* text) {
  int n = kSequenceLength[*U(text)];
  return text + (n ? n : 1);
}

namespace {
// Steps back from text; begin, when not null, is the first byte that may be looked at.
// A character has at most three continuation bytes: after a fourth the answer is null
// whatever comes before, so no more than four bytes are read.
const UChar* Utf8Prev(const UChar* text, const UChar* begin) {
  if (begin && text <= begin) return nullptr;
  const UChar* p = text - 1;
  if (*p < 0x80) return p;
  int continuations = 0;
  while (*p >= 0x80 && *p <= 0xBF) {
    if (++continuations == 4) return nullptr;
    if (begin && p == begin) return nullptr;
    --p;
  }
  if (*p < 0x80) return nullptr;
  return kSequenceLength[*p] == continuations + 1 ? p : nullptr;
}
}  // namespace

const unsigned char* atr_utf8_prev(const unsigned char* text) { return Utf8Prev(text, nullptr); }
const char* atr_utf8_prev(const char* text) {
  return reinterpret_cast<const char*>(Utf8Prev(U(text), nullptr));
}
const unsigned char* atr_utf8_prev(const unsigned char* text, const unsigned char* begin) {
  return begin ? Utf8Prev(text, begin) : nullptr;
}
const char* atr_utf8_prev(const char* text, const char* begin) {
  return begin ? reinterpret_cast<const char*>(Utf8Prev(U(text), U(begin))) : nullptr;
}

int atr_utf8_to_ucs4(const unsigned char* text, int* length) {
  int n = kSequenceLength[*text];
  if (length) *length = n;
  if (n == 1) return *text;
  if (n == 0) return -1;
  int cp = *text & kFirstByteMask[n];
  for (int i = 1; i < n; ++i) {
    if ((text[i] & 0xC0) != 0x80) return -1;  // also stops at a terminator
    cp = (cp << 6) | (text[i] & 0x3F);
  }
  return cp;
}
int atr_utf8_to_ucs4(const char* text, int* length) { return atr_utf8_to_ucs4(U(text), length); }

int atr_utf8_from_ucs4(unsigned char* out, int codePoint) {
  unsigned int cp = static_cast<unsigned int>(codePoint);
  switch (atr_utf8_len(codePoint)) {
    case 1:
      out[0] = static_cast<UChar>(cp);
      return 1;
    case 2:
      out[0] = static_cast<UChar>(0xC0 | (cp >> 6));
      out[1] = static_cast<UChar>(0x80 | (cp & 0x3F));
      return 2;
    case 3:
      out[0] = static_cast<UChar>(0xE0 | (cp >> 12));
      out[1] = static_cast<UChar>(0x80 | ((cp >> 6) & 0x3F));
      out[2] = static_cast<UChar>(0x80 | (cp & 0x3F));
      return 3;
    case 4:
      out[0] = static_cast<UChar>(0xF0 | (cp >> 18));
      out[1] = static_cast<UChar>(0x80 | ((cp >> 12) & 0x3F));
      out[2] = static_cast<UChar>(0x80 | ((cp >> 6) & 0x3F));
      out[3] = static_cast<UChar>(0x80 | (cp & 0x3F));
      return 4;
    default:
      return 0;
  }
}
int atr_utf8_from_ucs4(char* out, int codePoint) { return atr_utf8_from_ucs4(U(out), codePoint); }

// ---------------------------------------------------------------------------------------------
// Locale.

int atr_locale_to_ucs4(const unsigned char* text, int* length) {
  std::size_t max = LocaleMax();
  std::mbstate_t state{};
  wchar_t wc = 0;
  std::size_t r = std::mbrtowc(&wc, reinterpret_cast<const char*>(text), max, &state);
  if (r == 0 || r > max || wc < 0) {
    if (length) *length = 0;
    return -1;
  }
  if (length) *length = static_cast<int>(r);
  return static_cast<int>(wc);
}
int atr_locale_to_ucs4(const char* text, int* length) {
  return atr_locale_to_ucs4(U(text), length);
}

int atr_locale_from_ucs4(unsigned char* out, int codePoint) {
  if (codePoint < 0) return -1;
  char scratch[MB_LEN_MAX];
  std::mbstate_t state{};
  std::size_t r = std::wcrtomb(out ? reinterpret_cast<char*>(out) : scratch,
                               static_cast<wchar_t>(codePoint), &state);
  return r == static_cast<std::size_t>(-1) ? -1 : static_cast<int>(r);
}
int atr_locale_from_ucs4(char* out, int codePoint) {
  return atr_locale_from_ucs4(U(out), codePoint);
}

// ---------------------------------------------------------------------------------------------
// Validation and conversion.

bool atr_encoding_validate(int id, const unsigned char* text) {
  id = CheckedId(id);
  if (!text) return false;
  return atr_encodings[id].m_validate(text, TextLength(text));
}
bool atr_encoding_validate(int id, const char* text) { return atr_encoding_validate(id, U(text)); }

bool atr_encoding_validate_sized(int id, const unsigned char* text, int n) {
  id = CheckedId(id);
  if (!text && n != 0) return false;
  static const UChar kEmpty[1] = {0};
  return atr_encodings[id].m_validate(text ? text : kEmpty, n);
}
bool atr_encoding_validate_sized(int id, const char* text, int n) {
  return atr_encoding_validate_sized(id, U(text), n);
}

int atr_encoding_convert(int toId, unsigned char* out, int fromId, const unsigned char* in,
                         int inLength, unsigned char replacement, bool terminate) {
  toId = CheckedId(toId);
  fromId = CheckedId(fromId);
  if (inLength < 0 || (!in && inLength != 0)) return -1;
  long long total = 0;
  if (inLength > 0) {
    total = kConverters[fromId][toId](out, in, in + inLength, replacement);
    if (total == kTooLong) return -1;
    if (total < 0) return static_cast<int>(total);
  }
  if (out && terminate) out[total] = 0;
  return static_cast<int>(total);
}
int atr_encoding_convert(int toId, char* out, int fromId, const char* in, int inLength,
                         char replacement, bool terminate) {
  return atr_encoding_convert(toId, U(out), fromId, U(in), inLength,
                              static_cast<UChar>(replacement), terminate);
}

int atr_utf8_from_encoding(unsigned char* out, int fromId, const unsigned char* in) {
  fromId = CheckedId(fromId);
  if (!in) return -1;
  return atr_encoding_convert(atr_EncodingUtf8, out, fromId, in, TextLength(in), 0, true);
}
int atr_utf8_from_encoding(char* out, int fromId, const char* in) {
  return atr_utf8_from_encoding(U(out), fromId, U(in));
}

int atr_utf8_from_encoding_sized(unsigned char* out, int fromId, const unsigned char* in, int n,
                                 bool terminate) {
  return atr_encoding_convert(atr_EncodingUtf8, out, fromId, in, n, 0, terminate);
}
int atr_utf8_from_encoding_sized(char* out, int fromId, const char* in, int n, bool terminate) {
  return atr_encoding_convert(atr_EncodingUtf8, U(out), fromId, U(in), n, 0, terminate);
}

int atr_utf8_to_encoding(int toId, unsigned char* out, const unsigned char* in,
                         unsigned char replacement) {
  toId = CheckedId(toId);
  if (!in) return -1;
  return atr_encoding_convert(toId, out, atr_EncodingUtf8, in, TextLength(in), replacement, true);
}
int atr_utf8_to_encoding(int toId, char* out, const char* in, char replacement) {
  return atr_utf8_to_encoding(toId, U(out), U(in), static_cast<UChar>(replacement));
}

int atr_utf8_to_encoding_sized(int toId, unsigned char* out, const unsigned char* in, int n,
                               unsigned char replacement, bool terminate) {
  return atr_encoding_convert(toId, out, atr_EncodingUtf8, in, n, replacement, terminate);
}
int atr_utf8_to_encoding_sized(int toId, char* out, const char* in, int n, char replacement,
                               bool terminate) {
  return atr_encoding_convert(toId, U(out), atr_EncodingUtf8, U(in), n,
                              static_cast<UChar>(replacement), terminate);
}
