// Global singletons: one creation under contention (the global lock excludes other threads),
// nested creation (it is recursive for its holder), finalisation, failures.
#include "KLDTPXBasCoreUtils.h"
#include "ati_TestFactories.h"
#include "gtest/gtest.h"

#include <atomic>
#include <cstddef>
#include <new>
#include <stdexcept>
#include <thread>
#include <typeinfo>
#include <vector>

namespace {

using ati_test::FreshModel;

std::atomic<int> g_constructed{0};
std::atomic<int> g_destroyed{0};
bool g_throw = false;

class Slow : public TPXBasAtiGlobalSingleton<Slow> {
 public:
  int value;

 private:
  friend class TPXBasAtiGlobalSingleton<Slow>;
  Slow() : value(42) {
    if (g_throw) throw std::runtime_error("refused");
    ++g_constructed;
    std::this_thread::yield();  // widen the window for a second creation
  }
  ~Slow() { ++g_destroyed; }
};

// A singleton whose constructor creates another one: the global lock is taken again.
class Outer : public TPXBasAtiGlobalSingleton<Outer> {
 public:
  Slow* inner;

 private:
  friend class TPXBasAtiGlobalSingleton<Outer>;
  Outer() : inner(&TPXBasAtiGlobalSingleton<Slow>::Instance()) {}
  ~Outer() = default;
};

class TPXBasAtiGlobalSingletonTest : public FreshModel {
  void TearDown() override {
    TPXBasAtiGlobalSingleton<Outer>::Finalize();
    TPXBasAtiGlobalSingleton<Slow>::Finalize();
    FreshModel::TearDown();
  }
};

TEST_F(TPXBasAtiGlobalSingletonTest, ManyThreadsAtOnceGetOneObject) {
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiStdThreadFact));
  const int before = g_constructed;
  constexpr unsigned int kThreads = 8;
  TPXBasAtiBarrier* start = TPXBasAtiThreadingModel::newBarrier();
  std::vector<Slow*> seen(kThreads, nullptr);
  std::vector<std::thread> threads;
  for (unsigned int t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      start->BarrierSync(kThreads);  // all call Instance() at the same moment
      Slow& s = TPXBasAtiGlobalSingleton<Slow>::Instance();
      EXPECT_EQ(42, s.value) << "a published object is complete";
      seen[t] = &s;
    });
  for (std::thread& t : threads) t.join();
  delete start;
  EXPECT_EQ(before + 1, g_constructed.load());
  for (Slow* s : seen) EXPECT_EQ(seen[0], s);
  EXPECT_TRUE(mem_Testing::RegistryHas(typeid(Slow).name()));
}

TEST_F(TPXBasAtiGlobalSingletonTest, FinalizeDestroysFailuresLeaveNothingAndNestingWorks) {
  TPXBasAtiGlobalSingleton<Slow>::Finalize();  // nothing there yet: harmless
  const int constructed = g_constructed, destroyed = g_destroyed;
  TPXBasAtiGlobalLock::Finalize();  // releases nothing: the lock stays usable
  g_throw = true;
  EXPECT_THROW(TPXBasAtiGlobalSingleton<Slow>::Instance(), std::runtime_error);
  EXPECT_FALSE(mem_Testing::RegistryHas(typeid(Slow).name()));
  g_throw = false;
  Slow& first = TPXBasAtiGlobalSingleton<Slow>::Instance();
  first.value = 7;
  EXPECT_EQ(&first, TPXBasAtiGlobalSingleton<Outer>::Instance().inner) << "lock taken again";
  TPXBasAtiGlobalSingleton<Slow>::Finalize();
  TPXBasAtiGlobalSingleton<Slow>::Finalize();
  EXPECT_EQ(destroyed + 1, g_destroyed.load());
  EXPECT_FALSE(mem_Testing::RegistryHas(typeid(Slow).name()));
  mem_Testing::SetRegistryEnabled(false);  // created and destroyed all the same
  EXPECT_EQ(42, TPXBasAtiGlobalSingleton<Slow>::Instance().value) << "a fresh object";
  TPXBasAtiGlobalSingleton<Slow>::Finalize();
  mem_Testing::SetRegistryEnabled(true);
  EXPECT_FALSE(mem_Testing::RegistryHas(typeid(Slow).name()));
  EXPECT_EQ(constructed + 2, g_constructed.load());
  EXPECT_EQ(destroyed + 2, g_destroyed.load());
}

// Slow and Outer name no allocation base of their own, as a host class would not: the
// template gives them the library's operators. The cache manager reaches the same operators
// through both of its bases, and they stay one unambiguous pair.
TEST_F(TPXBasAtiGlobalSingletonTest, InstancesAreDrawnFromTheHostAllocationService) {
  using New = void* (*)(std::size_t);
  using Delete = void (*)(void*);
  const New library = &mem_AllocationOperators::operator new;
  const Delete libraryDelete = &mem_AllocationOperators::operator delete;
  EXPECT_EQ(library, static_cast<New>(&Slow::operator new));
  EXPECT_EQ(libraryDelete, static_cast<Delete>(&Slow::operator delete));
  EXPECT_EQ(library, static_cast<New>(&TPXBasCamCacheManager::operator new));
  EXPECT_EQ(libraryDelete, static_cast<Delete>(&TPXBasCamCacheManager::operator delete));
  // The host service refusing the object's memory is the caller's std::bad_alloc, and
  // nothing is left behind; the allocations before it (the singleton's mutex) may fail too.
  const int constructed = g_constructed;
  bool refused = false;
  for (long allowed = 0; allowed < 64; ++allowed) {
    mem_Testing::FailAllocationsAfter(allowed);
    try {
      TPXBasAtiGlobalSingleton<Slow>::Instance();
      mem_Testing::FailAllocationsAfter(-1);
      break;
    } catch (const std::bad_alloc&) {
      refused = true;
      EXPECT_FALSE(mem_Testing::RegistryHas(typeid(Slow).name()));
    }
  }
  mem_Testing::FailAllocationsAfter(-1);
  EXPECT_TRUE(refused);
  EXPECT_EQ(constructed + 1, g_constructed.load());
}

TEST(TPXBasAtiGlobalSingletonDeathTest, NoMutexFromTheModel) {
  EXPECT_DEATH(
      {
        TPXBasAtiThreadingModel::Finalize();
        TPXBasAtiThreadingModel::setBehavior(new ati_test::RecordingFactory(7, false));
        TPXBasAtiGlobalSingleton<Slow>::Instance();
      },
      "AssertionFailed:m_lock != 0 \\[TPXBase/ProtectedInterfaces/TPXBasAtiGlobalSingleton:");
}

}  // namespace
