// Mutexes: the placeholder before the switch, the same object after it, the single variant.
#include "KLDTPXBasCoreUtils.h"
#include "ati_TestFactories.h"
#include "gtest/gtest.h"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

using ati_test::FreshModel;
using TPXBasAtiMutexDefaultTest = FreshModel;

TEST_F(TPXBasAtiMutexDefaultTest, PlaceholderNeverBlocksAndUpgradesInPlace) {
  std::unique_ptr<TPXBasAtiMutex> m(TPXBasAtiThreadingModel::newMutex());
  auto* asDefault = dynamic_cast<TPXBasAtiMutexDefault*>(m.get());
  ASSERT_NE(nullptr, asDefault);
  m->Lock();
  m->Lock();  // the same thread again: a placeholder must not block
  EXPECT_EQ(1, m->TryLock());
  m->Unlock();
  m->Unlock();
  EXPECT_EQ(200, m->id());
  EXPECT_EQ(111, m->TPXBasAtiMutex::id());
  EXPECT_STREQ("AUTO_UPGRADING_MUTEX", asDefault->AsString());

  auto* factory = new ati_test::RecordingFactory(7);
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(factory));
  EXPECT_EQ(7, m->id()) << "the same object now forwards";
  EXPECT_STREQ("AUTO_UPGRADING_MUTEX", asDefault->AsString());
  EXPECT_EQ(0, m->TryLock()) << "TryLock forwards too";
  m->Lock();
  m->Unlock();
  EXPECT_EQ(1, factory->aliveMutexes);
  m.reset();
  EXPECT_EQ(0, factory->aliveMutexes) << "the delegate dies with the placeholder";
}

TEST_F(TPXBasAtiMutexDefaultTest, UpgradedMutexReallyExcludes) {
  std::unique_ptr<TPXBasAtiMutex> m(TPXBasAtiThreadingModel::newMutex());
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiStdThreadFact));
  EXPECT_EQ(TPXBasAtiStdThreadFact::kMutexId, m->id());

  m->Lock();
  int fromOtherThread = -1;
  std::thread([&] { fromOtherThread = m->TryLock(); }).join();
  EXPECT_EQ(0, fromOtherThread) << "held by this thread";
  m->Unlock();

  // A read-yield-write increment loses updates unless the mutex excludes.
  constexpr int kThreads = 4, kRounds = 5000;
  long shared = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&] {
      for (int r = 0; r < kRounds; ++r) {
        m->Lock();
        long seen = shared;
        if (r % 64 == 0) std::this_thread::yield();
        shared = seen + 1;
        m->Unlock();
      }
    });
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(kThreads * kRounds, shared);
}

TEST_F(TPXBasAtiMutexDefaultTest, FactoryWithoutMutexesLeavesThePlaceholder) {
  std::unique_ptr<TPXBasAtiMutex> m(TPXBasAtiThreadingModel::newMutex());
  auto* asDefault = static_cast<TPXBasAtiMutexDefault*>(m.get());
  ati_test::RecordingFactory none(7, false);
  EXPECT_FALSE(asDefault->UpgradeYourself(&none));
  EXPECT_EQ(200, m->id());
  m->Lock();
  m->Lock();
  EXPECT_EQ(1, m->TryLock());

  ati_test::RecordingFactory some(9);
  EXPECT_TRUE(asDefault->UpgradeYourself(&some));
  EXPECT_EQ(9, m->id());
  EXPECT_TRUE(asDefault->UpgradeYourself(&none)) << "an upgraded mutex keeps its lock";
  EXPECT_EQ(9, m->id());
  m.reset();
  EXPECT_EQ(0, some.aliveMutexes);
}

TEST(TPXBasAtiMutexSingle, DoesNothing) {
  TPXBasAtiSingleThreadFact single;
  std::unique_ptr<TPXBasAtiMutex> m(single.newMutex());
  m->Lock();
  m->Lock();
  EXPECT_EQ(1, m->TryLock());
  m->Unlock();
  EXPECT_EQ(112, m->id());
  EXPECT_STREQ("SINGLE_THREADED_MUTEX", static_cast<TPXBasAtiMutexSingle*>(m.get())->AsString());
}

TEST(TPXBasAtiMutexDefaultDeathTest, UpgradeToNoFactory) {
  TPXBasAtiDefaultThreadFact factory;
  std::unique_ptr<TPXBasAtiMutex> m(factory.newMutex());
  EXPECT_DEATH(static_cast<TPXBasAtiMutexDefault*>(m.get())->UpgradeYourself(nullptr),
               "AssertionFailed:f != 0 \\[TPXBase/TPXBasAti.m/src/TPXBasAtiMutexDefault:[0-9]+\\]");
}

}  // namespace
