/// @file TPXBasAtiStdThreadFact.h
/// A multi-threaded thread factory on the C++ standard library.
/// Defined in the optional library KLDTPXBasAtiStd, which a host links to install it.
#ifndef TPXBASATISTDTHREADFACT_H
#define TPXBASATISTDTHREADFACT_H

#include "KLDTPXBasExport.h"
#include "TPXBasAtiThreadFactory.h"

/// A real thread factory ("STD_THREADS", multiThread() true). A host installs it once,
/// before it starts threads that use the library:
///
///   TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiStdThreadFact);
///
/// What it issues:
/// - mutexes that exclude (not recursive: a thread must not take one it holds);
/// - condition variables whose WaitForSignal(n), called with their lock held, waits until a
///   Signal made since the caller took the lock (n <= 0: without limit; n > 0: at most n
///   milliseconds). Such a Signal is never lost, whether or not the signaller holds the lock;
/// - barriers whose BarrierSync(n) returns once n threads have arrived (n <= 1 at once);
///   they may be used again for the next round;
/// - counters on std::atomic.
/// Fences are std::atomic_thread_fence (sequentially consistent, release, acquire) and
/// Relinquish yields the processor. Every operation may be called from any thread.
class KLDTPXBAS_API TPXBasAtiStdThreadFact : public TPXBasAtiThreadFactory {
 public:
  /// id() of what the factory issues.
  enum { kMutexId = 710, kCondVarId = 711, kBarrierId = 712, kAtomicId = 713 };

  TPXBasAtiStdThreadFact();
  ~TPXBasAtiStdThreadFact() override;

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
  /// Destroys m, whichever factory issued it (null is ignored).
  void deleteMutex(TPXBasAtiMutex* m) override;

  static const char* const m_stringID;
};

#endif  // TPXBASATISTDTHREADFACT_H
