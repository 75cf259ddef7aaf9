// The global lock: recursive for its holder, exclusive for everyone else.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace {

TEST(TPXBasAtiGlobalLock, RecursiveForTheHolderExclusiveForOthers) {
  std::atomic<bool> entered{false};
  std::thread other;
  {
    TPXBasAtiGlobalLock outer;
    TPXBasAtiGlobalLock inner;  // the same thread again: must not block
    TPXBasAtiGlobalLock::Lock();
    TPXBasAtiGlobalLock::Unlock();
    other = std::thread([&] {
      TPXBasAtiGlobalLock guard;
      entered = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(entered.load()) << "another thread got in while the lock was held";
  }
  other.join();
  EXPECT_TRUE(entered.load());
}

TEST(TPXBasAtiGlobalLock, StaysUsableAfterFinalizeAndAgainAfterInitialize) {
  TPXBasAtiGlobalLock::Finalize();
  { TPXBasAtiGlobalLock guard; }
  TPXBasAtiGlobalLock::Initialize();
  TPXBasAtiGlobalLock::Initialize();
  TPXBasAtiGlobalLock guard;
}

}  // namespace
