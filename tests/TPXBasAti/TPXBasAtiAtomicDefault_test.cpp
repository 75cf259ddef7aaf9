// Mutex-guarded atomics: arithmetic, identifiers, guards before and after the switch, copies.
#include "KLDTPXBasCoreUtils.h"
#include "ati_TestFactories.h"
#include "gtest/gtest.h"

#include <memory>
#include <thread>
#include <vector>

namespace {

using ati_test::FreshModel;

// Only a derived class supplies the upgrade of the int counter.
class IntCounter : public TPXBasAtiAtomicIntDefault {
 public:
  explicit IntCounter(int v) : TPXBasAtiAtomicIntDefault(v) {}
  using TPXBasAtiAtomicIntDefault::operator=;
  bool UpgradeYourself(TPXBasAtiThreadFactory*) override { return true; }
};

using TPXBasAtiAtomicDefaultTest = FreshModel;

TEST_F(TPXBasAtiAtomicDefaultTest, ArithmeticWrapsAndReturnsThisCallsResult) {
  TPXBasAtiAtomicDefault a(5);
  EXPECT_EQ(6u, a++);
  EXPECT_EQ(7u, ++a);
  EXPECT_EQ(6u, a--);
  EXPECT_EQ(6u, static_cast<unsigned int>(a));

  TPXBasAtiAtomicDefault zero(0);
  EXPECT_EQ(4294967295u, zero.Decrement(1));
  EXPECT_EQ(1u, zero.Increment(2));

  IntCounter i(2147483647);
  EXPECT_EQ(-2147483647 - 1, ++i) << "int wraps in two's complement";
  EXPECT_EQ(2147483647, i.Decrement(1));
  EXPECT_EQ(-2147483647 - 1, i += 1);
}

TEST_F(TPXBasAtiAtomicDefaultTest, IdentifiersThroughEveryInterfacePointer) {
  std::unique_ptr<TPXBasAtiAtomicTemplate<unsigned int>> issued(
      TPXBasAtiThreadingModel::newAtomic(3));
  EXPECT_EQ(405, issued->id()) << "the default factory issues TPXBasAtiAtomicDefault";
  auto* asDefault = dynamic_cast<TPXBasAtiAtomicDefault*>(issued.get());
  ASSERT_NE(nullptr, asDefault);
  EXPECT_EQ(405, asDefault->id());
  EXPECT_EQ(407, asDefault->TPXBasAtiAtomicTemplate<unsigned int>::id());

  IntCounter i(0);
  TPXBasAtiAtomicTemplate<int>* asTemplate = &i;
  EXPECT_EQ(406, asTemplate->id());
  EXPECT_EQ(406, static_cast<TPXBasAtiAtomicIntDefault&>(i).id());

  TPXBasAtiSingleThreadFact single;
  std::unique_ptr<TPXBasAtiAtomicTemplate<unsigned int>> plain(single.newAtomic(3));
  EXPECT_EQ(407, plain->id());
}

TEST_F(TPXBasAtiAtomicDefaultTest, AssignmentsChangeTheValueTheCounterReports) {
  TPXBasAtiAtomicDefault a(1), b(9);
  a = 4u;
  EXPECT_EQ(4u, static_cast<unsigned int>(a));
  a = b;
  EXPECT_EQ(9u, static_cast<unsigned int>(a));
  TPXBasAtiAtomicTemplate<unsigned int>& viaInterface = a;
  TPXBasAtiAtomicTemplate<unsigned int> other(11);
  viaInterface = other;
  EXPECT_EQ(11u, static_cast<unsigned int>(a)) << "interface assignment reaches the value";
  viaInterface = static_cast<TPXBasAtiAtomicTemplate<unsigned int>&>(b);
  EXPECT_EQ(9u, static_cast<unsigned int>(a));

  IntCounter i(1), j(-8);
  i = j;
  EXPECT_EQ(-8, static_cast<int>(i));
  i = 5;
  EXPECT_EQ(5, static_cast<int>(i));
}

TEST_F(TPXBasAtiAtomicDefaultTest, GuardsAreUpgradedAndCopiesOwnTheirGuard) {
  TPXBasAtiAtomicDefault early(10);
  auto copy = std::make_unique<TPXBasAtiAtomicDefault>(early);
  EXPECT_EQ(10u, static_cast<unsigned int>(*copy));
  IntCounter earlyInt(0);

  auto* factory = new ati_test::RecordingFactory(7);
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(factory));
  EXPECT_EQ(3u, factory->log.size()) << "the guards of early, its copy and earlyInt";
  EXPECT_EQ(3, factory->aliveMutexes);

  EXPECT_EQ(11u, early.Increment(1));
  EXPECT_EQ(12u, copy->Increment(2));
  copy.reset();  // destroys the copy's guard only
  EXPECT_EQ(2, factory->aliveMutexes);
  EXPECT_EQ(10u, early.Decrement(1)) << "the source's guard still works";
  EXPECT_EQ(1, ++earlyInt);

  {
    TPXBasAtiAtomicDefault late(0);  // guard straight from the installed factory
    EXPECT_EQ(3, factory->aliveMutexes);
  }
  EXPECT_EQ(2, factory->aliveMutexes);
}

TEST_F(TPXBasAtiAtomicDefaultTest, EarlyCounterCountsExactlyUnderThreadsAfterTheSwitch) {
  TPXBasAtiAtomicDefault counter(0);
  const TPXBasAtiAtomicTemplate<unsigned int>* identity = &counter;
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
  EXPECT_EQ(identity, &counter);
}

}  // namespace
