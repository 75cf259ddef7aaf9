// TPXBasCamSimpleTBAllocator.cpp: first-fit small-block allocator over chunks.
#include "TPXBasCamSimpleTBAllocator.h"

#include "TPXBasCamAllocator.h"
#include "TPXBasMemAllocator.h"

namespace {
constexpr unsigned int kUnit = TPXBasCamSimpleTBAllocator::kUnit;
static_assert(kUnit == 16, "one unit is one header");
}  // namespace

TPXBasCamSimpleTBAllocator::TPXBasCamSimpleTBAllocator(const TPXBasAllocator& large, bool fixed,
                                                       unsigned int blockSize,
                                                       unsigned int chunkUnits)
    : m_free(nullptr), m_base(), m_chunks(nullptr), m_large(large) {
  Setup(fixed, blockSize, chunkUnits);
}

TPXBasCamSimpleTBAllocator::TPXBasCamSimpleTBAllocator(TPXBasCamPool* pool, bool fixed,
                                                       unsigned int blockSize,
                                                       unsigned int chunkUnits)
    : m_free(nullptr),
      m_base(),
      m_chunks(nullptr),
      m_large(pool != nullptr ? static_cast<TPXBasAllocatorBase*>(new TPXBasCamAllocator(pool))
                              : static_cast<TPXBasAllocatorBase*>(new TPXBasMemAllocator)) {
  Setup(fixed, blockSize, chunkUnits);
}

void TPXBasCamSimpleTBAllocator::Setup(bool fixed, unsigned int blockSize,
                                       unsigned int chunkUnits) {
  m_fixed = fixed;
  m_blockUnits = 0;
  m_chunkUnits = chunkUnits;
  if (fixed) {
    m_blockUnits = (blockSize + kUnit - 1) / kUnit + 1;  // one more unit for the header
    if (m_chunkUnits < m_blockUnits)
      m_chunkUnits = m_blockUnits;
    else
      m_chunkUnits -= m_chunkUnits % m_blockUnits;
  }
}

TPXBasCamSimpleTBAllocator::~TPXBasCamSimpleTBAllocator() {
  for (void* chunk = m_chunks; chunk != nullptr;) {
    void* previous = *static_cast<void**>(chunk);
    m_large.Free(chunk);
    chunk = previous;
  }
}

TPXBasCamTBHeader* TPXBasCamSimpleTBAllocator::MoreCore(unsigned int units) {
  unsigned int n = units > m_chunkUnits ? units : m_chunkUnits;
  unsigned long long bytes = static_cast<unsigned long long>(n) * kUnit + kUnit;
  if (bytes > 0xFFFFFFFFull || n > 0x7FFFFFFFu) return nullptr;
  void* chunk = m_large.Alloc(static_cast<unsigned int>(bytes));
  if (chunk == nullptr) return nullptr;
  *static_cast<void**>(chunk) = m_chunks;
  m_chunks = chunk;
  TPXBasCamTBHeader* header =
      new (static_cast<char*>(chunk) + kUnit) TPXBasCamTBHeader(static_cast<int>(n));
  header->m_link = header;  // a block in use, about to be freed into the ring
  FreeSearch(header + 1);
  return m_free;
}

void* TPXBasCamSimpleTBAllocator::AllocSearch(unsigned int size) {
  if (static_cast<unsigned long long>(size) + kUnit >= kLargeThreshold) {
    if (static_cast<unsigned long long>(size) + kUnit > 0xFFFFFFFFull) return nullptr;
    void* block = m_large.Alloc(size + kUnit);
    if (block == nullptr) return nullptr;
    TPXBasCamTBHeader* header = new (block) TPXBasCamTBHeader(0);
    return header + 1;
  }
  unsigned int units = m_fixed ? m_blockUnits : (size + 2 * kUnit - 1) / kUnit;
  if (m_free == nullptr) {
    m_base.m_link = &m_base;
    m_base.m_size = 0;
    m_free = &m_base;
  }
  TPXBasCamTBHeader* prev = m_free;
  for (TPXBasCamTBHeader* p = prev->m_link;; prev = p, p = p->m_link) {
    if (static_cast<unsigned int>(p->m_size) >= units)
      return Take(prev, p, static_cast<int>(units));
    if (p == m_free && (p = MoreCore(units)) == nullptr) return nullptr;
  }
}

void* TPXBasCamSimpleTBAllocator::Alloc(unsigned int size, unsigned int& allocated) {
  allocated = size;
  return Alloc(size);
}

void TPXBasCamSimpleTBAllocator::FreeSearch(void* block) {
  if (block == nullptr) return;
  TPXBasCamTBHeader* bp = static_cast<TPXBasCamTBHeader*>(block) - 1;
  if (bp->m_link == nullptr) {
    m_large.Free(bp);
    return;
  }
  // The element the block goes after is the same wherever the walk starts. For a block below
  // the free pointer the walk passes the ring's highest element and comes round; when the
  // base element lies on that way, starting there skips the stretch before it.
  TPXBasCamTBHeader* p = m_free;
  if (bp < p && (&m_base > p || &m_base < bp)) p = &m_base;
  while (!(bp > p && bp < p->m_link)) {
    if (p >= p->m_link && (bp > p || bp < p->m_link)) break;  // at the ring's highest address
    p = p->m_link;
  }
  TPXBasCamTBHeader* next = p->m_link;
  // The base element has size 0 and lives in this object: never merged with a block.
  if (!m_fixed && next != &m_base && bp + bp->m_size == next) {
    bp->m_size += next->m_size;
    bp->m_link = next->m_link;
  } else {
    bp->m_link = next;
  }
  if (!m_fixed && p != &m_base && p + p->m_size == bp) {
    p->m_size += bp->m_size;
    p->m_link = bp->m_link;
  } else {
    p->m_link = bp;
  }
  m_free = p;
}

const TPXBasAllocator& TPXBasCamSimpleTBAllocator::LargeBlockAllocator(
    const TPXBasAllocator&) const {
  return m_large;
}

void* TPXBasCamSimpleTBAllocator::allocate(unsigned int size, const void*) { return Alloc(size); }

void TPXBasCamSimpleTBAllocator::deallocate(void* block, unsigned int) { Free(block); }
