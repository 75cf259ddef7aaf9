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
  bool established() const { return m_established; }
  bool multiThread() const;
  const char* AsString() const;
  TPXBasAtiAtomicTemplate<unsigned int>* newAtomic(unsigned int initial);
  TPXBasAtiMutex* newMutex() const;
  TPXBasAtiCondVar* newCondVar() const;
  TPXBasAtiBarrier* newBarrier() const;
  void ReadMemoryBarrier() const;
  void WriteMemoryBarrier() const;
  void ReadWriteMemoryBarrier() const;
  void Relinquish() const;
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

  static bool setBehavior(TPXBasAtiThreadFactory* f);
  static bool established();
  static bool multiThread();
  static const char* AsString();
  static TPXBasAtiAtomicTemplate<unsigned int>* newAtomic(unsigned int initial);
  static TPXBasAtiMutex* newMutex();
  static TPXBasAtiCondVar* newCondVar();
  static TPXBasAtiBarrier* newBarrier();
  static void ReadMemoryBarrier();
  static void WriteMemoryBarrier();
  static void ReadWriteMemoryBarrier();
  static void Relinquish();
  static void deleteMutex(TPXBasAtiMutex* m);
  /// Destroys the model and its factory (the primitives issued live on); the next call
  /// creates a fresh default model.
  static void Finalize();
};

#endif  // TPXBASATITHREADINGMODEL_H
