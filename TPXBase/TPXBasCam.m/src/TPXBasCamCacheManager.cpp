// TPXBasCamCacheManager.cpp: construction, bins, block headers, Alloc and Free, limits.
#include "TPXBasCamCacheManager.h"

#include "TPXBasAtiAtomicTemplate.h"
#include "TPXBasAtiCondVar.h"
#include "TPXBasAtiMutex.h"
#include "TPXBasAtiThreadingModel.h"
#include "TPXBasCamPool.h"
#include "TPXBasMemAllocator.h"
#include "mem_Alloc.h"

#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>

template class TPXBasAtiGlobalSingleton<TPXBasCamCacheManager>;

namespace {

// The counters change only under m_mutex and are read without it: a plain load and store
// suffice for the writer, without a locked read-modify-write.
inline void Add(std::atomic<unsigned int>& counter, unsigned int by) {
  counter.store(counter.load(std::memory_order_relaxed) + by, std::memory_order_relaxed);
}
inline void Sub(std::atomic<unsigned int>& counter, unsigned int by) {
  counter.store(counter.load(std::memory_order_relaxed) - by, std::memory_order_relaxed);
}

// The bins' statistics counters (kept while a statistics stream is set) change under their
// bin's lock and are read by the maximum-point snapshot under the manager mutex. They never
// go below 0: counting may start while blocks are already cached (the stream set late).
inline unsigned int LoadStat(const unsigned int& counter) {
  return __atomic_load_n(&counter, __ATOMIC_RELAXED);
}
inline void AddStat(unsigned int& counter, unsigned int by) {
  __atomic_store_n(&counter, LoadStat(counter) + by, __ATOMIC_RELAXED);
}
inline void LowerStat(unsigned int& counter, unsigned int by) {
  unsigned int value = LoadStat(counter);
  __atomic_store_n(&counter, value > by ? value - by : 0, __ATOMIC_RELAXED);
}

// The sizes that environment values may give without wrapping in 32 bits: an allowance of up
// to 1 MB on the last bin, a tracking tolerance of up to 4095 MB.
constexpr long kMostAlignment = 1048576;
constexpr long kMostToleranceMB = 4095;

// A decimal number, optionally signed and surrounded by blanks, that fits a long.
bool EnvNumber(const char* text, long& value) {
  errno = 0;
  char* end = nullptr;
  value = std::strtol(text, &end, 10);
  if (end == text || errno == ERANGE) return false;
  while (*end == ' ' || *end == '\t') ++end;
  return *end == '\0';
}

// One notice, on a line of its own, for a value that cannot be used.
void OutOfRange(const char* name, const char* text, long low, long high, long fallback) {
  std::fprintf(stderr, "KAL cache manager: %s=%s is not a number from %ld to %ld; using %ld\n",
               name, text, low, high, fallback);
}

TPXBasAtiMutex* NewMutex() {
  TPXBasAtiMutex* mutex = TPXBasAtiThreadingModel::newMutex();
  if (mutex == nullptr) throw std::bad_alloc();
  return mutex;
}

}  // namespace

TPXBasCamBinHeader::TPXBasCamBinHeader()
    : m_prev(nullptr), m_next(nullptr), m_bin(-1), m_size(0), m_mutex(NewMutex()) {}

TPXBasCamBinHeader::~TPXBasCamBinHeader() { delete m_mutex; }

static_assert(sizeof(TPXBasCamBinHeader) <= TPXBasCamCacheManager::kHeaderSize,
              "a block header fits in front of the caller's data");

// Everything a push or pop of one bin writes: the sentinels of its free list and the counters
// kept under the head sentinel's lock. Each record starts a 128-byte aligned stretch of its
// own, so two bins never write the same cache line (nor the same pair of lines, which
// processors fetch together) and threads working in different bins do not slow each other.
struct TPXBasCamCacheManager::BinRecord {
  TPXBasCamBinHeader head;
  TPXBasCamBinHeader tail;
  std::atomic<unsigned int> freeBytes{0};  // sizes of the blocks on this free list
  std::atomic<unsigned int> allocs{0};     // Alloc calls served from this free list
  unsigned int blockSize = 0;              // whole block size of the bin
};

namespace {
constexpr std::size_t kBinStride = 128;
}  // namespace

inline TPXBasCamCacheManager::BinRecord& TPXBasCamCacheManager::Record(int bin) const {
  static_assert(sizeof(BinRecord) <= kBinStride, "a bin record fits in its stride");
  return *reinterpret_cast<BinRecord*>(reinterpret_cast<char*>(m_bins) +
                                       static_cast<std::size_t>(bin) * kBinStride);
}

TPXBasCamCacheManager::TPXBasCamCacheManager()
    : m_dbFile(nullptr),
      m_memoryLimit(kDefaultLimit),
      m_memoryCurrent(0),
      m_mutex(nullptr),
      m_highPercentage(0.8),
      m_lowPercentage(0.6),
      m_reservePercentage(0.16),
      m_memoryHighMark(0),
      m_memoryLowMark(0),
      m_reserveCap(0),
      m_purgeList(nullptr),
      m_limitMutex(nullptr),
      m_numPurgeLists(0),
      m_pools(nullptr),
      m_numPools(0),
      m_binHead(),
      m_binTail(),
      m_bins(nullptr),
      m_binMemory(nullptr),
      m_numBins(0),
      m_purgeCondVar(nullptr),
      m_exhaustedMutex(nullptr),
      m_purgeExhausted(true),
      m_purgingMutex(nullptr),
      m_purging(false),
      m_pendingRequest(0),
      m_binFreeCurrent(nullptr),
      m_binFreeAtMax(nullptr),
      m_poolCurrent(nullptr),
      m_poolCurrentAtMax(nullptr),
      m_poolStagedMax(nullptr),
      m_poolMax(nullptr),
      m_listMemoryCurrent(nullptr),
      m_listMemoryAtMax(nullptr),
      m_trackingMutex(nullptr),
      m_lastMaxPoint(0),
      m_trackingTolerance(kDefaultTolerance),
      m_allocCountAtMax(0),
      m_allocCount(nullptr),
      m_errorHandler(nullptr),
      m_alignment(0),
      m_purgeThreadRunning(false),
      m_stopPurge(false),
      m_hostAllocator(nullptr),
      m_poolStatsLength(0),
      m_listStatsLength(0) {
  // Whatever was made before a failure is released again; the failure reaches Instance()'s
  // caller and no manager exists.
  try {
    m_mutex = NewMutex();
    m_limitMutex = NewMutex();
    m_purgeCondVar = TPXBasAtiThreadingModel::newCondVar();
    if (m_purgeCondVar == nullptr) throw std::bad_alloc();
    m_exhaustedMutex = NewMutex();
    m_purgingMutex = NewMutex();
    m_trackingMutex = NewMutex();
    m_allocCount = TPXBasAtiThreadingModel::newAtomic(0);
    if (m_allocCount == nullptr) throw std::bad_alloc();
    m_hostAllocator = new TPXBasMemAllocator;

    m_mutex->Lock();
    ComputeThresholds();
    m_mutex->Unlock();

    m_numBins = kDefaultBins;
    if (const char* bins = std::getenv("KAL_CAM_NUMBER_OF_BINS")) {
      // Above the most bins counts as the most, and text that is not a number as none; only
      // a negative count falls back to the default.
      long n = 0;
      if (EnvNumber(bins, n) && n < 0)
        OutOfRange("KAL_CAM_NUMBER_OF_BINS", bins, 0, kMostBins, kDefaultBins);
      else
        m_numBins = n > kMostBins ? kMostBins : static_cast<int>(n);
    }
    if (const char* alignment = std::getenv("KAL_CAM_MEMORY_ALIGNMENT")) {
      long n = 0;
      if (!EnvNumber(alignment, n) || n < 0 || n > kMostAlignment)
        OutOfRange("KAL_CAM_MEMORY_ALIGNMENT", alignment, 0, kMostAlignment, 0);
      else
        m_alignment = static_cast<int>(n);
    }
    if (const char* tolerance = std::getenv("KAL_CAM_TRACKINGTOL")) {
      long mb = 0;
      if (!EnvNumber(tolerance, mb) || mb < 0 || mb > kMostToleranceMB) {
        OutOfRange("KAL_CAM_TRACKINGTOL", tolerance, 0, kMostToleranceMB,
                   kDefaultTolerance / 1048576);
      } else {
        std::fprintf(stderr, "current cache manager maximum point tracking tolerance %ld MB", mb);
        m_trackingTolerance = static_cast<unsigned int>(mb) * 1048576u;
      }
    }
    if (m_numBins > 0) {
      m_binMemory = mem_Malloc(static_cast<std::size_t>(m_numBins + 1) * kBinStride);
      if (m_binMemory == nullptr) throw std::bad_alloc();
      std::uintptr_t at = reinterpret_cast<std::uintptr_t>(m_binMemory);
      m_bins = reinterpret_cast<BinRecord*>((at + kBinStride - 1) / kBinStride * kBinStride);
    }
    for (int b = 0; b < m_numBins; ++b) {
      BinRecord* record =
          new (reinterpret_cast<char*>(m_bins) + static_cast<std::size_t>(b) * kBinStride)
              BinRecord;
      record->blockSize = static_cast<unsigned int>(BinCapacity(b)) + kHeaderSize;
      if (b == m_numBins - 1 && m_alignment > 0)
        record->blockSize += static_cast<unsigned int>(m_alignment) + 4;
      m_binHead[b] = &record->head;
      m_binTail[b] = &record->tail;
      m_binHead[b]->m_next = m_binTail[b];
      m_binTail[b]->m_prev = m_binHead[b];
    }
    m_purgeList = new TPXBasCamPurgeList(0);
  } catch (...) {
    Release();
    throw;
  }
}

TPXBasCamCacheManager::~TPXBasCamCacheManager() { Release(); }

void TPXBasCamCacheManager::Release() {
  delete m_purgeList;
  m_purgeList = nullptr;
  for (int b = 0; b < kMostBins; ++b) {
    if (m_binHead[b] == nullptr) continue;  // its record was never made
    for (TPXBasCamBinHeader* h = m_binHead[b]->m_next; h != m_binTail[b];) {
      TPXBasCamBinHeader* next = h->m_next;
      delete h->m_mutex;
      m_hostAllocator->deallocate(h, 0);
      h = next;
    }
    Record(b).~BinRecord();
    m_binHead[b] = m_binTail[b] = nullptr;
  }
  mem_Free(m_binMemory);
  m_binMemory = nullptr;
  m_bins = nullptr;
  for (int i = 0; i < m_numPools; ++i) delete m_pools[i];
  mem_deleteBuiltIn(m_pools);
  m_pools = nullptr;
  m_numPools = 0;
  unsigned int** arrays[] = {&m_binFreeCurrent,    &m_binFreeAtMax,   &m_poolCurrent,
                             &m_poolCurrentAtMax,  &m_poolStagedMax,  &m_poolMax,
                             &m_listMemoryCurrent, &m_listMemoryAtMax};
  for (unsigned int** array : arrays) {
    mem_deleteBuiltIn(*array);
    *array = nullptr;
  }
  delete m_allocCount;
  delete m_trackingMutex;
  delete m_purgingMutex;
  delete m_exhaustedMutex;
  delete m_purgeCondVar;
  delete m_limitMutex;
  delete m_mutex;
  delete m_errorHandler;
  delete m_hostAllocator;
  m_allocCount = nullptr;
  m_trackingMutex = m_purgingMutex = m_exhaustedMutex = m_limitMutex = m_mutex = nullptr;
  m_purgeCondVar = nullptr;
  m_errorHandler = nullptr;
  m_hostAllocator = nullptr;
}

// Called with m_mutex held.
void TPXBasCamCacheManager::ComputeThresholds() {
  double limit = m_memoryLimit.load(std::memory_order_relaxed);
  m_memoryHighMark.store(static_cast<unsigned int>(limit * m_highPercentage),
                         std::memory_order_relaxed);
  m_memoryLowMark.store(static_cast<unsigned int>(limit * m_lowPercentage),
                        std::memory_order_relaxed);
  unsigned int reserve = static_cast<unsigned int>(limit * m_reservePercentage);
  m_reserveCap.store(reserve < static_cast<unsigned int>(kMostReserve)
                         ? reserve
                         : static_cast<unsigned int>(kMostReserve),
                     std::memory_order_relaxed);
}

unsigned long long TPXBasCamCacheManager::BinCapacity(int b) {
  if (b <= 0) return kPageSize;
  if (b % 2 == 1) return static_cast<unsigned long long>(kPageSize) << ((b + 1) / 2);
  return (3ull * kPageSize) << (b / 2 - 1);
}

int TPXBasCamCacheManager::GetBin(unsigned int size) const { return BinOf(size); }

unsigned int TPXBasCamCacheManager::GetAllocationSize(int bin, unsigned int size) const {
  return BlockSizeOf(bin, size);
}

inline int TPXBasCamCacheManager::BinOf(unsigned int size) const {
  if (size == 0) return -1;
  unsigned long long s = size;
  if (m_alignment > 0 && s > kAlignedAbove &&
      s <= static_cast<unsigned long long>(m_alignment) + kAlignedAbove + 4)
    s -= static_cast<unsigned long long>(m_alignment) + 4;
  unsigned long long pages = (s + kPageSize - 1) / kPageSize;
  if (pages <= 1) return 0;
  // With 2^h < pages <= 2^(h+1) the candidates are bin 2h (1.5 x 2^h pages) and bin 2h + 1
  // (2^(h+1) pages).
  int h = 63 - __builtin_clzll(pages - 1);
  return 2 * pages <= (3ull << h) ? 2 * h : 2 * h + 1;
}

inline unsigned int TPXBasCamCacheManager::BlockSizeOf(int bin, unsigned int size) const {
  if (bin < 0) return 0;
  if (bin < m_numBins) return Record(bin).blockSize;
  unsigned long long whole =
      (static_cast<unsigned long long>(size) + kPageSize - 1) / kPageSize * kPageSize + kHeaderSize;
  return whole > 0xFFFFFFFFull ? 0 : static_cast<unsigned int>(whole);
}

// Alloc calls served from a free list are counted in their bin's record, every other call in
// m_allocCount: the total is their sum.
unsigned int TPXBasCamCacheManager::AllocCount() const {
  unsigned int count = *m_allocCount;
  for (int b = 0; b < m_numBins; ++b) count += Record(b).allocs.load(std::memory_order_relaxed);
  return count;
}

unsigned int TPXBasCamCacheManager::FreeListBytes() const {
  unsigned int bytes = 0;
  for (int b = 0; b < m_numBins; ++b) bytes += Record(b).freeBytes.load(std::memory_order_relaxed);
  return bytes;
}

// Every push and pop of a bin starts at its head sentinel and holds the head's lock
// throughout, so that lock alone serialises the bin: locks of the nodes behind it could only
// be taken under it and would exclude nothing more. The bin's byte count (and, for a pop on
// behalf of Alloc, its call count) change under the same lock. Different bins never contend.
inline __attribute__((always_inline)) TPXBasCamBinHeader* TPXBasCamCacheManager::GetHeader(
    int bin, bool countAlloc) {
  BinRecord& record = Record(bin);
  TPXBasCamBinHeader* head = &record.head;
  head->Lock();
  TPXBasCamBinHeader* node = head->m_next;
  if (node == &record.tail) {
    head->Unlock();
    return nullptr;
  }
  TPXBasCamBinHeader* next = node->m_next;
  head->m_next = next;
  next->m_prev = head;
  node->m_prev = nullptr;
  node->m_next = nullptr;
  Sub(record.freeBytes, node->m_size);
  if (countAlloc) Add(record.allocs, 1);
  if (m_dbFile != nullptr && m_binFreeCurrent != nullptr)
    LowerStat(m_binFreeCurrent[bin], node->m_size);
  head->Unlock();
  return node;
}

inline __attribute__((always_inline)) void TPXBasCamCacheManager::ReturnHeader(
    TPXBasCamBinHeader* header, int bin) {
  BinRecord& record = Record(bin);
  TPXBasCamBinHeader* head = &record.head;
  head->Lock();
  TPXBasCamBinHeader* first = head->m_next;
  header->m_prev = head;
  header->m_next = first;
  head->m_next = header;
  first->m_prev = header;
  Add(record.freeBytes, header->m_size);
  if (m_dbFile != nullptr && m_binFreeCurrent != nullptr)
    AddStat(m_binFreeCurrent[bin], header->m_size);
  head->Unlock();
}

// The bin's statistics counter takes the bin's exact free bytes, under the lock that orders
// it with pushes and pops.
void TPXBasCamCacheManager::RefreshBinStat(int bin) {
  BinRecord& record = Record(bin);
  record.head.Lock();
  __atomic_store_n(&m_binFreeCurrent[bin], record.freeBytes.load(std::memory_order_relaxed),
                   __ATOMIC_RELAXED);
  record.head.Unlock();
}

// Called with m_mutex held: asks the host for a block when the ceiling allows it.
TPXBasCamBinHeader* TPXBasCamCacheManager::HostBlock(unsigned int allocSize, unsigned int ceiling) {
  unsigned long long after =
      static_cast<unsigned long long>(m_memoryCurrent.load(std::memory_order_relaxed)) + allocSize;
  if (after > ceiling) return nullptr;
  void* block = m_hostAllocator->allocate(allocSize, nullptr);
  if (block == nullptr) return nullptr;
  m_memoryCurrent.store(static_cast<unsigned int>(after), std::memory_order_relaxed);
  TrackMaxPoint();
  return new (block) TPXBasCamBinHeader(-1, allocSize, nullptr);
}

// Called with m_mutex held: a block just popped from a free list (its bin's counters already
// lowered) goes back to the host.
void TPXBasCamCacheManager::GiveBack(TPXBasCamBinHeader* header) {
  unsigned int size = header->m_size;
  delete header->m_mutex;
  m_hostAllocator->deallocate(header, 0);
  Sub(m_memoryCurrent, size);
}

TPXBasCamBinHeader* TPXBasCamCacheManager::TryFreeMemory(int bin, unsigned int allocSize,
                                                         bool& fresh, unsigned int ceiling,
                                                         bool countAlloc) {
  fresh = false;
  if (bin < m_numBins) {
    if (TPXBasCamBinHeader* header = GetHeader(bin, countAlloc)) {
      mem_Acquire(header);
      return header;
    }
  }
  // A fresh block needs a mutex of its own for the free lists; a block whose mutex cannot be
  // made goes straight back, as if the host had refused it.
  auto withMutex = [this](TPXBasCamBinHeader* header) -> TPXBasCamBinHeader* {
    try {
      header->m_mutex = NewMutex();
      return header;
    } catch (...) {
      unsigned int size = header->m_size;
      m_mutex->Lock();
      m_hostAllocator->deallocate(header, 0);
      Sub(m_memoryCurrent, size);
      m_mutex->Unlock();
      return nullptr;
    }
  };
  m_mutex->Lock();
  TPXBasCamBinHeader* header = HostBlock(allocSize, ceiling);
  m_mutex->Unlock();
  if (header != nullptr && (header = withMutex(header)) != nullptr) {
    fresh = true;
    return header;
  }
  // Cached blocks go back to the host, largest bins first, until the request fits.
  for (int b = m_numBins - 1; b >= 0; --b) {
    for (;;) {
      TPXBasCamBinHeader* cached = GetHeader(b, false);
      m_mutex->Lock();
      if (cached != nullptr) GiveBack(cached);
      header = HostBlock(allocSize, ceiling);
      m_mutex->Unlock();
      if (header != nullptr && (header = withMutex(header)) != nullptr) {
        fresh = true;
        return header;
      }
      if (cached == nullptr) break;
    }
  }
  return nullptr;
}

void* TPXBasCamCacheManager::Alloc(unsigned int size, unsigned int& blockSize) {
  return DoAlloc(size, blockSize);
}

unsigned int TPXBasCamCacheManager::Free(void* block) { return DoFree(block); }

// Hands a block out: its header describes it, and a purge starts when memory in use passed
// the high mark while the free lists hold less than the reserve.
inline void* TPXBasCamCacheManager::HandOut(TPXBasCamBinHeader* header, int bin,
                                            unsigned int allocSize) {
  header->m_prev = nullptr;
  header->m_next = nullptr;
  header->m_bin = bin;
  header->m_size = allocSize;
  if (m_memoryCurrent.load(std::memory_order_relaxed) >
          m_memoryHighMark.load(std::memory_order_relaxed) &&
      FreeListBytes() < m_reserveCap.load(std::memory_order_relaxed) &&
      !m_purgeExhausted.load(std::memory_order_acquire))
    PurgeTrigger();
  return reinterpret_cast<char*>(header) + kHeaderSize;
}

// The common case, a block of the request's bin waiting on its free list, takes one lock and
// calls nothing but the host's acquire notice; everything else is AllocSlow.
void* TPXBasCamCacheManager::DoAlloc(unsigned int size, unsigned int& blockSize) {
  int bin = BinOf(size);
  if (__builtin_expect(bin >= 0 && bin < m_numBins, 1)) {
    if (TPXBasCamBinHeader* header = GetHeader(bin, true)) {
      mem_Acquire(header);
      blockSize = Record(bin).blockSize;
      return HandOut(header, bin, blockSize);
    }
  }
  return AllocSlow(bin, size, blockSize);
}

void* TPXBasCamCacheManager::AllocSlow(int bin, unsigned int size, unsigned int& blockSize) {
  unsigned int allocSize = BlockSizeOf(bin, size);
  blockSize = allocSize;
  void* result = nullptr;
  bool counted = false;  // counted in the bin's record by the pop that served the call
  if (allocSize != 0) {
    bool fresh = false;
    TPXBasCamBinHeader* header = TryFreeMemory(
        bin, allocSize, fresh, m_memoryHighMark.load(std::memory_order_relaxed), true);
    counted = header != nullptr && !fresh;
    if (header == nullptr) {
      m_mutex->Lock();
      Add(m_pendingRequest, allocSize);
      m_mutex->Unlock();
      for (;;) {
        TPXBasAtiThreadingModel::Relinquish();
        header = TryFreeMemory(bin, allocSize, fresh, m_memoryLimit.load(std::memory_order_relaxed),
                               false);
        if (header != nullptr) break;
        if (m_purgeExhausted.load(std::memory_order_acquire) && FreeListBytes() == 0) {
          header = TryFreeMemory(bin, allocSize, fresh,
                                 m_memoryLimit.load(std::memory_order_relaxed), false);
          if (header == nullptr) OutOfMemory();
          break;
        }
        if (m_purging.load(std::memory_order_acquire)) {
          TPXBasAtiThreadingModel::Relinquish();
        } else if (m_purgeExhausted.load(std::memory_order_acquire)) {
          // Free-list blocks remain: the next attempt gives them back to the host.
        } else if (PurgeThreadListening()) {
          SignalPurgeThread();
        } else {
          PurgePass(false);
        }
      }
      m_mutex->Lock();
      Sub(m_pendingRequest, allocSize);
      m_mutex->Unlock();
    }
    if (header != nullptr) {
      result = HandOut(header, bin, allocSize);
    } else {
      blockSize = 0;
    }
  } else if (size != 0) {
    OutOfMemory();  // a block of that size does not fit the 32-bit sizes: never satisfiable
  }
  if (!counted) ++*m_allocCount;
  return result;
}

// A bin block is told released before it becomes visible on its free list, so the host
// always hears of a block's release before any thread that pops it acquires it again. The
// push and the bin's counters need only the bin's lock: memory in use does not change.
unsigned int TPXBasCamCacheManager::DoFree(void* block) {
  if (block == nullptr) return 0;
  TPXBasCamBinHeader* header =
      reinterpret_cast<TPXBasCamBinHeader*>(static_cast<char*>(block) - kHeaderSize);
  int bin = header->m_bin;
  if (__builtin_expect(bin >= m_numBins, 0)) return FreeLarge(header);
  unsigned int size = header->m_size;
  mem_Release(header);
  ReturnHeader(header, bin);
  return size;
}

// A large block goes straight back to the host.
unsigned int TPXBasCamCacheManager::FreeLarge(TPXBasCamBinHeader* header) {
  unsigned int size = header->m_size;
  m_mutex->Lock();
  delete header->m_mutex;
  m_hostAllocator->deallocate(header, 0);
  Sub(m_memoryCurrent, size);
  m_mutex->Unlock();
  return size;
}

unsigned int TPXBasCamCacheManager::AllocSize(void* block) const {
  if (block == nullptr) return 0;
  return reinterpret_cast<const TPXBasCamBinHeader*>(static_cast<char*>(block) - kHeaderSize)
      ->m_size;
}

unsigned int TPXBasCamCacheManager::ActualSizeForUse(void* block) const {
  return block == nullptr ? 0 : AllocSize(block) - kHeaderSize;
}

void TPXBasCamCacheManager::ClearFreeList() {
  for (int b = 0; b < m_numBins; ++b) {
    while (TPXBasCamBinHeader* header = GetHeader(b, false)) {
      m_mutex->Lock();
      GiveBack(header);
      m_mutex->Unlock();
    }
  }
}

// The bin's count is exact under its lock; the list itself is never walked while other
// threads may pop its blocks and give them back to the host.
unsigned int TPXBasCamCacheManager::BinFreeBytes(int bin) const {
  if (bin < 0 || bin >= m_numBins) return 0;
  BinRecord& record = Record(bin);
  record.head.Lock();
  unsigned int bytes = record.freeBytes.load(std::memory_order_relaxed);
  record.head.Unlock();
  return bytes;
}

void TPXBasCamCacheManager::SetMemoryLimit(unsigned int bytes) {
  m_limitMutex->Lock();
  unsigned int posted = 0;  // the part of m_pendingRequest this call has asked for
  while (m_memoryCurrent.load(std::memory_order_relaxed) > bytes) {
    ClearFreeList();
    if (m_memoryCurrent.load(std::memory_order_relaxed) <= bytes ||
        m_purgeExhausted.load(std::memory_order_acquire))
      break;
    m_mutex->Lock();
    unsigned int current = m_memoryCurrent.load(std::memory_order_relaxed);
    unsigned int excess = current > bytes ? current - bytes : 0;
    Add(m_pendingRequest, excess - posted);  // modulo 2^32
    posted = excess;
    m_mutex->Unlock();
    if (PurgeThreadListening())
      SignalPurgeThread();
    else
      PurgePass(false);
    TPXBasAtiThreadingModel::Relinquish();
  }
  m_mutex->Lock();
  Sub(m_pendingRequest, posted);
  if (m_memoryCurrent.load(std::memory_order_relaxed) <= bytes)
    m_memoryLimit.store(bytes, std::memory_order_relaxed);
  ComputeThresholds();
  m_mutex->Unlock();
  m_limitMutex->Unlock();
}

void TPXBasCamCacheManager::SetPurgePercentage(double high, double low) {
  // Marks are fractions of the limit: anything else would turn into sizes no unsigned value
  // holds. Such a call changes nothing.
  auto fraction = [](double f) { return std::isfinite(f) && f >= 0.0 && f <= 1.0; };
  if (!fraction(high) || !fraction(low)) {
    std::fprintf(stderr,
                 "KAL cache manager: purge fractions %g and %g are not both from 0 to 1; "
                 "kept %g and %g\n",
                 high, low, m_highPercentage, m_lowPercentage);
    return;
  }
  m_mutex->Lock();
  m_highPercentage = high;
  m_lowPercentage = low;
  m_reservePercentage = high / 5.0;
  ComputeThresholds();
  m_mutex->Unlock();
}

void TPXBasCamCacheManager::SetErrorHandler(TPXBasCamMemoryErrorHandler* handler) {
  if (handler == m_errorHandler) return;
  delete m_errorHandler;
  m_errorHandler = handler;
}

void TPXBasCamCacheManager::OutOfMemory() {
  if (m_errorHandler != nullptr) {
    m_errorHandler->OutOfMemory();
  } else {
    TPXBasCamMemoryErrorHandler report;
    report.OutOfMemory();
  }
}
