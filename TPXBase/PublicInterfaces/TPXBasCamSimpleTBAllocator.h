/// @file TPXBasCamSimpleTBAllocator.h
/// Small blocks carved out of chunks of another allocator.
#ifndef TPXBASCAMSIMPLETBALLOCATOR_H
#define TPXBASCAMSIMPLETBALLOCATOR_H

#include "KLDTPXBasExport.h"
#include "TPXBasAllocator.h"
#include "TPXBasAllocatorBase.h"

class TPXBasCamPool;

/// The header in front of every block of TPXBasCamSimpleTBAllocator, and its unit: sizes are
/// counted in units of sizeof(TPXBasCamTBHeader) (16 bytes). A free block's link is the next
/// free block in address order; a block in use links to itself; a large block has link null
/// and size 0.
struct KLDTPXBAS_API TPXBasCamTBHeader {
  /// A header with no link and size 0.
  TPXBasCamTBHeader() : m_link(nullptr), m_size(0) {}
  /// A header with no link and size units.
  explicit TPXBasCamTBHeader(int size) : m_link(nullptr), m_size(size) {}
  /// Next free block (free), the block itself (in use), or null (large).
  TPXBasCamTBHeader* m_link;
  int m_size;  ///< Size in units, header included; 0 for a large block.
};

/// First-fit allocator of small blocks over an address-ordered ring of free blocks, carved
/// out of chunks taken from a large-block allocator. Requests with request + 16 >= 4096 bytes
/// go to the large-block allocator directly. In fixed-size mode every small block has the
/// size given at construction and freed blocks are never merged, so they are reused whole.
///
/// Chunks are held until the allocator is destroyed; large blocks still handed out then are
/// not given back. Not thread-safe: one thread at a time.
class KLDTPXBAS_API TPXBasCamSimpleTBAllocator : public TPXBasAllocatorBase {
 public:
  enum {
    kUnit = sizeof(TPXBasCamTBHeader),  ///< bytes of one unit of size
    kLargeThreshold = 4096  ///< requests this large with their header go to the large blocks
  };

  /// Chunks and large blocks come from large (the handle is copied).
  TPXBasCamSimpleTBAllocator(const TPXBasAllocator& large, bool fixed, unsigned int blockSize,
                             unsigned int chunkUnits);
  /// Chunks and large blocks come from a TPXBasCamAllocator on pool, or from a
  /// TPXBasMemAllocator when pool is null.
  TPXBasCamSimpleTBAllocator(TPXBasCamPool* pool, bool fixed, unsigned int blockSize,
                             unsigned int chunkUnits);
  ~TPXBasCamSimpleTBAllocator() override;

  /// allocated = size, always.
  void* Alloc(unsigned int size, unsigned int& allocated) override;
  /// The first element after the free pointer that fits serves the request inline; the rest
  /// of the search, new chunks and large blocks are taken out of line.
  void* Alloc(unsigned int size) override {
    TPXBasCamTBHeader* prev = m_free;
    if (prev != nullptr && size < kLargeThreshold - kUnit) {
      int units = static_cast<int>(m_fixed ? m_blockUnits : (size + 2 * kUnit - 1) / kUnit);
      TPXBasCamTBHeader* p = prev->m_link;
      if (p->m_size >= units) return Take(prev, p, units);
    }
    return AllocSearch(size);
  }
  /// Only pointers this allocator returned, or null. In fixed-size mode a block that belongs
  /// right after the free pointer, or one element further, is linked in inline.
  void Free(void* block) override {
    TPXBasCamTBHeader* p = m_free;
    TPXBasCamTBHeader* bp = static_cast<TPXBasCamTBHeader*>(block);
    if (m_fixed && bp-- != nullptr && p != nullptr && bp->m_link != nullptr) {
      for (int step = 0; step < 2; ++step, p = p->m_link) {
        TPXBasCamTBHeader* next = p->m_link;
        if (bp > p && bp < next) {
          bp->m_link = next;
          p->m_link = bp;
          m_free = p;
          return;
        }
      }
    }
    FreeSearch(block);
  }
  /// Returns its own large-block allocator.
  const TPXBasAllocator& LargeBlockAllocator(const TPXBasAllocator& fallback) const override;
  /// @{
  /// Alloc(size) and Free under the standard-allocator names; hint and size are ignored.
  void* allocate(unsigned int size, const void* hint) override;
  void deallocate(void* block, unsigned int size) override;
  /// @}

  /// Whether the allocator is in fixed-size mode.
  bool Fixed() const { return m_fixed; }
  /// Units of every small block, header included, in fixed-size mode; 0 otherwise.
  unsigned int BlockUnits() const { return m_blockUnits; }
  /// Units of each chunk; in fixed-size mode a whole number of blocks, at least one.
  unsigned int ChunkUnits() const { return m_chunkUnits; }

 private:
  void Setup(bool fixed, unsigned int blockSize, unsigned int chunkUnits);
  TPXBasCamTBHeader* MoreCore(unsigned int units);
  void* AllocSearch(unsigned int size);
  void FreeSearch(void* block);
  /// Hands out units taken from the free element p (prev is the element before it): all of
  /// it when it has exactly that many, otherwise its tail.
  void* Take(TPXBasCamTBHeader* prev, TPXBasCamTBHeader* p, int units) {
    if (p->m_size == units) {
      prev->m_link = p->m_link;
    } else {
      p->m_size -= units;
      p += p->m_size;
      p->m_size = units;
    }
    m_free = prev;
    p->m_link = p;
    return p + 1;
  }

  TPXBasCamTBHeader* m_free;
  TPXBasCamTBHeader m_base;
  void* m_chunks;
  bool m_fixed;
  unsigned int m_blockUnits;
  unsigned int m_chunkUnits;
  TPXBasAllocator m_large;
};

#endif  // TPXBASCAMSIMPLETBALLOCATOR_H
