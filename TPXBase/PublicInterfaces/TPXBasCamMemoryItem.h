/// @file TPXBasCamMemoryItem.h
/// A cached object whose bulk data the cache manager may purge.
#ifndef TPXBASCAMMEMORYITEM_H
#define TPXBASCAMMEMORYITEM_H

#include "KLDTPXBasExport.h"
#include "mem_AllocationOperators.h"

class TPXBasAtiMutex;
class TPXBasCamPurgeList;

/// Base of client objects that keep bulk data the cache manager may ask them to free when
/// memory runs short. An item is in no purge list (both links null) or in exactly one; the
/// purge list links and unlinks it under the item's own mutex. A purged item stays alive
/// with its links cleared and may be entered again.
///
/// FreeBulkData runs in whichever thread purges (an allocating thread or the purge thread)
/// with the item's lock held: an owner that wants the data back first calls
/// TPXBasCamCacheManager::RemoveItem; true means the data is still there and the item is out
/// of the list, false means it was purged (or never listed). The owner must not hold the
/// item's lock while it allocates through the cache manager.
class KLDTPXBAS_API TPXBasCamMemoryItem : public mem_AllocationOperators {
 public:
  /// Takes a mutex from the threading model (std::bad_alloc when none can be allocated).
  TPXBasCamMemoryItem();
  virtual ~TPXBasCamMemoryItem();

  /// Size of the item's own allocation; not used by the library. 0 here.
  virtual unsigned int AllocSize() const;
  /// Bytes of bulk data held, for the per-list statistics. 0 here.
  virtual unsigned int BulkSize() const;
  /// Frees the bulk data and returns the bytes freed. 0 here.
  virtual unsigned int FreeBulkData();

  /// Takes the item's mutex.
  void Lock();
  /// Releases the item's mutex.
  void Unlock();
  /// Non-zero when the lock was taken.
  int TryLock();

  /// Chains first before second, to build a group for AddItem. Only for items in no list.
  static void Link(TPXBasCamMemoryItem* first, TPXBasCamMemoryItem* second);
  /// Whether the item is in a list (read under its lock).
  bool IsListed();

 private:
  friend class TPXBasCamPurgeList;
  TPXBasCamMemoryItem(const TPXBasCamMemoryItem&) = delete;
  TPXBasCamMemoryItem& operator=(const TPXBasCamMemoryItem&) = delete;

  TPXBasCamMemoryItem* m_next;
  TPXBasCamMemoryItem* m_prev;
  TPXBasAtiMutex* m_mutex;
  int m_list;  // list entered while a statistics stream was set; -1 when unknown
};

#endif  // TPXBASCAMMEMORYITEM_H
