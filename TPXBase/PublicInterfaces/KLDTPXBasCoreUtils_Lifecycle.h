/// @file KLDTPXBasCoreUtils_Lifecycle.h
/// Nested initialise and finalise of the library and its modules.
///
/// Every routine below takes the caller's tally by reference: a unit adds 1 to it when its own
/// nesting count goes from 0 to 1 and subtracts 1 when the count goes back to 0. Only the first
/// initialise of a unit does work and only the finalise that brings it back to 0 undoes it.
/// Counts are plain integers: callers serialise their calls (the loader serialises its own).
#ifndef KLDTPXBASCOREUTILS_LIFECYCLE_H
#define KLDTPXBASCOREUTILS_LIFECYCLE_H

#include "KLDTPXBasCoreUtilsC.h"
#include "KLDTPXBasExport.h"

/// Initialises the sibling libraries and then every module, in the library's fixed order.
KLDTPXBAS_API void TPXBasCoreUtils_initialize(int& tally);
/// Undoes TPXBasCoreUtils_initialize in the reverse order when the library count reaches 0.
KLDTPXBAS_API void TPXBasCoreUtils_finalize(int& tally);
/// @{
/// Counts the library-specific part only; does no other work.
KLDTPXBAS_API void TPXBasCoreUtils_specific_initialize(int& tally);
KLDTPXBAS_API void TPXBasCoreUtils_specific_finalize(int& tally);
/// @}

// Module hooks, one pair per module; a host may call them itself, they nest on their own count.
/// @{
/// Initialise and finalise the string module: the first initialise registers the library's
/// OS-string converter with mem_ToOs (it stays registered) and sets the character classification
/// from the environment.
KLDTPXBAS_API void TPXBasString_initialize(int& tally);
KLDTPXBAS_API void TPXBasString_finalize(int& tally);
/// @}
/// @{
/// Initialise and finalise the profiling module; they only count.
KLDTPXBAS_API void TPXBasPrf_initialize(int& tally);
KLDTPXBAS_API void TPXBasPrf_finalize(int& tally);
/// @}
/// @{
/// Initialise and finalise the exceptions module: the first initialise installs the default
/// exception factory (TPXBasExcDefaultFactory); the last finalise destroys the exception model.
KLDTPXBAS_API void TPXBasExceptions_initialize(int& tally);
KLDTPXBAS_API void TPXBasExceptions_finalize(int& tally);
/// @}
/// @{
/// Initialise and finalise the cache allocation module: the cache manager is created on first use;
/// the last finalise destroys it.
KLDTPXBAS_API void TPXBasCam_initialize(int& tally);
KLDTPXBAS_API void TPXBasCam_finalize(int& tally);
/// @}
/// @{
/// Initialise and finalise the message module: the first initialise sets up the byte strings and
/// the natural-order switch (on unless KLD_USE_NATURAL_ORDER_SORT exists); the last finalise
/// releases the translation dictionary and the string statistics.
KLDTPXBAS_API void TPXBasAtr_initialize(int& tally);
KLDTPXBAS_API void TPXBasAtr_finalize(int& tally);
/// @}
/// @{
/// Initialise and finalise the threading module: the first initialise prepares the global lock; the
/// last finalise destroys the threading model.
KLDTPXBAS_API void TPXBasAti_initialize(int& tally);
KLDTPXBAS_API void TPXBasAti_finalize(int& tally);
/// @}
/// @{
/// Initialise and finalise the streams module: the first initialise attaches aio_cin, aio_cout and
/// aio_cerr, not owned, to stdin, stdout and stderr.
KLDTPXBAS_API void TPXBasAio_initialize(int& tally);
KLDTPXBAS_API void TPXBasAio_finalize(int& tally);
/// @}

#endif  // KLDTPXBASCOREUTILS_LIFECYCLE_H
