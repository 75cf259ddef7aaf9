/// @file TPXBasAtiMutexDefault.h
/// The library's two mutexes, auto-upgrading and single-threaded.
#ifndef TPXBASATIMUTEXDEFAULT_H
#define TPXBASATIMUTEXDEFAULT_H

#include "KLDTPXBasExport.h"
#include "TPXBasAtiMutex.h"
#include "TPXBasAtiRegistry.h"
#include "TPXBasAtiUpgradable.h"

class TPXBasAtiDefaultThreadFact;
class TPXBasAtiSingleThreadFact;

/// Issued by the default thread factory. Until the host installs its factory it does
/// nothing (Lock returns at once, TryLock gives 1, id() 200); afterwards it forwards every
/// operation to a real mutex of that factory, which it owns. The object never changes.
/// A placeholder held when the factory is installed (locked more often than unlocked by the
/// thread that installs it) stays held: the upgrade locks the real mutex for that thread, and
/// the real mutex is unlocked when the last of those holds is given back.
class KLDTPXBAS_API TPXBasAtiMutexDefault : public TPXBasAtiMutex, public TPXBasAtiUpgradable {
 public:
  /// Leaves the issuing factory's registry and destroys the real mutex, if any.
  ~TPXBasAtiMutexDefault() override;
  void Lock() override;
  void Unlock() override;
  int TryLock() override;
  int id() const override;
  /// "AUTO_UPGRADING_MUTEX", before and after the upgrade.
  virtual const char* AsString() const;
  /// Keeps f->newMutex() (f null: fatal); false when f gave none. Once upgraded, further
  /// calls keep the mutex already held and return true.
  bool UpgradeYourself(TPXBasAtiThreadFactory* f) override;

  static const char* const m_stringID;  ///< The text AsString gives: "AUTO_UPGRADING_MUTEX".

 private:
  friend class TPXBasAtiDefaultThreadFact;
  TPXBasAtiMutexDefault() = default;

  TPXBasAtiMutex* m_delegate = nullptr;
  int m_held = 0;  ///< before the upgrade: locks minus unlocks; after: holds carried over
  TPXBasAtiRegistryLink m_link;
};

/// Issued by the single-threaded factory: every operation does nothing (TryLock gives 1,
/// id() 112).
class KLDTPXBAS_API TPXBasAtiMutexSingle : public TPXBasAtiMutex {
 public:
  void Lock() override;
  void Unlock() override;
  int TryLock() override;
  int id() const override;
  /// "SINGLE_THREADED_MUTEX".
  virtual const char* AsString() const;

  static const char* const m_stringID;  ///< The text AsString gives: "SINGLE_THREADED_MUTEX".

 private:
  friend class TPXBasAtiSingleThreadFact;
  TPXBasAtiMutexSingle() = default;
};

#endif  // TPXBASATIMUTEXDEFAULT_H
