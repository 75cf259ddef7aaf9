// Cache manager: bins and block sizes, recycling, limits and thresholds, purging from the
// allocating thread, host failures and the environment.
#include "cam_TestSupport.h"

#include <vector>

namespace {

using TPXBasCamCacheManagerTest = cam_test::FreshManager;

using cam_test::CountingHandler;
using cam_test::FreshManager;
using cam_test::Manager;
using cam_test::PoolItem;

struct BinRow {
  const char* bins;
  const char* alignment;
  unsigned int size;
  int bin;
  unsigned int block;
};

TEST_F(TPXBasCamCacheManagerTest, RequestsLandInTheirBinWithTheirBlockSize) {
  const BinRow rows[] = {
      {nullptr, nullptr, 1, 0, 4128},
      {nullptr, nullptr, 4096, 0, 4128},
      {nullptr, nullptr, 4097, 1, 8224},
      {nullptr, nullptr, 8193, 2, 12320},
      {nullptr, nullptr, 12289, 3, 16416},
      {nullptr, nullptr, 16385, 4, 24608},
      {nullptr, nullptr, 786433, 15, 1048608},
      {nullptr, nullptr, 1048576, 15, 1048608},
      {nullptr, nullptr, 1048577, 16, 1052704},  // large with 16 bins: page-rounded
      {"18", nullptr, 1048577, 16, 1572896},     // 384 pages
      {"18", nullptr, 2097152, 17, 2097184},     // 512 pages, the last bin
      {"30", nullptr, 2097153, 18, 2101280},     // more than 18 bins count as 18
      {"0", nullptr, 10, 0, 4128},               // no bins: every request is large
      {"-3", nullptr, 10, 0, 4128},              // negative: no bins either
      {nullptr, "64", 1048644, 15, 1048676},     // the alignment allowance
      {nullptr, "64", 1048645, 16, 1052704},     // one byte past it: large
      {nullptr, "64", 4096, 0, 4128},            // only the last bin grows
      {nullptr, "64", 786433, 15, 1048676},
  };
  for (const BinRow& row : rows) {
    SCOPED_TRACE(testing::Message()
                 << "bins " << (row.bins ? row.bins : "-") << " alignment "
                 << (row.alignment ? row.alignment : "-") << " size " << row.size);
    Manager::Finalize();
    TPXBasCamCacheManager& cm = Make(row.bins, row.alignment);
    EXPECT_EQ(row.bin, cm.GetBin(row.size));
    unsigned int block = 0;
    void* p = cm.Alloc(row.size, block);
    ASSERT_NE(nullptr, p);
    EXPECT_EQ(row.block, block);
    EXPECT_EQ(row.block, cm.AllocSize(p));
    EXPECT_EQ(row.block - 32, cm.ActualSizeForUse(p));
    EXPECT_EQ(0u, reinterpret_cast<unsigned long>(p) % 16) << "user data is 16-byte aligned";
    static_cast<char*>(p)[row.size - 1] = 'x';  // the whole request is usable
    EXPECT_EQ(row.block, cm.Free(p));
  }
}

TEST_F(TPXBasCamCacheManagerTest, BinCapacitiesFollowThePageSteps) {
  const unsigned int pages[] = {1,  2,  3,  4,  6,   8,   12,  16,  24,
                                32, 48, 64, 96, 128, 192, 256, 384, 512};
  for (int b = 0; b < 18; ++b) EXPECT_EQ(pages[b] * 4096ull, TPXBasCamCacheManager::BinCapacity(b));
  TPXBasCamCacheManager& cm = Make("18");
  for (int b = 0; b < 18; ++b) {
    EXPECT_EQ(b, cm.GetBin(pages[b] * 4096)) << "a full class fits its own bin";
    EXPECT_EQ(b + 1, cm.GetBin(pages[b] * 4096 + 1)) << "one byte more moves up";
  }
}

TEST_F(TPXBasCamCacheManagerTest, ZeroBytesGiveNullAndStillCount) {
  TPXBasCamCacheManager& cm = Make();
  unsigned int block = 77;
  EXPECT_EQ(nullptr, cm.Alloc(0, block));
  EXPECT_EQ(0u, block);
  EXPECT_EQ(1u, cm.AllocCount());
  EXPECT_EQ(0u, cm.Free(nullptr));
  EXPECT_EQ(0u, cm.AllocSize(nullptr));
  EXPECT_EQ(0u, cm.ActualSizeForUse(nullptr));
  EXPECT_EQ(0u, cm.MemoryCurrent());
}

TEST_F(TPXBasCamCacheManagerTest, FreedBlocksComeBackLastInFirstOutWithTheirMutex) {
  TPXBasCamCacheManager& cm = Make();
  unsigned int block = 0;
  void* a = cm.Alloc(5000, block);
  void* b = cm.Alloc(6000, block);
  TPXBasAtiMutex* mutexOfA =
      reinterpret_cast<TPXBasCamBinHeader*>(static_cast<char*>(a) - 32)->m_mutex;
  long acquires = mem_Testing::AcquireCount();
  long releases = mem_Testing::ReleaseCount();
  EXPECT_EQ(2 * 8224u, cm.MemoryCurrent());
  cm.Free(b);
  cm.Free(a);
  EXPECT_EQ(releases + 2, mem_Testing::ReleaseCount());
  EXPECT_EQ(2 * 8224u, cm.FreeListBytes());
  EXPECT_EQ(2 * 8224u, cm.MemoryCurrent()) << "a bin block stays with the manager";
  void* again = cm.Alloc(4097, block);
  EXPECT_EQ(a, again) << "the last block freed is the first reused";
  EXPECT_EQ(mutexOfA,
            reinterpret_cast<TPXBasCamBinHeader*>(static_cast<char*>(again) - 32)->m_mutex);
  EXPECT_EQ(acquires + 1, mem_Testing::AcquireCount());
  EXPECT_EQ(b, cm.Alloc(8192, block));
  EXPECT_EQ(acquires + 2, mem_Testing::AcquireCount());
  EXPECT_EQ(0u, cm.FreeListBytes());
  void* third = cm.Alloc(4097, block);
  EXPECT_EQ(acquires + 2, mem_Testing::AcquireCount()) << "a fresh block is not acquired";
  cm.Free(a);
  cm.Free(b);
  cm.Free(third);
  cm.ClearFreeList();
  EXPECT_EQ(0u, cm.MemoryCurrent());
  EXPECT_EQ(0u, cm.FreeListBytes());
}

TEST_F(TPXBasCamCacheManagerTest, LargeBlocksGoBackAtOnce) {
  TPXBasCamCacheManager& cm = Make();
  unsigned int block = 0;
  void* big = cm.Alloc(1048577, block);
  EXPECT_EQ(1052704u, cm.MemoryCurrent());
  long releases = mem_Testing::ReleaseCount();
  EXPECT_EQ(1052704u, cm.Free(big));
  EXPECT_EQ(0u, cm.MemoryCurrent());
  EXPECT_EQ(0u, cm.FreeListBytes());
  EXPECT_EQ(releases, mem_Testing::ReleaseCount());
}

TEST_F(TPXBasCamCacheManagerTest, ThresholdsFollowTheLimitAndFractions) {
  TPXBasCamCacheManager& cm = Make();
  EXPECT_EQ(20971520u, cm.MemoryLimit());
  EXPECT_EQ(16777216u, cm.MemoryHighMark());
  EXPECT_EQ(12582912u, cm.MemoryLowMark());
  EXPECT_EQ(3355443u, cm.ReserveCap());
  cm.SetPurgePercentage(0.9, 0.5);
  EXPECT_EQ(18874368u, cm.MemoryHighMark());
  EXPECT_EQ(10485760u, cm.MemoryLowMark());
  EXPECT_EQ(3774873u, cm.ReserveCap());
  cm.SetMemoryLimit(4000000000u);
  EXPECT_EQ(4000000000u, cm.MemoryLimit());
  EXPECT_EQ(524288000u, cm.ReserveCap()) << "the reserve is capped at 500 MB";
  cm.SetMemoryLimit(1000000);
  EXPECT_EQ(1000000u, cm.MemoryLimit());
  EXPECT_EQ(900000u, cm.MemoryHighMark());
}

TEST_F(TPXBasCamCacheManagerTest, CachedBlocksOfHigherBinsGoBackBeforeTheHighMarkIsPassed) {
  TPXBasCamCacheManager& cm = Make();
  cm.SetMemoryLimit(200000);  // high mark 160000
  unsigned int block = 0;
  std::vector<void*> small;
  for (int i = 0; i < 6; ++i) small.push_back(cm.Alloc(20000, block));  // bin 4, 24608 each
  for (void* p : small) cm.Free(p);
  ASSERT_EQ(6 * 24608u, cm.FreeListBytes());
  void* big = cm.Alloc(40000, block);  // bin 6, 49184: two cached blocks must go
  ASSERT_NE(nullptr, big);
  EXPECT_EQ(4 * 24608u, cm.FreeListBytes());
  EXPECT_EQ(4 * 24608u + 49184u, cm.MemoryCurrent());
  EXPECT_LE(cm.MemoryCurrent(), cm.MemoryHighMark());
  EXPECT_EQ(0u, cm.PendingRequest());
  cm.Free(big);
}

TEST_F(TPXBasCamCacheManagerTest, AnAllocationAboveTheHighMarkRefillsTheReserveByPurging) {
  TPXBasCamCacheManager& cm = Make();
  cm.SetMemoryLimit(200000);  // high 160000, reserve cap 32000
  cm.AddPools(1, std::vector<const char*>{"p"}.data());
  TPXBasCamPool* pool = cm.GetPool(0);
  int list = cm.AddPurgeList(1);
  PoolItem first(pool, 20000), second(pool, 20000), third(pool, 20000);
  cm.AddItem(list, TPXBasCamCacheAppend, &first, &first);
  cm.AddItem(list, TPXBasCamCacheAppend, &second, &second);
  cm.AddItem(list, TPXBasCamCacheAppend, &third, &third);
  std::vector<void*> held;
  for (int i = 0; i < 3; ++i) held.push_back(pool->Alloc(20000));
  ASSERT_EQ(6 * 24608u, cm.MemoryCurrent());
  EXPECT_FALSE(cm.PurgeExhausted());

  // Above the high mark but within the limit: the block is given, then purging refills the
  // free lists to 1.2 x the reserve cap (38400 bytes: two items).
  void* big = pool->Alloc(40000);
  ASSERT_NE(nullptr, big);
  EXPECT_EQ(1, first.purges);
  EXPECT_EQ(1, second.purges);
  EXPECT_EQ(0, third.purges);
  EXPECT_EQ(2 * 24608u, cm.FreeListBytes());
  EXPECT_EQ(6 * 24608u + 49184u, cm.MemoryCurrent());

  // Past the high mark again: the cached blocks go back to the host to make room within the
  // limit, and the reserve is refilled from the last item.
  void* more = pool->Alloc(40000);
  ASSERT_NE(nullptr, more);
  EXPECT_EQ(1, third.purges);
  EXPECT_EQ(24608u, cm.FreeListBytes());
  EXPECT_EQ(4 * 24608u + 2 * 49184u, cm.MemoryCurrent());

  // Beyond anything purging can give: the last item goes, then the handler is told.
  int calls = 0;
  cm.SetErrorHandler(new CountingHandler(&calls));
  unsigned int block = 123;
  EXPECT_EQ(nullptr, cm.Alloc(150000, block));
  EXPECT_EQ(0u, block);
  EXPECT_EQ(1, calls);
  EXPECT_EQ(1, third.purges);
  EXPECT_TRUE(cm.PurgeExhausted());
  EXPECT_EQ(0u, cm.PendingRequest());
  EXPECT_EQ(3 * 24608u + 2 * 49184u, cm.MemoryCurrent()) << "only blocks in use remain";
  EXPECT_EQ(0u, cm.FreeListBytes());
  EXPECT_EQ(1, first.purges + second.purges - third.purges) << "nobody is purged twice";
  for (void* p : held) pool->Free(p);
  pool->Free(big);
  pool->Free(more);
}

TEST_F(TPXBasCamCacheManagerTest, LoweringTheLimitPurgesOrKeepsTheOldLimit) {
  TPXBasCamCacheManager& cm = Make();
  cm.AddPools(1, std::vector<const char*>{"p"}.data());
  TPXBasCamPool* pool = cm.GetPool(0);
  int list = cm.AddPurgeList(1);
  PoolItem cached(pool, 100000);  // bin 9: 131104 bytes
  cm.AddItem(list, TPXBasCamCacheAppend, &cached, &cached);
  void* kept = pool->Alloc(100000);
  void* spare = pool->Alloc(100000);
  pool->Free(spare);  // on the free list
  ASSERT_EQ(3 * 131104u, cm.MemoryCurrent());

  cm.SetMemoryLimit(200000);  // the free list goes, then the item
  EXPECT_EQ(200000u, cm.MemoryLimit());
  EXPECT_EQ(1, cached.purges);
  EXPECT_EQ(131104u, cm.MemoryCurrent());
  EXPECT_EQ(0u, cm.PendingRequest()) << "the request of the limit change is withdrawn";

  cm.SetMemoryLimit(100000);  // below what is in use and nothing left to purge
  EXPECT_EQ(200000u, cm.MemoryLimit());
  EXPECT_EQ(160000u, cm.MemoryHighMark());
  EXPECT_EQ(131104u, cm.MemoryCurrent());
  pool->Free(kept);
  cm.SetMemoryLimit(100000);
  EXPECT_EQ(100000u, cm.MemoryLimit());
  EXPECT_EQ(0u, cm.MemoryCurrent());
}

TEST_F(TPXBasCamCacheManagerTest, DefaultOutOfMemoryReportAndHandlerOwnership) {
  TPXBasCamCacheManager& cm = Make();
  cm.SetMemoryLimit(10000);
  unsigned int block = 1;
  testing::internal::CaptureStderr();
  EXPECT_EQ(nullptr, cm.Alloc(20000, block));
  EXPECT_EQ(
      "Error: program out of memory!\n"
      "       please set a break point at TPXBasCamMemoryErrorHandler::OutOfMemory() for more "
      "information\n",
      testing::internal::GetCapturedStderr());
  EXPECT_EQ(0u, block);
  int calls = 0;
  cm.SetErrorHandler(new CountingHandler(&calls));
  cm.SetErrorHandler(new CountingHandler(&calls));  // the first is deleted (ASan checks)
  EXPECT_EQ(nullptr, cm.Alloc(20000, block));
  EXPECT_EQ(1, calls);
}

TEST_F(TPXBasCamCacheManagerTest, TrackingToleranceComesFromTheEnvironment) {
  testing::internal::CaptureStderr();
  TPXBasCamCacheManager& cm = Make(nullptr, nullptr, "50");
  EXPECT_EQ("current cache manager maximum point tracking tolerance 50 MB",
            testing::internal::GetCapturedStderr());
  EXPECT_EQ(52428800u, cm.TrackingTolerance());
  Manager::Finalize();
  testing::internal::CaptureStderr();
  EXPECT_EQ(104857600u, Make().TrackingTolerance());
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST_F(TPXBasCamCacheManagerTest, FinalizeRegistersAndReleases) {
  Make();
  EXPECT_TRUE(mem_Testing::RegistryHas(typeid(TPXBasCamCacheManager).name()));
  EXPECT_EQ(&Manager::Instance(), TPXBasMemCacheManager::Current());
  Manager::Finalize();
  EXPECT_FALSE(mem_Testing::RegistryHas(typeid(TPXBasCamCacheManager).name()));
  EXPECT_EQ(nullptr, TPXBasMemCacheManager::Current());
}

// Every host request that fails at any point of an allocation leaves a consistent manager:
// the block is given or the handler runs, and memory current is blocks in use plus free lists.
TEST_F(TPXBasCamCacheManagerTest, HostFailuresAtEveryStepKeepTheBooks) {
  for (long succeed = 0; succeed < 8; ++succeed) {
    SCOPED_TRACE(succeed);
    Manager::Finalize();
    TPXBasCamCacheManager& cm = Make();
    int calls = 0;
    cm.SetErrorHandler(new CountingHandler(&calls));
    unsigned int block = 0;
    std::vector<void*> cached;
    for (int i = 0; i < 3; ++i) cached.push_back(cm.Alloc(20000, block));
    void* inUse = cm.Alloc(70000, block);
    for (void* p : cached) cm.Free(p);
    {
      kld_test::AllocationFailureGuard failing(succeed);
      std::vector<void*> got;
      for (unsigned int size : {5000u, 20000u, 300000u, 2000000u}) {
        unsigned int whole = 7;
        void* p = cm.Alloc(size, whole);
        EXPECT_EQ(p == nullptr, whole == 0u);
        if (p != nullptr) {
          EXPECT_EQ(whole, cm.AllocSize(p));
          static_cast<char*>(p)[size - 1] = 1;
          got.push_back(p);
        }
      }
      unsigned int handedOut = cm.AllocSize(inUse);
      for (void* p : got) handedOut += cm.AllocSize(p);
      EXPECT_EQ(handedOut + cm.FreeListBytes(), cm.MemoryCurrent());
      EXPECT_EQ(0u, cm.PendingRequest());
      EXPECT_EQ(4 - static_cast<int>(got.size()), calls);
      for (void* p : got) cm.Free(p);
    }
    EXPECT_EQ(cm.AllocSize(inUse) + cm.FreeListBytes(), cm.MemoryCurrent());
    void* after = cm.Alloc(20000, block);
    EXPECT_NE(nullptr, after) << "the manager works once the host does";
    cm.Free(after);
    cm.Free(inUse);
    cm.ClearFreeList();
    EXPECT_EQ(0u, cm.MemoryCurrent());
  }
}

TEST_F(TPXBasCamCacheManagerTest, AFailedCreationLeavesNoManager) {
  bool failedOnce = false;
  for (long succeed = 0; succeed < 80; ++succeed) {
    Manager::Finalize();
    kld_test::AllocationFailureGuard failing(succeed);
    try {
      Make();
    } catch (const std::bad_alloc&) {
      failedOnce = true;
      EXPECT_FALSE(mem_Testing::RegistryHas(typeid(TPXBasCamCacheManager).name()));
    }
  }
  EXPECT_TRUE(failedOnce);
  mem_Testing::FailAllocationsAfter(-1);
  Manager::Finalize();
  unsigned int block = 0;
  TPXBasCamCacheManager& cm = Make();
  void* p = cm.Alloc(100, block);
  EXPECT_NE(nullptr, p);
  cm.Free(p);
}

}  // namespace
