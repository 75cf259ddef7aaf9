/// @file TPXBasMemCacheManager.h
/// The allocation library's view of a cache that can give memory back.
#ifndef TPXBASMEMCACHEMANAGER_H
#define TPXBASMEMCACHEMANAGER_H

#include "KLDTPXBasAllocExport.h"
#include "mem_AllocationOperators.h"

/// Base of a cache manager. While one exists, the allocation library knows it and can ask it
/// to purge through the virtual Purge. At most one is known at a time: the newest.
class KLDTPXBASALLOC_API TPXBasMemCacheManager : public mem_AllocationOperators {
 public:
  TPXBasMemCacheManager();
  virtual ~TPXBasMemCacheManager();
  /// Asks the cache to give back about bytes from purge list list; returns the bytes freed.
  /// The base class caches nothing and returns 0.
  virtual unsigned int Purge(int list, unsigned int bytes);

  /// The cache manager constructed last and not yet destroyed, or null.
  static TPXBasMemCacheManager* Current();

 private:
  TPXBasMemCacheManager(const TPXBasMemCacheManager&) = delete;
  TPXBasMemCacheManager& operator=(const TPXBasMemCacheManager&) = delete;
};

#endif  // TPXBASMEMCACHEMANAGER_H
