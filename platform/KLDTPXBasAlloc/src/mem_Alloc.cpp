// mem_Alloc.cpp: the C heap behind the allocation entry points, with failure injection.
#include "mem_Alloc.h"

#include "mem_FailureInjection.h"
#include "mem_Testing.h"

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <new>

namespace {

// -1: never fail; n >= 0: n more allocations succeed, then every one fails. On a line of its
// own: every allocation reads it, and nothing written often may share that line.
alignas(64) std::atomic<long> g_failAfter{-1};
int g_count = 0;  // nesting count of TPXBasAlloc_initialize

// The mem_Acquire / mem_Release counters are sharded per thread: each thread counts in a
// slot of its own cache line with plain (relaxed, unlocked) stores, and a reader sums the
// slots of the live threads and what exited threads left behind. Threads that cache blocks
// on different cores therefore never write a shared line for these counts.
struct alignas(64) CountSlot {
  std::atomic<long> acquires{0};
  std::atomic<long> releases{0};
  CountSlot* next = nullptr;
  CountSlot* prev = nullptr;
};

struct Slots {
  std::mutex mutex;
  CountSlot head;  // sentinel of the ring of live slots
  std::atomic<long> retiredAcquires{0};
  std::atomic<long> retiredReleases{0};
  Slots() { head.next = head.prev = &head; }
};

// Never destroyed: threads may count while the process exits.
Slots& TheSlots() {
  static Slots* slots = new Slots;
  return *slots;
}

inline void Bump(std::atomic<long>& counter) {
  counter.store(counter.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

__attribute__((tls_model("initial-exec"))) thread_local CountSlot* t_slot = nullptr;
__attribute__((tls_model("initial-exec"))) thread_local bool t_slotGone = false;

// Folds the thread's slot into the retired totals when the thread ends.
struct SlotOwner {
  ~SlotOwner() {
    CountSlot* slot = t_slot;
    if (slot == nullptr) return;
    Slots& slots = TheSlots();
    {
      std::lock_guard<std::mutex> lock(slots.mutex);
      slots.retiredAcquires.fetch_add(slot->acquires.load(std::memory_order_relaxed),
                                      std::memory_order_relaxed);
      slots.retiredReleases.fetch_add(slot->releases.load(std::memory_order_relaxed),
                                      std::memory_order_relaxed);
      slot->prev->next = slot->next;
      slot->next->prev = slot->prev;
    }
    t_slot = nullptr;
    t_slotGone = true;
    delete slot;
  }
};
thread_local SlotOwner t_owner;

// The calling thread's slot, made on its first count; null once the thread is ending.
__attribute__((noinline)) CountSlot* MakeSlot() {
  if (t_slotGone) return nullptr;
  CountSlot* slot = new (std::nothrow) CountSlot;
  if (slot == nullptr) return nullptr;
  (void)&t_owner;  // registers the thread-exit fold
  Slots& slots = TheSlots();
  std::lock_guard<std::mutex> lock(slots.mutex);
  slot->next = &slots.head;
  slot->prev = slots.head.prev;
  slots.head.prev->next = slot;
  slots.head.prev = slot;
  t_slot = slot;
  return slot;
}

inline void Count(std::atomic<long> CountSlot::*field, std::atomic<long> Slots::*retired) {
  CountSlot* slot = t_slot;
  if (__builtin_expect(slot == nullptr, 0) && (slot = MakeSlot()) == nullptr) {
    (TheSlots().*retired).fetch_add(1, std::memory_order_relaxed);
    return;
  }
  Bump(slot->*field);
}

long Sum(std::atomic<long> CountSlot::*field, std::atomic<long> Slots::*retired) {
  Slots& slots = TheSlots();
  std::lock_guard<std::mutex> lock(slots.mutex);
  long total = (slots.*retired).load(std::memory_order_relaxed);
  for (CountSlot* s = slots.head.next; s != &slots.head; s = s->next)
    total += (s->*field).load(std::memory_order_relaxed);
  return total;
}

void* AllocOrThrow(std::size_t size) {
  void* block = mem_Malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

}  // namespace

bool mem_Internal::AllocationAllowed() {
  long left = g_failAfter.load(std::memory_order_relaxed);
  while (left >= 0) {
    if (left == 0) return false;
    if (g_failAfter.compare_exchange_weak(left, left - 1, std::memory_order_relaxed)) return true;
  }
  return true;
}

void* mem_Malloc(std::size_t size) {
  if (!mem_Internal::AllocationAllowed()) return nullptr;
  return std::malloc(size);
}

void* mem_Calloc(std::size_t count, std::size_t size) {
  if (!mem_Internal::AllocationAllowed()) return nullptr;
  return std::calloc(count, size);  // calloc itself refuses an overflowing product
}

void mem_Free(void* block) { std::free(block); }

void* mem_OperatorNewThrow(std::size_t size) { return AllocOrThrow(size); }
void* mem_OperatorNewTinyThrow(std::size_t size) { return AllocOrThrow(size); }
void* mem_OperatorNewThrowBuiltin(std::size_t size) { return AllocOrThrow(size); }

void mem_Acquire(void*) { Count(&CountSlot::acquires, &Slots::retiredAcquires); }
void mem_Release(void*) { Count(&CountSlot::releases, &Slots::retiredReleases); }

void TPXBasAlloc_initialize(int& tally) {
  if (g_count++ == 0) ++tally;
}

void TPXBasAlloc_finalize(int& tally) {
  if (--g_count == 0) --tally;
}

void mem_Testing::FailAllocationsAfter(long n) {
  g_failAfter.store(n < 0 ? -1 : n, std::memory_order_relaxed);
}
long mem_Testing::AcquireCount() { return Sum(&CountSlot::acquires, &Slots::retiredAcquires); }
long mem_Testing::ReleaseCount() { return Sum(&CountSlot::releases, &Slots::retiredReleases); }
