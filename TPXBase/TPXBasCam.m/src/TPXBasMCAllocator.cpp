// TPXBasMCAllocator.cpp: zero-filled blocks from the host allocation service.
#include "TPXBasMCAllocator.h"

#include "TPXBasMemAllocator.h"
#include "mem_Alloc.h"

#include <cstring>

TPXBasMCAllocator::TPXBasMCAllocator() : m_large(new TPXBasMemAllocator) {}

TPXBasMCAllocator::TPXBasMCAllocator(const TPXBasAllocator& large) : m_large(large) {}

TPXBasMCAllocator::~TPXBasMCAllocator() {}

void* TPXBasMCAllocator::Alloc(unsigned int size) {
  void* block = mem_Malloc(size);
  if (block != nullptr) std::memset(block, 0, size);
  return block;
}

void* TPXBasMCAllocator::Alloc(unsigned int size, unsigned int& allocated) {
  void* block = TPXBasMCAllocator::Alloc(size);
  if (block != nullptr) allocated = size;
  return block;
}

void TPXBasMCAllocator::Free(void* block) { mem_Free(block); }

const TPXBasAllocator& TPXBasMCAllocator::LargeBlockAllocator(const TPXBasAllocator&) const {
  return m_large;
}

void* TPXBasMCAllocator::allocate(unsigned int size, const void*) {
  return TPXBasMCAllocator::Alloc(size);
}

void TPXBasMCAllocator::deallocate(void* block, unsigned int) { mem_Free(block); }
