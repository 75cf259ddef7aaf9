/** @file KLDTPXBasCoreUtilsC.h
    The library's entry points for C callers; compiles as C and as C++. */
#ifndef KLDTPXBASCOREUTILSC_H
#define KLDTPXBASCOREUTILSC_H

#include "KLDTPXBasCoreUtilsVersion.h"
#include "TPXBasOsStringC.h"

/** Exports a C entry point with C linkage and default visibility. */
#ifdef __cplusplus
#define KLDTPXBAS_C_API extern "C" __attribute__((visibility("default")))
#else
#define KLDTPXBAS_C_API __attribute__((visibility("default")))
#endif

/** The version of the library that is loaded, as "MAJOR.MINOR.PATCH"; equals
   KLDTPXBASCOREUTILS_VERSION of the headers it was built with. Never null. */
KLDTPXBAS_C_API const char* TPXBasCoreUtils_version(void);

/** @{ */
/** Initialise and finalise the library with a tally of the library's own, distinct from the
    loader's, so that C hosts nest on the same library count. */
KLDTPXBAS_C_API void TPXBasCoreUtils_initializeC(void);
KLDTPXBAS_C_API void TPXBasCoreUtils_finalizeC(void);
/** @} */

/** The loader's notification: reason 1 (process attach) initialises with the loader tally,
   0 (process detach) finalises with it, 2 and 3 (thread attach and detach) do nothing.
   Returns 1 in every case. The library's load and unload hooks call it with 1 and 0. */
KLDTPXBAS_C_API int DllMain(void* instance, unsigned long reason, void* reserved);

/** @{ */
/** Profiling marks for Fortran (and C) callers: the four values go to the profiling interface,
    which records nothing. Also exported with a trailing underscore. */
KLDTPXBAS_C_API void tpxbasprfiterbegin(int* a, int* b, int* c, int* d);
KLDTPXBAS_C_API void tpxbasprfiterend(int* a, int* b, int* c, int* d);
/** @} */

#endif /* KLDTPXBASCOREUTILSC_H */
