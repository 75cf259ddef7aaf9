/// @file TPXBasAtiUpgradable.h
/// The part of a placeholder primitive that can be made real in place.
#ifndef TPXBASATIUPGRADABLE_H
#define TPXBASATIUPGRADABLE_H

#include "KLDTPXBasExport.h"
#include "mem_AllocationOperators.h"

class TPXBasAtiThreadFactory;

/// Second base of every primitive that the default thread factory issues. When the host
/// installs its thread factory, the threading model calls UpgradeYourself on each such
/// primitive, which then forwards all its work to a real primitive of that factory.
///
/// The destructor is deliberately not virtual: a primitive is destroyed through its own
/// interface (TPXBasAtiMutex, TPXBasAtiCondVar, ...), never through this part.
class KLDTPXBAS_API TPXBasAtiUpgradable : public mem_AllocationOperators {
 public:
  /// Asks f for a real primitive of the same kind and keeps it; false when f gave none.
  /// A null f is a broken invariant (fatal).
  virtual bool UpgradeYourself(TPXBasAtiThreadFactory* f) = 0;

 protected:
  TPXBasAtiUpgradable() = default;
  ~TPXBasAtiUpgradable() = default;
  /// @{
  /// Copying is left to the primitive that derives from this part (the part holds nothing).
  TPXBasAtiUpgradable(const TPXBasAtiUpgradable&) = default;
  TPXBasAtiUpgradable& operator=(const TPXBasAtiUpgradable&) = default;
  /// @}
};

#endif  // TPXBASATIUPGRADABLE_H
