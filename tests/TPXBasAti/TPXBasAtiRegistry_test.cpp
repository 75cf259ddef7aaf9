// The registry of issued placeholders: growth, order, taking out, the iterator's bounds.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

#include <memory>
#include <vector>

namespace {

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
