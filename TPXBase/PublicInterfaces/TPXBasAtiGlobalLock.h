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

  /// Prepares the lock; the library calls it when it is loaded.
  static void Initialize();
  /// Releases nothing.
  static void Finalize();
  /// Takes the lock, waiting while another thread holds it (an absent lock is fatal).
  static void Lock();
  /// Releases the lock once, which the calling thread holds.
  static void Unlock();

 private:
  TPXBasAtiGlobalLock(const TPXBasAtiGlobalLock&) = delete;
  TPXBasAtiGlobalLock& operator=(const TPXBasAtiGlobalLock&) = delete;

  static void* m_lock;
};

#endif  // TPXBASATIGLOBALLOCK_H
