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
  /// Shares the allocator of other, counting one more handle.
  TPXBasAllocator(const TPXBasAllocator& other);
  /// Lets go of the allocator held (deleting it when this was its last handle) and shares
  /// the one of other.
  TPXBasAllocator& operator=(const TPXBasAllocator& other);
  ~TPXBasAllocator();

  /// A block of at least size bytes from the allocator held; null on failure or when the
  /// handle holds nothing.
  void* Alloc(unsigned int size) const;
  /// Gives block back to the allocator held; ignored when the handle holds nothing.
  void Free(void* block) const;
  /// The allocator held, or null.
  TPXBasAllocatorBase* Get() const { return m_allocator; }

 private:
  void Drop();

  TPXBasAllocatorBase* m_allocator;
};

#endif  // TPXBASALLOCATOR_H
