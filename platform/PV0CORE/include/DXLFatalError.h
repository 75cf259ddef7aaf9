/// @file DXLFatalError.h
/// The platform's fatal-error service (stand-in).
#ifndef DXLFATALERROR_H
#define DXLFATALERROR_H

#include "PV0COREExport.h"

/// Reports a broken invariant and ends the process: writes one line
/// "<message> [<source path>:<line>]" to standard error, flushes it and calls abort().
/// Null texts print as empty; the second to fourth texts are accepted and not printed.
/// Neither allocates nor locks. Not declared noreturn: a host platform may make it return,
/// and callers that have a fallback keep it.
PV0CORE_API void DXLFatalError(const char* message, const char* text2, const char* text3,
                               const char* text4, const char* sourcePath, int line);

#endif  // DXLFATALERROR_H
