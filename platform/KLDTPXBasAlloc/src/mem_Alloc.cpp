// mem_Alloc.cpp: the C heap behind the allocation entry points, with failure injection.
#include "mem_Alloc.h"

#include "mem_FailureInjection.h"
#include "mem_Testing.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

// -1: never fail; n >= 0: n more allocations succeed, then every one fails.
std::atomic<long> g_failAfter{-1};
std::atomic<long> g_acquires{0};
std::atomic<long> g_releases{0};
int g_count = 0;  // nesting count of TPXBasAlloc_initialize

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

void mem_Acquire(void*) { g_acquires.fetch_add(1, std::memory_order_relaxed); }
void mem_Release(void*) { g_releases.fetch_add(1, std::memory_order_relaxed); }

void TPXBasAlloc_initialize(int& tally) {
  if (g_count++ == 0) ++tally;
}

void TPXBasAlloc_finalize(int& tally) {
  if (--g_count == 0) --tally;
}

void mem_Testing::FailAllocationsAfter(long n) {
  g_failAfter.store(n < 0 ? -1 : n, std::memory_order_relaxed);
}
long mem_Testing::AcquireCount() { return g_acquires.load(std::memory_order_relaxed); }
long mem_Testing::ReleaseCount() { return g_releases.load(std::memory_order_relaxed); }
