// ati_TestFactories.h: a thread factory and a fixture shared by the threading suites.
#ifndef ATI_TESTFACTORIES_H
#define ATI_TESTFACTORIES_H

#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

#include <string>
#include <vector>

namespace ati_test {

/// Every test starts and ends with no threading model, so the one-time switch can be made
/// again by the next test even when the whole binary runs in one process.
class FreshModel : public ::testing::Test {
 protected:
  void SetUp() override { TPXBasAtiThreadingModel::Finalize(); }
  void TearDown() override { TPXBasAtiThreadingModel::Finalize(); }
};

/// A mutex that counts its live instances and reports a chosen id; TryLock never obtains it.
class CountingMutex : public TPXBasAtiMutex {
 public:
  CountingMutex(int id, int* alive) : m_id(id), m_alive(alive) { ++*m_alive; }
  ~CountingMutex() override { --*m_alive; }
  void Lock() override {}
  void Unlock() override {}
  int TryLock() override { return 0; }
  int id() const override { return m_id; }

 private:
  int m_id;
  int* m_alive;
};

/// Logs every newMutex/newCondVar/newBarrier in order ("M", "C", "B"); gives counting
/// mutexes (or none), and the single-threaded factory's other primitives.
class RecordingFactory : public TPXBasAtiThreadFactory {
 public:
  explicit RecordingFactory(int mutexId = 7, bool giveMutexes = true)
      : m_mutexId(mutexId), m_giveMutexes(giveMutexes) {}
  TPXBasAtiAtomicTemplate<unsigned int>* newAtomic(unsigned int v) const override {
    return m_single.newAtomic(v);
  }
  TPXBasAtiMutex* newMutex() const override {
    log.push_back("M");
    return m_giveMutexes ? new CountingMutex(m_mutexId, &aliveMutexes) : nullptr;
  }
  TPXBasAtiCondVar* newCondVar() const override {
    log.push_back("C");
    return m_single.newCondVar();
  }
  TPXBasAtiBarrier* newBarrier() const override {
    log.push_back("B");
    return m_single.newBarrier();
  }
  void ReadWriteMemoryBarrier() const override {}
  void WriteMemoryBarrier() const override {}
  void ReadMemoryBarrier() const override {}
  void Relinquish() const override {}
  bool multiThread() const override { return true; }
  void deleteMutex(TPXBasAtiMutex* m) override { delete m; }

  mutable std::vector<std::string> log;
  mutable int aliveMutexes = 0;

 private:
  int m_mutexId;
  bool m_giveMutexes;
  TPXBasAtiSingleThreadFact m_single;
};

}  // namespace ati_test

#endif  // ATI_TESTFACTORIES_H
