/// @file TPXBasAtiCondVar.h
/// The condition-variable interface of the threading abstraction.
#ifndef TPXBASATICONDVAR_H
#define TPXBASATICONDVAR_H

#include "KLDTPXBasExport.h"
#include "mem_AllocationOperators.h"

/// A condition variable that carries its own lock, issued by a thread factory. The caller
/// owns it and destroys it through this interface.
///
/// Use: Lock(); while (!condition) WaitForSignal(0); Unlock(); and from another thread
/// change the condition, then Signal(). The meaning of WaitForSignal's argument belongs to
/// the issuing factory; the library passes 0 and expects to wait until Signal is called.
class KLDTPXBAS_API TPXBasAtiCondVar : public mem_AllocationOperators {
 public:
  virtual ~TPXBasAtiCondVar();
  /// Takes the condition variable's own lock.
  virtual void Lock() = 0;
  /// Releases the lock, which the calling thread holds.
  virtual void Unlock() = 0;
  /// Called with the lock held: releases it while waiting and holds it again on return.
  virtual void WaitForSignal(int) = 0;
  /// Wakes the threads waiting now.
  virtual void Signal() = 0;
  /// A fixed number per implementation; the interface's own body (500) is reachable only by
  /// a qualified call.
  virtual int id() const = 0;

 protected:
  TPXBasAtiCondVar() = default;

 private:
  TPXBasAtiCondVar(const TPXBasAtiCondVar&) = delete;
  TPXBasAtiCondVar& operator=(const TPXBasAtiCondVar&) = delete;
};

#endif  // TPXBASATICONDVAR_H
