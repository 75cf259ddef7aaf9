/// @file TPXBasAtiThreadingModel.h
/// The process-wide threading model and its static facade.
#ifndef TPXBASATITHREADINGMODEL_H
#define TPXBASATITHREADINGMODEL_H

#include "KLDTPXBasExport.h"
#include "TPXBasAtiThreadFactory.h"
#include "omi_Singleton.h"

class TPXBasAtiModelSingleton;
// The model's one instance lives in the library; clients refer to the library's copy.
extern template class KLDTPXBAS_API omi_SingletonBase<TPXBasAtiModelSingleton>;
extern template class KLDTPXBAS_API omi_Singleton<TPXBasAtiModelSingleton>;

/// The thread factory in force. It starts with a TPXBasAtiDefaultThreadFact of its own and
/// accepts one transition in its life: setBehavior(f) upgrades every placeholder issued so
/// far to f, destroys the default factory and owns f from then on. Nothing here is locked:
/// create the model and switch it while the process is single-threaded; afterwards the
/// factory pointer is only read. Reach it through TPXBasAtiThreadingModel.
class KLDTPXBAS_API TPXBasAtiModelSingleton : public omi_Singleton<TPXBasAtiModelSingleton> {
 public:
  /// Installs f, taking ownership, and returns true. Refused (false, one message on the
  /// standard error stream, nothing changes, f stays the caller's) when f is null or a
  /// factory was installed already.
  bool setBehavior(TPXBasAtiThreadFactory* f);
  /// Whether a host factory was installed by setBehavior.
  bool established() const { return m_established; }
  /// The factory in force's multiThread().
  bool multiThread() const;
  /// The name of the factory in force.
  const char* AsString() const;
  /// A counter from the factory in force, owned by the caller.
  TPXBasAtiAtomicTemplate<unsigned int>* newAtomic(unsigned int initial);
  /// A mutex from the factory in force, owned by the caller.
  TPXBasAtiMutex* newMutex() const;
  /// A condition variable from the factory in force, owned by the caller.
  TPXBasAtiCondVar* newCondVar() const;
  /// A barrier from the factory in force, owned by the caller.
  TPXBasAtiBarrier* newBarrier() const;
  /// The factory in force's load fence.
  void ReadMemoryBarrier() const;
  /// The factory in force's store fence.
  void WriteMemoryBarrier() const;
  /// The factory in force's full fence.
  void ReadWriteMemoryBarrier() const;
  /// Gives up the processor through the factory in force.
  void Relinquish() const;
  /// Hands m back to the factory in force.
  void deleteMutex(TPXBasAtiMutex* m);

 private:
  friend class omi_Singleton<TPXBasAtiModelSingleton>;
  friend class omi_SingletonBase<TPXBasAtiModelSingleton>;
  TPXBasAtiModelSingleton();
  ~TPXBasAtiModelSingleton();
  TPXBasAtiModelSingleton(const TPXBasAtiModelSingleton&) = delete;
  TPXBasAtiModelSingleton& operator=(const TPXBasAtiModelSingleton&) = delete;

  TPXBasAtiThreadFactory* m_factory;
  bool m_established;
};

/// The door through which every module obtains primitives. Each function creates the model
/// on first use and forwards to it. A host installs its factory once, before it starts
/// threads that use the library:
///
///   TPXBasAtiThreadingModel::setBehavior(new MyThreadFactory);
class KLDTPXBAS_API TPXBasAtiThreadingModel {
 public:
  /// Makes sure the model exists.
  TPXBasAtiThreadingModel();
  ~TPXBasAtiThreadingModel() {}

  /// TPXBasAtiModelSingleton::setBehavior on the model.
  static bool setBehavior(TPXBasAtiThreadFactory* f);
  /// TPXBasAtiModelSingleton::established on the model.
  static bool established();
  /// TPXBasAtiModelSingleton::multiThread on the model.
  static bool multiThread();
  /// TPXBasAtiModelSingleton::AsString on the model.
  static const char* AsString();
  /// TPXBasAtiModelSingleton::newAtomic on the model.
  static TPXBasAtiAtomicTemplate<unsigned int>* newAtomic(unsigned int initial);
  /// TPXBasAtiModelSingleton::newMutex on the model.
  static TPXBasAtiMutex* newMutex();
  /// TPXBasAtiModelSingleton::newCondVar on the model.
  static TPXBasAtiCondVar* newCondVar();
  /// TPXBasAtiModelSingleton::newBarrier on the model.
  static TPXBasAtiBarrier* newBarrier();
  /// TPXBasAtiModelSingleton::ReadMemoryBarrier on the model.
  static void ReadMemoryBarrier();
  /// TPXBasAtiModelSingleton::WriteMemoryBarrier on the model.
  static void WriteMemoryBarrier();
  /// TPXBasAtiModelSingleton::ReadWriteMemoryBarrier on the model.
  static void ReadWriteMemoryBarrier();
  /// TPXBasAtiModelSingleton::Relinquish on the model.
  static void Relinquish();
  /// TPXBasAtiModelSingleton::deleteMutex on the model.
  static void deleteMutex(TPXBasAtiMutex* m);
  /// Destroys the model and its factory (the primitives issued live on); the next call
  /// creates a fresh default model.
  static void Finalize();
};

#endif  // TPXBASATITHREADINGMODEL_H
