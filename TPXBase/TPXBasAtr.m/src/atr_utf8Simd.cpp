// atr_utf8Simd.cpp: the bulk routines of the UTF-8 scanner (validation, Latin-1 to UTF-8,
// decoding to code points) on three paths: plain 64-bit words, SSE2 and AVX2. The best path
// the processor runs is chosen once; every path gives the results of the byte-by-byte rules.
#include "atr_utf8Simd.h"

#include "atr_utf8Scan.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#define ATR_UTF8_X86 1
// Functions that use AVX2 are compiled for it one by one; the rest of the library stays
// runnable on every x86-64 processor, and they are only called where the processor has it.
#define ATR_AVX2 __attribute__((target("avx2")))
#endif

namespace atr_utf8Scan {
namespace {

using UChar = unsigned char;

// ---------------------------------------------------------------------------------------------
// Shared pieces.

// Latin-1 byte c as UTF-8 at o, exactly.
inline UChar* PutLatin1(UChar* o, UChar c) {
  if (c < 0x80) {
    *o = c;
    return o + 1;
  }
  o[0] = static_cast<UChar>(0xC0 | (c >> 6));
  o[1] = static_cast<UChar>(0x80 | (c & 0x3F));
  return o + 2;
}

// The same without a branch on the byte: two bytes are always stored and the position moves by
// one or two, so after an ASCII byte o[1] holds a byte that the next character overwrites. Only
// for bytes that another byte of the text follows.
inline UChar* PutLatin1Overwriting(UChar* o, UChar c) {
  const unsigned high = c >> 7;
  o[0] = high ? static_cast<UChar>(0xC0 | (c >> 6)) : c;
  o[1] = static_cast<UChar>(0x80 | (c & 0x3F));
  return o + 1 + high;
}

// Decodes well-formed text from p, which may lie inside a character whose start was decoded
// already: its remaining continuation bytes are skipped first.
unsigned int* DecodeScalar(unsigned int* o, const UChar* p, const UChar* end) {
  while (p < end && (*p & 0xC0) == 0x80) ++p;
  while (p < end) {
    const int len = StepLength(*p);
    *o++ = Decode(p, len);
    p += len;
  }
  return o;
}

// The code point of the well-formed character of len bytes at p, where four bytes may be read.
// Every character is joined as if it were four bytes long and what lies beyond it is shifted
// out, so nothing branches on the length: mixed text decodes without mispredicted branches.
inline unsigned int DecodeFromFour(const UChar* p, int len) {
  static constexpr unsigned char kShift[5] = {0, 18, 12, 6, 0};
  static constexpr unsigned int kKeep[5] = {0, 0x7F, 0x7FF, 0xFFFF, 0x1FFFFF};
  const unsigned int joined =
      (p[0] & 0x7Fu) << 18 | (p[1] & 0x3Fu) << 12 | (p[2] & 0x3Fu) << 6 | (p[3] & 0x3Fu);
  return joined >> kShift[len] & kKeep[len];
}

// ---------------------------------------------------------------------------------------------
// Portable path: eight bytes at a time.

int PortableValidateKind(const UChar* p, std::size_t n) {
  const UChar* const end = p + n;
  while (end - p >= 8 && AsciiWord(p)) p += 8;
  while (p < end && *p < 0x80) ++p;
  if (p == end) return 1;
  while (p < end) {
    if (*p < 0x80) {
      for (;;) {
        if (end - p < 8) {
          while (p < end && *p < 0x80) ++p;
          break;
        }
        const std::uint64_t high = Load64(p) & kHighBits;
        if (high) {
          p += FirstHighByte(high);
          break;
        }
        p += 8;
      }
      if (p == end) return 0;
    }
    // *p is at least 0x80 here.
    const int len = kSequenceLength[*p];
    if (len == 0 || end - p < len) return kInvalid;
    if ((p[1] & 0xC0) != 0x80) return kInvalid;
    if (len >= 3 && (p[2] & 0xC0) != 0x80) return kInvalid;
    if (len == 4 && (p[3] & 0xC0) != 0x80) return kInvalid;
    p += len;
  }
  return 0;
}

std::size_t PortableLatin1Length(const UChar* p, std::size_t n) {
  std::size_t total = n;
  const UChar* const end = p + n;
  for (; end - p >= 8; p += 8)
    total += static_cast<std::size_t>(__builtin_popcountll(Load64(p) & kHighBits));
  for (; p < end; ++p) total += *p >> 7;
  return total;
}

std::size_t PortableLatin1ToUtf8(UChar* out, const UChar* p, std::size_t n) {
  UChar* o = out;
  const UChar* const end = p + n;
  while (end - p >= 8) {
    const std::uint64_t w = Load64(p);
    if (!(w & kHighBits)) {
      std::memcpy(o, &w, 8);
      o += 8;
      p += 8;
      continue;
    }
    for (const UChar* stop = p + 8; p < stop; ++p) o = PutLatin1(o, *p);
  }
  while (p < end) o = PutLatin1(o, *p++);
  return static_cast<std::size_t>(o - out);
}

unsigned int* PortableDecodeValid(unsigned int* o, const UChar* p, std::size_t n) {
  const UChar* const end = p + n;
  while (end - p >= 8) {
    if (AsciiWord(p)) {
      for (int k = 0; k < 8; ++k) o[k] = p[k];
      o += 8;
      p += 8;
      continue;
    }
    const int len = StepLength(*p);
    *o++ = DecodeFromFour(p, len);
    p += len;
  }
  return DecodeScalar(o, p, end);
}

#ifdef ATR_UTF8_X86
// ---------------------------------------------------------------------------------------------
// Vector validation, the same on 16 and 32 bytes. A text is valid by the library's rules
// exactly when no byte is 0xF8 or above and every byte is a continuation byte (0x80-0xBF) if
// and only if one of the three bytes before it announces it: the byte just before is 0xC0 or
// above, or the one two before is 0xE0 or above, or the one three before is 0xF0 or above. (A
// lead that sits where a continuation byte is due breaks the second condition itself, so
// overlapping announcements need no test of their own.) The text ends as if ASCII followed it.

// ---- SSE2.

// cur with its bytes moved k places up and the last k bytes of prev before them: for every
// byte of cur, the byte k places before it in the text.
template <int k>
inline __m128i Before(__m128i cur, __m128i prev) {
  return _mm_or_si128(_mm_slli_si128(cur, k), _mm_srli_si128(prev, 16 - k));
}

// Non-zero bytes where cur, given the 16 bytes before it, breaks the rules.
inline __m128i Errors(__m128i cur, __m128i prev) {
  const __m128i announced =
      _mm_or_si128(_mm_or_si128(_mm_subs_epu8(Before<1>(cur, prev), _mm_set1_epi8('\xBF')),
                                _mm_subs_epu8(Before<2>(cur, prev), _mm_set1_epi8('\xDF'))),
                   _mm_subs_epu8(Before<3>(cur, prev), _mm_set1_epi8('\xEF')));
  // announced is at most 0x40, so a signed comparison with zero finds it.
  const __m128i due = _mm_cmpgt_epi8(announced, _mm_setzero_si128());
  // As signed bytes, the continuation bytes are exactly those below -64.
  const __m128i continuation = _mm_cmplt_epi8(cur, _mm_set1_epi8(-64));
  return _mm_or_si128(_mm_xor_si128(due, continuation), _mm_subs_epu8(cur, _mm_set1_epi8('\xF7')));
}

// Non-zero bytes where the last three bytes of v announce continuation bytes after v.
inline __m128i Pending(__m128i v) {
  return _mm_subs_epu8(
      v, _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, '\xEF', '\xDF', '\xBF'));
}

inline __m128i Load128(const UChar* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// The state of a validation between blocks of 64 bytes.
struct Scan128 {
  __m128i m_prev;     // the last bytes before the block
  __m128i m_pending;  // non-zero where they announce bytes of the block
  __m128i m_errors;   // non-zero where a byte so far broke the rules
  bool m_multiByte;   // whether a byte from 0x80 up was seen
};

inline void Sse2Block(Scan128& s, const UChar* q) {
  const __m128i a = Load128(q), b = Load128(q + 16), c = Load128(q + 32), d = Load128(q + 48);
  if (_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d))) == 0) {
    s.m_errors = _mm_or_si128(s.m_errors, s.m_pending);  // a character left open before ASCII
    s.m_pending = _mm_setzero_si128();
    s.m_prev = d;
    return;
  }
  s.m_multiByte = true;
  s.m_errors =
      _mm_or_si128(s.m_errors, _mm_or_si128(_mm_or_si128(Errors(a, s.m_prev), Errors(b, a)),
                                            _mm_or_si128(Errors(c, b), Errors(d, c))));
  s.m_prev = d;
  s.m_pending = Pending(d);
}

int Sse2ValidateKind(const UChar* p, std::size_t n) {
  const __m128i zero = _mm_setzero_si128();
  Scan128 s{zero, zero, zero, false};
  std::size_t i = 0;
  for (; n - i >= 64; i += 64) Sse2Block(s, p + i);
  if (i < n) {
    // The rest, padded with zero bytes: ASCII, which the rules treat like the end of text.
    alignas(16) UChar tail[64] = {};
    std::memcpy(tail, p + i, n - i);
    Sse2Block(s, tail);
  }
  const __m128i errors = _mm_or_si128(s.m_errors, s.m_pending);
  if (_mm_movemask_epi8(_mm_cmpeq_epi8(errors, zero)) != 0xFFFF) return kInvalid;
  return s.m_multiByte ? 0 : 1;
}

// Count of bytes from 0x80 up, 16 at a time: each byte of acc counts up to 255 vectors.
std::size_t Sse2HighBytes(const UChar* p, std::size_t n, std::size_t* done) {
  const __m128i zero = _mm_setzero_si128();
  std::size_t total = 0, i = 0;
  while (n - i >= 16) {
    std::size_t vectors = (n - i) / 16;
    if (vectors > 255) vectors = 255;
    __m128i acc = zero;
    for (const std::size_t stop = i + vectors * 16; i < stop; i += 16)
      acc = _mm_sub_epi8(acc, _mm_cmplt_epi8(Load128(p + i), zero));
    const __m128i sums = _mm_sad_epu8(acc, zero);
    total += static_cast<std::size_t>(_mm_cvtsi128_si64(sums)) +
             static_cast<std::size_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(sums, sums)));
  }
  *done = i;
  return total;
}

std::size_t Sse2Latin1Length(const UChar* p, std::size_t n) {
  std::size_t i = 0;
  std::size_t total = n + Sse2HighBytes(p, n, &i);
  for (; i < n; ++i) total += p[i] >> 7;
  return total;
}

std::size_t Sse2Latin1ToUtf8(UChar* out, const UChar* p, std::size_t n) {
  UChar* o = out;
  const UChar* const end = p + n;
  // At least one byte follows each block, so its output follows too: whole stores and the
  // overwriting form stay inside the output.
  while (end - p > 16) {
    const __m128i x = Load128(p);
    if (_mm_movemask_epi8(x) == 0) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(o), x);
      o += 16;
      p += 16;
      continue;
    }
    for (const UChar* stop = p + 16; p < stop; ++p) o = PutLatin1Overwriting(o, *p);
  }
  while (p < end) o = PutLatin1(o, *p++);
  return static_cast<std::size_t>(o - out);
}

unsigned int* Sse2DecodeValid(unsigned int* o, const UChar* p, std::size_t n) {
  const __m128i zero = _mm_setzero_si128();
  const UChar* const end = p + n;
  // Four bytes from every character start of the block can be read.
  while (end - p >= 20) {
    const __m128i x = Load128(p);
    if (_mm_movemask_epi8(x) == 0) {
      const __m128i lo = _mm_unpacklo_epi8(x, zero), hi = _mm_unpackhi_epi8(x, zero);
      __m128i* v = reinterpret_cast<__m128i*>(o);
      _mm_storeu_si128(v, _mm_unpacklo_epi16(lo, zero));
      _mm_storeu_si128(v + 1, _mm_unpackhi_epi16(lo, zero));
      _mm_storeu_si128(v + 2, _mm_unpacklo_epi16(hi, zero));
      _mm_storeu_si128(v + 3, _mm_unpackhi_epi16(hi, zero));
      o += 16;
      p += 16;
      continue;
    }
    // Character by character over the block (p stays on character starts).
    for (const UChar* stop = p + 16; p < stop;) {
      const int len = StepLength(*p);
      *o++ = DecodeFromFour(p, len);
      p += len;
    }
  }
  return DecodeScalar(o, p, end);
}

// ---- AVX2.

// For every byte of cur, the byte k places before it in the text (prev holds the 32 before).
template <int k>
ATR_AVX2 inline __m256i Before(__m256i cur, __m256i prev) {
  return _mm256_alignr_epi8(cur, _mm256_permute2x128_si256(prev, cur, 0x21), 16 - k);
}

ATR_AVX2 inline __m256i Errors(__m256i cur, __m256i prev) {
  const __m256i announced = _mm256_or_si256(
      _mm256_or_si256(_mm256_subs_epu8(Before<1>(cur, prev), _mm256_set1_epi8('\xBF')),
                      _mm256_subs_epu8(Before<2>(cur, prev), _mm256_set1_epi8('\xDF'))),
      _mm256_subs_epu8(Before<3>(cur, prev), _mm256_set1_epi8('\xEF')));
  const __m256i due = _mm256_cmpgt_epi8(announced, _mm256_setzero_si256());
  const __m256i continuation = _mm256_cmpgt_epi8(_mm256_set1_epi8(-64), cur);
  return _mm256_or_si256(_mm256_xor_si256(due, continuation),
                         _mm256_subs_epu8(cur, _mm256_set1_epi8('\xF7')));
}

ATR_AVX2 inline __m256i Pending(__m256i v) {
  return _mm256_subs_epu8(
      v, _mm256_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                          -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, '\xEF', '\xDF', '\xBF'));
}

ATR_AVX2 inline __m256i Load256(const UChar* p) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

struct Scan256 {  // as Scan128
  __m256i m_prev, m_pending, m_errors;
  bool m_multiByte;
};

ATR_AVX2 inline void Avx2Block(Scan256& s, const UChar* q) {
  const __m256i a = Load256(q), b = Load256(q + 32);
  if (_mm256_movemask_epi8(_mm256_or_si256(a, b)) == 0) {
    s.m_errors = _mm256_or_si256(s.m_errors, s.m_pending);
    s.m_pending = _mm256_setzero_si256();
    s.m_prev = b;
    return;
  }
  s.m_multiByte = true;
  s.m_errors = _mm256_or_si256(s.m_errors, _mm256_or_si256(Errors(a, s.m_prev), Errors(b, a)));
  s.m_prev = b;
  s.m_pending = Pending(b);
}

ATR_AVX2 int Avx2ValidateKind(const UChar* p, std::size_t n) {
  const __m256i zero = _mm256_setzero_si256();
  Scan256 s{zero, zero, zero, false};
  std::size_t i = 0;
  for (; n - i >= 64; i += 64) Avx2Block(s, p + i);
  if (i < n) {
    alignas(32) UChar tail[64] = {};
    std::memcpy(tail, p + i, n - i);
    Avx2Block(s, tail);
  }
  const __m256i errors = _mm256_or_si256(s.m_errors, s.m_pending);
  if (!_mm256_testz_si256(errors, errors)) return kInvalid;
  return s.m_multiByte ? 0 : 1;
}

ATR_AVX2 std::size_t Avx2Latin1Length(const UChar* p, std::size_t n) {
  const __m256i zero = _mm256_setzero_si256();
  std::size_t total = n, i = 0;
  while (n - i >= 32) {
    std::size_t vectors = (n - i) / 32;
    if (vectors > 255) vectors = 255;
    __m256i acc = zero;
    for (const std::size_t stop = i + vectors * 32; i < stop; i += 32)
      acc = _mm256_sub_epi8(acc, _mm256_cmpgt_epi8(zero, Load256(p + i)));
    const __m256i sums = _mm256_sad_epu8(acc, zero);
    const __m128i half =
        _mm_add_epi64(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
    total += static_cast<std::size_t>(_mm_cvtsi128_si64(half)) +
             static_cast<std::size_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(half, half)));
  }
  for (; i < n; ++i) total += p[i] >> 7;
  return total;
}

// Shuffles that close up the byte pairs of eight Latin-1 characters: for each set of
// characters from 0x80 up (bit k for character k) the pair bytes to keep, in order, and how
// many they are. ASCII characters keep the first byte of their pair only.
struct PairShuffles {
  alignas(16) UChar m_index[256][16];
  UChar m_length[256];
  constexpr PairShuffles() : m_index(), m_length() {
    for (int set = 0; set < 256; ++set) {
      int k = 0;
      for (int c = 0; c < 8; ++c) {
        m_index[set][k++] = static_cast<UChar>(2 * c);
        if (set >> c & 1) m_index[set][k++] = static_cast<UChar>(2 * c + 1);
      }
      m_length[set] = static_cast<UChar>(k);
      for (; k < 16; ++k) m_index[set][k] = 0x80;
    }
  }
};
constexpr PairShuffles kPairShuffles{};

// The 16 Latin-1 bytes x (high bits in highs) as UTF-8 at o. Stores 16 bytes at a time, so at
// least 16 more output bytes must fit after the first 8 characters' output. ASCII halves go
// the same way (their shuffle keeps every first byte): in accented text a test for them is
// mispredicted so often that it costs more than twice the time it saves.
ATR_AVX2 inline UChar* Latin1Block(UChar* o, __m128i x, unsigned highs) {
  const __m128i lead =
      _mm_or_si128(_mm_set1_epi8('\xC0'), _mm_and_si128(_mm_srli_epi16(x, 6), _mm_set1_epi8(3)));
  const __m128i trail = _mm_or_si128(_mm_and_si128(x, _mm_set1_epi8(0x3F)), _mm_set1_epi8('\x80'));
  const __m128i first = _mm_blendv_epi8(x, lead, x);  // lead where the byte's high bit is set
  const __m128i lo = _mm_unpacklo_epi8(first, trail), hi = _mm_unpackhi_epi8(first, trail);
  const unsigned a = highs & 0xFF, b = highs >> 8;
  _mm_storeu_si128(
      reinterpret_cast<__m128i*>(o),
      _mm_shuffle_epi8(lo,
                       _mm_load_si128(reinterpret_cast<const __m128i*>(kPairShuffles.m_index[a]))));
  o += kPairShuffles.m_length[a];
  _mm_storeu_si128(
      reinterpret_cast<__m128i*>(o),
      _mm_shuffle_epi8(hi,
                       _mm_load_si128(reinterpret_cast<const __m128i*>(kPairShuffles.m_index[b]))));
  return o + kPairShuffles.m_length[b];
}

ATR_AVX2 std::size_t Avx2Latin1ToUtf8(UChar* out, const UChar* p, std::size_t n) {
  UChar* o = out;
  const UChar* const end = p + n;
  // Every input byte gives at least one output byte, so with 48 bytes left each store of 16
  // bytes lies within the output.
  while (end - p >= 48) {
    const __m256i x = Load256(p);
    const unsigned highs = static_cast<unsigned>(_mm256_movemask_epi8(x));
    if (highs == 0) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(o), x);
      o += 32;
    } else {
      o = Latin1Block(o, _mm256_castsi256_si128(x), highs & 0xFFFF);
      o = Latin1Block(o, _mm256_extracti128_si256(x, 1), highs >> 16);
    }
    p += 32;
  }
  for (; end - p > 1; ++p) o = PutLatin1Overwriting(o, *p);
  if (p < end) o = PutLatin1(o, *p);
  return static_cast<std::size_t>(o - out);
}

// The lanes to keep of eight 32-bit lanes, for each set of them: lane numbers four bits each,
// in order, and how many.
struct LanePacks {
  unsigned m_lanes[256];
  UChar m_count[256];
  constexpr LanePacks() : m_lanes(), m_count() {
    for (int set = 0; set < 256; ++set) {
      int k = 0;
      unsigned lanes = 0;
      for (int lane = 0; lane < 8; ++lane)
        if (set >> lane & 1) lanes |= static_cast<unsigned>(lane) << (4 * k++);
      m_lanes[set] = lanes;
      m_count[set] = static_cast<UChar>(k);
    }
  }
};
constexpr LanePacks kLanePacks{};

// Decodes the characters that start among the 8 bytes at q (the 16 bytes at q are read) and
// stores 8 lanes at o: at least 8 code points must fit.
ATR_AVX2 inline unsigned int* DecodeEight(unsigned int* o, const UChar* q) {
  // Lane k holds the bytes q[k] to q[k + 3], q[k] lowest.
  const __m256i w =
      _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(Load128(q)),
                          _mm256_setr_epi8(0, 1, 2, 3, 1, 2, 3, 4, 2, 3, 4, 5, 3, 4, 5, 6, 4, 5, 6,
                                           7, 5, 6, 7, 8, 6, 7, 8, 9, 7, 8, 9, 10));
  const __m256i lead = _mm256_and_si256(w, _mm256_set1_epi32(0xFF));
  const __m256i from80 = _mm256_cmpgt_epi32(lead, _mm256_set1_epi32(0x7F));
  const __m256i fromC0 = _mm256_cmpgt_epi32(lead, _mm256_set1_epi32(0xBF));
  const __m256i fromE0 = _mm256_cmpgt_epi32(lead, _mm256_set1_epi32(0xDF));
  const __m256i fromF0 = _mm256_cmpgt_epi32(lead, _mm256_set1_epi32(0xEF));
  // The four bytes as if they were a four-byte sequence: 7 bits of the first, 6 of the others,
  // joined as b0 << 18 | b1 << 12 | b2 << 6 | b3.
  const __m256i bits = _mm256_and_si256(w, _mm256_set1_epi32(0x3F3F3F7F));
  const __m256i joined = _mm256_madd_epi16(
      _mm256_maddubs_epi16(bits, _mm256_set1_epi32(0x01400140)), _mm256_set1_epi32(0x00011000));
  // A sequence of len bytes is joined >> 6 * (4 - len): minus is 0 for ASCII, -1, -2, -3 for
  // leads of two, three and four bytes; the first byte's length bits are masked off after.
  const __m256i minus = _mm256_add_epi32(_mm256_add_epi32(from80, fromE0), fromF0);
  const __m256i twice = _mm256_add_epi32(minus, minus);
  const __m256i shift = _mm256_add_epi32(_mm256_set1_epi32(18),
                                         _mm256_add_epi32(twice, _mm256_add_epi32(twice, twice)));
  const __m256i keep = _mm256_or_si256(
      _mm256_or_si256(_mm256_set1_epi32(0x7F), _mm256_and_si256(from80, _mm256_set1_epi32(0x780))),
      _mm256_or_si256(_mm256_and_si256(fromE0, _mm256_set1_epi32(0xF800)),
                      _mm256_and_si256(fromF0, _mm256_set1_epi32(0x1F0000))));
  const __m256i codes = _mm256_and_si256(_mm256_srlv_epi32(joined, shift), keep);
  // Characters start at every byte but the continuation bytes.
  const __m256i continuation = _mm256_andnot_si256(fromC0, from80);
  const unsigned starts =
      ~static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(continuation))) & 0xFF;
  const __m256i lanes =
      _mm256_srlv_epi32(_mm256_set1_epi32(static_cast<int>(kLanePacks.m_lanes[starts])),
                        _mm256_setr_epi32(0, 4, 8, 12, 16, 20, 24, 28));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(o), _mm256_permutevar8x32_epi32(codes, lanes));
  return o + kLanePacks.m_count[starts];
}

ATR_AVX2 unsigned int* Avx2DecodeValid(unsigned int* o, const UChar* p, std::size_t n) {
  const UChar* const end = p + n;
  // With 48 bytes left, at least 37 lie after the 16 of this step that are not the rest of a
  // character begun before them; they start 10 or more characters, so 8 lanes always fit.
  while (end - p >= 48) {
    const __m128i x = Load128(p);
    if (_mm_movemask_epi8(x) == 0) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(o), _mm256_cvtepu8_epi32(x));
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(o + 8),
                          _mm256_cvtepu8_epi32(_mm_srli_si128(x, 8)));
      o += 16;
    } else {
      o = DecodeEight(o, p);
      o = DecodeEight(o, p + 8);
    }
    p += 16;
  }
  return DecodeScalar(o, p, end);
}
#endif  // ATR_UTF8_X86

// ---------------------------------------------------------------------------------------------
// The choice of path.

struct Kernels {
  int m_path;
  int (*m_validateKind)(const UChar*, std::size_t);
  std::size_t (*m_latin1Length)(const UChar*, std::size_t);
  std::size_t (*m_latin1ToUtf8)(UChar*, const UChar*, std::size_t);
  unsigned int* (*m_decodeValid)(unsigned int*, const UChar*, std::size_t);
};

constexpr Kernels kPortable{atr_Utf8SimdPortable, &PortableValidateKind, &PortableLatin1Length,
                            &PortableLatin1ToUtf8, &PortableDecodeValid};
#ifdef ATR_UTF8_X86
constexpr Kernels kSse2{atr_Utf8SimdSse2, &Sse2ValidateKind, &Sse2Latin1Length, &Sse2Latin1ToUtf8,
                        &Sse2DecodeValid};
constexpr Kernels kAvx2{atr_Utf8SimdAvx2, &Avx2ValidateKind, &Avx2Latin1Length, &Avx2Latin1ToUtf8,
                        &Avx2DecodeValid};
#endif

// The kernels of path, or null when this processor cannot run them.
const Kernels* Runnable(int path) {
  switch (path) {
    case atr_Utf8SimdPortable:
      return &kPortable;
#ifdef ATR_UTF8_X86
    case atr_Utf8SimdSse2:
      return &kSse2;
    case atr_Utf8SimdAvx2:
      __builtin_cpu_init();  // may run before the constructors that would otherwise do it
      return __builtin_cpu_supports("avx2") ? &kAvx2 : nullptr;
#endif
    default:
      return nullptr;
  }
}

const Kernels* Best() {
  static const Kernels* const best = [] {
    if (const Kernels* k = Runnable(atr_Utf8SimdAvx2)) return k;
    if (const Kernels* k = Runnable(atr_Utf8SimdSse2)) return k;
    return &kPortable;
  }();
  return best;
}

std::atomic<const Kernels*> g_active{nullptr};

inline const Kernels& Active() {
  const Kernels* k = g_active.load(std::memory_order_relaxed);
  if (k == nullptr) {
    const Kernels* best = Best();
    // A path forced meanwhile stays.
    k = g_active.compare_exchange_strong(k, best, std::memory_order_relaxed) ? best : k;
  }
  return *k;
}

}  // namespace

int ValidateKind(const unsigned char* p, std::size_t n) {
  return n == 0 ? 1 : Active().m_validateKind(p, n);
}

std::size_t Latin1ToUtf8Length(const unsigned char* p, std::size_t n) {
  return Active().m_latin1Length(p, n);
}

std::size_t Latin1ToUtf8(unsigned char* out, const unsigned char* p, std::size_t n) {
  return Active().m_latin1ToUtf8(out, p, n);
}

unsigned int* DecodeValid(unsigned int* out, const unsigned char* p, std::size_t n) {
  return Active().m_decodeValid(out, p, n);
}

}  // namespace atr_utf8Scan

bool atr_utf8_simd_use(int path) {
  using namespace atr_utf8Scan;
  const Kernels* k = path == atr_Utf8SimdBest ? Best() : Runnable(path);
  if (k == nullptr) return false;
  g_active.store(k, std::memory_order_relaxed);
  return true;
}

int atr_utf8_simd_path() { return atr_utf8Scan::Active().m_path; }

int atr_utf8_to_ucs4_sized(unsigned int* out, const unsigned char* in, int n) {
  if (n < 0 || (in == nullptr && n != 0)) return -1;
  if (n == 0) return 0;
  const std::size_t size = static_cast<std::size_t>(n);
  const int kind = atr_utf8Scan::ValidateKind(in, size);
  if (kind == atr_utf8Scan::kInvalid) return -1;
  if (out == nullptr) return kind == 1 ? n : atr_utf8Scan::CountChars(in, size);
  return static_cast<int>(atr_utf8Scan::DecodeValid(out, in, size) - out);
}
