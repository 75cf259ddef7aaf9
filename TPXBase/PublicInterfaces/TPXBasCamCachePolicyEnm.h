/// @file TPXBasCamCachePolicyEnm.h
/// Where a group of cached items enters a purge list.
#ifndef TPXBASCAMCACHEPOLICYENM_H
#define TPXBASCAMCACHEPOLICYENM_H

/// Position of a group entered with TPXBasCamCacheManager::AddItem.
enum TPXBasCamCachePolicyEnm {
  TPXBasCamCacheAppend = 0,   ///< at the end: purged after everything already listed
  TPXBasCamCachePrepend = 1,  ///< at the front: purged before everything already listed
  TPXBasCamCacheNone = 2      ///< not entered: never purged
};

#endif  // TPXBASCAMCACHEPOLICYENM_H
