// TPXBasCamPool.cpp: pools, the manager's statistics and its maximum-point tracking.
#include "TPXBasCamPool.h"

#include "TPXBasAtiAtomicTemplate.h"
#include "TPXBasAtiMutex.h"
#include "TPXBasAtiThreadingModel.h"
#include "TPXBasCamCacheManager.h"

#include <cstring>
#include <new>

namespace {

// Every statistics array has two halves: the counters, and after them the copy that the last
// MemorySummary handed out.
unsigned int* Zeroed(int n) {
  unsigned int* array = new (mem_BuiltInAlloc{}) unsigned int[n > 0 ? 2 * n : 1];
  for (int i = 0; i < 2 * n; ++i) array[i] = 0;
  return array;
}

// The copy half of a statistics array of n counters, refreshed from the counters. Only
// MemorySummary writes it (under the tracking mutex), so a host reads it while other threads
// go on counting.
unsigned int* SummaryCopy(unsigned int* array, int n) {
  if (array == nullptr) return nullptr;
  for (int i = 0; i < n; ++i) array[n + i] = __atomic_load_n(&array[i], __ATOMIC_RELAXED);
  return array + n;
}

// Zeroed arrays made together: either all of them or, after a failure, none.
struct ZeroedSet {
  unsigned int* arrays[4] = {nullptr, nullptr, nullptr, nullptr};
  ZeroedSet(int count, int n) {
    try {
      for (int i = 0; i < count; ++i) arrays[i] = Zeroed(n);
    } catch (...) {
      for (unsigned int* a : arrays) mem_deleteBuiltIn(a);
      throw;
    }
  }
};

}  // namespace

TPXBasCamPool::TPXBasCamPool(int id, const char* name, TPXBasCamCacheManager* manager)
    : m_id(id),
      m_manager(manager),
      m_memoryCurrent(0),
      m_memoryMax(0),
      m_memoryStagedMax(0),
      m_memoryLow(0),
      m_memoryHigh(0),
      m_tolerance(0.0),
      m_mutex(TPXBasAtiThreadingModel::newMutex()),
      m_dbFile(nullptr),
      m_warnOverflow(false) {
  if (m_mutex == nullptr) throw std::bad_alloc();
  std::strncpy(m_name, name, sizeof(m_name) - 1);
  m_name[sizeof(m_name) - 1] = '\0';
}

TPXBasCamPool::~TPXBasCamPool() { delete m_mutex; }

void* TPXBasCamPool::Alloc(unsigned int size) {
  unsigned int blockSize = 0;
  void* block = m_manager->DoAlloc(size, blockSize);
  if (m_dbFile != nullptr) UpdateMemoryInUse(true, blockSize);
  return block;
}

unsigned int TPXBasCamPool::Free(void* block) {
  unsigned int size = m_manager->DoFree(block);
  if (size != 0 && m_dbFile != nullptr) {
    m_mutex->Lock();
    m_memoryCurrent.fetch_sub(size, std::memory_order_relaxed);
    m_mutex->Unlock();
  }
  return size;
}

unsigned int TPXBasCamPool::AllocSize(void* block) const {
  return block == nullptr ? 0 : m_manager->AllocSize(block);
}

unsigned int TPXBasCamPool::ActualSizeForUse(void* block) const {
  return block == nullptr ? 0 : m_manager->ActualSizeForUse(block);
}

void TPXBasCamPool::ZeroMax() {
  m_mutex->Lock();
  m_memoryStagedMax.store(m_memoryCurrent.load(std::memory_order_relaxed),
                          std::memory_order_relaxed);
  m_mutex->Unlock();
}

void TPXBasCamPool::SetMemoryLimit(unsigned int low, unsigned int high, double tolerance) {
  m_mutex->Lock();
  m_memoryLow.store(low, std::memory_order_relaxed);
  m_memoryHigh.store(high, std::memory_order_relaxed);
  m_tolerance = tolerance;
  m_mutex->Unlock();
}

void TPXBasCamPool::UpdateMemoryInUse(bool increase, unsigned int size) {
  if (m_dbFile == nullptr) return;
  m_mutex->Lock();
  if (!increase) {
    m_memoryCurrent.fetch_sub(size, std::memory_order_relaxed);
    m_mutex->Unlock();
    return;
  }
  unsigned int current = m_memoryCurrent.fetch_add(size, std::memory_order_relaxed) + size;
  unsigned int staged = m_memoryStagedMax.load(std::memory_order_relaxed);
  if (current > staged) m_memoryStagedMax.store(staged = current, std::memory_order_relaxed);
  if (staged > m_memoryMax.load(std::memory_order_relaxed))
    m_memoryMax.store(staged, std::memory_order_relaxed);
  double high = m_memoryHigh.load(std::memory_order_relaxed);
  if (m_warnOverflow.load(std::memory_order_relaxed) &&
      static_cast<double>(current) > (m_tolerance + 1.0) * high)
    std::fprintf(stderr, "WARNING:pool %d (%s) overflows: Current %f, m_memoryHigh %f\n", m_id,
                 m_name, static_cast<double>(current), high);
  m_mutex->Unlock();
}

void TPXBasCamPool::MemoryReport() {
  if (m_dbFile == nullptr) return;
  constexpr double kMB = 1024.0 * 1024.0;
  std::fprintf(m_dbFile, "poolId %d (%s): current %f -- high %f -- low %f -- maxUsed %f\n", m_id,
               m_name, MemoryCurrent() / kMB, MemoryHigh() / kMB, MemoryLow() / kMB,
               MemoryMax() / kMB);
  std::fflush(m_dbFile);
}

int TPXBasCamCacheManager::AddPools(int count, const char* const* names) {
  if (count < 1 || names == nullptr) return 0;
  int old = m_numPools;
  char* isNew = new (mem_BuiltInAlloc{}) char[count];
  int added = 0;
  for (int i = 0; i < count; ++i) {
    isNew[i] = names[i] != nullptr;
    for (int p = 0; p < old && isNew[i]; ++p)
      if (std::strncmp(names[i], m_pools[p]->m_name, sizeof(m_pools[p]->m_name)) == 0) isNew[i] = 0;
    added += isNew[i];
  }
  if (added == 0) {
    mem_deleteBuiltIn(isNew);
    return 0;
  }
  int total = old + added;
  TPXBasCamPool** pools = nullptr;
  int made = old;
  try {
    pools = new (mem_BuiltInAlloc{}) TPXBasCamPool*[total];
    for (int p = 0; p < old; ++p) pools[p] = m_pools[p];
    for (int i = 0; i < count; ++i) {
      if (!isNew[i]) continue;
      pools[made] = new TPXBasCamPool(made, names[i], this);
      pools[made]->SetDbFile(m_dbFile);
      ++made;
    }
    if (m_dbFile != nullptr) {
      ZeroedSet stats(4, total);
      mem_deleteBuiltIn(m_poolCurrent);
      mem_deleteBuiltIn(m_poolCurrentAtMax);
      mem_deleteBuiltIn(m_poolStagedMax);
      mem_deleteBuiltIn(m_poolMax);
      m_poolCurrent = stats.arrays[0];
      m_poolCurrentAtMax = stats.arrays[1];
      m_poolStagedMax = stats.arrays[2];
      m_poolMax = stats.arrays[3];
      m_poolStatsLength = total;
    }
  } catch (...) {
    for (int p = old; p < made; ++p) delete pools[p];
    mem_deleteBuiltIn(pools);
    mem_deleteBuiltIn(isNew);
    throw;
  }
  mem_deleteBuiltIn(isNew);
  mem_deleteBuiltIn(m_pools);
  m_pools = pools;
  m_numPools = total;
  return old;
}

TPXBasCamPool* TPXBasCamCacheManager::GetPool(int id) const {
  return id >= 0 && id < m_numPools ? m_pools[id] : nullptr;
}

void TPXBasCamCacheManager::SetPoolLimit(int id, unsigned int low, unsigned int high,
                                         double tolerance) {
  if (TPXBasCamPool* pool = GetPool(id)) pool->SetMemoryLimit(low, high, tolerance);
}

void TPXBasCamCacheManager::ZeroMaxInPools() {
  for (int i = 0; i < m_numPools; ++i) m_pools[i]->ZeroMax();
}

void TPXBasCamCacheManager::SetDbFile(FILE* file) {
  if (file == nullptr) {
    m_dbFile = nullptr;
    return;
  }
  int lists = m_purgeList->NumPurgeLists();
  // Everything that can fail comes first, so a failure leaves the statistics as they were.
  m_purgeList->SetDbFile(file);
  ZeroedSet bins(2, m_numBins);
  bool poolsMissing = m_poolCurrent == nullptr || m_poolStatsLength != m_numPools;
  bool listsMissing = m_listMemoryCurrent == nullptr || m_listStatsLength != lists;
  unsigned int* pool[4] = {nullptr, nullptr, nullptr, nullptr};
  unsigned int* list[2] = {nullptr, nullptr};
  try {
    if (poolsMissing) {
      ZeroedSet made(4, m_numPools);
      for (int i = 0; i < 4; ++i) pool[i] = made.arrays[i];
    }
    if (listsMissing) {
      ZeroedSet made(2, lists);
      list[0] = made.arrays[0];
      list[1] = made.arrays[1];
    }
  } catch (...) {
    for (unsigned int* a : pool) mem_deleteBuiltIn(a);
    for (unsigned int* a : bins.arrays) mem_deleteBuiltIn(a);
    throw;
  }
  m_trackingMutex->Lock();
  mem_deleteBuiltIn(m_binFreeAtMax);
  mem_deleteBuiltIn(m_binFreeCurrent);
  m_binFreeAtMax = bins.arrays[0];
  m_binFreeCurrent = bins.arrays[1];
  if (poolsMissing) {
    unsigned int** mine[4] = {&m_poolCurrentAtMax, &m_poolCurrent, &m_poolStagedMax, &m_poolMax};
    for (int i = 0; i < 4; ++i) {
      mem_deleteBuiltIn(*mine[i]);
      *mine[i] = pool[i];
    }
    m_poolStatsLength = m_numPools;
  }
  if (listsMissing) {
    mem_deleteBuiltIn(m_listMemoryAtMax);
    mem_deleteBuiltIn(m_listMemoryCurrent);
    m_listMemoryAtMax = list[0];
    m_listMemoryCurrent = list[1];
    m_listStatsLength = lists;
  }
  m_trackingMutex->Unlock();
  for (int i = 0; i < m_numPools; ++i) m_pools[i]->SetDbFile(file);
  m_dbFile = file;
}

// Called with m_mutex held, each time memory in use grew by a fresh host block.
void TPXBasCamCacheManager::TrackMaxPoint() {
  if (m_dbFile == nullptr) return;
  m_trackingMutex->Lock();
  unsigned long long current = m_memoryCurrent.load(std::memory_order_relaxed);
  if (current > static_cast<unsigned long long>(m_lastMaxPoint) + m_trackingTolerance) {
    m_lastMaxPoint = static_cast<unsigned int>(current);
    for (int b = 0; b < m_numBins; ++b)
      m_binFreeAtMax[b] = __atomic_load_n(&m_binFreeCurrent[b], __ATOMIC_RELAXED);
    for (int p = 0; p < m_numPools && p < m_poolStatsLength; ++p)
      m_poolCurrentAtMax[p] = m_pools[p]->MemoryCurrent();
    if (m_listStatsLength == m_purgeList->NumPurgeLists())
      m_purgeList->MemoryCurrent(m_listMemoryAtMax);
    m_allocCountAtMax = AllocCount();
  }
  m_trackingMutex->Unlock();
}

void TPXBasCamCacheManager::MemorySummary(
    unsigned int& memoryCurrent, unsigned int& freeListBytes, int& numPools,
    unsigned int*& poolCurrent, unsigned int*& poolCurrentAtMax, unsigned int*& poolStagedMax,
    unsigned int*& poolMax, int& numLists, unsigned int*& listMemoryCurrent,
    unsigned int*& listMemoryAtMax, int& numBins, unsigned int*& binFreeCurrent,
    unsigned int*& binFreeAtMax, unsigned int& allocCountAtMax) {
  // The statistics arrays and the snapshot belong to the tracking mutex; each bin's counter
  // is refreshed under its bin's lock, which orders it with the pushes and pops that move it.
  // The arrays handed out are copies, which no other thread writes.
  m_trackingMutex->Lock();
  int lists = m_purgeList->NumPurgeLists();
  if (m_dbFile != nullptr) {
    if (m_binFreeCurrent != nullptr)
      for (int b = 0; b < m_numBins; ++b) RefreshBinStat(b);
    if (m_listMemoryCurrent != nullptr && m_listStatsLength == lists)
      m_purgeList->MemoryCurrent(m_listMemoryCurrent);
    for (int p = 0; p < m_numPools && p < m_poolStatsLength; ++p) {
      m_poolCurrent[p] = m_pools[p]->MemoryCurrent();
      m_poolStagedMax[p] = m_pools[p]->MemoryStagedMax();
      m_poolMax[p] = m_pools[p]->MemoryMax();
    }
  }
  memoryCurrent = m_memoryCurrent.load(std::memory_order_relaxed);
  freeListBytes = FreeListBytes();
  numPools = m_numPools;
  poolCurrent = SummaryCopy(m_poolCurrent, m_poolStatsLength);
  poolCurrentAtMax = SummaryCopy(m_poolCurrentAtMax, m_poolStatsLength);
  poolStagedMax = SummaryCopy(m_poolStagedMax, m_poolStatsLength);
  poolMax = SummaryCopy(m_poolMax, m_poolStatsLength);
  numLists = lists;
  listMemoryCurrent = SummaryCopy(m_listMemoryCurrent, m_listStatsLength);
  listMemoryAtMax = SummaryCopy(m_listMemoryAtMax, m_listStatsLength);
  numBins = m_numBins;
  binFreeCurrent = SummaryCopy(m_binFreeCurrent, m_numBins);
  binFreeAtMax = SummaryCopy(m_binFreeAtMax, m_numBins);
  allocCountAtMax = m_allocCountAtMax;
  m_trackingMutex->Unlock();
}
