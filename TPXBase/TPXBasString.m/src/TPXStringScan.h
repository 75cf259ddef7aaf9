// TPXStringScan.h: byte-level UTF-8 scanning shared by the TPXString sources.
#ifndef TPXSTRINGSCAN_H
#define TPXSTRINGSCAN_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tpx_scan {

/// Result of Validate: the text is not well formed.
constexpr int kInvalid = -1;

/// Sequence length announced by a lead byte of a well-formed text (1 to 4).
inline int LeadLength(unsigned char b) { return b < 0x80 ? 1 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : 4; }

/// Whether eight bytes at p are all below 0x80.
inline bool AsciiWord(const unsigned char* p) {
  std::uint64_t w;
  std::memcpy(&w, p, sizeof w);
  return (w & 0x8080808080808080ULL) == 0;
}

/// Checks n bytes: lead bytes 0xC0-0xF7 announce 2 to 4 bytes, each followed by 0x80-0xBF,
/// no sequence runs past n, no code point above U+10FFFF. Gives kInvalid, 1 for pure ASCII,
/// or 0 for valid text with multi-byte characters. Reads nothing at or past p + n.
inline int Validate(const unsigned char* p, std::size_t n) {
  std::size_t i = 0;
  bool ascii = true;
  while (i < n) {
    if (i + 8 <= n && AsciiWord(p + i)) {
      i += 8;
      continue;
    }
    const unsigned char b = p[i];
    if (b < 0x80) {
      ++i;
      continue;
    }
    ascii = false;
    std::size_t len;
    if (b < 0xC0)
      return kInvalid;
    else if (b < 0xE0)
      len = 2;
    else if (b < 0xF0)
      len = 3;
    else if (b < 0xF8)
      len = 4;
    else
      return kInvalid;
    if (len > n - i) return kInvalid;
    for (std::size_t k = 1; k < len; ++k)
      if ((p[i + k] & 0xC0) != 0x80) return kInvalid;
    if (len == 4 && (b > 0xF4 || (b == 0xF4 && p[i + 1] >= 0x90))) return kInvalid;
    i += len;
  }
  return ascii ? 1 : 0;
}

/// The code point of the well-formed sequence of len bytes at p.
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

/// Number of characters in n bytes of well-formed text: the bytes that are not 0x80-0xBF.
inline int CountChars(const unsigned char* p, std::size_t n) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < n; ++i) count += (p[i] & 0xC0) != 0x80;
  return static_cast<int>(count);
}

}  // namespace tpx_scan

#endif  // TPXSTRINGSCAN_H
