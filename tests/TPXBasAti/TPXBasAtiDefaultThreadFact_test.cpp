// The two factories of the library: what the default one registers, its upgrade pass and
// taking mutexes back; the single-threaded one.
#include "KLDTPXBasCoreUtils.h"
#include "ati_TestFactories.h"
#include "gtest/gtest.h"

#include <memory>
#include <string>
#include <vector>

namespace {

using Log = std::vector<std::string>;
using TPXBasAtiDefaultThreadFactTest = ati_test::FreshModel;

TEST_F(TPXBasAtiDefaultThreadFactTest, UpgradePassVisitsEveryEntryEvenAfterAFailure) {
  TPXBasAtiDefaultThreadFact f;
  std::unique_ptr<TPXBasAtiMutex> m1(f.newMutex());
  std::unique_ptr<TPXBasAtiCondVar> cv(f.newCondVar());
  std::unique_ptr<TPXBasAtiAtomicTemplate<unsigned int>> a(f.newAtomic(4));
  std::unique_ptr<TPXBasAtiMutex> m2(f.newMutex());
  EXPECT_EQ(3u, f.Registry().Count()) << "the atomic's guard comes from the threading model";

  ati_test::RecordingFactory noMutexes(7, false), good(8);
  EXPECT_FALSE(f.UpgradeAllIssuedPrimitives(&noMutexes));
  EXPECT_EQ((Log{"M", "C", "M"}), noMutexes.log);
  EXPECT_EQ(502, cv->id()) << "upgraded although a mutex before it failed";
  EXPECT_TRUE(f.UpgradeAllIssuedPrimitives(&good));
  EXPECT_EQ((Log{"M", "M"}), good.log) << "only the mutexes still needed a primitive";
  EXPECT_EQ(8, m2->id());

  // Mutexes taken back through either deleteMutex are destroyed and never visited again.
  f.deleteMutex(m1.release());
  f.deleteMutex(static_cast<TPXBasAtiMutexDefault*>(m2.release()));
  EXPECT_EQ(0, good.aliveMutexes);
  int alive = 0;
  ati_test::CountingMutex foreign(3, &alive);
  f.deleteMutex(&foreign);  // not the factory's class: neither taken out nor destroyed
  EXPECT_EQ(1, alive);
  ati_test::RecordingFactory last;
  EXPECT_TRUE(f.UpgradeAllIssuedPrimitives(&last));
  EXPECT_EQ((Log{}), last.log);
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
  int alive = 0;
  f.deleteMutex(new ati_test::CountingMutex(1, &alive));
  EXPECT_EQ(0, alive);
  EXPECT_STREQ("DEFAULT_NO_THREADS", ati_test::RecordingFactory().AsString());
}

}  // namespace
