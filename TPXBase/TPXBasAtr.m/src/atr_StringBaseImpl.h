// atr_StringBaseImpl.h: length arithmetic shared by the byte-string sources of this module.
#ifndef ATR_STRINGBASEIMPL_H
#define ATR_STRINGBASEIMPL_H

#include "atr_StringBase.h"

#include <cstddef>
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

#endif  // ATR_STRINGBASEIMPL_H
