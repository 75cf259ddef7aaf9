// Atomic counters: the unsynchronised template and the mutex-guarded Default counters through
// every interface (whose operators work only by dispatching to the overridden arithmetic),
// and their guards. Counting under threads after the switch is shown with
// the threading model's switch.
#include "KLDTPXBasCoreUtils.h"
#include "ati_TestFactories.h"
#include "gtest/gtest.h"

#include <memory>

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
  TPXBasAtiSingleThreadFact single;
  std::unique_ptr<TPXBasAtiAtomicTemplate<unsigned int>> plain(single.newAtomic(5)),
      guarded(TPXBasAtiThreadingModel::newAtomic(5));
  struct Case {
    TPXBasAtiAtomicTemplate<unsigned int>* a;
    int id;
  } cases[] = {{plain.get(), 407}, {guarded.get(), 405}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.id);
    TPXBasAtiAtomicTemplate<unsigned int>& a = *c.a;
    EXPECT_EQ(c.id, a.id());
    EXPECT_EQ(6u, a++);
    EXPECT_EQ(7u, ++a);
    EXPECT_EQ(6u, a--);
    EXPECT_EQ(16u, a += 10);
    EXPECT_EQ(4294967295u, a -= 17) << "wraps";
    a = TPXBasAtiAtomicTemplate<unsigned int>(9);  // reaches the value the counter reports
    EXPECT_EQ(9u, static_cast<unsigned int>(a));
  }
  TPXBasAtiAtomicDefault b(3);
  static_cast<TPXBasAtiAtomicDefault&>(*guarded) = b;
  EXPECT_EQ(3u, static_cast<unsigned int>(*guarded));
  b = 4u;
  EXPECT_EQ(4u, static_cast<unsigned int>(b));

  TPXBasAtiAtomicTemplate<double> d(0.5);
  EXPECT_DOUBLE_EQ(1.5, ++d);
  EXPECT_DOUBLE_EQ(-0.5, d -= 2.0);
  EXPECT_EQ(407, d.id());
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

}  // namespace
