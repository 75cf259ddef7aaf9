/// @file TPXBasAtiBarrierDefault.h
/// The library's two barriers.
#ifndef TPXBASATIBARRIERDEFAULT_H
#define TPXBASATIBARRIERDEFAULT_H

#include "KLDTPXBasExport.h"
#include "TPXBasAtiBarrier.h"
#include "TPXBasAtiRegistry.h"
#include "TPXBasAtiUpgradable.h"

class TPXBasAtiDefaultThreadFact;
class TPXBasAtiSingleThreadFact;

/// Issued by the default thread factory: BarrierSync returns at once (id() 303) until the
/// host installs its factory; afterwards it forwards to a real barrier of that factory,
/// which it owns.
class KLDTPXBAS_API TPXBasAtiBarrierDefault : public TPXBasAtiBarrier, public TPXBasAtiUpgradable {
 public:
  /// Leaves the issuing factory's registry and destroys the real barrier.
  ~TPXBasAtiBarrierDefault() override;
  /// Returns at once until upgraded; afterwards the real barrier's BarrierSync(n).
  void BarrierSync(unsigned int n) override;
  int id() const override;
  /// Keeps f->newBarrier() (f null: fatal); false when f gave none. Once upgraded, further
  /// calls keep what is held and return true.
  bool UpgradeYourself(TPXBasAtiThreadFactory* f) override;

 private:
  friend class TPXBasAtiDefaultThreadFact;
  TPXBasAtiBarrierDefault() = default;

  TPXBasAtiBarrier* m_delegate = nullptr;
  TPXBasAtiRegistryLink m_link;
};

/// Issued by the single-threaded factory: BarrierSync returns at once (id() 302).
class KLDTPXBAS_API TPXBasAtiBarrierSingle : public TPXBasAtiBarrier {
 public:
  /// Returns at once.
  void BarrierSync(unsigned int n) override;
  int id() const override;

 private:
  friend class TPXBasAtiSingleThreadFact;
  TPXBasAtiBarrierSingle() = default;
};

#endif  // TPXBASATIBARRIERDEFAULT_H
