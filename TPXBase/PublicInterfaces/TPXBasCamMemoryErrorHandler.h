/// @file TPXBasCamMemoryErrorHandler.h
/// The cache manager's out-of-memory callback.
#ifndef TPXBASCAMMEMORYERRORHANDLER_H
#define TPXBASCAMMEMORYERRORHANDLER_H

#include "KLDTPXBasExport.h"
#include "mem_AllocationOperators.h"

/// Called by TPXBasCamCacheManager::Alloc, on the allocating thread, when even its last
/// attempt finds no memory. A client installs its own by deriving and handing a heap object
/// to TPXBasCamCacheManager::SetErrorHandler, which takes ownership. When OutOfMemory
/// returns, that allocation gives null.
class KLDTPXBAS_API TPXBasCamMemoryErrorHandler : public mem_AllocationOperators {
 public:
  TPXBasCamMemoryErrorHandler() = default;
  virtual ~TPXBasCamMemoryErrorHandler();
  /// Writes two lines on the standard error stream, flushes it and returns.
  virtual void OutOfMemory();
};

#endif  // TPXBASCAMMEMORYERRORHANDLER_H
