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

  /// A plain, unsynchronised counter (TPXBasAtiAtomicTemplate itself).
  TPXBasAtiAtomicTemplate<unsigned int>* newAtomic(unsigned int initial) const override;
  /// A TPXBasAtiMutexSingle.
  TPXBasAtiMutex* newMutex() const override;
  /// A TPXBasAtiCondVarSingle.
  TPXBasAtiCondVar* newCondVar() const override;
  /// A TPXBasAtiBarrierSingle.
  TPXBasAtiBarrier* newBarrier() const override;
  /// @{
  /// Do nothing.
  void ReadWriteMemoryBarrier() const override;
  void WriteMemoryBarrier() const override;
  void ReadMemoryBarrier() const override;
  /// @}
  void Relinquish() const override;
  /// False.
  bool multiThread() const override;
  const char* AsString() const override;
  /// Destroys m, which the caller no longer uses (null is ignored).
  void deleteMutex(TPXBasAtiMutex* m) override;

  static const char* const stringID;  ///< "SINGLE_THREADED", the name AsString gives.
};

#endif  // TPXBASATISINGLETHREADFACT_H
