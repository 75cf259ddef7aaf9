/// @file TPXBasPrfTrkLib.h
/// Initialise and finalise of the sibling library KLDTPXBasPrfTrkLib (stand-in).
#ifndef TPXBASPRFTRKLIB_H
#define TPXBASPRFTRKLIB_H

#include "TPXBasPrfTrkLibExport.h"

/// @{
/// Nested on the library's own count; the tally grows by 1 when the count goes from 0 to 1
/// and shrinks by 1 when it returns to 0. The stand-in does no other work.
KLDTPXBASPRFTRK_API void TPXBasPrfTrkLib_initialize(int& tally);
KLDTPXBASPRFTRK_API void TPXBasPrfTrkLib_finalize(int& tally);
/// @}

#endif  // TPXBASPRFTRKLIB_H
