/// @file TPXBasAllocator.h
/// Shared-ownership handle of an allocator.
#ifndef TPXBASALLOCATOR_H
#define TPXBASALLOCATOR_H

#include "KLDTPXBasAllocExport.h"
#include "TPXBasAllocatorBase.h"

/// Holds one TPXBasAllocatorBase made with new. Handles share it: copies count themselves in
/// the allocator's word and the last handle that lets go deletes it. A default handle holds
/// nothing; Alloc through it gives null and Free ignores the block. Not thread-safe: a handle
/// and its copies belong to one thread at a time, as the allocators they hold do.
class KLDTPXBASALLOC_API TPXBasAllocator : public mem_AllocationOperators {
 public:
  TPXBasAllocator() : m_allocator(nullptr) {}
  /// Takes (shared) ownership of allocator, which must come from new; null holds nothing.
  explicit TPXBasAllocator(TPXBasAllocatorBase* allocator);
  TPXBasAllocator(const TPXBasAllocator& other);
  TPXBasAllocator& operator=(const TPXBasAllocator& other);
  ~TPXBasAllocator();

  void* Alloc(unsigned int size) const;
  void Free(void* block) const;
  /// The allocator held, or null.
  TPXBasAllocatorBase* Get() const { return m_allocator; }

 private:
  void Drop();

  TPXBasAllocatorBase* m_allocator;
};

#endif  // TPXBASALLOCATOR_H
