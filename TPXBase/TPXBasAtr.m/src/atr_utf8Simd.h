// atr_utf8Simd.h: the vector paths of the UTF-8 scanner (atr_utf8Scan.h) as the library's own
// tests, benchmarks and fuzz targets reach them. Not installed: hosts use atr_utf8.h.
#ifndef ATR_UTF8SIMD_H
#define ATR_UTF8SIMD_H

#include "KLDTPXBasExport.h"

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

/// Decodes the n bytes of UTF-8 at in into one UCS-4 code point per character, by the rules of
/// atr_encoding_validate_sized(atr_EncodingUtf8, ...). Gives the number of code points, or -1
/// when the text is not well formed (nothing is then written). With out null
/// it only measures; otherwise out holds at least the measured count (n always suffices).
/// No byte at or beyond in + n is read.
KLDTPXBAS_API int atr_utf8_to_ucs4_sized(unsigned int* out, const unsigned char* in, int n);

#endif  // ATR_UTF8SIMD_H
