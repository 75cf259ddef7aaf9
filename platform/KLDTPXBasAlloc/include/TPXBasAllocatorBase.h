/// @file TPXBasAllocatorBase.h
/// One interface over every source of memory.
#ifndef TPXBASALLOCATORBASE_H
#define TPXBASALLOCATORBASE_H

#include "KLDTPXBasAllocExport.h"
#include "mem_AllocationOperators.h"

class TPXBasAllocator;

/// Abstract allocator handed to containers and algorithms of the product family. Concrete
/// allocators are heap objects of the host allocation service; a TPXBasAllocator handle may
/// own one (see TPXBasAllocator.h). Whether an allocator may be used by several threads at
/// once is stated by each class.
class KLDTPXBASALLOC_API TPXBasAllocatorBase : public mem_AllocationOperators {
 public:
  TPXBasAllocatorBase() : m_word(0) {}
  virtual ~TPXBasAllocatorBase() {}

  /// A block of at least size bytes and, in allocated, a size as each class states.
  virtual void* Alloc(unsigned int size, unsigned int& allocated) = 0;
  /// A block of at least size bytes, or null.
  virtual void* Alloc(unsigned int size) = 0;
  /// Gives back a block of this allocator; null is ignored.
  virtual void Free(void* block) = 0;
  /// The allocator to use for large blocks, given a default.
  virtual const TPXBasAllocator& LargeBlockAllocator(const TPXBasAllocator& fallback) const = 0;
  /// @{
  /// Standard-allocator forms of Alloc(size) and Free; hint and size are ignored.
  virtual void* allocate(unsigned int size, const void* hint) = 0;
  virtual void deallocate(void* block, unsigned int size) = 0;
  /// @}

 private:
  friend class TPXBasAllocator;
  TPXBasAllocatorBase(const TPXBasAllocatorBase&) = delete;
  TPXBasAllocatorBase& operator=(const TPXBasAllocatorBase&) = delete;

  int m_word;  // number of TPXBasAllocator handles that own this allocator
};

#endif  // TPXBASALLOCATORBASE_H
