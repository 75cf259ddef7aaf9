// The default factory: what it registers, the upgrade pass, taking mutexes back.
#include "KLDTPXBasCoreUtils.h"
#include "ati_TestFactories.h"
#include "gtest/gtest.h"

#include <memory>
#include <string>
#include <vector>

namespace {

using Log = std::vector<std::string>;
using TPXBasAtiDefaultThreadFactTest = ati_test::FreshModel;

TEST_F(TPXBasAtiDefaultThreadFactTest, UpgradePassVisitsEveryEntryInOrderEvenAfterAFailure) {
  TPXBasAtiDefaultThreadFact f;
  EXPECT_FALSE(f.multiThread());
  std::unique_ptr<TPXBasAtiMutex> m1(f.newMutex());
  std::unique_ptr<TPXBasAtiCondVar> cv(f.newCondVar());
  std::unique_ptr<TPXBasAtiAtomicTemplate<unsigned int>> a(f.newAtomic(4));
  std::unique_ptr<TPXBasAtiBarrier> b(f.newBarrier());
  std::unique_ptr<TPXBasAtiMutex> m2(f.newMutex());
  EXPECT_EQ(4u, f.Registry().Count()) << "the atomic's guard comes from the threading model";

  ati_test::RecordingFactory noMutexes(7, false), good(8);
  EXPECT_FALSE(f.UpgradeAllIssuedPrimitives(&noMutexes));
  EXPECT_EQ((Log{"M", "C", "B", "M"}), noMutexes.log);
  EXPECT_EQ(502, cv->id()) << "upgraded although a mutex before it failed";
  EXPECT_TRUE(f.UpgradeAllIssuedPrimitives(&good));
  EXPECT_EQ((Log{"M", "M"}), good.log) << "only the mutexes still needed a primitive";
  EXPECT_EQ(8, m2->id());
  m1.reset();
  m2.reset();
  EXPECT_EQ(0, good.aliveMutexes);
}

TEST_F(TPXBasAtiDefaultThreadFactTest, MutexesTakenBackAreNotVisited) {
  TPXBasAtiDefaultThreadFact f;
  TPXBasAtiMutex* viaInterface = f.newMutex();
  TPXBasAtiMutex* viaClass = f.newMutex();
  std::unique_ptr<TPXBasAtiMutex> kept(f.newMutex());
  f.deleteMutex(viaInterface);
  f.deleteMutex(static_cast<TPXBasAtiMutexDefault*>(viaClass));
  int alive = 0;
  ati_test::CountingMutex foreign(3, &alive);
  f.deleteMutex(&foreign);  // not the factory's class: neither taken out nor destroyed
  EXPECT_EQ(1, alive);

  ati_test::RecordingFactory target(7);
  EXPECT_TRUE(f.UpgradeAllIssuedPrimitives(&target));
  EXPECT_EQ((Log{"M"}), target.log);
  kept.reset();
}

TEST_F(TPXBasAtiDefaultThreadFactTest, UpgradeToAnotherDefaultFactoryRegistersTheDelegates) {
  TPXBasAtiDefaultThreadFact first;
  std::unique_ptr<TPXBasAtiMutex> m(first.newMutex());
  auto second = std::make_unique<TPXBasAtiDefaultThreadFact>();
  EXPECT_TRUE(first.UpgradeAllIssuedPrimitives(second.get()));
  EXPECT_EQ(1u, second->Registry().Count());
  EXPECT_EQ(200, m->id()) << "the delegate is itself a placeholder";
  m.reset();  // its delegate leaves the second registry
  EXPECT_EQ(nullptr, second->Registry().Get(0));
}

TEST(TPXBasAtiSingleThreadFact, IssuesNoOpsAndTakesMutexesBack) {
  TPXBasAtiSingleThreadFact f;
  EXPECT_TRUE(f.UpgradeAllIssuedPrimitives(&f));
  std::unique_ptr<TPXBasAtiAtomicTemplate<unsigned int>> a(f.newAtomic(5));
  EXPECT_EQ(407, a->id());
  int alive = 0;
  f.deleteMutex(new ati_test::CountingMutex(1, &alive));
  EXPECT_EQ(0, alive);
  EXPECT_STREQ("DEFAULT_NO_THREADS", ati_test::RecordingFactory().AsString());
}

TEST(TPXBasAtiDefaultThreadFactDeathTest, UpgradeToNoFactory) {
  TPXBasAtiDefaultThreadFact f;
  EXPECT_DEATH(f.UpgradeAllIssuedPrimitives(nullptr),
               "AssertionFailed:f != 0 \\[TPXBase/TPXBasAti.m/src/TPXBasAtiDefaultThreadFact:");
}

}  // namespace
