/// @file TPXBasAtiSingleThreadFact.h
/// The factory of primitives that do nothing.
#ifndef TPXBASATISINGLETHREADFACT_H
#define TPXBASATISINGLETHREADFACT_H

#include "KLDTPXBasExport.h"
#include "TPXBasAtiThreadFactory.h"

/// A factory for hosts that declare themselves single-threaded ("SINGLE_THREADED"): its
/// mutexes, condition variables and barriers do nothing, its atomics are plain counters,
/// fences and Relinquish do nothing, multiThread() is false.
class KLDTPXBAS_API TPXBasAtiSingleThreadFact : public TPXBasAtiThreadFactory {
 public:
  TPXBasAtiSingleThreadFact() = default;
  ~TPXBasAtiSingleThreadFact() override;

  TPXBasAtiAtomicTemplate<unsigned int>* newAtomic(unsigned int initial) const override;
  TPXBasAtiMutex* newMutex() const override;
  TPXBasAtiCondVar* newCondVar() const override;
  TPXBasAtiBarrier* newBarrier() const override;
  void ReadWriteMemoryBarrier() const override;
  void WriteMemoryBarrier() const override;
  void ReadMemoryBarrier() const override;
  void Relinquish() const override;
  bool multiThread() const override;
  const char* AsString() const override;
  /// Destroys m, which the caller no longer uses (null is ignored).
  void deleteMutex(TPXBasAtiMutex* m) override;

  static const char* const stringID;
};

#endif  // TPXBASATISINGLETHREADFACT_H
