/// @file TPXBasMCAllocator.h
/// Zero-filled blocks straight from the host allocation service.
#ifndef TPXBASMCALLOCATOR_H
#define TPXBASMCALLOCATOR_H

#include "KLDTPXBasExport.h"
#include "TPXBasAllocator.h"
#include "TPXBasAllocatorBase.h"

/// Allocates with mem_Malloc and zero-fills, frees with mem_Free; it also carries a
/// large-block allocator that it hands out through LargeBlockAllocator (it does not use it
/// itself). The default one holds a TPXBasMemAllocator. Stateless apart from that handle:
/// Alloc and Free may be called from any thread; the handle is not thread-safe.
class KLDTPXBAS_API TPXBasMCAllocator : public TPXBasAllocatorBase {
 public:
  TPXBasMCAllocator();
  /// Carries large (shared) as the large-block allocator.
  explicit TPXBasMCAllocator(const TPXBasAllocator& large);
  ~TPXBasMCAllocator() override;

  /// Replaces the large-block allocator by large (shared).
  void SetLargeBlockAllocator(const TPXBasAllocator& large) { m_large = large; }

  /// allocated = size when a block comes back, unchanged otherwise.
  void* Alloc(unsigned int size, unsigned int& allocated) override;
  void* Alloc(unsigned int size) override;
  void Free(void* block) override;
  /// Returns its own large-block allocator.
  const TPXBasAllocator& LargeBlockAllocator(const TPXBasAllocator& fallback) const override;
  void* allocate(unsigned int size, const void* hint) override;
  void deallocate(void* block, unsigned int size) override;

 private:
  TPXBasAllocator m_large;
};

#endif  // TPXBASMCALLOCATOR_H
