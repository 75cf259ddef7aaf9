// TPXBasAtiStdThreadFact.cpp: mutex, condition variable, barrier and counter on std threads.
#include "TPXBasAtiStdThreadFact.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <pthread.h>
#include <thread>

namespace {

// Lock and Unlock hand over straight to the thread library (a tail call, with no error test
// to come back for): a default std::mutex is a normal, non-recursive pthread mutex, whose
// lock cannot fail when used as the interface requires, so std::mutex::lock's throw of
// std::system_error is dead weight on the hottest path of an upgraded lock.
class StdMutex final : public TPXBasAtiMutex {
 public:
  void Lock() override { pthread_mutex_lock(m_mutex.native_handle()); }
  void Unlock() override { pthread_mutex_unlock(m_mutex.native_handle()); }
  int TryLock() override { return m_mutex.try_lock() ? 1 : 0; }
  int id() const override { return TPXBasAtiStdThreadFact::kMutexId; }

 private:
  std::mutex m_mutex;
};

// The user's lock (Lock/Unlock) and the signal state are two mutexes. Whoever takes the
// user's lock notes the signal generation of that moment (its epoch), and WaitForSignal
// returns once the generation has moved past it: every Signal made after the waiter took the
// lock wakes it, with or without that lock held by the signaller, and spurious wake-ups are
// absorbed. Order: user lock before state lock, never the reverse.
class StdCondVar final : public TPXBasAtiCondVar {
 public:
  void Lock() override {
    m_user.lock();
    NoteEpoch();
  }
  void Unlock() override { m_user.unlock(); }

  void WaitForSignal(int milliseconds) override {
    {
      std::unique_lock<std::mutex> state(m_state);
      const unsigned long long epoch = m_epoch;
      m_user.unlock();
      auto signalled = [&] { return m_generation != epoch; };
      if (milliseconds > 0)
        m_signal.wait_for(state, std::chrono::milliseconds(milliseconds), signalled);
      else
        m_signal.wait(state, signalled);
    }
    Lock();
  }

  void Signal() override {
    {
      std::lock_guard<std::mutex> state(m_state);
      ++m_generation;
    }
    m_signal.notify_all();
  }

  int id() const override { return TPXBasAtiStdThreadFact::kCondVarId; }

 private:
  void NoteEpoch() {
    std::lock_guard<std::mutex> state(m_state);
    m_epoch = m_generation;
  }

  std::mutex m_user;
  std::mutex m_state;
  std::condition_variable m_signal;
  unsigned long long m_generation = 0;  // under m_state
  unsigned long long m_epoch = 0;       // under m_state, written by the holder of m_user
};

// Rounds: the n-th arrival of a round ends it and wakes the others; the next arrivals start
// a new round.
class StdBarrier final : public TPXBasAtiBarrier {
 public:
  void BarrierSync(unsigned int n) override {
    if (n <= 1) return;
    std::unique_lock<std::mutex> lock(m_mutex);
    const unsigned long long round = m_round;
    if (++m_arrived >= n) {
      m_arrived = 0;
      ++m_round;
      lock.unlock();
      m_released.notify_all();
      return;
    }
    m_released.wait(lock, [&] { return m_round != round; });
  }

  int id() const override { return TPXBasAtiStdThreadFact::kBarrierId; }

 private:
  std::mutex m_mutex;
  std::condition_variable m_released;
  unsigned int m_arrived = 0;
  unsigned long long m_round = 0;
};

class StdAtomic final : public TPXBasAtiAtomicTemplate<unsigned int> {
 public:
  explicit StdAtomic(unsigned int initial)
      : TPXBasAtiAtomicTemplate<unsigned int>(0), m_atomic(initial) {}

  TPXBasAtiAtomicTemplate<unsigned int>& operator=(
      const TPXBasAtiAtomicTemplate<unsigned int>& other) override {
    m_atomic.store(static_cast<unsigned int>(other));
    return *this;
  }
  unsigned int Increment(unsigned int delta) override { return m_atomic.fetch_add(delta) + delta; }
  unsigned int Decrement(unsigned int delta) override { return m_atomic.fetch_sub(delta) - delta; }
  operator unsigned int() const override { return m_atomic.load(); }
  int id() const override { return TPXBasAtiStdThreadFact::kAtomicId; }

 private:
  std::atomic<unsigned int> m_atomic;
};

}  // namespace

// ThreadSanitizer does not model stand-alone fences and GCC says so; the fences are still
// real ones, and the library's own synchronisation never relies on them alone.
#if defined(__SANITIZE_THREAD__)
#pragma GCC diagnostic ignored "-Wtsan"
#endif

const char* const TPXBasAtiStdThreadFact::m_stringID = "STD_THREADS";

TPXBasAtiStdThreadFact::TPXBasAtiStdThreadFact() {}
TPXBasAtiStdThreadFact::~TPXBasAtiStdThreadFact() {}

TPXBasAtiAtomicTemplate<unsigned int>* TPXBasAtiStdThreadFact::newAtomic(
    unsigned int initial) const {
  return new StdAtomic(initial);
}
TPXBasAtiMutex* TPXBasAtiStdThreadFact::newMutex() const { return new StdMutex; }
TPXBasAtiCondVar* TPXBasAtiStdThreadFact::newCondVar() const { return new StdCondVar; }
TPXBasAtiBarrier* TPXBasAtiStdThreadFact::newBarrier() const { return new StdBarrier; }

void TPXBasAtiStdThreadFact::ReadWriteMemoryBarrier() const {
  std::atomic_thread_fence(std::memory_order_seq_cst);
}
void TPXBasAtiStdThreadFact::WriteMemoryBarrier() const {
  std::atomic_thread_fence(std::memory_order_release);
}
void TPXBasAtiStdThreadFact::ReadMemoryBarrier() const {
  std::atomic_thread_fence(std::memory_order_acquire);
}
void TPXBasAtiStdThreadFact::Relinquish() const { std::this_thread::yield(); }
bool TPXBasAtiStdThreadFact::multiThread() const { return true; }
const char* TPXBasAtiStdThreadFact::AsString() const { return m_stringID; }
void TPXBasAtiStdThreadFact::deleteMutex(TPXBasAtiMutex* m) { delete m; }
