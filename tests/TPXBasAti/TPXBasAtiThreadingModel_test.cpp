// The threading model: its states, the one transition and its refusals, the upgrade of
// everything issued so far, and the module's tear-down.
#include "KLDTPXBasCoreUtils.h"
#include "ati_TestFactories.h"
#include "gtest/gtest.h"
#include "kld_TestSupport.h"

#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

using ati_test::FreshModel;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using TPXBasAtiThreadingModelTest = FreshModel;

TEST_F(TPXBasAtiThreadingModelTest, FreshModelIsTheDefaultOne) {
  EXPECT_STREQ("AUTO_UPGRADING", TPXBasAtiThreadingModel::AsString());
  EXPECT_FALSE(TPXBasAtiThreadingModel::established());
  EXPECT_FALSE(TPXBasAtiThreadingModel::multiThread());
  TPXBasAtiThreadingModel::ReadMemoryBarrier();
  TPXBasAtiThreadingModel::WriteMemoryBarrier();
  TPXBasAtiThreadingModel::ReadWriteMemoryBarrier();
  TPXBasAtiThreadingModel::Relinquish();
  EXPECT_TRUE(mem_Testing::RegistryHas(typeid(TPXBasAtiModelSingleton).name()));
  EXPECT_EQ(&omi_Singleton<TPXBasAtiModelSingleton>::Instance(),
            &omi_Singleton<TPXBasAtiModelSingleton>::Instance());
  EXPECT_STREQ("AUTO_UPGRADING", omi_Singleton<TPXBasAtiModelSingleton>::Instance().AsString())
      << "clients and the library share one model";
  TPXBasAtiThreadingModel::Finalize();
  EXPECT_FALSE(mem_Testing::RegistryHas(typeid(TPXBasAtiModelSingleton).name()));
}

TEST_F(TPXBasAtiThreadingModelTest, OneTransitionThenEveryCallIsRefused) {
  // Refusal texts, byte for byte: the null one has no newline.
  CaptureStderr();
  EXPECT_FALSE(TPXBasAtiThreadingModel::setBehavior(nullptr));
  EXPECT_EQ("Error initializing threading behavior: new thread factory pointer is NULL",
            GetCapturedStderr());
  EXPECT_FALSE(TPXBasAtiThreadingModel::established());

  std::unique_ptr<TPXBasAtiCondVar> early(TPXBasAtiThreadingModel::newCondVar());
  EXPECT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiSingleThreadFact));
  EXPECT_TRUE(TPXBasAtiThreadingModel::established());
  EXPECT_STREQ("SINGLE_THREADED", TPXBasAtiThreadingModel::AsString());
  early->Signal();  // upgraded: no longer fatal

  struct Row {
    TPXBasAtiThreadFactory* factory;
    const char* message;
  };
  auto* single = new TPXBasAtiSingleThreadFact;
  auto* deflt = new TPXBasAtiDefaultThreadFact;
  auto* stdf = new TPXBasAtiStdThreadFact;
  const Row rows[] = {
      {single,
       "Error changing threading behavior: transition to SINGLE_THREADED threading model is not "
       "allowed\n"},
      {deflt,
       "Error changing threading behavior: transition to AUTO_UPGRADING threading model is not "
       "allowed\n"},
      {stdf,
       "Error changing threading behavior: transition to STD_THREADS threading model is not "
       "allowed\n"},
      {nullptr, "Error initializing threading behavior: new thread factory pointer is NULL"},
  };
  for (const Row& row : rows) {
    CaptureStderr();
    EXPECT_FALSE(TPXBasAtiThreadingModel::setBehavior(row.factory));
    EXPECT_EQ(row.message, GetCapturedStderr());
    EXPECT_STREQ("SINGLE_THREADED", TPXBasAtiThreadingModel::AsString()) << "nothing changed";
  }
  delete single;  // refused factories stay the caller's
  delete deflt;
  delete stdf;
}

TEST_F(TPXBasAtiThreadingModelTest, SwitchUpgradesEverythingIssuedInOrder) {
  std::vector<std::unique_ptr<TPXBasAtiMutex>> mutexes;
  std::unique_ptr<TPXBasAtiBarrier> barrier(TPXBasAtiThreadingModel::newBarrier());
  for (int i = 0; i < 129; ++i) mutexes.emplace_back(TPXBasAtiThreadingModel::newMutex());
  std::unique_ptr<TPXBasAtiCondVar> cv(TPXBasAtiThreadingModel::newCondVar());
  TPXBasAtiThreadingModel::deleteMutex(mutexes[5].release());  // taken back: not visited

  auto* factory = new ati_test::RecordingFactory(7);
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(factory));
  std::vector<std::string> expected{"B"};
  expected.insert(expected.end(), 128, "M");
  expected.push_back("C");
  EXPECT_EQ(expected, factory->log);
  for (const auto& m : mutexes) {
    if (m) {
      EXPECT_EQ(7, m->id());
    }
  }
  EXPECT_TRUE(TPXBasAtiThreadingModel::multiThread());
  EXPECT_STREQ("DEFAULT_NO_THREADS", TPXBasAtiThreadingModel::AsString());

  std::unique_ptr<TPXBasAtiMutex> late(TPXBasAtiThreadingModel::newMutex());
  EXPECT_EQ(7, late->id()) << "issued by the installed factory itself";
  TPXBasAtiThreadingModel::deleteMutex(late.release());
  mutexes.clear();
  EXPECT_EQ(0, factory->aliveMutexes);
}

TEST_F(TPXBasAtiThreadingModelTest, SwitchSucceedsWhenTheFactoryGivesNoMutex) {
  std::unique_ptr<TPXBasAtiMutex> m(TPXBasAtiThreadingModel::newMutex());
  EXPECT_TRUE(TPXBasAtiThreadingModel::setBehavior(new ati_test::RecordingFactory(7, false)));
  EXPECT_TRUE(TPXBasAtiThreadingModel::established());
  EXPECT_EQ(200, m->id()) << "left as a placeholder";
  m->Lock();
  m->Unlock();
}

// Primitives that leave without the factory's help must not be reached by the switch.
class Holder : public TPXBasAtiGlobalSingleton<Holder>, public mem_AllocationOperators {
 private:
  friend class TPXBasAtiGlobalSingleton<Holder>;
  Holder() = default;
  ~Holder() = default;
};

TEST_F(TPXBasAtiThreadingModelTest, DestroyedPlaceholdersAreNeverUpgraded) {
  delete TPXBasAtiThreadingModel::newAtomic(1);  // deletes its guard directly
  delete TPXBasAtiThreadingModel::newCondVar();
  delete TPXBasAtiThreadingModel::newBarrier();
  delete TPXBasAtiThreadingModel::newMutex();
  TPXBasAtiGlobalSingleton<Holder>::Instance();
  TPXBasAtiGlobalSingleton<Holder>::Finalize();  // deletes the singleton's lock directly

  auto* factory = new ati_test::RecordingFactory(7);
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(factory));
  EXPECT_TRUE(factory->log.empty());
}

TEST_F(TPXBasAtiThreadingModelTest, PrimitivesOutliveTheModel) {
  std::unique_ptr<TPXBasAtiMutex> m(TPXBasAtiThreadingModel::newMutex());
  std::unique_ptr<TPXBasAtiAtomicTemplate<unsigned int>> a(TPXBasAtiThreadingModel::newAtomic(2));
  TPXBasAtiThreadingModel::Finalize();
  EXPECT_STREQ("AUTO_UPGRADING", TPXBasAtiThreadingModel::AsString()) << "a fresh model";
  EXPECT_FALSE(TPXBasAtiThreadingModel::established());
  EXPECT_EQ(3u, ++*a);
  m.reset();  // its registry died with the old model
  a.reset();
}

TEST(TPXBasAti_hooks, LastFinaliseDestroysTheModel) {
  TPXBasAtiThreadingModel::Finalize();
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiSingleThreadFact));
  {
    kld_test::FreshLibrary fresh;
    EXPECT_FALSE(mem_Testing::RegistryHas(typeid(TPXBasAtiModelSingleton).name()));
  }
  EXPECT_FALSE(TPXBasAtiThreadingModel::established());
  EXPECT_STREQ("AUTO_UPGRADING", TPXBasAtiThreadingModel::AsString());

  int tally = 0;
  TPXBasAti_initialize(tally);  // nested: no tear-down at the matching finalise
  EXPECT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiSingleThreadFact));
  TPXBasAti_finalize(tally);
  EXPECT_TRUE(TPXBasAtiThreadingModel::established());
  EXPECT_EQ(0, tally);
  TPXBasAtiThreadingModel::Finalize();
}

}  // namespace
