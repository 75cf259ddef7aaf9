// TPXBasCamCacheManager.cpp: construction, bins, block headers, Alloc and Free, limits.
#include "TPXBasCamCacheManager.h"

#include "TPXBasAtiAtomicTemplate.h"
#include "TPXBasAtiCondVar.h"
#include "TPXBasAtiMutex.h"
#include "TPXBasAtiThreadingModel.h"
#include "TPXBasCamPool.h"
#include "TPXBasMemAllocator.h"
#include "mem_Alloc.h"

#include <cstdio>
#include <cstdlib>
#include <new>

template class TPXBasAtiGlobalSingleton<TPXBasCamCacheManager>;

namespace {

// Subtracts without wrapping: counters that started while blocks were already cached (the
// statistics stream set late) must not turn into huge values.
inline void Lower(unsigned int& counter, unsigned int by) {
  counter = counter > by ? counter - by : 0;
}

// The counters change only under m_mutex and are read without it: a plain load and store
// suffice for the writer, without a locked read-modify-write.
inline void Add(std::atomic<unsigned int>& counter, unsigned int by) {
  counter.store(counter.load(std::memory_order_relaxed) + by, std::memory_order_relaxed);
}
inline void Sub(std::atomic<unsigned int>& counter, unsigned int by) {
  counter.store(counter.load(std::memory_order_relaxed) - by, std::memory_order_relaxed);
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

TPXBasCamCacheManager::TPXBasCamCacheManager()
    : m_dbFile(nullptr),
      m_memoryLimit(kDefaultLimit),
      m_memoryCurrent(0),
      m_freeListBytes(0),
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
      m_binBlockSize(),
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
      int n = std::atoi(bins);
      m_numBins = n > kMostBins ? kMostBins : (n < 0 ? 0 : n);
    }
    if (const char* alignment = std::getenv("KAL_CAM_MEMORY_ALIGNMENT"))
      m_alignment = std::atoi(alignment);
    if (const char* tolerance = std::getenv("KAL_CAM_TRACKINGTOL")) {
      int mb = std::atoi(tolerance);
      std::fprintf(stderr, "current cache manager maximum point tracking tolerance %d MB", mb);
      m_trackingTolerance = static_cast<unsigned int>(mb) * 1048576u;
    }
    for (int b = 0; b < m_numBins; ++b) {
      m_binBlockSize[b] = static_cast<unsigned int>(BinCapacity(b)) + kHeaderSize;
      if (b == m_numBins - 1 && m_alignment > 0)
        m_binBlockSize[b] += static_cast<unsigned int>(m_alignment) + 4;
      m_binHead[b] = new TPXBasCamBinHeader;
      m_binTail[b] = new TPXBasCamBinHeader;
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
    if (m_binHead[b] != nullptr && m_binTail[b] != nullptr) {
      for (TPXBasCamBinHeader* h = m_binHead[b]->m_next; h != m_binTail[b];) {
        TPXBasCamBinHeader* next = h->m_next;
        delete h->m_mutex;
        m_hostAllocator->deallocate(h, 0);
        h = next;
      }
    }
    delete m_binHead[b];
    delete m_binTail[b];
    m_binHead[b] = m_binTail[b] = nullptr;
  }
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
  if (bin < m_numBins) return m_binBlockSize[bin];
  unsigned long long whole =
      (static_cast<unsigned long long>(size) + kPageSize - 1) / kPageSize * kPageSize + kHeaderSize;
  return whole > 0xFFFFFFFFull ? 0 : static_cast<unsigned int>(whole);
}

unsigned int TPXBasCamCacheManager::AllocCount() const { return *m_allocCount; }

// Every push and pop of a bin starts at its head sentinel and holds the head's lock
// throughout, so that lock alone serialises the bin: locks of the nodes behind it could only
// be taken under it and would exclude nothing more. Different bins never contend.
TPXBasCamBinHeader* TPXBasCamCacheManager::GetHeader(int bin) {
  TPXBasCamBinHeader* head = m_binHead[bin];
  head->Lock();
  TPXBasCamBinHeader* node = head->m_next;
  if (node == m_binTail[bin]) {
    head->Unlock();
    return nullptr;
  }
  TPXBasCamBinHeader* next = node->m_next;
  head->m_next = next;
  next->m_prev = head;
  node->m_prev = nullptr;
  node->m_next = nullptr;
  head->Unlock();
  return node;
}

void TPXBasCamCacheManager::ReturnHeader(TPXBasCamBinHeader* header, int bin) {
  TPXBasCamBinHeader* head = m_binHead[bin];
  head->Lock();
  TPXBasCamBinHeader* first = head->m_next;
  header->m_prev = head;
  header->m_next = first;
  head->m_next = header;
  first->m_prev = header;
  head->Unlock();
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

// Called with m_mutex held: a free-list block goes back to the host.
void TPXBasCamCacheManager::GiveBack(TPXBasCamBinHeader* header) {
  unsigned int size = header->m_size;
  int bin = header->m_bin;
  delete header->m_mutex;
  m_hostAllocator->deallocate(header, 0);
  Sub(m_memoryCurrent, size);
  Sub(m_freeListBytes, size);
  if (m_dbFile != nullptr && m_binFreeCurrent != nullptr && bin >= 0 && bin < m_numBins)
    Lower(m_binFreeCurrent[bin], size);
}

TPXBasCamBinHeader* TPXBasCamCacheManager::TryFreeMemory(int bin, unsigned int allocSize,
                                                         bool& fresh, unsigned int ceiling) {
  fresh = false;
  if (bin < m_numBins) {
    if (TPXBasCamBinHeader* header = GetHeader(bin)) {
      m_mutex->Lock();
      Sub(m_freeListBytes, header->m_size);
      if (m_dbFile != nullptr && m_binFreeCurrent != nullptr)
        Lower(m_binFreeCurrent[bin], header->m_size);
      m_mutex->Unlock();
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
      TPXBasCamBinHeader* cached = GetHeader(b);
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
  int bin = BinOf(size);
  unsigned int allocSize = BlockSizeOf(bin, size);
  blockSize = allocSize;
  void* result = nullptr;
  if (allocSize != 0) {
    bool fresh = false;
    TPXBasCamBinHeader* header =
        TryFreeMemory(bin, allocSize, fresh, m_memoryHighMark.load(std::memory_order_relaxed));
    if (header == nullptr) {
      m_mutex->Lock();
      Add(m_pendingRequest, allocSize);
      m_mutex->Unlock();
      for (;;) {
        TPXBasAtiThreadingModel::Relinquish();
        header =
            TryFreeMemory(bin, allocSize, fresh, m_memoryLimit.load(std::memory_order_relaxed));
        if (header != nullptr) break;
        if (m_purgeExhausted.load(std::memory_order_acquire) &&
            m_freeListBytes.load(std::memory_order_relaxed) == 0) {
          header =
              TryFreeMemory(bin, allocSize, fresh, m_memoryLimit.load(std::memory_order_relaxed));
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
      header->m_prev = nullptr;
      header->m_next = nullptr;
      header->m_bin = bin;
      header->m_size = allocSize;
      result = reinterpret_cast<char*>(header) + kHeaderSize;
      if (m_memoryCurrent.load(std::memory_order_relaxed) >
              m_memoryHighMark.load(std::memory_order_relaxed) &&
          m_freeListBytes.load(std::memory_order_relaxed) <
              m_reserveCap.load(std::memory_order_relaxed) &&
          !m_purgeExhausted.load(std::memory_order_acquire))
        PurgeTrigger();
    } else {
      blockSize = 0;
    }
  }
  ++*m_allocCount;
  return result;
}

unsigned int TPXBasCamCacheManager::Free(void* block) {
  if (block == nullptr) return 0;
  TPXBasCamBinHeader* header =
      reinterpret_cast<TPXBasCamBinHeader*>(static_cast<char*>(block) - kHeaderSize);
  int bin = header->m_bin;
  unsigned int size = header->m_size;
  m_mutex->Lock();
  if (bin < m_numBins) {
    ReturnHeader(header, bin);
    mem_Release(header);
    Add(m_freeListBytes, size);
    if (m_dbFile != nullptr && m_binFreeCurrent != nullptr) m_binFreeCurrent[bin] += size;
  } else {
    delete header->m_mutex;
    m_hostAllocator->deallocate(header, 0);
    Sub(m_memoryCurrent, size);
  }
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
    while (TPXBasCamBinHeader* header = GetHeader(b)) {
      m_mutex->Lock();
      GiveBack(header);
      m_mutex->Unlock();
    }
  }
}

unsigned int TPXBasCamCacheManager::BinFreeBytes(int bin) const {
  if (bin < 0 || bin >= m_numBins) return 0;
  unsigned int bytes = 0;
  for (TPXBasCamBinHeader* h = m_binHead[bin]->m_next; h != m_binTail[bin]; h = h->m_next)
    bytes += h->m_size;
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
