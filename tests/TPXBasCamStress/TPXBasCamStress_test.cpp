// Cache manager under load: threads allocate and free through pools under a small, changing
// limit while a purge thread purges their cached items and the main thread reads summaries.
// KLD_CAM_STRESS_ITERATIONS raises the operations per thread (default 2500) for a soak run.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>
#include <utility>
#include <vector>

namespace {

using Manager = TPXBasAtiGlobalSingleton<TPXBasCamCacheManager>;

std::atomic<long> g_purged{0}, g_corrupt{0}, g_made{0}, g_reclaimed{0}, g_foundPurged{0},
    g_refused{0}, g_handlerCalls{0};
std::atomic<unsigned long long> g_summaryBytes{0};

/// Bulk data in a pool block, painted when made and checked before it is freed, whoever frees
/// it: a block handed out twice or recycled while in use shows as corrupt.
struct StressItem : TPXBasCamMemoryItem {
  StressItem(TPXBasCamPool* p, unsigned int n, unsigned int s) : pool(p), size(n), seed(s) {
    data = static_cast<unsigned char*>(pool->Alloc(size));
    for (unsigned int i = 0; data != nullptr && i < size; i += 64) data[i] = Fill(i);
  }
  unsigned int BulkSize() const override { return size; }
  unsigned int FreeBulkData() override {
    if (purges.fetch_add(1) > 0) g_corrupt.fetch_add(1);  // purged twice
    g_purged.fetch_add(1);
    return Release();
  }
  unsigned int Release() {
    for (unsigned int i = 0; data != nullptr && i < size; i += 64)
      if (data[i] != Fill(i)) g_corrupt.fetch_add(1);
    return pool->Free(std::exchange(data, nullptr));
  }
  unsigned char Fill(unsigned int i) const { return static_cast<unsigned char>(seed + i / 64); }
  TPXBasCamPool* pool;
  unsigned int size, seed;
  unsigned char* data;
  std::atomic<int> purges{0};
};

struct CountingHandler : TPXBasCamMemoryErrorHandler {
  void OutOfMemory() override { g_handlerCalls.fetch_add(1); }
};

// Items are made in random pools and lists, some only held (never listed, so never purged),
// and reclaimed in random order: RemoveItem true means the data is still there.
void Worker(TPXBasCamCacheManager& cm, unsigned int id, int iterations) {
  std::mt19937 rng(1234u + id);
  std::vector<StressItem*> items;
  auto reclaim = [&](size_t i) {
    StressItem* item = items[i];
    if (cm.RemoveItem(item) || item->purges.load() == 0) {
      if (item->data == nullptr) g_corrupt.fetch_add(1);  // listed items keep their data
      item->Release();
      g_reclaimed.fetch_add(1);
    } else {
      g_foundPurged.fetch_add(1);
    }
    delete item;
    items[i] = items.back();
    items.pop_back();
  };
  const unsigned int sizes[] = {1000, 5000, 9000, 20000, 40000, 70000, 150000, 300000};
  for (int step = 0; step < iterations; ++step) {
    if (rng() % 4 == 3) {
      if (!items.empty()) reclaim(rng() % items.size());
      continue;
    }
    unsigned int size = rng() % 50 == 0 ? 1100000 : sizes[rng() % 8];  // now and then large
    auto* item = new StressItem(cm.GetPool(static_cast<int>(rng() % 3)), size,
                                id * 1000003u + static_cast<unsigned int>(step));
    if (item->data == nullptr) {
      g_refused.fetch_add(1);
      delete item;
      continue;
    }
    g_made.fetch_add(1);
    unsigned int how = rng() % 3;  // append, prepend, or held in use
    if (how < 2)
      cm.AddItem(static_cast<int>(rng() % 3),
                 how == 0 ? TPXBasCamCacheAppend : TPXBasCamCachePrepend, item, item);
    items.push_back(item);
    if (items.size() > 40) reclaim(rng() % items.size());
  }
  while (!items.empty()) reclaim(items.size() - 1);
}

TEST(TPXBasCamStress, ThreadsPoolsPurgeThreadAndChangingLimit) {
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiStdThreadFact));
  const char* soak = std::getenv("KLD_CAM_STRESS_ITERATIONS");
  const int iterations = soak != nullptr ? std::atoi(soak) : 2500;
  Manager::Finalize();
  TPXBasCamCacheManager& cm = Manager::Instance();
  cm.SetErrorHandler(new CountingHandler);
  const char* names[] = {"mesh", "matrix", "results"};
  ASSERT_EQ(0, cm.AddPools(3, names));
  ASSERT_EQ(0, cm.AddPurgeList(3));
  FILE* stats = std::tmpfile();
  cm.SetDbFile(stats);  // statistics are kept concurrently too
  long acquires = mem_Testing::AcquireCount(), releases = mem_Testing::ReleaseCount();
  TPXBasCamIOThreadTask task(&cm);
  std::thread purger([&] { task.Run(0); });
  while (!cm.PurgeThreadRunning()) std::this_thread::yield();
  std::vector<std::thread> workers;
  std::atomic<unsigned int> done{0};
  for (unsigned int t = 0; t < 4; ++t)
    workers.emplace_back([&, t] { Worker(cm, t, iterations), done.fetch_add(1); });
  // Meanwhile this thread reads summaries, writes pool reports and changes the limit: every
  // reader of the free lists and the statistics runs against the traffic.
  const unsigned int limits[] = {3 * 1048576, 8 * 1048576, 5 * 1048576, 12 * 1048576};
  for (unsigned int round = 0; done.load() < 4; ++round) {
    if (round % 64 == 0) cm.SetMemoryLimit(limits[round / 64 % 4]);
    unsigned int current, cached, *poolCurrent, *poolAtMax, *poolStaged, *poolMax, *listCurrent,
        *listAtMax, *binCurrent, *binAtMax, countAtMax;
    int pools, lists, bins;
    cm.MemorySummary(current, cached, pools, poolCurrent, poolAtMax, poolStaged, poolMax, lists,
                     listCurrent, listAtMax, bins, binCurrent, binAtMax, countAtMax);
    unsigned long long seen = countAtMax;  // read what a host reads, as it would
    for (int b = 0; b < bins; ++b) seen += binCurrent[b] + binAtMax[b] + cm.BinFreeBytes(b);
    for (int p = 0; p < pools; ++p)
      seen += poolCurrent[p] + poolAtMax[p] + poolStaged[p] + poolMax[p];
    for (int l = 0; l < lists; ++l) seen += listCurrent[l] + listAtMax[l];
    g_summaryBytes.fetch_add(seen + current + cached, std::memory_order_relaxed);
    cm.GetPool(static_cast<int>(round % 3))->MemoryReport();
    std::this_thread::yield();
  }
  for (std::thread& w : workers) w.join();
  cm.StopPurgeTask();
  purger.join();
  EXPECT_FALSE(cm.PurgeThreadRunning());
  EXPECT_EQ(0, g_corrupt.load()) << "every block held its content until freed, once";
  EXPECT_EQ(g_made.load(), g_reclaimed.load() + g_foundPurged.load());
  EXPECT_EQ(g_foundPurged.load(), g_purged.load()) << "each purged item purged exactly once";
  EXPECT_GT(g_purged.load(), 0) << "the load made the purge thread work";
  EXPECT_EQ(g_refused.load(), g_handlerCalls.load()) << "every refusal went to the handler";
  for (int p = 0; p < 3; ++p) EXPECT_EQ(0u, cm.GetPool(p)->MemoryCurrent()) << names[p];
  EXPECT_EQ(cm.FreeListBytes(), cm.MemoryCurrent()) << "no block lost: all are cached";
  EXPECT_EQ(0u, cm.PendingRequest());
  unsigned int cachedBlocks = 0, listedBytes = 0;
  for (int b = 0; b < cm.NumBins(); ++b) {
    listedBytes += cm.BinFreeBytes(b);
    cachedBlocks += cm.BinFreeBytes(b) / (TPXBasCamCacheManager::BinCapacity(b) + 32);
  }
  EXPECT_EQ(cm.FreeListBytes(), listedBytes) << "the bins' counts match their lists";
  // Each cached block was released once more than acquired again, by whichever threads.
  EXPECT_LE(static_cast<long>(cachedBlocks),
            (mem_Testing::ReleaseCount() - releases) - (mem_Testing::AcquireCount() - acquires));
  cm.ClearFreeList();
  EXPECT_EQ(0u, cm.MemoryCurrent());
  cm.SetDbFile(nullptr);
  Manager::Finalize();
  std::fclose(stats);
}

}  // namespace
