// fuzz_Widths.h: keeps the message fuzz targets away from texts whose result is gigantic by
// rule: a text conversion is justified to any width ("%999999999s" gives a billion spaces),
// which says nothing new about the formatter and only costs the fuzzer its memory.
#ifndef FUZZ_WIDTHS_H
#define FUZZ_WIDTHS_H

#include <cstddef>

/// Whether a conversion in the n bytes at p asks for a width or precision of six digits or
/// more (digit runs after a "%", through flags, "$", "." and "l").
inline bool HasHugeField(const char* p, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    if (p[i] != '%') continue;
    int digits = 0;
    for (std::size_t j = i + 1; j < n; ++j) {
      const char c = p[j];
      if (c >= '0' && c <= '9') {
        if (++digits >= 6) return true;
      } else if (c == '-' || c == '.' || c == '$' || c == 'l') {
        digits = 0;
      } else {
        break;
      }
    }
  }
  return false;
}

#endif  // FUZZ_WIDTHS_H
