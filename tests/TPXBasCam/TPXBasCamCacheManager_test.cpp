// Cache manager: bins and block sizes, recycling, limits and thresholds, purging from the
// allocating thread, host failures, the environment and its messages.
#include "cam_TestSupport.h"

#include <cmath>
#include <string>
#include <thread>
#include <vector>

namespace {

using TPXBasCamCacheManagerTest = cam_test::FreshManager;
using cam_test::CountingHandler;
using cam_test::Manager;
using cam_test::PoolItem;

TPXBasAtiMutex* MutexOf(void* p) {
  return reinterpret_cast<TPXBasCamBinHeader*>(static_cast<char*>(p) - 32)->m_mutex;
}

TEST_F(TPXBasCamCacheManagerTest, RequestsLandInTheirBinWithTheirBlockSize) {
  struct Case {
    const char *bins, *alignment;
    unsigned int size;
    int bin;
    unsigned int block;
  } rows[] = {
      // clang-format off
      {nullptr, nullptr, 4096, 0, 4128},
      {nullptr, nullptr, 4097, 1, 8224},
      {nullptr, nullptr, 16385, 4, 24608},
      {nullptr, nullptr, 1048576, 15, 1048608},
      {nullptr, nullptr, 1048577, 16, 1052704},  // large with 16 bins: page-rounded
      {"18", nullptr, 1048577, 16, 1572896},     // 384 pages
      {"18", nullptr, 2097152, 17, 2097184},     // 512 pages, the last bin
      {"30", nullptr, 2097153, 18, 2101280},     // more than 18 bins count as 18
      {"0", nullptr, 10, 0, 4128},               // no bins: all large
      {nullptr, "64", 1048644, 15, 1048676},     // the alignment allowance
      {nullptr, "64", 1048645, 16, 1052704},     // one byte past it: large
      {nullptr, "64", 786433, 15, 1048676},      // every last-bin block grows
      {nullptr, "64", 4096, 0, 4128},
      // clang-format on
  };
  for (const Case& c : rows) {
    SCOPED_TRACE(testing::Message() << (c.bins ? c.bins : "-") << " bins, alignment "
                                    << (c.alignment ? c.alignment : "-") << ", " << c.size);
    Manager::Finalize();
    TPXBasCamCacheManager& cm = Make(c.bins, c.alignment);
    EXPECT_EQ(c.bin, cm.GetBin(c.size));
    unsigned int block = 0;
    void* p = cm.Alloc(c.size, block);
    ASSERT_NE(nullptr, p);
    EXPECT_EQ(c.block, block);
    EXPECT_EQ(c.block - 32, cm.ActualSizeForUse(p));
    EXPECT_EQ(0u, reinterpret_cast<unsigned long>(p) % 16) << "user data is 16-byte aligned";
    static_cast<char*>(p)[c.size - 1] = 'x';  // the whole request is usable (ASan)
    EXPECT_EQ(c.block, cm.Free(p));
    EXPECT_EQ(c.block, cm.FreeListBytes() + (c.bin >= cm.NumBins() ? c.block : 0));
  }
  const unsigned int pages[] = {1,  2,  3,  4,  6,   8,   12,  16,  24,
                                32, 48, 64, 96, 128, 192, 256, 384, 512};
  Manager::Finalize();
  TPXBasCamCacheManager& cm = Make("18");
  for (int b = 0; b < 18; ++b) {
    EXPECT_EQ(pages[b] * 4096ull, TPXBasCamCacheManager::BinCapacity(b));
    EXPECT_EQ(b, cm.GetBin(pages[b] * 4096));
    EXPECT_EQ(b + 1, cm.GetBin(pages[b] * 4096 + 1)) << "one byte more moves up";
  }
}

TEST_F(TPXBasCamCacheManagerTest, RecyclingIsLastInFirstOutAndKeepsTheBooks) {
  TPXBasCamCacheManager& cm = Make();
  unsigned int block = 77;
  EXPECT_EQ(nullptr, cm.Alloc(0, block));
  EXPECT_EQ(0u, block);
  EXPECT_EQ(0u, cm.Free(nullptr) + cm.AllocSize(nullptr) + cm.ActualSizeForUse(nullptr));
  void *a = cm.Alloc(5000, block), *b = cm.Alloc(6000, block);
  TPXBasAtiMutex* mutexOfA = MutexOf(a);
  long acquires = mem_Testing::AcquireCount(), releases = mem_Testing::ReleaseCount();
  std::thread([&] { cm.Free(b); }).join();  // counts of an ended thread still count
  cm.Free(a);
  EXPECT_EQ(releases + 2, mem_Testing::ReleaseCount());
  EXPECT_EQ(2 * 8224u, cm.FreeListBytes());
  EXPECT_EQ(2 * 8224u, cm.MemoryCurrent()) << "a bin block stays with the manager";
  void* again = cm.Alloc(4097, block);
  EXPECT_EQ(a, again) << "the last block freed is the first reused";
  EXPECT_EQ(mutexOfA, MutexOf(again));
  EXPECT_EQ(b, cm.Alloc(8192, block));
  void* third = cm.Alloc(4097, block);
  EXPECT_EQ(acquires + 2, mem_Testing::AcquireCount()) << "a fresh block is not acquired";
  EXPECT_EQ(6u, cm.AllocCount()) << "every call, 0 bytes and recycled blocks included";
  void* big = cm.Alloc(1048577, block);
  EXPECT_EQ(3 * 8224u + 1052704u, cm.MemoryCurrent());
  EXPECT_EQ(1052704u, cm.Free(big));
  EXPECT_EQ(3 * 8224u, cm.MemoryCurrent()) << "a large block goes back at once";
  EXPECT_EQ(releases + 2, mem_Testing::ReleaseCount());
  for (void* p : {a, b, third}) cm.Free(p);
  cm.ClearFreeList();
  EXPECT_EQ(0u, cm.MemoryCurrent() + cm.FreeListBytes());
}

TEST_F(TPXBasCamCacheManagerTest, ThresholdsFollowTheLimitAndFractions) {
  TPXBasCamCacheManager& cm = Make();
  using Marks = std::vector<unsigned int>;                         // limit, high, low, reserve cap
  const Marks steps[] = {{20971520, 16777216, 12582912, 3355443},  // defaults
                         {20971520, 18874368, 10485760, 3774873},  // fractions 0.9 and 0.5
                         {4000000000u, 3600000000u, 2000000000u, 524288000},  // reserve capped
                         {1000000, 900000, 500000, 180000}};
  for (int step = 0; step < 4; ++step) {
    if (step == 1) cm.SetPurgePercentage(0.9, 0.5);
    if (step > 1) cm.SetMemoryLimit(steps[step][0]);
    EXPECT_EQ(steps[step],
              Marks({cm.MemoryLimit(), cm.MemoryHighMark(), cm.MemoryLowMark(), cm.ReserveCap()}));
  }
}

TEST_F(TPXBasCamCacheManagerTest, EnvironmentValuesOutOfRangeFallBackWithOneNotice) {
  struct Case {
    const char *bins, *alignment, *tolerance;
    int numBins, alignmentSet;
    unsigned int toleranceSet;
    const char* notice;
  } rows[] = {
      {"-3", nullptr, nullptr, 16, 0, 104857600,
       "KAL cache manager: KAL_CAM_NUMBER_OF_BINS=-3 is not a number from 0 to 18; using 16\n"},
      {"99999999999", nullptr, nullptr, 18, 0, 104857600, ""},  // more than 18 is 18
      {"many", nullptr, nullptr, 0, 0, 104857600, ""},          // not a number: no bins
      {nullptr, "2147483647", nullptr, 16, 0, 104857600,
       "KAL cache manager: KAL_CAM_MEMORY_ALIGNMENT=2147483647 is not a number from 0 to "
       "1048576; using 0\n"},
      {nullptr, "-1", nullptr, 16, 0, 104857600,
       "KAL cache manager: KAL_CAM_MEMORY_ALIGNMENT=-1 is not a number from 0 to 1048576; "
       "using 0\n"},
      {nullptr, "1048576", nullptr, 16, 1048576, 104857600, ""},
      {nullptr, nullptr, "-1", 16, 0, 104857600,
       "KAL cache manager: KAL_CAM_TRACKINGTOL=-1 is not a number from 0 to 4095; using 100\n"},
      {nullptr, nullptr, "99999", 16, 0, 104857600,
       "KAL cache manager: KAL_CAM_TRACKINGTOL=99999 is not a number from 0 to 4095; using "
       "100\n"},
      {nullptr, nullptr, "4095", 16, 0, 4293918720u,
       "current cache manager maximum point tracking tolerance 4095 MB"},
  };
  for (const Case& c : rows) {
    SCOPED_TRACE(c.notice);
    Manager::Finalize();
    testing::internal::CaptureStderr();
    TPXBasCamCacheManager& cm = Make(c.bins, c.alignment, c.tolerance);
    EXPECT_EQ(c.notice, testing::internal::GetCapturedStderr());
    EXPECT_EQ(c.numBins, cm.NumBins());
    EXPECT_EQ(c.alignmentSet, cm.Alignment());
    EXPECT_EQ(c.toleranceSet, cm.TrackingTolerance());
    unsigned int block = 0;
    void* p = cm.Alloc(1048576, block);  // the last bin or a large block: always served
    EXPECT_NE(nullptr, p);
    cm.Free(p);
  }
}

TEST_F(TPXBasCamCacheManagerTest,
       FractionsOutsideZeroToOneChangeNothingAndHugeRequestsReachTheHandler) {
  TPXBasCamCacheManager& cm = Make();
  const double bad[][2] = {{-0.1, 0.5}, {0.9, -0.5}, {1.5, 0.5}, {NAN, 0.5}, {0.9, INFINITY}};
  for (const auto& f : bad) {
    testing::internal::CaptureStderr();
    cm.SetPurgePercentage(f[0], f[1]);
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find(
                                     "are not both from 0 to 1; kept 0.8 and 0.6\n"));
    EXPECT_EQ(16777216u, cm.MemoryHighMark());
    EXPECT_EQ(12582912u, cm.MemoryLowMark());
    EXPECT_EQ(3355443u, cm.ReserveCap());
  }
  cm.SetPurgePercentage(1.0, 0.0);  // the ends are fractions too
  EXPECT_EQ(20971520u, cm.MemoryHighMark());
  int calls = 0;
  cm.SetErrorHandler(new CountingHandler(&calls));
  unsigned int block = 1;
  EXPECT_EQ(nullptr, cm.Alloc(0xFFFFFFFFu, block));  // no block size fits 32 bits
  EXPECT_EQ(0u, block);
  EXPECT_EQ(1, calls) << "every null result of a request reaches the handler";
  EXPECT_EQ(nullptr, cm.Alloc(0, block));
  EXPECT_EQ(1, calls) << "but not the null of a request of 0 bytes";
}

TEST_F(TPXBasCamCacheManagerTest, PassingTheHighMarkRefillsTheReserveThenPurgingRunsOut) {
  TPXBasCamCacheManager& cm = Make();
  cm.SetMemoryLimit(200000);  // high 160000, reserve cap 32000
  TPXBasCamPool* pool = OnePool(cm);
  int list = cm.AddPurgeList(1);
  PoolItem first(pool, 20000), second(pool, 20000), third(pool, 20000);
  for (PoolItem* item : {&first, &second, &third})
    cm.AddItem(list, TPXBasCamCacheAppend, item, item);
  std::vector<void*> held;
  for (int i = 0; i < 3; ++i) held.push_back(pool->Alloc(20000));
  ASSERT_EQ(6 * 24608u, cm.MemoryCurrent());
  // Above the high mark but within the limit: the block is given, then purging refills the
  // free lists to 1.2 x the reserve cap (38400 bytes: two items).
  held.push_back(pool->Alloc(40000));
  EXPECT_EQ(2, first.purges + second.purges);
  EXPECT_EQ(0, third.purges);
  EXPECT_EQ(2 * 24608u, cm.FreeListBytes());
  // Past it again: cached blocks go back to the host, the reserve is refilled from the last item.
  held.push_back(pool->Alloc(40000));
  EXPECT_EQ(1, third.purges);
  EXPECT_EQ(24608u, cm.FreeListBytes());
  EXPECT_EQ(4 * 24608u + 2 * 49184u, cm.MemoryCurrent());
  // Beyond anything purging can give: the handler is told, and nothing is left pending.
  int calls = 0;
  cm.SetErrorHandler(new CountingHandler(&calls));
  unsigned int block = 123;
  EXPECT_EQ(nullptr, cm.Alloc(150000, block));
  EXPECT_EQ(0u, block);
  EXPECT_EQ(1, calls);
  EXPECT_TRUE(cm.PurgeExhausted());
  EXPECT_EQ(0u, cm.PendingRequest());
  EXPECT_EQ(3 * 24608u + 2 * 49184u, cm.MemoryCurrent()) << "only blocks in use remain";
  EXPECT_EQ(0u, cm.FreeListBytes());
  EXPECT_EQ(3, first.purges + second.purges + third.purges) << "nobody purged twice";
  for (void* p : held) pool->Free(p);
}

TEST_F(TPXBasCamCacheManagerTest, LoweringTheLimitPurgesOrKeepsTheOldLimit) {
  TPXBasCamCacheManager& cm = Make();
  TPXBasCamPool* pool = OnePool(cm);
  PoolItem cached(pool, 100000);  // bin 9: 131104 bytes
  cm.AddItem(cm.AddPurgeList(1), TPXBasCamCacheAppend, &cached, &cached);
  void* kept = pool->Alloc(100000);
  pool->Free(pool->Alloc(100000));  // on a free list
  cm.SetMemoryLimit(200000);        // the free list goes, then the item
  EXPECT_EQ(200000u, cm.MemoryLimit());
  EXPECT_EQ(1, cached.purges);
  EXPECT_EQ(131104u, cm.MemoryCurrent());
  EXPECT_EQ(0u, cm.PendingRequest()) << "the request of the limit change is withdrawn";
  cm.SetMemoryLimit(100000);  // below what is in use and nothing left to purge
  EXPECT_EQ(200000u, cm.MemoryLimit());
  EXPECT_EQ(160000u, cm.MemoryHighMark());
  pool->Free(kept);
  cm.SetMemoryLimit(100000);
  EXPECT_EQ(100000u, cm.MemoryLimit());
  EXPECT_EQ(0u, cm.MemoryCurrent());
}

TEST_F(TPXBasCamCacheManagerTest, MessagesOnTheStandardErrorStream) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(52428800u, Make(nullptr, nullptr, "50").TrackingTolerance());
  EXPECT_EQ("current cache manager maximum point tracking tolerance 50 MB",
            testing::internal::GetCapturedStderr());
  Manager::Finalize();
  testing::internal::CaptureStderr();
  TPXBasCamCacheManager& cm = Make();
  EXPECT_EQ(104857600u, cm.TrackingTolerance());
  cm.SetMemoryLimit(10000);
  unsigned int block = 1;
  EXPECT_EQ(nullptr, cm.Alloc(20000, block));
  EXPECT_EQ(
      "Error: program out of memory!\n       please set a break point at "
      "TPXBasCamMemoryErrorHandler::OutOfMemory() for more information\n",
      testing::internal::GetCapturedStderr());
  int calls = 0;
  cm.SetErrorHandler(new CountingHandler(&calls));
  cm.SetErrorHandler(new CountingHandler(&calls));  // the first is deleted (ASan checks)
  EXPECT_EQ(nullptr, cm.Alloc(20000, block));
  EXPECT_EQ(1, calls);
  EXPECT_TRUE(mem_Testing::RegistryHas(typeid(TPXBasCamCacheManager).name()));
  EXPECT_EQ(&cm, TPXBasMemCacheManager::Current());
  Manager::Finalize();
  EXPECT_FALSE(mem_Testing::RegistryHas(typeid(TPXBasCamCacheManager).name()));
  EXPECT_EQ(nullptr, TPXBasMemCacheManager::Current());
}

// A host request failing at any point of an allocation leaves a consistent manager: the block
// is given or the handler runs, and memory current is blocks in use plus free lists.
TEST_F(TPXBasCamCacheManagerTest, HostFailuresAtEveryStepKeepTheBooks) {
  for (long succeed = 0; succeed < 8; ++succeed) {
    SCOPED_TRACE(succeed);
    Manager::Finalize();
    TPXBasCamCacheManager& cm = Make();
    int calls = 0;
    cm.SetErrorHandler(new CountingHandler(&calls));
    unsigned int block = 0;
    std::vector<void*> got;
    for (int i = 0; i < 3; ++i) got.push_back(cm.Alloc(20000, block));
    void* inUse = cm.Alloc(70000, block);
    for (void* p : got) cm.Free(p);
    got.clear();
    {
      kld_test::AllocationFailureGuard failing(succeed);
      for (unsigned int size : {5000u, 20000u, 300000u, 2000000u}) {
        unsigned int whole = 7;
        void* p = cm.Alloc(size, whole);
        EXPECT_EQ(p == nullptr, whole == 0u);
        if (p != nullptr) got.push_back(p);
      }
      unsigned int handedOut = cm.AllocSize(inUse);
      for (void* p : got) handedOut += cm.AllocSize(p);
      EXPECT_EQ(handedOut + cm.FreeListBytes(), cm.MemoryCurrent());
      EXPECT_EQ(0u, cm.PendingRequest());
      EXPECT_EQ(4 - static_cast<int>(got.size()), calls);
    }
    got.push_back(inUse);
    got.push_back(cm.Alloc(20000, block));
    EXPECT_NE(nullptr, got.back()) << "the manager works once the host does";
    for (void* p : got) cm.Free(p);
    cm.ClearFreeList();
    EXPECT_EQ(0u, cm.MemoryCurrent());
  }
}

TEST_F(TPXBasCamCacheManagerTest, AFailedCreationLeavesNoManager) {
  int failures = 0;
  for (long succeed = 0; succeed < 80; ++succeed) {
    Manager::Finalize();
    kld_test::AllocationFailureGuard failing(succeed);
    try {
      Make();
    } catch (const std::bad_alloc&) {
      ++failures;
      EXPECT_FALSE(mem_Testing::RegistryHas(typeid(TPXBasCamCacheManager).name()));
    }
  }
  EXPECT_GT(failures, 0);
  EXPECT_LT(failures, 80) << "creation works again once the host does";
}

}  // namespace
