// The std thread factory's primitives, used directly (no switch of the model needed).
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

TEST(TPXBasAtiStdThreadFact, SignalAfterTheWaiterTookTheLockIsNeverLost) {
  TPXBasAtiStdThreadFact f;
  std::unique_ptr<TPXBasAtiCondVar> cv(f.newCondVar());
  // The signaller runs without the lock, as soon as the waiter holds it: a condition
  // variable that drops such a signal makes this test hang (and time out).
  for (int round = 0; round < 200; ++round) {
    std::atomic<bool> locked{false};
    cv->Lock();
    std::thread signaller([&] {
      while (!locked.load()) std::this_thread::yield();
      cv->Signal();
    });
    locked = true;
    cv->WaitForSignal(0);
    cv->Unlock();
    signaller.join();
  }
}

TEST(TPXBasAtiStdThreadFact, AtomicsCountExactlyUnderThreads) {
  TPXBasAtiStdThreadFact f;
  std::unique_ptr<TPXBasAtiAtomicTemplate<unsigned int>> a(f.newAtomic(5));
  EXPECT_EQ(TPXBasAtiStdThreadFact::kAtomicId, a->id());
  EXPECT_EQ(6u, (*a)++);
  EXPECT_EQ(5u, --*a);
  EXPECT_EQ(4294967295u, *a -= 6);
  *a = TPXBasAtiAtomicTemplate<unsigned int>(3);

  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int r = 0; r < 10000; ++r) {
        ++*a;
        *a += 2;
        a->Decrement(2);
      }
    });
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(40003u, static_cast<unsigned int>(*a));
}

TEST(TPXBasAtiStdThreadFact, TimedWaitsTrivialBarriersAndNonRecursiveMutexes) {
  TPXBasAtiStdThreadFact f;
  EXPECT_TRUE(f.multiThread());
  std::unique_ptr<TPXBasAtiCondVar> cv(f.newCondVar());
  cv->Signal();  // nobody waits: nothing happens
  cv->Lock();
  cv->WaitForSignal(1);  // no signal comes: a wait that ignored its limit would hang here
  cv->Unlock();          // the wait gave the lock back (ThreadSanitizer checks the unlock)
  std::unique_ptr<TPXBasAtiBarrier> b(f.newBarrier());
  b->BarrierSync(0);  // alone: would hang if it waited for anyone
  b->BarrierSync(1);
  TPXBasAtiMutex* m = f.newMutex();
  EXPECT_EQ(1, m->TryLock());
  EXPECT_EQ(0, m->TryLock()) << "not recursive";
  m->Unlock();
  f.deleteMutex(m);
}

}  // namespace
