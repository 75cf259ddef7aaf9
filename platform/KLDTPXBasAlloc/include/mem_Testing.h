/// @file mem_Testing.h
/// Test controls of the allocation library stand-in.
#ifndef MEM_TESTING_H
#define MEM_TESTING_H

#include "KLDTPXBasAllocExport.h"

/// Seams for tests of out-of-memory paths, cache bookkeeping, singletons and error stacks.
/// The controls are process-wide and thread-safe; tests restore what they change.
namespace mem_Testing {

/// The next n allocations through the stand-in succeed and every later one fails (throws
/// std::bad_alloc or returns null, as the entry point's form says); -1 turns failing off.
/// Covers the mem_* allocating functions and TPXBasMemAllocator, not the global operator new.
KLDTPXBASALLOC_API void FailAllocationsAfter(long n);
/// @{
/// Calls of mem_Acquire and of mem_Release so far.
KLDTPXBASALLOC_API long AcquireCount();
KLDTPXBASALLOC_API long ReleaseCount();
/// @}
/// While disabled, omi_SingletonRegistry::Instance() gives null.
KLDTPXBASALLOC_API void SetRegistryEnabled(bool enabled);
/// Whether an object is registered under name.
KLDTPXBASALLOC_API bool RegistryHas(const char* name);
/// Switches TPXBasErrorStack::Active().
KLDTPXBASALLOC_API void SetErrorStackActive(bool active);
/// Number of texts pushed on the error stack so far.
KLDTPXBASALLOC_API int ErrorStackDepth();

}  // namespace mem_Testing

#endif  // MEM_TESTING_H
