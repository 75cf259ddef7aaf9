// Mutexes: the placeholder before the switch, the same object after it, the single variant.
#include "KLDTPXBasCoreUtils.h"
#include "ati_TestFactories.h"
#include "gtest/gtest.h"

#include <memory>
#include <thread>
#include <vector>

namespace {

using TPXBasAtiMutexDefaultTest = ati_test::FreshModel;

TEST_F(TPXBasAtiMutexDefaultTest, PlaceholderNeverBlocksAndUpgradesInPlace) {
  std::unique_ptr<TPXBasAtiMutex> m(TPXBasAtiThreadingModel::newMutex());
  auto* asDefault = dynamic_cast<TPXBasAtiMutexDefault*>(m.get());
  ASSERT_NE(nullptr, asDefault);
  m->Lock();
  m->Lock();  // the same thread again: a placeholder must not block
  EXPECT_EQ(1, m->TryLock());
  EXPECT_EQ(200, m->id());
  EXPECT_EQ(111, m->TPXBasAtiMutex::id());

  ati_test::RecordingFactory none(7, false), some(9);
  EXPECT_FALSE(asDefault->UpgradeYourself(&none));
  EXPECT_EQ(200, m->id()) << "a factory without mutexes leaves the placeholder";
  EXPECT_TRUE(asDefault->UpgradeYourself(&some));
  EXPECT_EQ(9, m->id()) << "the same object now forwards";
  EXPECT_EQ(0, m->TryLock());
  EXPECT_TRUE(asDefault->UpgradeYourself(&none)) << "an upgraded mutex keeps its lock";
  EXPECT_EQ(9, m->id());
  EXPECT_STREQ("AUTO_UPGRADING_MUTEX", asDefault->AsString());
  m.reset();
  EXPECT_EQ(0, some.aliveMutexes) << "the delegate dies with the placeholder";

  TPXBasAtiSingleThreadFact single;
  std::unique_ptr<TPXBasAtiMutex> s(single.newMutex());
  s->Lock();
  s->Lock();
  EXPECT_EQ(1, s->TryLock());
  EXPECT_EQ(112, s->id());
  EXPECT_STREQ("SINGLE_THREADED_MUTEX", static_cast<TPXBasAtiMutexSingle*>(s.get())->AsString());
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
  long shared = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int r = 0; r < 5000; ++r) {
        m->Lock();
        long seen = shared;
        if (r % 64 == 0) std::this_thread::yield();
        shared = seen + 1;
        m->Unlock();
      }
    });
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(20000, shared);
}

TEST(TPXBasAtiMutexDefaultDeathTest, UpgradeToNoFactory) {
  TPXBasAtiDefaultThreadFact factory;
  std::unique_ptr<TPXBasAtiMutex> m(factory.newMutex());
  EXPECT_DEATH(static_cast<TPXBasAtiMutexDefault*>(m.get())->UpgradeYourself(nullptr),
               "AssertionFailed:f != 0 \\[TPXBase/TPXBasAti.m/src/TPXBasAtiMutexDefault:[0-9]+\\]");
}

}  // namespace
