// The registry of issued placeholders: growth, order, taking out, links, the iterator.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

#include <memory>
#include <vector>

namespace {

// Records the order in which it is upgraded.
class Probe : public TPXBasAtiUpgradable {
 public:
  Probe(int n, std::vector<int>* order) : m_n(n), m_order(order) {}
  bool UpgradeYourself(TPXBasAtiThreadFactory*) override {
    m_order->push_back(m_n);
    return true;
  }

 private:
  int m_n;
  std::vector<int>* m_order;
};

std::vector<TPXBasAtiUpgradable*> Walk(const TPXBasAtiRegistry& r) {
  std::vector<TPXBasAtiUpgradable*> seen;
  TPXBasAtiRegistryIterator it(r);
  for (it.First(); !it.IsDone(); it.Next()) seen.push_back(it.CurrentValue());
  return seen;
}

TEST(TPXBasAtiRegistry, GrowsBy128AndKeepsRegistrationOrder) {
  TPXBasAtiRegistry r;
  EXPECT_EQ(128u, r.Capacity());
  EXPECT_EQ(0u, r.Count());
  std::vector<int> order;
  std::vector<std::unique_ptr<Probe>> probes;
  const unsigned int sizes[] = {128, 129, 256, 257};
  const unsigned int capacities[] = {128, 256, 256, 384};
  for (int row = 0; row < 4; ++row) {
    while (probes.size() < sizes[row]) {
      probes.push_back(std::make_unique<Probe>(static_cast<int>(probes.size()), &order));
      r.Register(probes.back().get());
    }
    EXPECT_EQ(sizes[row], r.Count());
    EXPECT_EQ(capacities[row], r.Capacity()) << "after " << sizes[row] << " registrations";
  }
  std::vector<TPXBasAtiUpgradable*> seen = Walk(r);
  ASSERT_EQ(257u, seen.size());
  for (unsigned int i = 0; i < seen.size(); ++i) ASSERT_EQ(probes[i].get(), seen[i]) << i;
}

TEST(TPXBasAtiRegistry, ExpungeLeavesAHoleAndTheCountStays) {
  TPXBasAtiRegistry r;
  std::vector<int> order;
  Probe a(1, &order), b(2, &order);
  r.Register(&a);
  r.Register(&b);
  r.Register(&a);
  r.Expunge(&a);
  r.Expunge(nullptr);
  EXPECT_EQ(3u, r.Count());
  EXPECT_EQ(nullptr, r.Get(0));
  EXPECT_EQ(&b, r.Get(1));
  EXPECT_EQ(nullptr, r.Get(2));
  r.Register(&a);
  EXPECT_EQ(&a, r.Get(3)) << "positions are never reused";
}

TEST(TPXBasAtiRegistry, LinkedPrimitivesLeaveOnTheirOwnWhicheverDiesFirst) {
  TPXBasAtiDefaultThreadFact factory;
  TPXBasAtiMutex* m = factory.newMutex();
  TPXBasAtiCondVar* cv = factory.newCondVar();
  TPXBasAtiBarrier* b = factory.newBarrier();
  const TPXBasAtiRegistry& r = factory.Registry();
  ASSERT_EQ(3u, r.Count());
  delete cv;  // destroyed directly, not through the factory
  EXPECT_EQ(nullptr, r.Get(1));
  EXPECT_NE(nullptr, r.Get(0));
  EXPECT_NE(nullptr, r.Get(2));

  // A registry that dies first unlinks what it still lists.
  auto other = std::make_unique<TPXBasAtiDefaultThreadFact>();
  TPXBasAtiMutex* orphan = other->newMutex();
  other.reset();
  delete orphan;  // must not touch the dead registry (caught by the address sanitizer)

  // Expunged, then destroyed: the primitive no longer reaches the registry either.
  const_cast<TPXBasAtiRegistry&>(r).Expunge(dynamic_cast<TPXBasAtiUpgradable*>(b));
  delete b;
  delete m;
  EXPECT_EQ(std::vector<TPXBasAtiUpgradable*>(3, nullptr), Walk(r));
}

class CountedMutex : public TPXBasAtiMutex, public TPXBasAtiUpgradable {
 public:
  explicit CountedMutex(int* destroyed) : m_destroyed(destroyed) {}
  ~CountedMutex() override { ++*m_destroyed; }
  void Lock() override {}
  void Unlock() override {}
  int TryLock() override { return 1; }
  int id() const override { return 1; }
  bool UpgradeYourself(TPXBasAtiThreadFactory*) override { return true; }

 private:
  int* m_destroyed;
};

TEST(TPXBasAtiRegistry, DeleteDestroysTheWholePrimitiveOnce) {
  TPXBasAtiRegistry r;
  int destroyed = 0;
  auto* m = new CountedMutex(&destroyed);
  r.Register(m);
  r.Register(m);
  r.Delete(m);
  EXPECT_EQ(1, destroyed);
  EXPECT_EQ(nullptr, r.Get(0));
  EXPECT_EQ(nullptr, r.Get(1));
  r.Delete(nullptr);
}

TEST(TPXBasAtiRegistryIterator, BoundsOfTheWalk) {
  TPXBasAtiRegistry r;
  std::vector<int> order;
  Probe a(1, &order);
  r.Register(&a);
  TPXBasAtiRegistryIterator it(r);
  EXPECT_TRUE(it.IsDone()) << "not started";
  it.First();
  EXPECT_FALSE(it.IsDone());
  EXPECT_EQ(&a, it.CurrentValue());
  r.Register(&a);  // after First(): not part of this walk
  it.Next();
  EXPECT_TRUE(it.IsDone());
  EXPECT_EQ(nullptr, it.CurrentValue()) << "the end position gives null";

  TPXBasAtiRegistry empty;
  TPXBasAtiRegistryIterator none(empty);
  none.First();
  EXPECT_TRUE(none.IsDone());
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
