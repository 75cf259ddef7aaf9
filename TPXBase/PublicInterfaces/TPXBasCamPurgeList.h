/// @file TPXBasCamPurgeList.h
/// The lists of cached items, purged front first.
#ifndef TPXBASCAMPURGELIST_H
#define TPXBASCAMPURGELIST_H

#include "KLDTPXBasExport.h"
#include "TPXBasCamCachePolicyEnm.h"
#include "TPXBasCamMemoryItem.h"
#include "mem_AllocationOperators.h"

#include <cstdio>

class TPXBasAtiMutex;
class TPXBasCamCacheManager;

/// Doubly linked lists of TPXBasCamMemoryItem between a head and a tail sentinel, owned by
/// the cache manager, which clients go through (AddPurgeList, AddItem, RemoveItem, Purge).
///
/// Every item and sentinel has its own mutex guarding its links. Towards the front of a list
/// a thread may wait for a lock while it holds one; towards the end it only tries and, when
/// that fails, lets go and starts the step again. So adders, removers and purgers of the
/// same list never deadlock and contend only at the items they touch.
///
/// While a statistics stream is set, the list keeps per list the bulk bytes entered.
class KLDTPXBAS_API TPXBasCamPurgeList : public mem_AllocationOperators {
 public:
  ~TPXBasCamPurgeList();

  /// Enters the chain first..last (linked by TPXBasCamMemoryItem::Link) in list.
  void AddGroupedItem(int list, TPXBasCamCachePolicyEnm policy, TPXBasCamMemoryItem* first,
                      TPXBasCamMemoryItem* last);
  /// Takes item out of its list: false for null or an item in no list.
  bool RemoveItem(TPXBasCamMemoryItem* item);
  /// Frees bulk data from the front: list > 0 that list only; list <= 0 every list in purge
  /// order. Returns the bytes freed, which may exceed bytes by the last item's share.
  unsigned int Purge(int list, unsigned int bytes);
  /// Copies the per-list bulk bytes into counters (one per list) while a stream is set.
  void MemoryCurrent(unsigned int* counters);
  /// Sets the statistics stream; the counters start at 0 when first needed.
  void SetDbFile(FILE* file);

 private:
  friend class TPXBasCamCacheManager;
  explicit TPXBasCamPurgeList(int);
  TPXBasCamPurgeList(const TPXBasCamPurgeList&) = delete;
  TPXBasCamPurgeList& operator=(const TPXBasCamPurgeList&) = delete;

  /// n new lists; the index of the first. std::bad_alloc leaves the lists unchanged.
  int Add(int n);
  int NumPurgeLists() const { return m_count; }
  int* PurgeOrder() { return m_order; }
  unsigned int PurgeOne(int list, unsigned int wanted);
  void Lower(int list, unsigned int bytes);

  TPXBasCamMemoryItem** m_heads;
  TPXBasCamMemoryItem** m_tails;
  int m_count;
  int* m_order;
  FILE* m_dbFile;
  TPXBasAtiMutex* m_mutex;
  unsigned int* m_counters;
};

#endif  // TPXBASCAMPURGELIST_H
