// TPXBasCamAllocator.cpp: allocators over a pool of the cache manager.
#include "TPXBasCamAllocator.h"

#include "KLDTPXBasAssert.h"
#include "TPXBasCamPool.h"

#include <cstddef>
#include <cstring>

static constexpr const char kAssertPath[] = "TPXBase/TPXBasCam.m/src/TPXBasCamAllocator";

TPXBasCamAllocator::TPXBasCamAllocator(TPXBasCamPool* pool) : mPool(pool) {
  KLD_ASSERT(NULL != mPool);
}

TPXBasCamAllocator::~TPXBasCamAllocator() {}

void* TPXBasCamAllocator::Alloc(unsigned int size) {
  void* block = mPool->Alloc(size);
  if (block != nullptr) std::memset(block, 0, size);
  return block;
}

void* TPXBasCamAllocator::Alloc(unsigned int size, unsigned int& allocated) {
  void* block = TPXBasCamAllocator::Alloc(size);
  if (block != nullptr) allocated = mPool->AllocSize(block);
  return block;
}

void TPXBasCamAllocator::Free(void* block) { mPool->Free(block); }

const TPXBasAllocator& TPXBasCamAllocator::LargeBlockAllocator(
    const TPXBasAllocator& fallback) const {
  return fallback;
}

void* TPXBasCamAllocator::allocate(unsigned int size, const void*) {
  return TPXBasCamAllocator::Alloc(size);
}

void TPXBasCamAllocator::deallocate(void* block, unsigned int) { mPool->Free(block); }

TPXBasCamAllocatorNoInit::TPXBasCamAllocatorNoInit(TPXBasCamPool* pool)
    : TPXBasCamAllocator(pool) {}

TPXBasCamAllocatorNoInit::~TPXBasCamAllocatorNoInit() {}

void* TPXBasCamAllocatorNoInit::Alloc(unsigned int size) { return mPool->Alloc(size); }

void* TPXBasCamAllocatorNoInit::Alloc(unsigned int size, unsigned int& allocated) {
  void* block = mPool->Alloc(size);
  allocated = mPool->AllocSize(block);
  return block;
}

void* TPXBasCamAllocatorNoInit::allocate(unsigned int size, const void*) {
  return mPool->Alloc(size);
}
