// Mutexes, condition variables and barriers of both factories: identifiers and names, the
// placeholders before any switch, their upgrade in place, and their assertions. That upgraded
// placeholders really exclude, wait and hold threads is shown with the threading model's switch.
#include "KLDTPXBasCoreUtils.h"
#include "ati_TestFactories.h"
#include "gtest/gtest.h"

#include <functional>
#include <memory>

namespace {

using TPXBasAtiPrimitivesTest = ati_test::FreshModel;

class PlainBarrier : public TPXBasAtiBarrier {
 public:
  void BarrierSync(unsigned int) override {}
};

TEST_F(TPXBasAtiPrimitivesTest, IdentifiersAndNamesOfEveryKind) {
  TPXBasAtiDefaultThreadFact auto_;
  TPXBasAtiSingleThreadFact single;
  std::unique_ptr<TPXBasAtiMutex> m(auto_.newMutex()), sm(single.newMutex());
  std::unique_ptr<TPXBasAtiCondVar> cv(auto_.newCondVar()), scv(single.newCondVar());
  std::unique_ptr<TPXBasAtiBarrier> b(auto_.newBarrier()), sb(single.newBarrier());
  PlainBarrier plain;
  struct Case {
    const char* what;
    int got, expected;
  } cases[] = {
      {"placeholder mutex", m->id(), 200},
      {"single mutex", sm->id(), 112},
      {"mutex interface", m->TPXBasAtiMutex::id(), 111},
      {"placeholder condvar", cv->id(), 501},
      {"single condvar", scv->id(), 502},
      {"condvar interface", cv->TPXBasAtiCondVar::id(), 500},
      {"placeholder barrier", b->id(), 303},
      {"single barrier", sb->id(), 302},
      {"barrier interface", static_cast<TPXBasAtiBarrier&>(plain).id(), 301},
  };
  for (const Case& c : cases) EXPECT_EQ(c.expected, c.got) << c.what;
  EXPECT_STREQ("AUTO_UPGRADING_MUTEX", dynamic_cast<TPXBasAtiMutexDefault&>(*m).AsString());
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
  auto& asDefault = dynamic_cast<TPXBasAtiMutexDefault&>(*m);
  ati_test::RecordingFactory none(7, false), some(9);
  EXPECT_FALSE(asDefault.UpgradeYourself(&none));
  EXPECT_EQ(200, m->id()) << "a factory without mutexes leaves the placeholder";
  EXPECT_TRUE(asDefault.UpgradeYourself(&some));
  EXPECT_EQ(9, m->id()) << "the same object now forwards";
  EXPECT_EQ(0, m->TryLock());
  EXPECT_TRUE(asDefault.UpgradeYourself(&none)) << "an upgraded mutex keeps its lock";
  EXPECT_EQ(9, m->id());
  EXPECT_STREQ("AUTO_UPGRADING_MUTEX", asDefault.AsString());
  m.reset();
  EXPECT_EQ(0, some.aliveMutexes) << "the delegate dies with the placeholder";

  // A condition variable refused before the switch does nothing after a switch to the
  // single-threaded factory.
  std::unique_ptr<TPXBasAtiCondVar> cv(TPXBasAtiThreadingModel::newCondVar());
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiSingleThreadFact));
  cv->Lock();
  cv->WaitForSignal(0);
  cv->Signal();
  cv->Unlock();
  EXPECT_EQ(502, cv->id());
  EXPECT_STREQ("AUTO_UPGRADING_CONDVAR", dynamic_cast<TPXBasAtiCondVarDefault&>(*cv).AsString());
}

TEST(TPXBasAtiPrimitivesDeathTest, PlaceholderAssertions) {
  TPXBasAtiDefaultThreadFact f;
  std::unique_ptr<TPXBasAtiMutex> m(f.newMutex());
  std::unique_ptr<TPXBasAtiCondVar> cv(f.newCondVar());
  std::unique_ptr<TPXBasAtiBarrier> b(f.newBarrier());
  const char* const used =
      "AssertionFailed:m_condVar != 0 "
      "\\[TPXBase/TPXBasAti.m/src/TPXBasAtiCondVarDefault:[0-9]+\\]";
  struct Case {
    std::function<void()> call;
    const char* report;
  } cases[] = {
      {[&] { cv->Signal(); }, used},
      {[&] { cv->Lock(); }, used},
      {[&] { cv->WaitForSignal(0); }, used},
      {[&] { cv->Unlock(); }, used},
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
