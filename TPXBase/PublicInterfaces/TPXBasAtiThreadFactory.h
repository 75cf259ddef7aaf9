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
  /// A new atomic counter holding initial, owned by the caller; null when none can be made.
  virtual TPXBasAtiAtomicTemplate<unsigned int>* newAtomic(unsigned int initial) const = 0;
  /// A new mutex, not held, owned by the caller; null when none can be made.
  virtual TPXBasAtiMutex* newMutex() const = 0;
  /// A new condition variable, owned by the caller; null when none can be made.
  virtual TPXBasAtiCondVar* newCondVar() const = 0;
  /// A new barrier, owned by the caller; null when none can be made.
  virtual TPXBasAtiBarrier* newBarrier() const = 0;
  /// Full memory fence: no load or store moves across it.
  virtual void ReadWriteMemoryBarrier() const = 0;
  /// Store fence (release): earlier writes are visible before later ones.
  virtual void WriteMemoryBarrier() const = 0;
  /// Load fence (acquire): later reads are not done before earlier ones.
  virtual void ReadMemoryBarrier() const = 0;
  /// Gives up the processor.
  virtual void Relinquish() const = 0;
  /// Whether the factory's primitives really synchronise threads.
  virtual bool multiThread() const = 0;
  /// The factory's name; stringID ("DEFAULT_NO_THREADS") unless overridden.
  virtual const char* AsString() const;
  /// Makes every placeholder this factory issued forward to a primitive of f. This base
  /// issues no placeholders: it returns true and does nothing.
  virtual bool UpgradeAllIssuedPrimitives(TPXBasAtiThreadFactory* f);
  /// Takes back a mutex the caller no longer uses.
  virtual void deleteMutex(TPXBasAtiMutex* m) = 0;

  /// "DEFAULT_NO_THREADS", the name AsString gives unless overridden.
  static const char* const stringID;

 protected:
  TPXBasAtiThreadFactory() = default;

 private:
  TPXBasAtiThreadFactory(const TPXBasAtiThreadFactory&) = delete;
  TPXBasAtiThreadFactory& operator=(const TPXBasAtiThreadFactory&) = delete;
};

#endif  // TPXBASATITHREADFACTORY_H
