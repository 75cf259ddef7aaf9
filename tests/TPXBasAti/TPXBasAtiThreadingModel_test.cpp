// The threading model: its states, the one transition and its refusals, the upgrade of
// everything issued so far, the module's tear-down; the std factory's primitives.
#include "KLDTPXBasCoreUtils.h"
#include "ati_TestFactories.h"
#include "gtest/gtest.h"
#include "kld_TestSupport.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using TPXBasAtiThreadingModelTest = ati_test::FreshModel;

const char* ModelName() { return typeid(TPXBasAtiModelSingleton).name(); }

TEST_F(TPXBasAtiThreadingModelTest, OneTransitionThenEveryCallIsRefused) {
  EXPECT_STREQ("AUTO_UPGRADING", TPXBasAtiThreadingModel::AsString());
  EXPECT_FALSE(TPXBasAtiThreadingModel::multiThread());
  EXPECT_TRUE(mem_Testing::RegistryHas(ModelName()));
  EXPECT_STREQ("AUTO_UPGRADING", omi_Singleton<TPXBasAtiModelSingleton>::Instance().AsString())
      << "clients and the library share one model";
  const std::string nullText =
      "Error initializing threading behavior: new thread factory pointer is NULL";
  CaptureStderr();
  EXPECT_FALSE(TPXBasAtiThreadingModel::setBehavior(nullptr));
  EXPECT_EQ(nullText, GetCapturedStderr()) << "no newline";
  EXPECT_FALSE(TPXBasAtiThreadingModel::established());

  EXPECT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiSingleThreadFact));
  EXPECT_TRUE(TPXBasAtiThreadingModel::established());
  EXPECT_STREQ("SINGLE_THREADED", TPXBasAtiThreadingModel::AsString());

  std::unique_ptr<TPXBasAtiThreadFactory> refused[] = {
      std::make_unique<TPXBasAtiStdThreadFact>(), std::make_unique<TPXBasAtiDefaultThreadFact>(),
      nullptr};
  for (auto& f : refused) {
    CaptureStderr();
    EXPECT_FALSE(TPXBasAtiThreadingModel::setBehavior(f.get()));
    const std::string expected =
        f ? std::string("Error changing threading behavior: transition to ") + f->AsString() +
                " threading model is not allowed\n"
          : nullText;
    EXPECT_EQ(expected, GetCapturedStderr());
    EXPECT_STREQ("SINGLE_THREADED", TPXBasAtiThreadingModel::AsString()) << "nothing changed";
  }  // refused factories stay the caller's: the unique_ptrs delete them
  TPXBasAtiThreadingModel::Finalize();
  EXPECT_FALSE(mem_Testing::RegistryHas(ModelName()));
  EXPECT_STREQ("AUTO_UPGRADING", TPXBasAtiThreadingModel::AsString()) << "a fresh model";
}

TEST_F(TPXBasAtiThreadingModelTest, SwitchUpgradesEverythingIssuedInOrder) {
  std::vector<std::unique_ptr<TPXBasAtiMutex>> mutexes;
  std::unique_ptr<TPXBasAtiBarrier> barrier(TPXBasAtiThreadingModel::newBarrier());
  for (int i = 0; i < 129; ++i) mutexes.emplace_back(TPXBasAtiThreadingModel::newMutex());
  std::unique_ptr<TPXBasAtiCondVar> cv(TPXBasAtiThreadingModel::newCondVar());
  TPXBasAtiThreadingModel::deleteMutex(mutexes[5].release());  // taken back: not visited

  auto* factory = new ati_test::RecordingFactory(7);
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(factory));
  std::vector<std::string> expected{"B"};
  expected.insert(expected.end(), 128, "M");
  expected.push_back("C");
  EXPECT_EQ(expected, factory->log);
  EXPECT_EQ(7, mutexes[128]->id());
  EXPECT_TRUE(TPXBasAtiThreadingModel::multiThread());
  TPXBasAtiThreadingModel::deleteMutex(TPXBasAtiThreadingModel::newMutex());
  mutexes.clear();
  EXPECT_EQ(0, factory->aliveMutexes);
}

// A read-yield-write step that loses updates unless the callers really exclude each other.
void SlowIncrement(long& shared, int r) {
  const long seen = shared;
  if (r % 64 == 0) std::this_thread::yield();
  shared = seen + 1;
}

TEST_F(TPXBasAtiThreadingModelTest, EarlyPlaceholdersSynchroniseForRealAfterTheSwitch) {
  std::unique_ptr<TPXBasAtiMutex> m(TPXBasAtiThreadingModel::newMutex());
  std::unique_ptr<TPXBasAtiAtomicTemplate<unsigned int>> counter(
      TPXBasAtiThreadingModel::newAtomic(0));
  std::unique_ptr<TPXBasAtiBarrier> barrier(TPXBasAtiThreadingModel::newBarrier());
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiStdThreadFact));
  EXPECT_EQ(TPXBasAtiStdThreadFact::kMutexId, m->id());
  EXPECT_EQ(TPXBasAtiStdThreadFact::kBarrierId, barrier->id());
  EXPECT_EQ(405, counter->id()) << "the atomic stays; its guard is upgraded";
  std::unique_ptr<TPXBasAtiAtomicTemplate<unsigned int>> late(
      TPXBasAtiThreadingModel::newAtomic(3));
  EXPECT_EQ(TPXBasAtiStdThreadFact::kAtomicId, late->id()) << "now the factory's own atomics";

  constexpr unsigned int kThreads = 4;
  constexpr int kRounds = 4000;
  long underMutex = 0;
  std::atomic<unsigned int> arrived{0}, passedEarly{0};
  auto work = [&] {
    for (unsigned int round = 1; round <= 3; ++round) {
      arrived.fetch_add(1);
      barrier->BarrierSync(kThreads);
      if (arrived.load() < kThreads * round) passedEarly.fetch_add(1);
      barrier->BarrierSync(kThreads);  // nobody starts the next round before all checked
    }
    for (int r = 0; r < kRounds; ++r) {
      m->Lock();
      SlowIncrement(underMutex, r);
      m->Unlock();
      (*counter)++;
      *counter += 2;
      counter->Decrement(1);
      ++*late;
      *late += 2;
      late->Decrement(2);
    }
  };
  std::vector<std::thread> threads;
  for (unsigned int t = 0; t < kThreads; ++t) threads.emplace_back(work);
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(0u, passedEarly.load());
  EXPECT_EQ(kThreads * kRounds, underMutex);
  EXPECT_EQ(2u * kThreads * kRounds, static_cast<unsigned int>(*counter));
  EXPECT_EQ(3u + kThreads * kRounds, static_cast<unsigned int>(*late));
}

TEST_F(TPXBasAtiThreadingModelTest, APlaceholderHeldAcrossTheSwitchStaysHeldUntilItsLastUnlock) {
  std::unique_ptr<TPXBasAtiMutex> held(TPXBasAtiThreadingModel::newMutex());
  std::unique_ptr<TPXBasAtiMutex> balanced(TPXBasAtiThreadingModel::newMutex());
  held->Lock();
  EXPECT_EQ(1, held->TryLock()) << "placeholders nest";
  balanced->Lock();
  balanced->Unlock();
  balanced->Unlock();  // one unlock too many before the switch carries nothing over
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiStdThreadFact));
  auto freeElsewhere = [](TPXBasAtiMutex& m) {
    int got = 0;
    std::thread([&] {
      got = m.TryLock();
      if (got) m.Unlock();
    }).join();
    return got;
  };
  EXPECT_EQ(0, freeElsewhere(*held)) << "still held by this thread after the switch";
  held->Unlock();
  EXPECT_EQ(0, freeElsewhere(*held)) << "one hold is left";
  held->Unlock();
  EXPECT_EQ(1, freeElsewhere(*held));
  EXPECT_EQ(1, freeElsewhere(*balanced));
  held->Lock();  // and then it is an ordinary mutex
  EXPECT_EQ(0, freeElsewhere(*held));
  held->Unlock();
}

class Holder : public TPXBasAtiGlobalSingleton<Holder> {
  friend class TPXBasAtiGlobalSingleton<Holder>;
  Holder() = default;
  ~Holder() = default;
};

TEST_F(TPXBasAtiThreadingModelTest, DestroyedPlaceholdersAreNeverUpgraded) {
  delete TPXBasAtiThreadingModel::newAtomic(1);  // deletes its guard directly
  delete TPXBasAtiThreadingModel::newCondVar();
  delete TPXBasAtiThreadingModel::newBarrier();
  TPXBasAtiGlobalSingleton<Holder>::Instance();
  TPXBasAtiGlobalSingleton<Holder>::Finalize();  // deletes the singleton's lock directly
  std::unique_ptr<TPXBasAtiMutex> survivor(TPXBasAtiThreadingModel::newMutex());

  auto* factory = new ati_test::RecordingFactory(7);
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(factory));
  EXPECT_EQ(std::vector<std::string>{"M"}, factory->log);

  // A registry that dies first unlinks what it still lists, and what Expunge took out is
  // unlinked too: AddressSanitizer catches a primitive that would still reach it.
  auto other = std::make_unique<TPXBasAtiDefaultThreadFact>();
  std::unique_ptr<TPXBasAtiMutex> orphan(other->newMutex());
  std::unique_ptr<TPXBasAtiBarrier> expunged(other->newBarrier());
  const_cast<TPXBasAtiRegistry&>(other->Registry())
      .Expunge(dynamic_cast<TPXBasAtiUpgradable*>(expunged.get()));
  other.reset();
}

TEST(TPXBasAti_hooks, LastFinaliseDestroysTheModelWithItsPrimitivesLeftAlive) {
  TPXBasAtiThreadingModel::Finalize();
  std::unique_ptr<TPXBasAtiMutex> m(TPXBasAtiThreadingModel::newMutex());
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiSingleThreadFact));
  { kld_test::FreshLibrary fresh; }
  EXPECT_FALSE(TPXBasAtiThreadingModel::established());
  EXPECT_EQ(112, m->id()) << "still forwarding to the single mutex";

  int tally = 0;
  TPXBasAti_initialize(tally);  // nested: no tear-down at the matching finalise
  EXPECT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiSingleThreadFact));
  TPXBasAti_finalize(tally);
  EXPECT_TRUE(TPXBasAtiThreadingModel::established());
  EXPECT_EQ(0, tally);
  TPXBasAtiThreadingModel::Finalize();
}

TEST(TPXBasAtiStdThreadFact, SignalAfterTheWaiterTookTheLockIsNeverLost) {
  TPXBasAtiStdThreadFact f;
  std::unique_ptr<TPXBasAtiCondVar> cv(f.newCondVar());
  // The signaller runs without the lock, as soon as the waiter holds it: a condition
  // variable that drops such a signal makes this test hang (and time out).
  for (int round = 0; round < 200; ++round) {
    std::atomic<bool> locked{false};
    cv->Lock();
    std::thread signaller([&] {
      while (!locked.load()) std::this_thread::yield();
      cv->Signal();
    });
    locked = true;
    cv->WaitForSignal(0);
    cv->Unlock();
    signaller.join();
  }
}

TEST(TPXBasAtiStdThreadFact, TimedWaitsTrivialBarriersNonRecursiveMutexesAndAtomics) {
  TPXBasAtiStdThreadFact f;
  EXPECT_TRUE(f.multiThread());
  std::unique_ptr<TPXBasAtiCondVar> cv(f.newCondVar());
  cv->Signal();  // nobody waits: nothing happens
  cv->Lock();
  cv->WaitForSignal(1);  // no signal comes: a wait that ignored its limit would hang here
  cv->Unlock();          // the wait gave the lock back (ThreadSanitizer checks the unlock)
  std::unique_ptr<TPXBasAtiBarrier> b(f.newBarrier());
  b->BarrierSync(0);  // alone: would hang if it waited for anyone
  b->BarrierSync(1);
  TPXBasAtiMutex* m = f.newMutex();
  EXPECT_EQ(1, m->TryLock());
  EXPECT_EQ(0, m->TryLock()) << "not recursive";
  m->Unlock();
  f.deleteMutex(m);
  std::unique_ptr<TPXBasAtiAtomicTemplate<unsigned int>> a(f.newAtomic(5));
  EXPECT_EQ(6u, (*a)++);
  EXPECT_EQ(5u, --*a);
  EXPECT_EQ(4294967295u, *a -= 6);
  *a = TPXBasAtiAtomicTemplate<unsigned int>(3);
  EXPECT_EQ(3u, static_cast<unsigned int>(*a));
}

}  // namespace
