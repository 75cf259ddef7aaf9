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

/// atr_FindBytes past a first candidate that failed, which is at p (not before the last
/// place a match can start). Out of line: the first candidate is often the match.
__attribute__((noinline)) inline const char* atr_FindBytesAfter(const char* haystack, std::size_t n,
                                                                const char* p, const char* needle,
                                                                std::size_t m) {
  const char* const last = haystack + (n - m);
  for (std::size_t misses = 1; p < last;) {
    if (misses > 4 + static_cast<std::size_t>(p - haystack) / 32) {
      const std::size_t rest = static_cast<std::size_t>(haystack + n - (p + 1));
      return static_cast<const char*>(memmem(p + 1, rest, needle, m));
    }
    p = static_cast<const char*>(std::memchr(p + 1, needle[0], static_cast<std::size_t>(last - p)));
    if (p == nullptr) return nullptr;
    if (atr_SameBytes(p + 1, needle + 1, m - 1)) return p;
    ++misses;
  }
  return nullptr;
}

/// The first occurrence of the m bytes of needle in the n bytes of haystack, or null; an empty
/// needle is found at the start. Zero bytes are ordinary bytes on both sides.
///
/// Candidates are found by scanning for the needle's first byte (memchr, which runs at memory
/// speed) and compared byte by byte (with memcmp past 16 bytes). When that byte turns out to be
/// frequent in the text, every candidate costs a call, so after more false candidates than 4
/// and one per 32 bytes scanned the rest is handed to memmem, whose cost does not depend on how
/// often a byte occurs.
inline const char* atr_FindBytes(const char* haystack, std::size_t n, const char* needle,
                                 std::size_t m) {
  if (m == 0) return haystack;
  if (m > n) return nullptr;
  const char* p = static_cast<const char*>(std::memchr(haystack, needle[0], n - m + 1));
  if (p == nullptr || atr_SameBytes(p + 1, needle + 1, m - 1)) return p;
  return atr_FindBytesAfter(haystack, n, p, needle, m);
}

#endif  // ATR_STRINGBASEIMPL_H
