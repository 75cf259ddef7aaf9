/// @file TPXBasAtiGlobalLock.h
/// The one process-wide lock of global singletons.
#ifndef TPXBASATIGLOBALLOCK_H
#define TPXBASATIGLOBALLOCK_H

#include "KLDTPXBasExport.h"

/// A recursive lock for the whole process that serialises the creation and destruction of
/// global singletons; the thread that holds it may take it again. An object of this class is
/// a scoped guard. The lock is prepared when the library is loaded and never released, so it
/// stays usable by every tear-down.
class KLDTPXBAS_API TPXBasAtiGlobalLock {
 public:
  /// Takes the lock (its absence is fatal: "m_lock != 0").
  TPXBasAtiGlobalLock();
  ~TPXBasAtiGlobalLock();

  static void Initialize();
  /// Releases nothing.
  static void Finalize();
  static void Lock();
  static void Unlock();

 private:
  TPXBasAtiGlobalLock(const TPXBasAtiGlobalLock&) = delete;
  TPXBasAtiGlobalLock& operator=(const TPXBasAtiGlobalLock&) = delete;

  static void* m_lock;
};

#endif  // TPXBASATIGLOBALLOCK_H
