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
  enum {
    kMutexId = 710,    ///< of its mutexes
    kCondVarId = 711,  ///< of its condition variables
    kBarrierId = 712,  ///< of its barriers
    kAtomicId = 713    ///< of its atomic counters
  };

  TPXBasAtiStdThreadFact();
  ~TPXBasAtiStdThreadFact() override;

  /// A counter on std::atomic.
  TPXBasAtiAtomicTemplate<unsigned int>* newAtomic(unsigned int initial) const override;
  /// A mutex that excludes; not recursive.
  TPXBasAtiMutex* newMutex() const override;
  /// A condition variable as described for the class.
  TPXBasAtiCondVar* newCondVar() const override;
  /// A reusable barrier as described for the class.
  TPXBasAtiBarrier* newBarrier() const override;
  /// A sequentially consistent std::atomic_thread_fence.
  void ReadWriteMemoryBarrier() const override;
  /// A release std::atomic_thread_fence.
  void WriteMemoryBarrier() const override;
  /// An acquire std::atomic_thread_fence.
  void ReadMemoryBarrier() const override;
  void Relinquish() const override;
  /// True.
  bool multiThread() const override;
  const char* AsString() const override;
  /// Destroys m, whichever factory issued it (null is ignored).
  void deleteMutex(TPXBasAtiMutex* m) override;

  static const char* const m_stringID;  ///< "STD_THREADS", the name AsString gives.
};

#endif  // TPXBASATISTDTHREADFACT_H
