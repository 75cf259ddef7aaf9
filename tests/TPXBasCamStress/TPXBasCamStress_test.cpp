// Cache manager under load: several threads allocate and free through pools under a small,
// changing limit while their cached items are purged by a purge thread. The threading model
// is switched to real threads once for this whole binary.
//
// KLD_CAM_STRESS_ITERATIONS raises the operations per thread (default 2500) for a soak run.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"
#include "kld_TestSupport.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

namespace {

using Manager = TPXBasAtiGlobalSingleton<TPXBasCamCacheManager>;

std::atomic<long> g_purged{0};
std::atomic<long> g_corrupt{0};

unsigned char Fill(unsigned int seed, unsigned int i) {
  return static_cast<unsigned char>(seed * 31u + i / 64u);
}

void Paint(void* data, unsigned int size, unsigned int seed) {
  auto* bytes = static_cast<unsigned char*>(data);
  for (unsigned int i = 0; i < size; i += 64) bytes[i] = Fill(seed, i);
  bytes[size - 1] = Fill(seed, size - 1);
}

bool Intact(const void* data, unsigned int size, unsigned int seed) {
  auto* bytes = static_cast<const unsigned char*>(data);
  for (unsigned int i = 0; i < size; i += 64)
    if (bytes[i] != Fill(seed, i)) return false;
  return bytes[size - 1] == Fill(seed, size - 1);
}

/// Bulk data in a pool block, checked by content before it is freed, whoever frees it.
class StressItem : public TPXBasCamMemoryItem {
 public:
  StressItem(TPXBasCamPool* pool, unsigned int size, unsigned int seed)
      : m_pool(pool), m_size(size), m_seed(seed), m_data(pool->Alloc(size)) {
    if (m_data != nullptr) Paint(m_data, m_size, m_seed);
  }
  bool HasData() const { return m_data != nullptr; }
  unsigned int BulkSize() const override { return m_size; }
  unsigned int FreeBulkData() override {
    purges.fetch_add(1);
    g_purged.fetch_add(1);
    return Release();
  }
  unsigned int Release() {
    if (m_data == nullptr) return 0;
    if (!Intact(m_data, m_size, m_seed)) g_corrupt.fetch_add(1);
    unsigned int freed = m_pool->Free(m_data);
    m_data = nullptr;
    return freed;
  }
  std::atomic<int> purges{0};

 private:
  TPXBasCamPool* m_pool;
  unsigned int m_size;
  unsigned int m_seed;
  void* m_data;
};

class CountingHandler : public TPXBasCamMemoryErrorHandler {
 public:
  void OutOfMemory() override { calls.fetch_add(1); }
  static std::atomic<long> calls;
};
std::atomic<long> CountingHandler::calls{0};

struct Totals {
  long itemsMade = 0, itemsReclaimed = 0, itemsFoundPurged = 0, purgedTwice = 0;
  long blocks = 0, nulls = 0;
};

void Worker(TPXBasCamCacheManager& cm, unsigned int id, int iterations, int lists, Totals& out) {
  std::mt19937 rng(1234u + id);
  struct Held {
    TPXBasCamPool* pool;
    void* p;
    unsigned int size, seed;
  };
  std::vector<Held> held;
  std::vector<StressItem*> items;
  auto reclaim = [&](size_t i) {
    StressItem* item = items[i];
    if (cm.RemoveItem(item)) {
      if (!item->HasData()) g_corrupt.fetch_add(1);  // listed items keep their data
      item->Release();
      ++out.itemsReclaimed;
    } else {
      ++out.itemsFoundPurged;
    }
    if (item->purges.load() > 1) ++out.purgedTwice;
    delete item;
    items[i] = items.back();
    items.pop_back();
  };
  const unsigned int sizes[] = {1000, 5000, 9000, 20000, 40000, 70000, 150000, 300000};
  for (int step = 0; step < iterations; ++step) {
    TPXBasCamPool* pool = cm.GetPool(static_cast<int>(rng() % 3));
    unsigned int seed = id * 1000003u + static_cast<unsigned int>(step);
    switch (rng() % 4) {
      case 0: {  // a block in use for a while
        unsigned int size = sizes[rng() % 6];
        if (rng() % 50 == 0) size = 1100000;  // now and then a large block
        void* p = pool->Alloc(size);
        if (p == nullptr) {
          ++out.nulls;
          break;
        }
        ++out.blocks;
        Paint(p, size, seed);
        held.push_back({pool, p, size, seed});
        if (held.size() > 3) {
          size_t i = rng() % held.size();
          if (!Intact(held[i].p, held[i].size, held[i].seed)) g_corrupt.fetch_add(1);
          held[i].pool->Free(held[i].p);
          held[i] = held.back();
          held.pop_back();
        }
        break;
      }
      case 1:
      case 2: {  // a cached item
        auto* item = new StressItem(pool, sizes[rng() % 8], seed);
        if (!item->HasData()) {
          ++out.nulls;
          delete item;
          break;
        }
        ++out.itemsMade;
        TPXBasCamCachePolicyEnm policy = rng() % 2 ? TPXBasCamCacheAppend : TPXBasCamCachePrepend;
        cm.AddItem(static_cast<int>(rng() % static_cast<unsigned int>(lists)), policy, item, item);
        items.push_back(item);
        break;
      }
      default:
        if (!items.empty()) reclaim(rng() % items.size());
        break;
    }
  }
  while (!items.empty()) reclaim(items.size() - 1);
  for (const Held& h : held) {
    if (!Intact(h.p, h.size, h.seed)) g_corrupt.fetch_add(1);
    h.pool->Free(h.p);
  }
}

TEST(TPXBasCamStress, ThreadsPoolsPurgeThreadAndChangingLimit) {
  ASSERT_TRUE(TPXBasAtiThreadingModel::setBehavior(new TPXBasAtiStdThreadFact));
  int iterations = 2500;
  if (const char* soak = std::getenv("KLD_CAM_STRESS_ITERATIONS")) iterations = std::atoi(soak);
  Manager::Finalize();
  TPXBasCamCacheManager& cm = Manager::Instance();
  cm.SetErrorHandler(new CountingHandler);
  const char* names[] = {"mesh", "matrix", "results"};
  ASSERT_EQ(0, cm.AddPools(3, names));
  const int lists = 3;
  ASSERT_EQ(0, cm.AddPurgeList(lists));
  char* statsText = nullptr;
  size_t statsSize = 0;
  FILE* stats = open_memstream(&statsText, &statsSize);
  cm.SetDbFile(stats);
  cm.SetMemoryLimit(6 * 1048576);

  TPXBasCamIOThreadTask task(&cm);
  std::thread purger([&] { task.Run(0); });
  while (!cm.PurgeThreadRunning()) std::this_thread::yield();

  // A deadlock must not hang the suite: past the deadline the process ends with a report.
  std::atomic<bool> finished{false};
  std::thread watchdog([&] {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(110);
    while (!finished.load() && std::chrono::steady_clock::now() < deadline)
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    if (!finished.load()) {
      std::fprintf(stderr, "stress test did not finish in time: deadlock?\n");
      std::abort();
    }
  });

  constexpr unsigned int kThreads = 4;
  std::vector<Totals> totals(kThreads);
  std::vector<std::thread> workers;
  std::atomic<unsigned int> done{0};
  for (unsigned int t = 0; t < kThreads; ++t)
    workers.emplace_back([&, t] {
      Worker(cm, t, iterations, lists, totals[t]);
      done.fetch_add(1);
    });
  unsigned int limits[] = {3 * 1048576, 8 * 1048576, 5 * 1048576, 12 * 1048576};
  for (unsigned int round = 0; done.load() < kThreads; ++round) {
    cm.SetMemoryLimit(limits[round % 4]);
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
  }
  for (std::thread& w : workers) w.join();
  cm.StopPurgeTask();
  purger.join();
  finished.store(true);
  watchdog.join();
  EXPECT_FALSE(cm.PurgeThreadRunning());

  Totals sum;
  for (const Totals& t : totals) {
    sum.itemsMade += t.itemsMade;
    sum.itemsReclaimed += t.itemsReclaimed;
    sum.itemsFoundPurged += t.itemsFoundPurged;
    sum.purgedTwice += t.purgedTwice;
    sum.blocks += t.blocks;
    sum.nulls += t.nulls;
  }
  std::printf("items %ld (reclaimed %ld, purged %ld), blocks %ld, refused %ld, handler %ld\n",
              sum.itemsMade, sum.itemsReclaimed, sum.itemsFoundPurged, sum.blocks, sum.nulls,
              CountingHandler::calls.load());
  EXPECT_EQ(0, g_corrupt.load()) << "every block held its content until it was freed";
  EXPECT_EQ(0, sum.purgedTwice);
  EXPECT_EQ(sum.itemsMade, sum.itemsReclaimed + sum.itemsFoundPurged);
  EXPECT_EQ(sum.itemsFoundPurged, g_purged.load()) << "each purged item purged exactly once";
  EXPECT_GT(g_purged.load(), 0) << "the load made the purge thread work";
  EXPECT_EQ(sum.nulls, CountingHandler::calls.load()) << "every refusal went to the handler";
  for (int p = 0; p < 3; ++p) EXPECT_EQ(0u, cm.GetPool(p)->MemoryCurrent()) << names[p];
  EXPECT_EQ(cm.FreeListBytes(), cm.MemoryCurrent()) << "no block lost: all are cached";
  EXPECT_EQ(0u, cm.PendingRequest());
  cm.ClearFreeList();
  EXPECT_EQ(0u, cm.MemoryCurrent());
  cm.SetDbFile(nullptr);
  Manager::Finalize();
  std::fclose(stats);
  std::free(statsText);
}

}  // namespace
