// TPXBasMemAllocator.cpp: the allocator over mem_Malloc and mem_Free.
#include "TPXBasMemAllocator.h"

#include "TPXBasAllocator.h"
#include "mem_Alloc.h"

TPXBasMemAllocator::~TPXBasMemAllocator() = default;

void* TPXBasMemAllocator::Alloc(unsigned int size, unsigned int& allocated) {
  void* block = mem_Malloc(size);
  if (block != nullptr) allocated = size;
  return block;
}

void* TPXBasMemAllocator::Alloc(unsigned int size) { return mem_Malloc(size); }

void TPXBasMemAllocator::Free(void* block) { mem_Free(block); }

const TPXBasAllocator& TPXBasMemAllocator::LargeBlockAllocator(
    const TPXBasAllocator& fallback) const {
  return fallback;
}

void* TPXBasMemAllocator::allocate(unsigned int size, const void*) { return mem_Malloc(size); }

void TPXBasMemAllocator::deallocate(void* block, unsigned int) { mem_Free(block); }

double* TPXBasMemAllocator::AllocDouble(int count) {
  if (count < 0) return nullptr;
  return static_cast<double*>(mem_Malloc(sizeof(double) * static_cast<unsigned int>(count)));
}

int* TPXBasMemAllocator::AllocInt(int count) {
  if (count < 0) return nullptr;
  return static_cast<int*>(mem_Malloc(sizeof(int) * static_cast<unsigned int>(count)));
}
