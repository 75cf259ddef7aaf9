/// @file mem_Alloc.h
/// Allocation entry points of the host allocation library (stand-in).
///
/// The C heap behind the family's allocation service. Every entry point honours
/// mem_Testing::FailAllocationsAfter, so callers can test their out-of-memory paths.
/// All of them may be called from any thread.
#ifndef MEM_ALLOC_H
#define MEM_ALLOC_H

#include "KLDTPXBasAllocExport.h"

#include <cstddef>

/// A block of size bytes; null on failure.
KLDTPXBASALLOC_API void* mem_Malloc(std::size_t size);
/// Zero-filled block of count * size bytes; null on failure or when the product overflows.
KLDTPXBASALLOC_API void* mem_Calloc(std::size_t count, std::size_t size);
/// Accepts null.
KLDTPXBASALLOC_API void mem_Free(void* block);

/// @{
/// Allocation for class operators; throw std::bad_alloc instead of returning null.
/// A request of 0 bytes gives a unique block, as operator new does.
KLDTPXBASALLOC_API void* mem_OperatorNewThrow(std::size_t size);
KLDTPXBASALLOC_API void* mem_OperatorNewTinyThrow(std::size_t size);
KLDTPXBASALLOC_API void* mem_OperatorNewThrowBuiltin(std::size_t size);
/// @}

/// @{
/// Told by a cache that a block it keeps goes back into use (Acquire) or out of use (Release).
/// The stand-in only counts the calls (mem_Testing::AcquireCount, ReleaseCount), each thread
/// in a counter of its own that the readers sum, so threads never share a written line.
KLDTPXBASALLOC_API void mem_Acquire(void* block);
KLDTPXBASALLOC_API void mem_Release(void* block);
/// @}

/// @{
/// Nested initialise and finalise of the allocation library, with the tally rule: the tally
/// grows by 1 when the library's count goes from 0 to 1 and shrinks by 1 when it returns to 0.
KLDTPXBASALLOC_API void TPXBasAlloc_initialize(int& tally);
KLDTPXBASALLOC_API void TPXBasAlloc_finalize(int& tally);
/// @}

#endif  // MEM_ALLOC_H
