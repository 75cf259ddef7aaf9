/// @file TPXBasCamCacheManager.h
/// The process-wide manager of large working memory.
#ifndef TPXBASCAMCACHEMANAGER_H
#define TPXBASCAMCACHEMANAGER_H

#include "KLDTPXBasExport.h"
#include "TPXBasAtiGlobalSingleton.h"
#include "TPXBasAtiMutex.h"
#include "TPXBasCamCachePolicyEnm.h"
#include "TPXBasCamMemoryErrorHandler.h"
#include "TPXBasCamMemoryItem.h"
#include "TPXBasCamPurgeList.h"
#include "TPXBasMemCacheManager.h"
#include "mem_AllocationOperators.h"

#include <atomic>
#include <cstdio>

class TPXBasAtiCondVar;
class TPXBasCamCacheManager;
class TPXBasCamPool;
class TPXBasMemAllocator;
template <class T>
class TPXBasAtiAtomicTemplate;

extern template class KLDTPXBAS_API TPXBasAtiGlobalSingleton<TPXBasCamCacheManager>;

/// The 32 bytes in front of every block of the cache manager, and the free lists' sentinels.
/// A block in use has both links null; a block on a free list has both set. Bin values at or
/// above the manager's bin count mark a large block that never enters a free list.
class KLDTPXBAS_API TPXBasCamBinHeader : public mem_AllocationOperators {
 public:
  /// A sentinel: no links, bin -1, size 0, a mutex of its own (std::bad_alloc without one).
  TPXBasCamBinHeader();
  /// The header of a block just taken from the host.
  TPXBasCamBinHeader(int bin, unsigned int size, TPXBasAtiMutex* mutex)
      : m_prev(nullptr), m_next(nullptr), m_bin(bin), m_size(size), m_mutex(mutex) {}
  ~TPXBasCamBinHeader();

  /// Takes the header's mutex.
  void Lock() { m_mutex->Lock(); }
  /// Releases the header's mutex.
  void Unlock() { m_mutex->Unlock(); }

  TPXBasCamBinHeader* m_prev;  ///< Previous block on the free list; null while in use.
  TPXBasCamBinHeader* m_next;  ///< Next block on the free list; null while in use.
  int m_bin;  ///< The block's bin; at or above the bin count for a large block, -1 for a sentinel.
  unsigned int m_size;      ///< Whole block size, header included.
  TPXBasAtiMutex* m_mutex;  ///< The block's mutex; a free list's head lock is its sentinel's.
};

/// Hands out large blocks in page-rounded size classes (bins) from the host allocation
/// service under a memory limit, keeps freed blocks on a last-in-first-out free list per bin,
/// and asks cached items (TPXBasCamMemoryItem in purge lists) to give up their bulk data when
/// memory runs short, in the allocating thread or in a purge thread that a host runs with
/// TPXBasCamIOThreadTask. Clients allocate through named pools (TPXBasCamPool).
///
/// One per process: TPXBasAtiGlobalSingleton<TPXBasCamCacheManager>::Instance() creates it on
/// first use, reading KAL_CAM_NUMBER_OF_BINS, KAL_CAM_MEMORY_ALIGNMENT and KAL_CAM_TRACKINGTOL;
/// Finalize() (also the module's last finalise) destroys it. It owns its pools, purge lists
/// and error handler; blocks still held by callers are not touched.
///
/// Any thread may allocate and free. Lock order, outermost first: the limit mutex
/// (SetMemoryLimit), purge-list item locks, the manager mutex, then the tracking mutex and the
/// purge list's statistics mutex. A free list's head lock is taken alone (recycling a block and
/// freeing a bin block need nothing else), or after the locks above, never before them.
/// AddPools, AddPurgeList and SetDbFile lock nothing: call them while no other thread uses
/// the manager.
class KLDTPXBAS_API TPXBasCamCacheManager : public TPXBasAtiGlobalSingleton<TPXBasCamCacheManager>,
                                            public TPXBasMemCacheManager {
 public:
  enum {
    kPageSize = 4096,               ///< block sizes are rounded up to pages
    kHeaderSize = 32,               ///< bytes of the TPXBasCamBinHeader in front of a block
    kMostBins = 18,                 ///< most bins KAL_CAM_NUMBER_OF_BINS can ask for
    kDefaultBins = 16,              ///< bins without KAL_CAM_NUMBER_OF_BINS
    kDefaultLimit = 20971520,       ///< memory limit of a new manager (20 MB)
    kMostReserve = 524288000,       ///< ceiling of the reserve cap (500 MB)
    kDefaultTolerance = 104857600,  ///< tracking tolerance without KAL_CAM_TRACKINGTOL (100 MB)
    kAlignedAbove = 1048576         ///< requests of the last bin get the alignment allowance
  };

  // Allocation.
  /// A block of at least size bytes; blockSize receives the whole block size, header
  /// included. Size 0 gives null and 0. When no memory can be found even after purging, the
  /// error handler's OutOfMemory runs and the result is null with blockSize 0. Never throws.
  void* Alloc(unsigned int size, unsigned int& blockSize);
  /// Gives a block back (null: 0); returns its whole size.
  unsigned int Free(void* block);
  /// The whole size of a block of this manager, header included (null: 0).
  unsigned int AllocSize(void* block) const;
  /// The bytes of a block the caller may use: AllocSize less the header (null: 0).
  unsigned int ActualSizeForUse(void* block) const;
  /// Returns every free-list block to the host.
  void ClearFreeList();

  // Limits.
  /// Tries to bring memory in use within bytes (free lists first, then purging); when that
  /// succeeds bytes becomes the limit, otherwise the limit in force stays.
  void SetMemoryLimit(unsigned int bytes);
  /// High and low fractions of the limit; the reserve fraction becomes high / 5.
  void SetPurgePercentage(double high, double low);

  // Pools.
  /// Adds a pool for each name not yet used; returns the id of the first added, or 0 when
  /// none was added. std::bad_alloc leaves the pools unchanged.
  int AddPools(int count, const char* const* names);
  /// The pool with that id, or null for an id AddPools never made.
  TPXBasCamPool* GetPool(int id) const;
  /// TPXBasCamPool::SetMemoryLimit on the pool id; an unknown id is ignored.
  void SetPoolLimit(int id, unsigned int low, unsigned int high, double tolerance);
  /// TPXBasCamPool::ZeroMax on every pool.
  void ZeroMaxInPools();
  /// Number of pools made so far.
  int NumPools() const { return m_numPools; }

  // Purge lists and items.
  /// n new lists; returns the index of the first.
  int AddPurgeList(int n);
  /// Number of purge lists made so far.
  int NumPurgeLists() const { return m_purgeList->NumPurgeLists(); }
  /// The order in which purging visits the lists; the caller may rearrange it.
  int* PurgeOrder() { return m_purgeList->PurgeOrder(); }
  /// Enters the chain first to last (one item: first == last, or a chain made with
  /// TPXBasCamMemoryItem::Link) into purge list list at the place policy says; an unknown list
  /// is ignored.
  void AddItem(int list, TPXBasCamCachePolicyEnm policy, TPXBasCamMemoryItem* first,
               TPXBasCamMemoryItem* last);
  /// Takes item out of its purge list before its owner uses the data again: true when the data
  /// is still there (the item is out of the list), false when it was purged or never listed.
  bool RemoveItem(TPXBasCamMemoryItem* item);
  unsigned int Purge(int list, unsigned int bytes) override;

  // Purge thread.
  /// The body of a purge thread: purges whenever signalled. Returns only after
  /// StopPurgeTask; the manager must outlive it.
  void PurgeTask();
  /// Asks a running PurgeTask to return and wakes it. The caller then joins the thread. A
  /// request made before the task starts makes it return at once.
  void StopPurgeTask();
  /// Whether a PurgeTask is running.
  bool PurgeThreadRunning() const { return m_purgeThreadRunning.load(std::memory_order_acquire); }

  // Error handler.
  /// Deletes the handler held and takes ownership of handler (null: the default report).
  void SetErrorHandler(TPXBasCamMemoryErrorHandler* handler);
  /// The handler held (owned by the manager), or null for the default report.
  TPXBasCamMemoryErrorHandler* GetErrorHandler() const { return m_errorHandler; }

  // Statistics.
  /// Statistics are collected while a stream is set (null stops them). std::bad_alloc when
  /// the counters cannot be allocated.
  void SetDbFile(FILE* file);
  /// The statistics stream, or null.
  FILE* DbFile() const { return m_dbFile; }
  /// Hands out the statistics: memory in use and free-list bytes now; per pool the bytes in use,
  /// in use at the last maximum-point snapshot, the staged and the overall peak; per purge list
  /// the bytes now and at the snapshot; per bin the free bytes now and at the snapshot; the
  /// allocation count at the snapshot. The arrays are copies made by this call, valid until the
  /// next SetDbFile, AddPools or AddPurgeList.
  void MemorySummary(unsigned int& memoryCurrent, unsigned int& freeListBytes, int& numPools,
                     unsigned int*& poolCurrent, unsigned int*& poolCurrentAtMax,
                     unsigned int*& poolStagedMax, unsigned int*& poolMax, int& numLists,
                     unsigned int*& listMemoryCurrent, unsigned int*& listMemoryAtMax, int& numBins,
                     unsigned int*& binFreeCurrent, unsigned int*& binFreeAtMax,
                     unsigned int& allocCountAtMax);

  // State, read without locks.
  /// The memory limit in force.
  unsigned int MemoryLimit() const { return m_memoryLimit.load(std::memory_order_relaxed); }
  /// Whole block sizes in use, free-list blocks excluded.
  unsigned int MemoryCurrent() const { return m_memoryCurrent.load(std::memory_order_relaxed); }
  /// Bytes on all free lists (the bins count them separately; this sums them).
  unsigned int FreeListBytes() const;
  /// The high fraction of the limit: above it, with a free list below the reserve cap, the
  /// manager purges.
  unsigned int MemoryHighMark() const { return m_memoryHighMark.load(std::memory_order_relaxed); }
  /// The low fraction of the limit (takes part in no purge decision).
  unsigned int MemoryLowMark() const { return m_memoryLowMark.load(std::memory_order_relaxed); }
  /// The reserve fraction of the limit, at most kMostReserve: purging stops once the free lists
  /// hold this much.
  unsigned int ReserveCap() const { return m_reserveCap.load(std::memory_order_relaxed); }
  /// Bytes a SetMemoryLimit in progress asks purging to free; 0 otherwise.
  unsigned int PendingRequest() const { return m_pendingRequest.load(std::memory_order_relaxed); }
  /// Bytes memory in use must grow above the last snapshot before the next one is taken.
  unsigned int TrackingTolerance() const { return m_trackingTolerance; }
  /// Memory in use at the last maximum-point snapshot.
  unsigned int LastMaxPoint() const { return m_lastMaxPoint; }
  /// Number of Alloc calls so far, from any thread.
  unsigned int AllocCount() const;
  /// True when the last purge found nothing more to free (and before any item was entered).
  bool PurgeExhausted() const { return m_purgeExhausted.load(std::memory_order_acquire); }
  /// Number of bins in use (KAL_CAM_NUMBER_OF_BINS, 16 by default).
  int NumBins() const { return m_numBins; }
  /// The alignment allowance of the last bin (KAL_CAM_MEMORY_ALIGNMENT, 0 by default).
  int Alignment() const { return m_alignment; }
  /// Bytes on one bin's free list, counted by walking it (no locks: call while quiet).
  unsigned int BinFreeBytes(int bin) const;
  /// Payload capacity of bin b (any b >= 0, also past the bins in use).
  static unsigned long long BinCapacity(int b);
  /// Bin of a request (-1 for 0 bytes; at or above NumBins() for a large request).
  int GetBin(unsigned int size) const;
  /// Whole block size for a request in bin bin (0 for bin -1 and for sizes that do not fit).
  unsigned int GetAllocationSize(int bin, unsigned int size) const;

 private:
  friend class TPXBasAtiGlobalSingleton<TPXBasCamCacheManager>;
  TPXBasCamCacheManager();
  ~TPXBasCamCacheManager() override;
  TPXBasCamCacheManager(const TPXBasCamCacheManager&) = delete;
  TPXBasCamCacheManager& operator=(const TPXBasCamCacheManager&) = delete;

  friend class TPXBasCamPool;
  struct BinRecord;

/// @cond internal
// Internal steps bind inside the library (no lookup through the exported symbol table).
#define KLD_CAM_INTERNAL __attribute__((visibility("hidden")))
  /// @endcond
  KLD_CAM_INTERNAL void* DoAlloc(unsigned int size, unsigned int& blockSize);
  KLD_CAM_INTERNAL void* AllocSlow(int bin, unsigned int size, unsigned int& blockSize);
  KLD_CAM_INTERNAL void* HandOut(TPXBasCamBinHeader* header, int bin, unsigned int allocSize);
  KLD_CAM_INTERNAL unsigned int DoFree(void* block);
  KLD_CAM_INTERNAL __attribute__((noinline)) unsigned int FreeLarge(TPXBasCamBinHeader* header);
  KLD_CAM_INTERNAL BinRecord& Record(int bin) const;
  KLD_CAM_INTERNAL void RefreshBinStat(int bin);
  KLD_CAM_INTERNAL void Release();  // frees everything the constructor or the manager made
  KLD_CAM_INTERNAL void ComputeThresholds();
  KLD_CAM_INTERNAL int BinOf(unsigned int size) const;
  KLD_CAM_INTERNAL unsigned int BlockSizeOf(int bin, unsigned int size) const;
  KLD_CAM_INTERNAL TPXBasCamBinHeader* GetHeader(int bin, bool countAlloc);
  KLD_CAM_INTERNAL void ReturnHeader(TPXBasCamBinHeader* header, int bin);
  KLD_CAM_INTERNAL TPXBasCamBinHeader* HostBlock(unsigned int allocSize, unsigned int ceiling);
  KLD_CAM_INTERNAL void GiveBack(TPXBasCamBinHeader* header);
  KLD_CAM_INTERNAL TPXBasCamBinHeader* TryFreeMemory(int bin, unsigned int allocSize, bool& fresh,
                                                     unsigned int ceiling, bool countAlloc);
  KLD_CAM_INTERNAL void TrackMaxPoint();
  KLD_CAM_INTERNAL void PurgeTrigger();
  KLD_CAM_INTERNAL bool PurgePass(bool inPurgeThread);
  KLD_CAM_INTERNAL bool PurgeThreadListening() const;
  KLD_CAM_INTERNAL void SignalPurgeThread();
  KLD_CAM_INTERNAL void OutOfMemory();
#undef KLD_CAM_INTERNAL

  FILE* m_dbFile;
  std::atomic<unsigned int> m_memoryLimit;
  std::atomic<unsigned int> m_memoryCurrent;
  TPXBasAtiMutex* m_mutex;
  double m_highPercentage;
  double m_lowPercentage;
  double m_reservePercentage;
  std::atomic<unsigned int> m_memoryHighMark;
  std::atomic<unsigned int> m_memoryLowMark;
  std::atomic<unsigned int> m_reserveCap;
  TPXBasCamPurgeList* m_purgeList;
  TPXBasAtiMutex* m_limitMutex;
  int m_numPurgeLists;
  TPXBasCamPool** m_pools;
  int m_numPools;
  TPXBasCamBinHeader* m_binHead[kMostBins];
  TPXBasCamBinHeader* m_binTail[kMostBins];
  BinRecord* m_bins;  // per bin: sentinels, counters; each on cache lines of its own
  void* m_binMemory;  // the allocation that holds m_bins
  int m_numBins;
  TPXBasAtiCondVar* m_purgeCondVar;
  TPXBasAtiMutex* m_exhaustedMutex;
  std::atomic<bool> m_purgeExhausted;
  TPXBasAtiMutex* m_purgingMutex;
  std::atomic<bool> m_purging;
  std::atomic<unsigned int> m_pendingRequest;
  unsigned int* m_binFreeCurrent;
  unsigned int* m_binFreeAtMax;
  unsigned int* m_poolCurrent;
  unsigned int* m_poolCurrentAtMax;
  unsigned int* m_poolStagedMax;
  unsigned int* m_poolMax;
  unsigned int* m_listMemoryCurrent;
  unsigned int* m_listMemoryAtMax;
  TPXBasAtiMutex* m_trackingMutex;
  unsigned int m_lastMaxPoint;
  unsigned int m_trackingTolerance;
  unsigned int m_allocCountAtMax;
  TPXBasAtiAtomicTemplate<unsigned int>* m_allocCount;
  TPXBasCamMemoryErrorHandler* m_errorHandler;
  int m_alignment;
  std::atomic<bool> m_purgeThreadRunning;
  std::atomic<bool> m_stopPurge;
  TPXBasMemAllocator* m_hostAllocator;
  int m_poolStatsLength;  // entries of the four per-pool statistics arrays
  int m_listStatsLength;  // entries of the two per-list statistics arrays
};

#endif  // TPXBASCAMCACHEMANAGER_H
