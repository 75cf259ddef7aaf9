/// @file TPXBasAtiMutex.h
/// The mutex interface of the threading abstraction.
#ifndef TPXBASATIMUTEX_H
#define TPXBASATIMUTEX_H

#include "KLDTPXBasExport.h"
#include "mem_AllocationOperators.h"

/// A mutual-exclusion lock issued by a thread factory (see TPXBasAtiThreadingModel). The
/// caller owns it and destroys it through this interface. Whether it excludes, and whether
/// the same thread may take it twice, is the issuing factory's: the library's placeholders
/// do nothing until the host installs a multi-threaded factory.
class KLDTPXBAS_API TPXBasAtiMutex : public mem_AllocationOperators {
 public:
  virtual ~TPXBasAtiMutex();
  /// Blocks until the calling thread holds the mutex.
  virtual void Lock() = 0;
  /// Releases the mutex, which the calling thread holds.
  virtual void Unlock() = 0;
  /// Takes the mutex without blocking when it is free: 1 when it was obtained, else 0.
  virtual int TryLock() = 0;
  /// A fixed number per implementation. The interface's own body (111) is reachable only
  /// by a qualified call.
  virtual int id() const = 0;

 protected:
  TPXBasAtiMutex() = default;

 private:
  TPXBasAtiMutex(const TPXBasAtiMutex&) = delete;
  TPXBasAtiMutex& operator=(const TPXBasAtiMutex&) = delete;
};

#endif  // TPXBASATIMUTEX_H
