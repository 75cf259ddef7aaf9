// ati_TestFactories.h: a fixture and a recording thread factory shared by the threading suites.
#ifndef ATI_TESTFACTORIES_H
#define ATI_TESTFACTORIES_H

#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

#include <string>
#include <vector>

namespace ati_test {

/// Each test starts and ends with no threading model, so the one-time switch can be made again.
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

/// A multi-threaded factory that logs newMutex/newCondVar/newBarrier in order ("M", "C", "B"),
/// gives counting mutexes (or none) and otherwise the single-threaded primitives.
class RecordingFactory : public TPXBasAtiSingleThreadFact {
 public:
  explicit RecordingFactory(int mutexId = 7, bool giveMutexes = true)
      : m_mutexId(mutexId), m_giveMutexes(giveMutexes) {}
  TPXBasAtiMutex* newMutex() const override {
    log.push_back("M");
    return m_giveMutexes ? new CountingMutex(m_mutexId, &aliveMutexes) : nullptr;
  }
  TPXBasAtiCondVar* newCondVar() const override {
    log.push_back("C");
    return TPXBasAtiSingleThreadFact::newCondVar();
  }
  TPXBasAtiBarrier* newBarrier() const override {
    log.push_back("B");
    return TPXBasAtiSingleThreadFact::newBarrier();
  }
  bool multiThread() const override { return true; }

  mutable std::vector<std::string> log;
  mutable int aliveMutexes = 0;

 private:
  int m_mutexId;
  bool m_giveMutexes;
};

}  // namespace ati_test

#endif  // ATI_TESTFACTORIES_H
