// The global lock: recursive for its holder, exclusive for everyone else, never released.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

#include <atomic>
#include <thread>

namespace {

TEST(TPXBasAtiGlobalLock, RecursiveForTheHolderExclusiveForOthers) {
  TPXBasAtiGlobalLock::Finalize();  // releases nothing: the lock stays usable
  std::atomic<bool> started{false}, released{false};
  bool enteredWhileHeld = true;
  std::thread other;
  {
    TPXBasAtiGlobalLock outer;
    TPXBasAtiGlobalLock inner;  // the same thread again: must not block
    other = std::thread([&] {
      started = true;
      TPXBasAtiGlobalLock guard;
      enteredWhileHeld = !released.load();
    });
    while (!started.load()) std::this_thread::yield();
    for (int i = 0; i < 100; ++i) std::this_thread::yield();  // every chance to get in
    released = true;
  }
  other.join();
  EXPECT_FALSE(enteredWhileHeld);
}

}  // namespace
