// Fuzz target: the fast paths of UTF-8 validation, Latin-1 validation, the Latin-1 / UTF-8
// conversions and UTF-8 to UCS-4 decoding give exactly what the byte-by-byte rules give, on
// every path the processor runs (plain words, SSE2, AVX2), at every alignment of the text and
// with its characters moved across the 16-, 32- and 64-byte blocks of the vector paths.
#include "../TPXBase/TPXBasAtr.m/src/atr_utf8Simd.h"
#include "KLDTPXBasCoreUtils.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

void Check(bool ok) {
  if (!ok) std::abort();
}

// Byte-by-byte UTF-8 validation: lead bytes below 0x80 or 0xC0..0xF7, each followed by the
// announced number of bytes 0x80..0xBF, ending exactly at n.
bool RefUtf8Valid(const unsigned char* p, std::size_t n) {
  std::size_t i = 0;
  while (i < n) {
    unsigned char c = p[i];
    std::size_t len = c < 0x80 ? 1 : c < 0xC0 ? 0 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : c < 0xF8 ? 4 : 0;
    if (len == 0) return false;
    for (std::size_t k = 1; k < len; ++k)
      if (i + k >= n || (p[i + k] & 0xC0) != 0x80) return false;
    i += len;
  }
  return true;
}

bool RefLatin1Valid(const unsigned char* p, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i)
    if (p[i] >= 0x7F && p[i] <= 0x9F) return false;
  return true;
}

Bytes RefLatin1ToUtf8(const unsigned char* p, std::size_t n) {
  Bytes out;
  for (std::size_t i = 0; i < n; ++i) {
    if (p[i] < 0x80) {
      out.push_back(p[i]);
    } else {
      out.push_back(static_cast<unsigned char>(0xC0 | (p[i] >> 6)));
      out.push_back(static_cast<unsigned char>(0x80 | (p[i] & 0x3F)));
    }
  }
  return out;
}

// UTF-8 to Latin-1 with replacement: -1 on malformed input, -2 when a character above 0xFF
// meets a zero replacement.
int RefUtf8ToLatin1(const unsigned char* p, std::size_t n, unsigned char replacement, Bytes& out) {
  out.clear();
  std::size_t i = 0;
  while (i < n) {
    unsigned char c = p[i];
    std::size_t len = c < 0x80 ? 1 : c < 0xC0 ? 0 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : c < 0xF8 ? 4 : 0;
    if (len == 0) return -1;
    long cp = len == 1 ? c : len == 2 ? (c & 0x1F) : len == 3 ? (c & 0x0F) : (c & 0x07);
    for (std::size_t k = 1; k < len; ++k) {
      if (i + k >= n || (p[i + k] & 0xC0) != 0x80) return -1;
      cp = (cp << 6) | (p[i + k] & 0x3F);
    }
    i += len;
    if (cp <= 0xFF) {
      out.push_back(static_cast<unsigned char>(cp));
    } else {
      if (replacement == 0) return -2;
      out.push_back(replacement);
    }
  }
  return static_cast<int>(out.size());
}

// Code points of well-formed text, one per character; false for text that is not.
bool RefUcs4(const unsigned char* p, std::size_t n, std::vector<unsigned int>& out) {
  out.clear();
  std::size_t i = 0;
  while (i < n) {
    unsigned char c = p[i];
    std::size_t len = c < 0x80 ? 1 : c < 0xC0 ? 0 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : c < 0xF8 ? 4 : 0;
    if (len == 0) return false;
    unsigned int cp = len == 1 ? c : len == 2 ? (c & 0x1F) : len == 3 ? (c & 0x0F) : (c & 0x07);
    for (std::size_t k = 1; k < len; ++k) {
      if (i + k >= n || (p[i + k] & 0xC0) != 0x80) return false;
      cp = (cp << 6) | (p[i + k] & 0x3F);
    }
    out.push_back(cp);
    i += len;
  }
  return true;
}

void CheckSlice(const unsigned char* p, std::size_t n, unsigned char replacement) {
  const int len = static_cast<int>(n);
  // Decoding writes into a block of exactly the measured size, so a store past it is caught.
  std::vector<unsigned int> codes;
  const bool valid = RefUcs4(p, n, codes);
  Check(atr_utf8_to_ucs4_sized(nullptr, p, len) == (valid ? static_cast<int>(codes.size()) : -1));
  if (valid && !codes.empty()) {
    std::vector<unsigned int> decoded(codes.size());
    Check(atr_utf8_to_ucs4_sized(decoded.data(), p, len) == static_cast<int>(codes.size()));
    Check(decoded == codes);
  }

  Check(atr_encoding_validate_sized(atr_EncodingUtf8, p, len) == RefUtf8Valid(p, n));
  Check(atr_encoding_validate_sized(atr_EncodingLatin1, p, len) == RefLatin1Valid(p, n));

  const Bytes up = RefLatin1ToUtf8(p, n);
  Check(atr_encoding_convert(atr_EncodingUtf8, nullptr, atr_EncodingLatin1, p, len, 0, false) ==
        static_cast<int>(up.size()));
  Bytes got(up.size());
  Check(atr_encoding_convert(atr_EncodingUtf8, got.empty() ? nullptr : got.data(),
                             atr_EncodingLatin1, p, len, 0, false) == static_cast<int>(up.size()));
  Check(got == up);

  Bytes down;
  const int expected = RefUtf8ToLatin1(p, n, replacement, down);
  Check(atr_encoding_convert(atr_EncodingLatin1, nullptr, atr_EncodingUtf8, p, len, replacement,
                             false) == expected);
  if (expected >= 0) {
    Bytes out(down.size());
    Check(atr_encoding_convert(atr_EncodingLatin1, out.empty() ? nullptr : out.data(),
                               atr_EncodingUtf8, p, len, replacement, false) == expected);
    Check(out == down);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const unsigned char replacement = data[0] & 1 ? '?' : 0;
  // ASCII before the input moves each of its characters to any place of a 64-byte block.
  const std::size_t lead = (data[0] >> 1) % 64;
  Bytes text(lead, 'a');
  text.insert(text.end(), data + 1, data + size);
  const int paths[] = {atr_Utf8SimdPortable, atr_Utf8SimdSse2, atr_Utf8SimdAvx2};
  for (int path : paths) {
    if (!atr_utf8_simd_use(path)) continue;
    // Every start offset within a word; the block ends exactly where the text ends.
    for (std::size_t skip = 0; skip < 8 && skip <= text.size(); ++skip)
      CheckSlice(text.empty() ? nullptr : text.data() + skip, text.size() - skip, replacement);
  }
  atr_utf8_simd_use(atr_Utf8SimdBest);
  return 0;
}
