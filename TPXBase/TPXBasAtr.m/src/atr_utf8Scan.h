// atr_utf8Scan.h: the library's one UTF-8 scanner: the lead-byte table, word-at-a-time
// helpers and the bulk routines (validation, Latin-1 to UTF-8, decoding; vector paths in
// atr_utf8Simd.cpp) behind the encoding routines and the character-indexed string (TPXString).
#ifndef ATR_UTF8SCAN_H
#define ATR_UTF8SCAN_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace atr_utf8Scan {

/// Sequence length announced by each lead byte: 1 below 0x80, 0 for continuation bytes and
/// 0xF8 up, 2, 3 and 4 for 0xC0, 0xE0 and 0xF0 onwards.
struct SequenceLengthTable {
  unsigned char m_length[256];
  constexpr SequenceLengthTable() : m_length() {
    for (int b = 0; b < 256; ++b)
      m_length[b] = b < 0x80 ? 1 : b < 0xC0 ? 0 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : b < 0xF8 ? 4 : 0;
  }
  constexpr int operator[](unsigned char b) const { return m_length[b]; }
};
inline constexpr SequenceLengthTable kSequenceLength{};

inline constexpr std::uint64_t kHighBits = 0x8080808080808080ull;
inline constexpr std::uint64_t kOnes = 0x0101010101010101ull;

/// Eight bytes from any alignment.
inline std::uint64_t Load64(const unsigned char* p) {
  std::uint64_t w;
  std::memcpy(&w, p, sizeof w);
  return w;
}

/// Index, in memory order, of the first byte whose bit is set in a mask of high bits.
inline std::size_t FirstHighByte(std::uint64_t highBits) {
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  return static_cast<std::size_t>(__builtin_ctzll(highBits)) >> 3;
#else
  return static_cast<std::size_t>(__builtin_clzll(highBits)) >> 3;
#endif
}

/// True when every byte of the word is below 0x7F. Adding one carries out of a byte only
/// from 0xFF, whose own high bit already makes the word fail, so there are no false passes.
inline bool AllBelow7F(std::uint64_t w) { return ((w | (w + kOnes)) & kHighBits) == 0; }

/// Result of ValidateKind for text that is not well formed.
inline constexpr int kInvalid = -1;

/// Whether the eight bytes at p are all below 0x80.
inline bool AsciiWord(const unsigned char* p) { return (Load64(p) & kHighBits) == 0; }

// ---- Bulk routines. Each runs on the path chosen once per process (atr_utf8Simd.cpp: plain
// ---- words, SSE2 or AVX2, whichever is best here); all paths give the same results.

/// ValidateKind of the n bytes at p by the library's UTF-8 rules (lead bytes 0x00-0x7F and
/// 0xC0-0xF7, each followed by its continuation bytes 0x80-0xBF; no overlong, surrogate or
/// range checks): kInvalid, 1 for text made of bytes below 0x80 only, 0 for valid text with
/// multi-byte characters. No byte at or beyond p + n is read.
int ValidateKind(const unsigned char* p, std::size_t n);

/// Whether [p, end) is well-formed UTF-8 by the rules of ValidateKind.
inline bool Utf8Valid(const unsigned char* p, const unsigned char* end) {
  return ValidateKind(p, static_cast<std::size_t>(end - p)) != kInvalid;
}

/// Bytes of the UTF-8 form of the n Latin-1 bytes at p: one per byte, two from 0x80 up.
std::size_t Latin1ToUtf8Length(const unsigned char* p, std::size_t n);

/// Writes the UTF-8 form of the n Latin-1 bytes at p at out, which holds
/// Latin1ToUtf8Length(p, n) bytes (no byte past them is written), and gives that length.
std::size_t Latin1ToUtf8(unsigned char* out, const unsigned char* p, std::size_t n);

/// Decodes the n bytes at p, which ValidateKind found well formed, into one code point per
/// character at out (as many as CountChars gives; nothing past them is written); gives the
/// position after the last code point.
unsigned int* DecodeValid(unsigned int* out, const unsigned char* p, std::size_t n);

/// Calls each(code) with the code point of every character of the n bytes at p, which
/// ValidateKind found well formed, in order, until a call gives false; gives whether none did.
/// Blocks of up to 256 bytes, each ending on a character start, are decoded into a buffer on
/// the stack.
template <class Each>
bool ForEachCode(const unsigned char* p, std::size_t n, Each each) {
  constexpr std::size_t kBlock = 256;
  unsigned int codes[kBlock];
  const unsigned char* const end = p + n;
  while (p < end) {
    const unsigned char* stop = static_cast<std::size_t>(end - p) > kBlock ? p + kBlock : end;
    while (stop < end && (*stop & 0xC0) == 0x80) --stop;
    const unsigned int* last = DecodeValid(codes, p, static_cast<std::size_t>(stop - p));
    for (const unsigned int* c = codes; c < last; ++c)
      if (!each(*c)) return false;
    p = stop;
  }
  return true;
}

/// Bytes from the character starting at b to the next one, in well-formed text: the lead
/// byte's sequence length (a byte that announces none steps by one, as atr_utf8_next does).
inline int StepLength(unsigned char b) {
  const int n = kSequenceLength[b];
  return n != 0 ? n : 1;
}

/// The code point of the well-formed sequence of len bytes (1 to 4) at p.
inline unsigned int Decode(const unsigned char* p, int len) {
  switch (len) {
    case 1:
      return p[0];
    case 2:
      return (static_cast<unsigned int>(p[0] & 0x1F) << 6) | (p[1] & 0x3F);
    case 3:
      return (static_cast<unsigned int>(p[0] & 0x0F) << 12) |
             (static_cast<unsigned int>(p[1] & 0x3F) << 6) | (p[2] & 0x3F);
    default:
      return (static_cast<unsigned int>(p[0] & 0x07) << 18) |
             (static_cast<unsigned int>(p[1] & 0x3F) << 12) |
             (static_cast<unsigned int>(p[2] & 0x3F) << 6) | (p[3] & 0x3F);
  }
}

/// Characters in n bytes of well-formed text: the bytes that are not continuation bytes
/// (0x80-0xBF), counted a word at a time.
inline int CountChars(const unsigned char* p, std::size_t n) {
  std::size_t continuations = 0;
  std::size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    const std::uint64_t w = Load64(p + i);
    // A continuation byte has its top bit set and the next one clear.
    continuations += static_cast<std::size_t>(__builtin_popcountll(w & ~(w << 1) & kHighBits));
  }
  for (; i < n; ++i) continuations += (p[i] & 0xC0) == 0x80;
  return static_cast<int>(n - continuations);
}

}  // namespace atr_utf8Scan

#endif  // ATR_UTF8SCAN_H
