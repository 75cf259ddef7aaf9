/// @file TPXBasGenericsLib.h
/// Initialise and finalise of the sibling library KLDTPXBasGenericsLib
/// (stand-in).
#ifndef TPXBASGENERICSLIB_H
#define TPXBASGENERICSLIB_H

#include "TPXBasGenericsLibExport.h"

/// @{
/// Nested on the library's own count; the tally grows by 1 when the count goes from 0 to 1
/// and shrinks by 1 when it returns to 0. The stand-in does no other work.
KLDTPXBASGENERICS_API void TPXBasGenericsLib_initialize(int& tally);
KLDTPXBASGENERICS_API void TPXBasGenericsLib_finalize(int& tally);
/// @}

#endif  // TPXBASGENERICSLIB_H
