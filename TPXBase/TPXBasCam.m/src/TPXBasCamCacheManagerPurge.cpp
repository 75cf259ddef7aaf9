// TPXBasCamCacheManagerPurge.cpp: purge lists, purge passes and the purge thread.
#include "TPXBasAtiCondVar.h"
#include "TPXBasAtiMutex.h"
#include "TPXBasAtiThreadingModel.h"
#include "TPXBasCamCacheManager.h"
#include "TPXBasCamIOThreadTask.h"

#include <new>

int TPXBasCamCacheManager::AddPurgeList(int n) {
  if (n < 1) return m_purgeList->NumPurgeLists();
  int total = m_purgeList->NumPurgeLists() + n;
  unsigned int* current = nullptr;
  unsigned int* atMax = nullptr;
  if (m_dbFile != nullptr) {
    current = new (mem_BuiltInAlloc{}) unsigned int[2 * total];  // counters, summary copy
    try {
      atMax = new (mem_BuiltInAlloc{}) unsigned int[2 * total];
    } catch (...) {
      mem_deleteBuiltIn(current);
      throw;
    }
    for (int i = 0; i < 2 * total; ++i) current[i] = atMax[i] = 0;
  }
  int first;
  try {
    first = m_purgeList->Add(n);
  } catch (...) {
    mem_deleteBuiltIn(current);
    mem_deleteBuiltIn(atMax);
    throw;
  }
  m_numPurgeLists += n;
  if (current != nullptr) {
    m_trackingMutex->Lock();
    mem_deleteBuiltIn(m_listMemoryCurrent);
    mem_deleteBuiltIn(m_listMemoryAtMax);
    m_listMemoryCurrent = current;
    m_listMemoryAtMax = atMax;
    m_listStatsLength = total;
    m_trackingMutex->Unlock();
  }
  return first;
}

void TPXBasCamCacheManager::AddItem(int list, TPXBasCamCachePolicyEnm policy,
                                    TPXBasCamMemoryItem* first, TPXBasCamMemoryItem* last) {
  if (list < 0 || list >= m_purgeList->NumPurgeLists()) return;
  if (first != nullptr && m_purgeExhausted.load(std::memory_order_acquire)) {
    m_exhaustedMutex->Lock();
    m_purgeExhausted.store(false, std::memory_order_release);
    m_exhaustedMutex->Unlock();
  }
  m_purgeList->AddGroupedItem(list, policy, first, last);
}

bool TPXBasCamCacheManager::RemoveItem(TPXBasCamMemoryItem* item) {
  return m_purgeList->RemoveItem(item);
}

unsigned int TPXBasCamCacheManager::Purge(int list, unsigned int bytes) {
  return m_purgeList->Purge(list, bytes);
}

bool TPXBasCamCacheManager::PurgeThreadListening() const {
  return TPXBasAtiThreadingModel::multiThread() &&
         m_purgeThreadRunning.load(std::memory_order_acquire);
}

void TPXBasCamCacheManager::SignalPurgeThread() {
  m_purgeCondVar->Lock();
  m_purgeCondVar->Signal();
  m_purgeCondVar->Unlock();
}

void TPXBasCamCacheManager::PurgeTrigger() {
  if (PurgeThreadListening())
    SignalPurgeThread();
  else
    PurgePass(false);
}

// Returns whether more purging is wanted. Only the purge thread waits for the next signal:
// a pass run by an allocating thread returns at once.
bool TPXBasCamCacheManager::PurgePass(bool inPurgeThread) {
  m_mutex->Lock();
  unsigned int amount = m_pendingRequest.load(std::memory_order_relaxed);
  unsigned int current = m_memoryCurrent.load(std::memory_order_relaxed);
  unsigned int freeList = FreeListBytes();
  unsigned int reserve = m_reserveCap.load(std::memory_order_relaxed);
  if (current > m_memoryHighMark.load(std::memory_order_relaxed) && freeList < reserve) {
    unsigned int refill = static_cast<unsigned int>(1.2 * reserve - freeList);
    if (refill > amount) amount = refill;
  }
  m_mutex->Unlock();

  m_purgingMutex->Lock();
  m_purging.store(true, std::memory_order_release);
  m_purgingMutex->Unlock();
  if (amount > 0 && Purge(-1, amount) == 0) {
    m_exhaustedMutex->Lock();
    m_purgeExhausted.store(true, std::memory_order_release);
    m_exhaustedMutex->Unlock();
  }
  m_purgingMutex->Lock();
  m_purging.store(false, std::memory_order_release);
  m_purgingMutex->Unlock();

  m_mutex->Lock();
  bool more = ((m_memoryCurrent.load(std::memory_order_relaxed) >
                    m_memoryHighMark.load(std::memory_order_relaxed) &&
                FreeListBytes() < m_reserveCap.load(std::memory_order_relaxed)) ||
               m_pendingRequest.load(std::memory_order_relaxed) > 0) &&
              !m_purgeExhausted.load(std::memory_order_acquire);
  m_mutex->Unlock();
  if (more) return true;
  if (inPurgeThread && PurgeThreadListening()) {
    // A stop request made before this lock is seen here; one made after it signals a
    // waiter that already holds the lock, and such a signal is never lost.
    m_purgeCondVar->Lock();
    if (!m_stopPurge.load(std::memory_order_seq_cst)) m_purgeCondVar->WaitForSignal(0);
    m_purgeCondVar->Unlock();
  }
  return false;
}

void TPXBasCamCacheManager::PurgeTask() {
  m_purgeThreadRunning.store(true, std::memory_order_release);
  while (!m_stopPurge.load(std::memory_order_seq_cst)) PurgePass(true);
  m_purgeThreadRunning.store(false, std::memory_order_release);
  m_stopPurge.store(false, std::memory_order_seq_cst);
}

void TPXBasCamCacheManager::StopPurgeTask() {
  m_stopPurge.store(true, std::memory_order_seq_cst);
  if (TPXBasAtiThreadingModel::multiThread()) SignalPurgeThread();
}

TPXBasCamIOThreadTask::~TPXBasCamIOThreadTask() {}

void TPXBasCamIOThreadTask::Run(int) { m_manager->PurgeTask(); }
