/// @file TPXBasMemAllocator.h
/// The allocator over the host allocation service.
#ifndef TPXBASMEMALLOCATOR_H
#define TPXBASMEMALLOCATOR_H

#include "KLDTPXBasAllocExport.h"
#include "TPXBasAllocatorBase.h"

/// Draws straight from mem_Malloc and gives back with mem_Free. Stateless and thread-safe.
/// Honours mem_Testing::FailAllocationsAfter like the mem_* functions.
class KLDTPXBASALLOC_API TPXBasMemAllocator : public TPXBasAllocatorBase {
 public:
  TPXBasMemAllocator() = default;
  ~TPXBasMemAllocator() override;

  /// allocated = size when a block comes back, unchanged otherwise.
  void* Alloc(unsigned int size, unsigned int& allocated) override;
  void* Alloc(unsigned int size) override;
  /// Gives block back with mem_Free; null is ignored.
  void Free(void* block) override;
  /// Returns fallback: this allocator serves large blocks itself.
  const TPXBasAllocator& LargeBlockAllocator(const TPXBasAllocator& fallback) const override;
  /// @{
  /// Alloc(size) and Free under the standard-allocator names; hint and size are ignored.
  void* allocate(unsigned int size, const void* hint) override;
  void deallocate(void* block, unsigned int size) override;
  /// @}
  /// @{
  /// Arrays of count values; null for a negative count or on failure.
  virtual double* AllocDouble(int count);
  virtual int* AllocInt(int count);
  /// @}
};

#endif  // TPXBASMEMALLOCATOR_H
