// Condition variables: refused before the switch, forwarded after it, no-ops when single.
#include "KLDTPXBasCoreUtils.h"
#include "ati_TestFactories.h"
#include "gtest/gtest.h"

#include <memory>
#include <thread>

namespace {

using TPXBasAtiCondVarDefaultTest = ati_test::FreshModel;

TEST_F(TPXBasAtiCondVarDefaultTest, SwitchToSingleThreadedMakesEarlyOnesNoOps) {
  std::unique_ptr<TPXBasAtiCondVar> cv(TPXBasAtiThreadingModel::newCondVar());
  auto* asDefault = dynamic_cast<TPXBasAtiCondVarDefault*>(cv.get());
  ASSERT_NE(nullptr, asDefault);
  EXPECT_EQ(501, cv->id());
  EXPECT_EQ(500, cv->TPXBasAtiCondVar::id());
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiSingleThreadFact));
  cv->Lock();
  cv->WaitForSignal(0);  // single-threaded: returns at once
  cv->Signal();
  cv->Unlock();
  EXPECT_EQ(502, cv->id());
  EXPECT_STREQ("AUTO_UPGRADING_CONDVAR", asDefault->AsString());
  TPXBasAtiCondVarSingle* single =
      static_cast<TPXBasAtiCondVarSingle*>(TPXBasAtiThreadingModel::newCondVar());
  EXPECT_STREQ("SINGLE_THREADED_CONDVAR", single->AsString());
  delete single;
}

TEST_F(TPXBasAtiCondVarDefaultTest, UpgradedConditionVariableWaitsForTheSignal) {
  std::unique_ptr<TPXBasAtiCondVar> cv(TPXBasAtiThreadingModel::newCondVar());
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiStdThreadFact));
  EXPECT_EQ(TPXBasAtiStdThreadFact::kCondVarId, cv->id());
  bool ready = false;  // guarded by the condition variable's lock
  cv->Lock();
  std::thread signaller([&] {
    cv->Lock();
    ready = true;
    cv->Signal();
    cv->Unlock();
  });
  while (!ready) cv->WaitForSignal(0);
  cv->Unlock();
  signaller.join();
}

TEST(TPXBasAtiCondVarDefaultDeathTest, UseBeforeTheSwitchAndUpgradeToNoFactory) {
  TPXBasAtiDefaultThreadFact factory;
  std::unique_ptr<TPXBasAtiCondVar> cv(factory.newCondVar());
  const char* used =
      "AssertionFailed:m_condVar != 0 \\[TPXBase/TPXBasAti.m/src/TPXBasAtiCondVarDefault:[0-9]+\\]";
  EXPECT_DEATH(cv->Signal(), used);
  EXPECT_DEATH(cv->Lock(), used);
  EXPECT_DEATH(cv->WaitForSignal(0), used);
  EXPECT_DEATH(cv->Unlock(), used);
  EXPECT_DEATH(static_cast<TPXBasAtiCondVarDefault*>(cv.get())->UpgradeYourself(nullptr),
               "AssertionFailed:f != 0 \\[TPXBase/TPXBasAti.m/src/TPXBasAtiCondVarDefault:");
}

}  // namespace
