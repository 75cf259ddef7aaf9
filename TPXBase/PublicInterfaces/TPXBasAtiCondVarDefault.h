/// @file TPXBasAtiCondVarDefault.h
/// The library's two condition variables.
#ifndef TPXBASATICONDVARDEFAULT_H
#define TPXBASATICONDVARDEFAULT_H

#include "KLDTPXBasExport.h"
#include "TPXBasAtiCondVar.h"
#include "TPXBasAtiRegistry.h"
#include "TPXBasAtiUpgradable.h"

class TPXBasAtiDefaultThreadFact;
class TPXBasAtiSingleThreadFact;

/// Issued by the default thread factory. A condition variable cannot be faked in one thread,
/// so until the host installs its factory every operation but id() (501) is a broken
/// invariant (fatal, "m_condVar != 0"); afterwards it forwards to a real condition variable
/// of that factory, which it owns.
class KLDTPXBAS_API TPXBasAtiCondVarDefault : public TPXBasAtiCondVar, public TPXBasAtiUpgradable {
 public:
  /// Leaves the issuing factory's registry and destroys the real condition variable.
  ~TPXBasAtiCondVarDefault() override;
  void Lock() override;
  void Unlock() override;
  void WaitForSignal(int arg) override;
  void Signal() override;
  int id() const override;
  /// "AUTO_UPGRADING_CONDVAR", before and after the upgrade.
  virtual const char* AsString() const;
  /// Keeps f->newCondVar() (f null: fatal); false when f gave none. Once upgraded, further
  /// calls keep what is held and return true.
  bool UpgradeYourself(TPXBasAtiThreadFactory* f) override;

  static const char* const m_stringID;  ///< The text AsString gives: "AUTO_UPGRADING_CONDVAR".

 private:
  friend class TPXBasAtiDefaultThreadFact;
  TPXBasAtiCondVarDefault() = default;

  TPXBasAtiCondVar* m_condVar = nullptr;
  TPXBasAtiRegistryLink m_link;
};

/// Issued by the single-threaded factory: every operation returns at once (id() 502).
class KLDTPXBAS_API TPXBasAtiCondVarSingle : public TPXBasAtiCondVar {
 public:
  void Lock() override;
  void Unlock() override;
  void WaitForSignal(int arg) override;
  void Signal() override;
  int id() const override;
  /// "SINGLE_THREADED_CONDVAR".
  virtual const char* AsString() const;

  static const char* const m_stringID;  ///< The text AsString gives: "SINGLE_THREADED_CONDVAR".

 private:
  friend class TPXBasAtiSingleThreadFact;
  TPXBasAtiCondVarSingle() = default;
};

#endif  // TPXBASATICONDVARDEFAULT_H
