// Mutex-guarded atomics: arithmetic, identifiers, guards before and after the switch, copies.
#include "KLDTPXBasCoreUtils.h"
#include "ati_TestFactories.h"
#include "gtest/gtest.h"

#include <memory>
#include <thread>
#include <vector>

namespace {

// Only a derived class supplies the upgrade of the int counter.
class IntCounter : public TPXBasAtiAtomicIntDefault {
 public:
  explicit IntCounter(int v) : TPXBasAtiAtomicIntDefault(v) {}
  using TPXBasAtiAtomicIntDefault::operator=;
  bool UpgradeYourself(TPXBasAtiThreadFactory*) override { return true; }
};

using TPXBasAtiAtomicDefaultTest = ati_test::FreshModel;

TEST_F(TPXBasAtiAtomicDefaultTest, ArithmeticAndAssignmentsThroughEveryInterface) {
  std::unique_ptr<TPXBasAtiAtomicTemplate<unsigned int>> issued(
      TPXBasAtiThreadingModel::newAtomic(5));
  TPXBasAtiAtomicTemplate<unsigned int>& a = *issued;
  EXPECT_EQ(405, a.id());
  EXPECT_EQ(6u, a++);
  EXPECT_EQ(7u, ++a);
  EXPECT_EQ(6u, a--);
  EXPECT_EQ(4294967295u, a -= 7) << "wraps";
  TPXBasAtiAtomicDefault b(9);
  a = b;  // through the interface: reaches the value the counter reports
  EXPECT_EQ(9u, static_cast<unsigned int>(a));
  b = 3u;
  static_cast<TPXBasAtiAtomicDefault&>(a) = b;
  EXPECT_EQ(3u, static_cast<unsigned int>(a));

  IntCounter i(2147483647);
  TPXBasAtiAtomicTemplate<int>& it = i;
  EXPECT_EQ(406, it.id());
  EXPECT_EQ(-2147483647 - 1, ++it) << "int wraps in two's complement";
  EXPECT_EQ(2147483647, it.Decrement(1));
  i = -8;
  EXPECT_EQ(-8, static_cast<int>(it));
}

TEST_F(TPXBasAtiAtomicDefaultTest, GuardsAreUpgradedAndCopiesOwnTheirGuard) {
  TPXBasAtiAtomicDefault early(10);
  auto copy = std::make_unique<TPXBasAtiAtomicDefault>(early);
  EXPECT_EQ(10u, static_cast<unsigned int>(*copy));
  IntCounter earlyInt(0);

  auto* factory = new ati_test::RecordingFactory(7);
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(factory));
  EXPECT_EQ(3, factory->aliveMutexes) << "the guards of early, its copy and earlyInt";
  EXPECT_EQ(12u, copy->Increment(2));
  copy.reset();  // destroys the copy's guard only
  EXPECT_EQ(2, factory->aliveMutexes);
  EXPECT_EQ(9u, early.Decrement(1)) << "the source's guard still works";
  EXPECT_EQ(1, ++earlyInt);
}

TEST_F(TPXBasAtiAtomicDefaultTest, EarlyCounterCountsExactlyUnderThreadsAfterTheSwitch) {
  TPXBasAtiAtomicDefault counter(0);
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiStdThreadFact));
  constexpr int kThreads = 4, kRounds = 20000;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&] {
      for (int r = 0; r < kRounds; ++r) {
        counter++;
        counter += 2;
        counter.Decrement(1);
      }
    });
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(2u * kThreads * kRounds, static_cast<unsigned int>(counter));
}

}  // namespace
