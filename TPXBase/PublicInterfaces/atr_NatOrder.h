/// @file atr_NatOrder.h
/// Natural-order comparison of texts and the process-wide natural-order switch.
#ifndef ATR_NATORDER_H
#define ATR_NATORDER_H

#include "KLDTPXBasExport.h"

/// Compares two zero-terminated texts so that embedded numbers sort by value ("part9" before
/// "part10"). Runs of digits without a leading zero compare as integers; a run that starts
/// with '0' in either text compares digit by digit like a decimal fraction ("1.05" before
/// "1.5"). Everything else compares byte by byte as signed chars, without case folding or
/// skipping of blanks, so bytes 0x80 to 0xFF sort before 0x00 to 0x7F.
/// Gives -1, 0 or 1. Both texts are required: a null pointer is a broken invariant (fatal
/// report "AssertionFailed:a && b").
KLDTPXBAS_API int strnatcmp(const char* a, const char* b);

/// Whether natural order is wanted for sorting: 0 until the library first initialises, then 1
/// unless the environment variable KLD_USE_NATURAL_ORDER_SORT exists (any value), then 0.
/// The library only sets it; sorting code elsewhere reads it.
KLDTPXBAS_API int atr_getNaturalOrder();
/// Stores value unchanged. Meant for set-up, before other threads read the switch.
KLDTPXBAS_API void atr_setNaturalOrder(int value);

#endif  // ATR_NATORDER_H
