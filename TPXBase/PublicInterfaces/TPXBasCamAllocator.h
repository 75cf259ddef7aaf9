/// @file TPXBasCamAllocator.h
/// Allocators that draw from a pool of the cache manager.
#ifndef TPXBASCAMALLOCATOR_H
#define TPXBASCAMALLOCATOR_H

#include "KLDTPXBasExport.h"
#include "TPXBasAllocatorBase.h"

class TPXBasCamPool;

/// Draws zero-filled blocks from a pool (TPXBasCamPool) of the cache manager. Holds nothing
/// itself and locks nothing: it is as thread-safe as the pool. The pool must outlive it.
class KLDTPXBAS_API TPXBasCamAllocator : public TPXBasAllocatorBase {
 public:
  /// A null pool is fatal ("AssertionFailed:NULL != mPool").
  explicit TPXBasCamAllocator(TPXBasCamPool* pool);
  ~TPXBasCamAllocator() override;

  /// The first size bytes zeroed; allocated = the whole block size (header included), left
  /// alone when the pool gives nothing.
  void* Alloc(unsigned int size, unsigned int& allocated) override;
  void* Alloc(unsigned int size) override;
  void Free(void* block) override;
  /// Returns fallback.
  const TPXBasAllocator& LargeBlockAllocator(const TPXBasAllocator& fallback) const override;
  void* allocate(unsigned int size, const void* hint) override;
  void deallocate(void* block, unsigned int size) override;

  /// The pool the blocks come from.
  TPXBasCamPool* Pool() const { return mPool; }

 protected:
  TPXBasCamPool* mPool;  ///< The pool the blocks come from; never null.
};

/// The same without zero-filling; Alloc(size, allocated) sets allocated to 0 when the pool
/// gives nothing.
class KLDTPXBAS_API TPXBasCamAllocatorNoInit : public TPXBasCamAllocator {
 public:
  /// A null pool is fatal ("AssertionFailed:NULL != mPool").
  explicit TPXBasCamAllocatorNoInit(TPXBasCamPool* pool);
  ~TPXBasCamAllocatorNoInit() override;

  void* Alloc(unsigned int size, unsigned int& allocated) override;
  void* Alloc(unsigned int size) override;
  void* allocate(unsigned int size, const void* hint) override;
};

#endif  // TPXBASCAMALLOCATOR_H
