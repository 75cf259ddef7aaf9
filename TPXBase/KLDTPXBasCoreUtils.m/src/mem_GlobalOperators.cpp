// mem_GlobalOperators.cpp: the global operator forms the library exports.
#include "mem_GlobalOperators.h"

#include <cstdlib>
#include <new>

namespace {

// Standard heap; while it fails, the installed new-handler, then std::bad_alloc.
void* StandardNew(std::size_t size) {
  if (size == 0) size = 1;
  for (;;) {
    if (void* block = std::malloc(size)) return block;
    std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) throw std::bad_alloc();
    handler();
  }
}

}  // namespace

KLDTPXBAS_API void* operator new(std::size_t size) { return StandardNew(size); }
KLDTPXBAS_API void* operator new[](std::size_t size) { return StandardNew(size); }

void* operator new(std::size_t size, int, const char*, int) { return StandardNew(size); }
void* operator new[](std::size_t size, int, const char*, int) { return StandardNew(size); }
void operator delete(void* block, int, const char*, int) noexcept { std::free(block); }
void operator delete[](void* block, int, const char*, int) noexcept { std::free(block); }
