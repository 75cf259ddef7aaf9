// cam_bench.cpp: the cache manager's recycled blocks and the small-block allocator beside
// glibc malloc and jemalloc.
//
// jemalloc replaces malloc process-wide (and cannot be loaded with dlopen: static TLS), so
// the same program is also built as cam_bench_jemalloc, linked with it: there the malloc
// rows are jemalloc's, beside the pool and the small-block allocator again.
// The threading model switches once per process, so the program measures one side per run:
//   cam_bench                 placeholders (a host that installed no factory)
//   cam_bench --after_switch  after TPXBasAtiStdThreadFact is installed, with two threads
#include "KLDTPXBasCoreUtils.h"
#include "benchmark/benchmark.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

#ifdef KLD_CAM_BENCH_JEMALLOC
const char* const kMalloc = "Jemalloc";
#else
const char* const kMalloc = "Glibc";
#endif
TPXBasCamPool* g_pool = nullptr;

std::string Named(const char* what) { return std::string(kMalloc) + what; }

// Thread t of a multi-threaded run uses its own size class (64 KB, then 96 KB, ...).
unsigned int SizeFor(const benchmark::State& state) {
  return static_cast<unsigned int>(state.range(0)) +
         static_cast<unsigned int>(state.thread_index()) * 32768u;
}

void BM_PoolAllocFree(benchmark::State& state) {
  unsigned int size = SizeFor(state);
  g_pool->Free(g_pool->Alloc(size));  // the block is cached from here on
  for (auto _ : state) {
    void* p = g_pool->Alloc(size);
    benchmark::DoNotOptimize(p);
    g_pool->Free(p);
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_MallocFree(benchmark::State& state) {
  unsigned int size = SizeFor(state);
  for (auto _ : state) {
    void* p = std::malloc(size);
    benchmark::DoNotOptimize(p);
    std::free(p);
  }
  state.SetItemsProcessed(state.iterations());
}

// 32-byte blocks: one at a time, and 64 allocated then freed in allocation order.
void BM_TBFixed32AllocFree(benchmark::State& state) {
  TPXBasCamSimpleTBAllocator tb(static_cast<TPXBasCamPool*>(nullptr), true, 32, 4096);
  std::vector<void*> blocks(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    for (void*& p : blocks) p = tb.Alloc(32);
    benchmark::DoNotOptimize(blocks.data());
    for (void* p : blocks) tb.Free(p);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Malloc32AllocFree(benchmark::State& state) {
  std::vector<void*> blocks(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    for (void*& p : blocks) p = std::malloc(32);
    benchmark::DoNotOptimize(blocks.data());
    for (void* p : blocks) std::free(p);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

}  // namespace

int main(int argc, char** argv) {
  bool after = false;
  std::vector<char*> args;
  for (int i = 0; i < argc; ++i) {
    if (std::strcmp(argv[i], "--after_switch") == 0)
      after = true;
    else
      args.push_back(argv[i]);
  }
  int count = static_cast<int>(args.size());
  if (after) TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiStdThreadFact);
  TPXBasCamCacheManager& cm = TPXBasAtiGlobalSingleton<TPXBasCamCacheManager>::Instance();
  cm.SetMemoryLimit(512u * 1048576u);
  const char* names[] = {"bench"};
  cm.AddPools(1, names);
  g_pool = cm.GetPool(0);

  if (after) {
    // Two threads on different bins against one; compare the total items per second.
    for (auto* b : {benchmark::RegisterBenchmark("PoolAllocFree/2bins", BM_PoolAllocFree),
                    benchmark::RegisterBenchmark(Named("MallocFree/2bins").c_str(), BM_MallocFree)})
      b->Arg(65536)->Threads(1)->Threads(2)->UseRealTime();
  }
  for (long size : {4096L, 65536L, 1048576L - 32L}) {
    benchmark::RegisterBenchmark("PoolAllocFree", BM_PoolAllocFree)->Arg(size);
    benchmark::RegisterBenchmark(Named("MallocFree").c_str(), BM_MallocFree)->Arg(size);
  }
  for (long n : {1L, 64L}) {
    benchmark::RegisterBenchmark("TBFixed32AllocFree", BM_TBFixed32AllocFree)->Arg(n);
    benchmark::RegisterBenchmark(Named("Malloc32AllocFree").c_str(), BM_Malloc32AllocFree)->Arg(n);
  }
  benchmark::Initialize(&count, args.data());
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  TPXBasAtiGlobalSingleton<TPXBasCamCacheManager>::Finalize();
  return 0;
}
