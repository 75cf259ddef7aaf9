/// @file TPXBasAtiDefaultThreadFact.h
/// The factory of placeholders that upgrade themselves.
#ifndef TPXBASATIDEFAULTTHREADFACT_H
#define TPXBASATIDEFAULTTHREADFACT_H

#include "KLDTPXBasExport.h"
#include "TPXBasAtiMutexDefault.h"
#include "TPXBasAtiRegistry.h"
#include "TPXBasAtiThreadFactory.h"

/// The factory in force until the host installs its own ("AUTO_UPGRADING"). It issues
/// placeholder mutexes, condition variables and barriers and registers each one;
/// UpgradeAllIssuedPrimitives(f) then makes every one still alive forward to a primitive of
/// f. Its atomics (TPXBasAtiAtomicDefault) are not registered: their guard mutexes are.
/// Fences and Relinquish do nothing; multiThread() is false. Not locked: use it while the
/// process is single-threaded.
class KLDTPXBAS_API TPXBasAtiDefaultThreadFact : public TPXBasAtiThreadFactory {
 public:
  TPXBasAtiDefaultThreadFact() = default;
  /// Frees the registry; the primitives issued live on (upgraded or not).
  ~TPXBasAtiDefaultThreadFact() override;

  /// A TPXBasAtiAtomicDefault whose guard mutex is a registered placeholder.
  TPXBasAtiAtomicTemplate<unsigned int>* newAtomic(unsigned int initial) const override;
  /// A registered TPXBasAtiMutexDefault.
  TPXBasAtiMutex* newMutex() const override;
  /// A registered TPXBasAtiCondVarDefault (fatal to use before the upgrade).
  TPXBasAtiCondVar* newCondVar() const override;
  /// A registered TPXBasAtiBarrierDefault.
  TPXBasAtiBarrier* newBarrier() const override;
  /// @{
  /// Do nothing: before the upgrade there is only one thread.
  void ReadWriteMemoryBarrier() const override;
  void WriteMemoryBarrier() const override;
  void ReadMemoryBarrier() const override;
  /// @}
  void Relinquish() const override;
  /// False.
  bool multiThread() const override;
  const char* AsString() const override;
  /// Upgrades every registered primitive, in registration order, to f (f null: fatal);
  /// true when every one of them got a primitive from f. All are visited even after one
  /// fails.
  bool UpgradeAllIssuedPrimitives(TPXBasAtiThreadFactory* f) override;
  /// Destroys m if it is a TPXBasAtiMutexDefault (taking it out of the registry first);
  /// a mutex of another class is left alone.
  void deleteMutex(TPXBasAtiMutex* m) override;
  /// Takes m out of the registry and destroys it, once.
  virtual void deleteMutex(TPXBasAtiMutexDefault* m);

  /// What the factory issued so far (for hosts that want to inspect it).
  const TPXBasAtiRegistry& Registry() const { return m_registry; }

  static const char* const m_stringID;  ///< "AUTO_UPGRADING", the name AsString gives.

 private:
  mutable TPXBasAtiRegistry m_registry;
};

#endif  // TPXBASATIDEFAULTTHREADFACT_H
