// atr_utf8Simd.h: the choice among the vector paths of the UTF-8 scanner (atr_utf8Scan.h), for
// the library's own tests, benchmarks and fuzz targets. Not installed: hosts use atr_utf8.h.
#ifndef ATR_UTF8SIMD_H
#define ATR_UTF8SIMD_H

#include "KLDTPXBasExport.h"
#include "atr_utf8.h"

/// The implementations of the scanner's bulk routines (UTF-8 validation, Latin-1 to UTF-8,
/// UTF-8 to UCS-4). Each one gives the same result as the others for every input; they differ
/// only in speed. The best one the processor can run is chosen once, on first use.
enum atr_utf8SimdPathEnm {
  atr_Utf8SimdBest = -1,     ///< the best path of this processor (the default)
  atr_Utf8SimdPortable = 0,  ///< eight bytes at a time in plain C++
  atr_Utf8SimdSse2 = 1,      ///< 16-byte SSE2 vectors (every x86-64 processor)
  atr_Utf8SimdAvx2 = 2       ///< 32-byte AVX2 vectors, where the processor has them
};

/// Makes every later bulk routine of the process run on path. Gives false, and changes
/// nothing, when this processor cannot run it. For tests and benchmarks that compare the paths;
/// a host never needs it. Not meant to be called while other threads convert texts.
KLDTPXBAS_API bool atr_utf8_simd_use(int path);

/// The path the bulk routines run on now (never atr_Utf8SimdBest).
KLDTPXBAS_API int atr_utf8_simd_path();

#endif  // ATR_UTF8SIMD_H
