/// @file TPXBasCamPool.h
/// A named account of the cache manager's memory.
#ifndef TPXBASCAMPOOL_H
#define TPXBASCAMPOOL_H

#include "KLDTPXBasExport.h"
#include "mem_AllocationOperators.h"

#include <atomic>
#include <cstdio>

class TPXBasAtiMutex;
class TPXBasCamCacheManager;

/// A named front of the cache manager: every block comes from TPXBasCamCacheManager::Alloc,
/// and while a statistics stream is set the pool accounts the whole block sizes in use, their
/// peak since the last ZeroMax (staged maximum) and over all time, and may warn when it passes
/// its high limit. Without a stream a pool only forwards. Made by
/// TPXBasCamCacheManager::AddPools and owned by the manager; any thread may allocate and free.
///
/// The overflow warning is off when the pool is made; SetWarnOverflow(true) switches it on
/// ("WARNING:pool ..." on the standard error stream whenever an allocation brings the pool
/// above (tolerance + 1) x high limit).
class KLDTPXBAS_API TPXBasCamPool : public mem_AllocationOperators {
 public:
  /// The manager's block, or null; see TPXBasCamCacheManager::Alloc.
  void* Alloc(unsigned int size);
  /// Gives a block of this manager back (null: 0); returns its whole size.
  unsigned int Free(void* block);
  /// The whole size of a block of this manager (header included); see
  /// TPXBasCamCacheManager::AllocSize.
  unsigned int AllocSize(void* block) const;
  /// The bytes of the block the caller may use; see TPXBasCamCacheManager::ActualSizeForUse.
  unsigned int ActualSizeForUse(void* block) const;

  /// Whole block sizes in use now (accounted only while a statistics stream is set).
  unsigned int MemoryCurrent() const { return m_memoryCurrent.load(std::memory_order_relaxed); }
  /// Peak of MemoryCurrent over all time.
  unsigned int MemoryMax() const { return m_memoryMax.load(std::memory_order_relaxed); }
  /// Peak of MemoryCurrent since the last ZeroMax.
  unsigned int MemoryStagedMax() const { return m_memoryStagedMax.load(std::memory_order_relaxed); }
  /// The low limit set by SetMemoryLimit.
  unsigned int MemoryLow() const { return m_memoryLow.load(std::memory_order_relaxed); }
  /// The high limit set by SetMemoryLimit, above which the overflow warning counts.
  unsigned int MemoryHigh() const { return m_memoryHigh.load(std::memory_order_relaxed); }
  /// Starts a new stage: the staged maximum becomes the current value.
  void ZeroMax();
  /// Sets the low and high limits and the tolerance of the overflow warning.
  void SetMemoryLimit(unsigned int low, unsigned int high, double tolerance);
  /// Sets the statistics stream (null: none, the initial state); not closed by the pool.
  void SetDbFile(FILE* file) { m_dbFile = file; }
  /// Writes one line on the statistics stream and flushes it; nothing without a stream.
  void MemoryReport();
  /// Switches the overflow warning.
  void SetWarnOverflow(bool on) { m_warnOverflow.store(on, std::memory_order_relaxed); }
  /// Whether the overflow warning is on.
  bool WarnOverflow() const { return m_warnOverflow.load(std::memory_order_relaxed); }
  /// The pool's number, given by AddPools.
  int Id() const { return m_id; }
  /// The pool's name.
  const char* Name() const { return m_name; }

 private:
  friend class TPXBasCamCacheManager;
  TPXBasCamPool(int id, const char* name, TPXBasCamCacheManager* manager);
  ~TPXBasCamPool();
  TPXBasCamPool(const TPXBasCamPool&) = delete;
  TPXBasCamPool& operator=(const TPXBasCamPool&) = delete;
  void UpdateMemoryInUse(bool increase, unsigned int size);

  int m_id;
  char m_name[1024];
  TPXBasCamCacheManager* m_manager;
  std::atomic<unsigned int> m_memoryCurrent;
  std::atomic<unsigned int> m_memoryMax;
  std::atomic<unsigned int> m_memoryStagedMax;
  std::atomic<unsigned int> m_memoryLow;
  std::atomic<unsigned int> m_memoryHigh;
  double m_tolerance;
  TPXBasAtiMutex* m_mutex;
  FILE* m_dbFile;
  std::atomic<bool> m_warnOverflow;
};

#endif  // TPXBASCAMPOOL_H
