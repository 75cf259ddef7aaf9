// The primitives of both factories before any switch: mutexes, condition variables, barriers
// and atomic counters (through every interface), the upgrade of placeholders and guards in
// place, and their assertions.
#include "KLDTPXBasCoreUtils.h"
#include "ati_TestFactories.h"
#include "gtest/gtest.h"

#include <functional>
#include <memory>

namespace {

using TPXBasAtiPrimitivesTest = ati_test::FreshModel;

TEST_F(TPXBasAtiPrimitivesTest, IdentifiersNamesAndNoOpsOfEveryKind) {
  TPXBasAtiDefaultThreadFact auto_;
  TPXBasAtiSingleThreadFact single;
  std::unique_ptr<TPXBasAtiMutex> m(auto_.newMutex()), sm(single.newMutex());
  std::unique_ptr<TPXBasAtiCondVar> cv(auto_.newCondVar()), scv(single.newCondVar());
  std::unique_ptr<TPXBasAtiBarrier> b(auto_.newBarrier()), sb(single.newBarrier());
  struct Case {
    const char* what;
    int got, expected;
  } cases[] = {
      {"placeholder condvar", cv->id(), 501},
      {"placeholder barrier", b->id(), 303},
      {"single barrier", sb->id(), 302},
  };
  for (const Case& c : cases) EXPECT_EQ(c.expected, c.got) << c.what;
  EXPECT_STREQ("SINGLE_THREADED_MUTEX", dynamic_cast<TPXBasAtiMutexSingle&>(*sm).AsString());
  EXPECT_STREQ("AUTO_UPGRADING_CONDVAR", dynamic_cast<TPXBasAtiCondVarDefault&>(*cv).AsString());
  EXPECT_STREQ("SINGLE_THREADED_CONDVAR", dynamic_cast<TPXBasAtiCondVarSingle&>(*scv).AsString());
  for (TPXBasAtiMutex* mutex : {m.get(), sm.get()}) {
    mutex->Lock();
    mutex->Lock();  // the same thread again: a no-op lock must not block
    EXPECT_EQ(1, mutex->TryLock());
  }
  b->BarrierSync(5);  // alone, yet both return
  sb->BarrierSync(5);
}

TEST_F(TPXBasAtiPrimitivesTest, PlaceholderUpgradesInPlaceOnceItGetsAPrimitive) {
  std::unique_ptr<TPXBasAtiMutex> m(TPXBasAtiThreadingModel::newMutex());
  // The switch succeeds although the factory gives no mutex; the placeholder stays.
  EXPECT_TRUE(TPXBasAtiThreadingModel::setBehavior(new ati_test::RecordingFactory(7, false)));
  EXPECT_TRUE(TPXBasAtiThreadingModel::established());
  EXPECT_EQ(200, m->id());
  auto& asDefault = dynamic_cast<TPXBasAtiMutexDefault&>(*m);
  ati_test::RecordingFactory none(7, false), some(9);
  EXPECT_TRUE(asDefault.UpgradeYourself(&some));
  EXPECT_EQ(9, m->id()) << "the same object now forwards";
  EXPECT_EQ(0, m->TryLock());
  EXPECT_TRUE(asDefault.UpgradeYourself(&none)) << "an upgraded mutex keeps its lock";
  EXPECT_EQ(9, m->id());
  EXPECT_STREQ("AUTO_UPGRADING_MUTEX", asDefault.AsString());
  m.reset();
  EXPECT_EQ(0, some.aliveMutexes) << "the delegate dies with the placeholder";
}

// Only a derived class supplies the upgrade of the int counter.
class IntCounter : public TPXBasAtiAtomicIntDefault {
 public:
  explicit IntCounter(int v) : TPXBasAtiAtomicIntDefault(v) {}
  using TPXBasAtiAtomicIntDefault::operator=;
  bool UpgradeYourself(TPXBasAtiThreadFactory*) override { return true; }
};

TEST_F(TPXBasAtiPrimitivesTest, ArithmeticAndAssignmentsThroughEveryInterface) {
  TPXBasAtiSingleThreadFact single;
  std::unique_ptr<TPXBasAtiAtomicTemplate<unsigned int>> plain(single.newAtomic(5)),
      guarded(TPXBasAtiThreadingModel::newAtomic(5));
  for (auto* a : {plain.get(), guarded.get()}) {
    SCOPED_TRACE(a->id());
    EXPECT_EQ(6u, (*a)++);
    EXPECT_EQ(7u, ++*a);
    EXPECT_EQ(6u, (*a)--);
    EXPECT_EQ(16u, *a += 10);
    EXPECT_EQ(4294967295u, *a -= 17) << "wraps";
    *a = TPXBasAtiAtomicTemplate<unsigned int>(9);  // reaches the value the counter reports
    EXPECT_EQ(9u, static_cast<unsigned int>(*a));
  }
  EXPECT_EQ(407, plain->id());
  EXPECT_EQ(405, guarded->id());
  TPXBasAtiAtomicDefault b(3);
  static_cast<TPXBasAtiAtomicDefault&>(*guarded) = b;
  EXPECT_EQ(3u, static_cast<unsigned int>(*guarded));
  b = 4u;
  EXPECT_EQ(4u, static_cast<unsigned int>(b));

  IntCounter i(2147483647);
  TPXBasAtiAtomicTemplate<int>& it = i;
  EXPECT_EQ(406, it.id());
  EXPECT_EQ(-2147483647 - 1, ++it) << "int wraps in two's complement";
  EXPECT_EQ(2147483647, it.Decrement(1));
  i = -8;
  EXPECT_EQ(-8, static_cast<int>(it));
}

TEST_F(TPXBasAtiPrimitivesTest, GuardsAreUpgradedAndCopiesOwnTheirGuard) {
  TPXBasAtiAtomicDefault early(10);
  auto copy = std::make_unique<TPXBasAtiAtomicDefault>(early);
  EXPECT_EQ(10u, static_cast<unsigned int>(*copy));
  IntCounter earlyInt(0);
  IntCounter intCopy(earlyInt);

  auto* factory = new ati_test::RecordingFactory(7);
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(factory));
  EXPECT_EQ(4, factory->aliveMutexes) << "one guard each: early, its copy, the int counters";
  EXPECT_EQ(12u, copy->Increment(2));
  copy.reset();  // destroys the copy's guard only
  EXPECT_EQ(3, factory->aliveMutexes);
  EXPECT_EQ(9u, early.Decrement(1)) << "the source's guard still works";
  EXPECT_EQ(1, ++earlyInt);
}

TEST(TPXBasAtiPrimitivesDeathTest, PlaceholderAssertions) {
  TPXBasAtiDefaultThreadFact f;
  std::unique_ptr<TPXBasAtiMutex> m(f.newMutex());
  std::unique_ptr<TPXBasAtiCondVar> cv(f.newCondVar());
  std::unique_ptr<TPXBasAtiBarrier> b(f.newBarrier());
  struct Case {
    std::function<void()> call;
    const char* report;
  } cases[] = {
      {[&] { cv->Signal(); },
       "AssertionFailed:m_condVar != 0 "
       "\\[TPXBase/TPXBasAti.m/src/TPXBasAtiCondVarDefault:[0-9]+\\]"},
      {[&] { dynamic_cast<TPXBasAtiCondVarDefault&>(*cv).UpgradeYourself(nullptr); },
       "AssertionFailed:f != 0 \\[TPXBase/TPXBasAti.m/src/TPXBasAtiCondVarDefault:[0-9]+\\]"},
      {[&] { dynamic_cast<TPXBasAtiMutexDefault&>(*m).UpgradeYourself(nullptr); },
       "AssertionFailed:f != 0 \\[TPXBase/TPXBasAti.m/src/TPXBasAtiMutexDefault:[0-9]+\\]"},
      {[&] { dynamic_cast<TPXBasAtiBarrierDefault&>(*b).UpgradeYourself(nullptr); },
       "AssertionFailed:f \\[TPXBase/TPXBasAti.m/src/TPXBasAtiBarrierDefault:[0-9]+\\]"},
      {[&] { f.UpgradeAllIssuedPrimitives(nullptr); },
       "AssertionFailed:f != 0 \\[TPXBase/TPXBasAti.m/src/TPXBasAtiDefaultThreadFact:[0-9]+\\]"},
  };
  for (const Case& c : cases) EXPECT_DEATH(c.call(), c.report);
}

}  // namespace
