// The global lock: recursive for its holder, exclusive for everyone else, never released.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace {

TEST(TPXBasAtiGlobalLock, RecursiveForTheHolderExclusiveForOthers) {
  std::atomic<bool> entered{false};
  std::thread other;
  TPXBasAtiGlobalLock::Finalize();  // releases nothing: the lock stays usable
  {
    TPXBasAtiGlobalLock outer;
    TPXBasAtiGlobalLock inner;  // the same thread again: must not block
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

}  // namespace
