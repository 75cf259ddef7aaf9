// atr_StringBaseImpl.h: length arithmetic, the release of a header and the byte search shared
// by the byte-string sources of the library.
#ifndef ATR_STRINGBASEIMPL_H
#define ATR_STRINGBASEIMPL_H

#include "atr_Statistician.h"
#include "atr_StringBase.h"
#include "mem_Alloc.h"

#include <atomic>
#include <cstddef>
#include <cstring>
#include <new>

/// Lengths are signed 32-bit: a text of ATR_TO_END bytes or more cannot be stored, which is
/// reported as the allocation failure it would be.
inline int atr_Length32(std::size_t length) {
  if (length >= static_cast<std::size_t>(ATR_TO_END)) throw std::bad_alloc();
  return static_cast<int>(length);
}

inline int atr_Sum(int a, int b) {
  return atr_Length32(static_cast<std::size_t>(static_cast<long long>(a) + b));
}

/// The smaller of the bytes available and the count asked for; a negative count is 0.
inline int atr_Count(unsigned available, int n) {
  if (n <= 0) return 0;
  return static_cast<unsigned>(n) < available ? n : static_cast<int>(available);
}

/// A header allocated alone (long, adopted and borrowed texts) and the one word it carries
/// beyond the shared header: an index derived from the text (the character offsets of
/// TPXString), attached by the first reader that needs it. A size-classed block has no such
/// word; its texts are short enough to walk.
///
/// The index is published once with a compare-and-swap, so readers sharing the header on
/// several threads may race to build it: one wins, the others free their own and use the
/// winner's. It is dropped (freed with mem_Free) only by an owner about to change the text or
/// releasing the header, which by the sharing rules no other thread is reading.
class atr_StringRepAlone : public atr_StringRep {
 public:
  using atr_StringRep::atr_StringRep;
  std::atomic<void*> m_index{nullptr};
};

/// Statistics Release of the header, then frees it (with the text of a size-classed block).
inline void atr_ReleaseHeader(atr_StringRep* rep, int length, int capacity) {
  if (atr_Statistician* stats = atr_Statistician::Current()) stats->Release(length, capacity);
  mem_Free(rep);
}

/// The first occurrence of the m bytes of needle in the n bytes of haystack, or null; an empty
/// needle is found at the start. Zero bytes are ordinary bytes on both sides.
///
/// Candidates are found by scanning for the needle's first byte (memchr, which runs at memory
/// speed) and checked on their second byte, then with memcmp. When that byte turns out to be
/// frequent in the text, every candidate costs a call, so after more false candidates than one per
/// 32 bytes scanned the rest is handed to memmem, whose cost does not depend on how often a byte
/// occurs.
inline const char* atr_FindBytes(const char* haystack, std::size_t n, const char* needle,
                                 std::size_t m) {
  if (m == 0) return haystack;
  if (m > n) return nullptr;
  const char first = needle[0];
  const char* const last = haystack + (n - m);  // the last place a match can start
  std::size_t misses = 0;
  for (const char* p = haystack; p <= last; ++p) {
    p = static_cast<const char*>(std::memchr(p, first, static_cast<std::size_t>(last - p) + 1));
    if (p == nullptr) return nullptr;
    if (m == 1 || (p[1] == needle[1] && std::memcmp(p + 2, needle + 2, m - 2) == 0)) return p;
    if (++misses > 4 + static_cast<std::size_t>(p - haystack) / 32) {
      const std::size_t rest = static_cast<std::size_t>(haystack + n - (p + 1));
      return static_cast<const char*>(memmem(p + 1, rest, needle, m));
    }
  }
  return nullptr;
}

#endif  // ATR_STRINGBASEIMPL_H
