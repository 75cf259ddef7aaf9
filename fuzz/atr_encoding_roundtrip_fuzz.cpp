// Fuzz target: conversions between the encodings. Measuring and converting agree and stay
// within the measured size; Latin-1 survives a trip through UTF-8; a canonical UTF-8 text
// survives a trip through Latin-1 or the locale whenever both directions succeed; validation
// agrees with what conversion accepts; prev walks back over exactly the characters next
// walks forward over.
#include "KLDTPXBasCoreUtils.h"

#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

void Check(bool ok) {
  if (!ok) std::abort();
}

// Converts with measure-then-convert into a block of exactly the measured size plus the
// terminator; gives the result and fills out.
int Convert(int to, int from, const Bytes& in, unsigned char replacement, Bytes& out) {
  const int n = static_cast<int>(in.size());
  const unsigned char* src = in.empty() ? nullptr : in.data();
  int measured = atr_encoding_convert(to, nullptr, from, src, n, replacement, true);
  out.clear();
  if (measured < 0) {
    // A failure must not depend on whether an output is given; give room for the worst case
    // (four bytes per input byte plus the terminator) so a write before failing is harmless.
    Bytes scratch(4 * in.size() + 4);
    Check(atr_encoding_convert(to, scratch.data(), from, src, n, replacement, true) == measured);
    return measured;
  }
  Bytes block(static_cast<std::size_t>(measured) + 1);
  Check(atr_encoding_convert(to, block.data(), from, src, n, replacement, true) == measured);
  Check(block[measured] == 0);
  Bytes bare(static_cast<std::size_t>(measured));
  Check(atr_encoding_convert(to, bare.empty() ? nullptr : bare.data(), from, src, n, replacement,
                             false) == measured);
  Check(bare.empty() || std::memcmp(bare.data(), block.data(), bare.size()) == 0);
  out.assign(block.begin(), block.begin() + measured);
  return measured;
}

void CheckStepping(const Bytes& text) {
  // Only for texts that validate as UTF-8: every character start found going forward is
  // found again going backward.
  std::vector<const unsigned char*> starts;
  const unsigned char* begin = text.data();
  const unsigned char* end = begin + text.size();
  for (const unsigned char* p = begin; p < end; p = atr_utf8_next(p)) starts.push_back(p);
  const unsigned char* p = end;
  for (auto it = starts.rbegin(); it != starts.rend(); ++it) {
    p = atr_utf8_prev(p, begin);
    Check(p == *it);
  }
  Check(atr_utf8_prev(begin, begin) == nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const unsigned char mode = data[0];
  const Bytes text(data + 1, data + size);
  const unsigned char replacement = (mode & 2) ? '?' : 0;
  std::setlocale(LC_CTYPE, (mode & 1) ? "C.UTF-8" : "C");

  Bytes out;
  Bytes back;
  const int n = static_cast<int>(text.size());
  const unsigned char* src = text.empty() ? nullptr : text.data();

  // Every pair of encodings, both forms agreeing.
  for (int from = 0; from < atr_EncodingCount; ++from)
    for (int to = 0; to < atr_EncodingCount; ++to) Convert(to, from, text, replacement, out);

  // Latin-1 always reaches UTF-8 and comes back unchanged.
  Check(Convert(atr_EncodingUtf8, atr_EncodingLatin1, text, 0, out) >= 0);
  Check(Convert(atr_EncodingLatin1, atr_EncodingUtf8, out, 0, back) == n);
  Check(back == text);

  // UTF-8 validity is exactly what a UTF-8 to UTF-8 conversion accepts.
  const bool utf8Valid = atr_encoding_validate_sized(atr_EncodingUtf8, src, n);
  Bytes canonical;
  Check((Convert(atr_EncodingUtf8, atr_EncodingUtf8, text, 0, canonical) >= 0) == utf8Valid);
  if (utf8Valid) {
    CheckStepping(text);
    // The canonical form converts to itself.
    Check(Convert(atr_EncodingUtf8, atr_EncodingUtf8, canonical, 0, back) >= 0);
    Check(back == canonical);
    if (Convert(atr_EncodingLatin1, atr_EncodingUtf8, canonical, 0, out) >= 0) {
      Check(Convert(atr_EncodingUtf8, atr_EncodingLatin1, out, 0, back) >= 0);
      Check(back == canonical);
    }
    if (Convert(atr_EncodingLocale, atr_EncodingUtf8, canonical, 0, out) >= 0 &&
        Convert(atr_EncodingUtf8, atr_EncodingLocale, out, 0, back) >= 0)
      Check(back == canonical);
  }

  // Locale validity is what the locale reader accepts. With a replacement byte the UTF-8
  // side never refuses (a locale may read characters beyond what UTF-8 holds), so the
  // conversion fails exactly on input the reader rejects.
  const bool localeValid = atr_encoding_validate_sized(atr_EncodingLocale, src, n);
  Check((Convert(atr_EncodingUtf8, atr_EncodingLocale, text, '?', out) >= 0) == localeValid);

  // Latin-1 validity only excludes 0x7F..0x9F.
  bool latin1Valid = true;
  for (unsigned char c : text) latin1Valid = latin1Valid && (c < 0x7F || c > 0x9F);
  Check(atr_encoding_validate_sized(atr_EncodingLatin1, src, n) == latin1Valid);
  return 0;
}
