/// @file TPXBasAtiThreadFactory.h
/// The interface of a thread factory.
#ifndef TPXBASATITHREADFACTORY_H
#define TPXBASATITHREADFACTORY_H

#include "KLDTPXBasExport.h"
#include "TPXBasAtiAtomicTemplate.h"
#include "TPXBasAtiBarrier.h"
#include "TPXBasAtiCondVar.h"
#include "TPXBasAtiMutex.h"
#include "mem_AllocationOperators.h"

/// Issues the synchronisation primitives of one threading model and knows how to fence
/// memory and yield. A host that runs threads implements it and installs it once with
/// TPXBasAtiThreadingModel::setBehavior, which takes ownership.
///
/// The primitives issued belong to the caller, who destroys them through their virtual
/// destructors (or, for mutexes, hands them back with deleteMutex). Every operation of a
/// factory installed for a multi-threaded process must be callable from any thread.
class KLDTPXBAS_API TPXBasAtiThreadFactory : public mem_AllocationOperators {
 public:
  virtual ~TPXBasAtiThreadFactory();
  virtual TPXBasAtiAtomicTemplate<unsigned int>* newAtomic(unsigned int initial) const = 0;
  virtual TPXBasAtiMutex* newMutex() const = 0;
  virtual TPXBasAtiCondVar* newCondVar() const = 0;
  virtual TPXBasAtiBarrier* newBarrier() const = 0;
  virtual void ReadWriteMemoryBarrier() const = 0;
  virtual void WriteMemoryBarrier() const = 0;
  virtual void ReadMemoryBarrier() const = 0;
  /// Gives up the processor.
  virtual void Relinquish() const = 0;
  virtual bool multiThread() const = 0;
  /// The factory's name; stringID ("DEFAULT_NO_THREADS") unless overridden.
  virtual const char* AsString() const;
  /// Makes every placeholder this factory issued forward to a primitive of f. This base
  /// issues no placeholders: it returns true and does nothing.
  virtual bool UpgradeAllIssuedPrimitives(TPXBasAtiThreadFactory* f);
  /// Takes back a mutex the caller no longer uses.
  virtual void deleteMutex(TPXBasAtiMutex* m) = 0;

  static const char* const stringID;

 protected:
  TPXBasAtiThreadFactory() = default;

 private:
  TPXBasAtiThreadFactory(const TPXBasAtiThreadFactory&) = delete;
  TPXBasAtiThreadFactory& operator=(const TPXBasAtiThreadFactory&) = delete;
};

#endif  // TPXBASATITHREADFACTORY_H
