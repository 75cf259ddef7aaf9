// The default factory: what it registers, its upgrade pass and taking mutexes back; the
// interface's defaults; the registry of issued placeholders and its iterator.
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
  EXPECT_TRUE(last.UpgradeAllIssuedPrimitives(&last)) << "interface default: nothing issued";
  EXPECT_STREQ("DEFAULT_NO_THREADS", last.TPXBasAtiThreadFactory::AsString());
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

class Probe : public TPXBasAtiBarrier, public TPXBasAtiUpgradable {
 public:
  explicit Probe(int* destroyed = nullptr) : m_destroyed(destroyed) {}
  ~Probe() override {
    if (m_destroyed) ++*m_destroyed;
  }
  void BarrierSync(unsigned int) override {}
  bool UpgradeYourself(TPXBasAtiThreadFactory*) override { return true; }

 private:
  int* m_destroyed;
};

std::vector<TPXBasAtiUpgradable*> Walk(const TPXBasAtiRegistry& r) {
  std::vector<TPXBasAtiUpgradable*> seen;
  TPXBasAtiRegistryIterator it(r);
  for (it.First(); !it.IsDone(); it.Next()) seen.push_back(it.CurrentValue());
  return seen;
}

TEST(TPXBasAtiRegistry, GrowsBy128AndKeepsRegistrationOrder) {
  TPXBasAtiRegistry r;
  std::vector<std::unique_ptr<Probe>> probes;
  std::vector<TPXBasAtiUpgradable*> expected;
  const unsigned int rows[][2] = {{0, 128}, {128, 128}, {129, 256}, {256, 256}, {257, 384}};
  for (const auto& row : rows) {
    while (probes.size() < row[0]) {
      probes.push_back(std::make_unique<Probe>());
      r.Register(probes.back().get());
      expected.push_back(probes.back().get());
    }
    EXPECT_EQ(row[0], r.Count());
    EXPECT_EQ(row[1], r.Capacity()) << "after " << row[0] << " registrations";
  }
  EXPECT_EQ(expected, Walk(r));
}

TEST(TPXBasAtiRegistry, ExpungeAndDeleteLeaveHolesThatAreNeverReused) {
  TPXBasAtiRegistry r;
  int destroyed = 0;
  Probe kept;
  auto* doomed = new Probe(&destroyed);
  r.Register(doomed);
  r.Register(&kept);
  r.Register(doomed);
  r.Expunge(nullptr);
  r.Delete(doomed);  // both entries, one destruction
  EXPECT_EQ(1, destroyed);
  r.Expunge(&kept);
  r.Register(&kept);
  EXPECT_EQ((std::vector<TPXBasAtiUpgradable*>{nullptr, nullptr, nullptr, &kept}), Walk(r));
}

TEST(TPXBasAtiRegistryIterator, BoundsOfTheWalk) {
  TPXBasAtiRegistry r;
  Probe a;
  r.Register(&a);
  TPXBasAtiRegistryIterator it(r);
  EXPECT_TRUE(it.IsDone()) << "not started";
  it.First();
  EXPECT_EQ(&a, it.CurrentValue());
  r.Register(&a);  // after First(): not part of this walk
  it.Next();
  EXPECT_TRUE(it.IsDone());
  EXPECT_EQ(nullptr, it.CurrentValue()) << "the end position gives null";
}

TEST(TPXBasAtiRegistryIteratorDeathTest, PositionOutsideTheWalk) {
  TPXBasAtiRegistry r;
  TPXBasAtiRegistryIterator it(r);
  EXPECT_DEATH(it.CurrentValue(),
               "AssertionFailed:-1 < m_current && m_current <= m_count "
               "\\[TPXBase/TPXBasAti.m/src/TPXBasAtiRegistry:[0-9]+\\]");
  it.First();
  it.Next();
  EXPECT_DEATH(it.CurrentValue(), "AssertionFailed:-1 < m_current && m_current <= m_count");
}

}  // namespace
