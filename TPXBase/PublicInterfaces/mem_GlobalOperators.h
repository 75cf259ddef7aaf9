/// @file mem_GlobalOperators.h
/// The global allocation operator forms the core library exports.
#ifndef MEM_GLOBALOPERATORS_H
#define MEM_GLOBALOPERATORS_H

#include "KLDTPXBasExport.h"

#include <cstddef>

/// @{
/// Global operators exported by the library: the plain forms behave as the standard ones
/// (standard heap; on failure the installed new-handler, then std::bad_alloc); the forms that
/// also take a block type, a file name and a line ignore the three and behave as the plain ones.
KLDTPXBAS_API void* operator new(std::size_t size, int blockType, const char* file, int line);
KLDTPXBAS_API void* operator new[](std::size_t size, int blockType, const char* file, int line);
KLDTPXBAS_API void operator delete(void* block, int blockType, const char* file, int line) noexcept;
KLDTPXBAS_API void operator delete[](void* block, int blockType, const char* file,
                                     int line) noexcept;
/// @}

#endif  // MEM_GLOBALOPERATORS_H
