// ati_bench.cpp: the cost of the threading abstraction's primitives.
//
// The threading model switches once per process, so the program measures one side per run:
//   ati_bench                 placeholders, before any factory is installed
//   ati_bench --after_switch  after TPXBasAtiStdThreadFact is installed
// Each measurement of the library runs beside the alternative it is compared with.
//
// A placeholder's Lock and Unlock live in libKLDTPXBasCoreUtils.so. On the machines we measure
// on, an indirect call into another shared object costs about 2 ns a pair more than the same
// call to the same code inside the program, whatever the callee does; so the fair floor is a
// pair of empty virtual calls into a shared library (ati_bench_callee). The pair inside the
// program is shown too, as the floor of a call that crosses no object boundary.
#include "KLDTPXBasCoreUtils.h"
#include "ati_bench_callee.h"
#include "benchmark/benchmark.h"

#include <atomic>
#include <cstring>
#include <mutex>
#include <vector>

namespace {

bool g_after = false;
TPXBasAtiMutex* g_mutex = nullptr;  // issued before the switch, upgraded by it
TPXBasAtiAtomicTemplate<unsigned int>* g_counter = nullptr;  // likewise (its guard)
std::mutex g_stdMutex;
std::atomic<unsigned int> g_stdAtomic{0};
unsigned int g_guarded = 0;

// A pair of virtual calls that do nothing, inside the program. Two overriding classes and
// out-of-line bodies keep the compiler from resolving the calls.
class Empty {
 public:
  virtual ~Empty() = default;
  virtual void Lock() = 0;
  virtual void Unlock() = 0;
};
class EmptyA final : public Empty {
 public:
  [[gnu::noinline]] void Lock() override {}
  [[gnu::noinline]] void Unlock() override {}
};
class EmptyB final : public Empty {
 public:
  [[gnu::noinline]] void Lock() override { benchmark::ClobberMemory(); }
  [[gnu::noinline]] void Unlock() override { benchmark::ClobberMemory(); }
};

void BM_PlaceholderMutexLockUnlock(benchmark::State& state) {
  TPXBasAtiMutex* m = g_mutex;
  for (auto _ : state) {
    benchmark::DoNotOptimize(m);  // as for the empty calls below
    m->Lock();
    m->Unlock();
  }
}

// The same pair into a shared library, on a heap object: the floor of the placeholder mutex.
void BM_TwoEmptyVirtualCallsInLibrary(benchmark::State& state) {
  AtiBenchEmptyLock* e = AtiBenchNewEmptyLock(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(e);
    e->Lock();
    e->Unlock();
  }
  delete e;
}

void BM_TwoEmptyVirtualCallsInProgram(benchmark::State& state) {
  EmptyA a;
  EmptyB b;
  Empty* e = state.range(0) == 0 ? static_cast<Empty*>(&a) : &b;
  for (auto _ : state) {
    benchmark::DoNotOptimize(e);  // keeps the calls virtual
    e->Lock();
    e->Unlock();
  }
}

void BM_UpgradedMutexLockUnlock(benchmark::State& state) {
  TPXBasAtiMutex* m = g_mutex;
  for (auto _ : state) {
    benchmark::DoNotOptimize(m);
    m->Lock();
    m->Unlock();
  }
}

void BM_StdMutexLockUnlock(benchmark::State& state) {
  std::mutex* m = &g_stdMutex;
  for (auto _ : state) {
    benchmark::DoNotOptimize(m);
    m->lock();
    m->unlock();
  }
}

void BM_AtomicDefaultIncrement(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(g_counter->Increment(1));
}

void BM_StdAtomicFetchAdd(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(g_stdAtomic.fetch_add(1));
}

void BM_StdMutexGuardedCounter(benchmark::State& state) {
  for (auto _ : state) {
    std::lock_guard<std::mutex> lock(g_stdMutex);
    benchmark::DoNotOptimize(++g_guarded);
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<char*> args;
  for (int i = 0; i < argc; ++i) {
    if (std::strcmp(argv[i], "--after_switch") == 0)
      g_after = true;
    else
      args.push_back(argv[i]);
  }
  int count = static_cast<int>(args.size());

  g_mutex = TPXBasAtiThreadingModel::newMutex();
  g_counter = TPXBasAtiThreadingModel::newAtomic(0);
  if (g_after) {
    TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiStdThreadFact);
    benchmark::RegisterBenchmark("UpgradedMutexLockUnlock", BM_UpgradedMutexLockUnlock);
    benchmark::RegisterBenchmark("StdMutexLockUnlock", BM_StdMutexLockUnlock);
    for (int threads : {1, 2}) {
      benchmark::RegisterBenchmark("AtomicDefaultIncrement", BM_AtomicDefaultIncrement)
          ->Threads(threads)
          ->UseRealTime();
      benchmark::RegisterBenchmark("StdAtomicFetchAdd", BM_StdAtomicFetchAdd)
          ->Threads(threads)
          ->UseRealTime();
      benchmark::RegisterBenchmark("StdMutexGuardedCounter", BM_StdMutexGuardedCounter)
          ->Threads(threads)
          ->UseRealTime();
    }
  } else {
    benchmark::RegisterBenchmark("PlaceholderMutexLockUnlock", BM_PlaceholderMutexLockUnlock);
    benchmark::RegisterBenchmark("TwoEmptyVirtualCallsInLibrary", BM_TwoEmptyVirtualCallsInLibrary)
        ->Arg(0);
    benchmark::RegisterBenchmark("TwoEmptyVirtualCallsInProgram", BM_TwoEmptyVirtualCallsInProgram)
        ->Arg(0);
  }

  benchmark::Initialize(&count, args.data());
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  delete g_counter;
  delete g_mutex;
  return 0;
}
