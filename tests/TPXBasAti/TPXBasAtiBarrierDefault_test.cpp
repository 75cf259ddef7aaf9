// Barriers: the placeholder returns at once; after the switch the same object holds threads.
#include "KLDTPXBasCoreUtils.h"
#include "ati_TestFactories.h"
#include "gtest/gtest.h"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

using TPXBasAtiBarrierDefaultTest = ati_test::FreshModel;

TEST_F(TPXBasAtiBarrierDefaultTest, PlaceholderPassesThenTheSameObjectHoldsThreads) {
  std::unique_ptr<TPXBasAtiBarrier> b(TPXBasAtiThreadingModel::newBarrier());
  b->BarrierSync(5);  // alone, yet it returns
  EXPECT_EQ(303, b->id());
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiStdThreadFact));
  EXPECT_EQ(TPXBasAtiStdThreadFact::kBarrierId, b->id());

  constexpr unsigned int kThreads = 3;
  std::atomic<unsigned int> arrived{0}, passedEarly{0};
  std::vector<std::thread> threads;
  for (unsigned int t = 0; t < kThreads; ++t)
    threads.emplace_back([&] {
      for (unsigned int round = 1; round <= 3; ++round) {
        arrived.fetch_add(1);
        b->BarrierSync(kThreads);
        if (arrived.load() < kThreads * round) passedEarly.fetch_add(1);
        b->BarrierSync(kThreads);  // nobody starts the next round before all checked
      }
    });
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(0u, passedEarly.load());
}

class PlainBarrier : public TPXBasAtiBarrier {
 public:
  void BarrierSync(unsigned int) override {}
};

TEST(TPXBasAtiBarrierSingle, IdentifiersOfTheOtherBarriers) {
  TPXBasAtiSingleThreadFact single;
  std::unique_ptr<TPXBasAtiBarrier> b(single.newBarrier());
  b->BarrierSync(3);
  EXPECT_EQ(302, b->id());
  PlainBarrier plain;
  EXPECT_EQ(301, static_cast<TPXBasAtiBarrier&>(plain).id()) << "the interface's own id";
}

TEST(TPXBasAtiBarrierDefaultDeathTest, UpgradeToNoFactory) {
  TPXBasAtiDefaultThreadFact factory;
  std::unique_ptr<TPXBasAtiBarrier> b(factory.newBarrier());
  EXPECT_DEATH(static_cast<TPXBasAtiBarrierDefault*>(b.get())->UpgradeYourself(nullptr),
               "AssertionFailed:f \\[TPXBase/TPXBasAti.m/src/TPXBasAtiBarrierDefault:[0-9]+\\]");
}

}  // namespace
