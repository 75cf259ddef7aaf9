// Pools: ids, accounting with and without a stream, limits and the overflow warning, reports,
// maximum-point snapshots and the summary.
#include "cam_TestSupport.h"

namespace {

using TPXBasCamPoolTest = cam_test::FreshManager;
using cam_test::MemoryFile;

TEST_F(TPXBasCamPoolTest, AddPoolsGivesNewNamesTheNextIds) {
  TPXBasCamCacheManager& cm = Make();
  std::string longName(1500, 'n');
  const char *first[] = {"mesh", "solver"}, *second[] = {"solver", "results"},
             *longNames[] = {longName.c_str()};
  EXPECT_EQ(0, cm.AddPools(2, first));
  EXPECT_EQ(2, cm.AddPools(2, second));
  EXPECT_STREQ("results", cm.GetPool(2)->Name());
  EXPECT_EQ(0, cm.AddPools(2, first) + cm.AddPools(0, first)) << "nothing new";
  EXPECT_EQ(nullptr, cm.GetPool(3));
  EXPECT_EQ(3, cm.AddPools(1, longNames));
  EXPECT_EQ(1023u, std::string(cm.GetPool(3)->Name()).size()) << "names keep 1023 characters";
}

TEST_F(TPXBasCamPoolTest, PoolsAccountOnlyWhileAStreamIsSet) {
  TPXBasCamCacheManager& cm = Make();
  TPXBasCamPool* pool = OnePool(cm);
  MemoryFile report;
  pool->Free(pool->Alloc(4096));
  pool->MemoryReport();
  EXPECT_EQ(0u, pool->MemoryMax());
  cm.SetDbFile(report.get());
  void* p = pool->Alloc(4096);
  EXPECT_EQ(4096u, pool->ActualSizeForUse(p));
  for (unsigned int value : {pool->MemoryCurrent(), pool->MemoryStagedMax(), pool->MemoryMax()})
    EXPECT_EQ(4128u, value);
  EXPECT_EQ(4128u, pool->Free(p));
  EXPECT_EQ(0u, pool->MemoryCurrent());
  EXPECT_EQ(4128u, pool->MemoryStagedMax());
  cm.ZeroMaxInPools();
  EXPECT_EQ(0u, pool->MemoryStagedMax());
  EXPECT_EQ(4128u, pool->MemoryMax());
  EXPECT_EQ(nullptr, pool->Alloc(0));
  EXPECT_EQ(0u, pool->Free(nullptr) + pool->AllocSize(nullptr) + pool->MemoryCurrent());
  EXPECT_EQ("", report.text()) << "nothing was reported without a stream";
  cm.SetDbFile(nullptr);
}

TEST_F(TPXBasCamPoolTest, ReportsAndTheOverflowWarning) {
  TPXBasCamCacheManager& cm = Make();
  cm.SetMemoryLimit(100000000);
  MemoryFile report;
  cm.SetDbFile(report.get());
  const char* names[] = {"mesh", "grid"};
  cm.AddPools(2, names);                     // pools made after the stream get it too
  cm.SetPoolLimit(1, 524288, 1048576, 0.5);  // warns above 1,572,864 bytes
  TPXBasCamPool* grid = cm.GetPool(1);
  std::vector<void*> blocks;
  testing::internal::CaptureStderr();
  blocks.push_back(grid->Alloc(1048576 - 32));  // bin 15: 1,048,608 bytes
  blocks.push_back(grid->Alloc(1000000));       // 2,097,216: above, but the warning is off
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  grid->Free(blocks.back()), blocks.pop_back();
  grid->MemoryReport();
  cm.GetPool(0)->MemoryReport();
  EXPECT_EQ(
      "poolId 1 (grid): current 1.000031 -- high 1.000000 -- low 0.500000 -- maxUsed 2.000061\n"
      "poolId 0 (mesh): current 0.000000 -- high 0.000000 -- low 0.000000 -- maxUsed 0.000000\n",
      report.text());
  grid->SetWarnOverflow(true);
  testing::internal::CaptureStderr();
  blocks.push_back(grid->Alloc(4096));    // 1,052,736: within the tolerance
  blocks.push_back(grid->Alloc(500000));  // 1,577,056: above it
  EXPECT_EQ(
      "WARNING:pool 1 (grid) overflows: Current 1577056.000000, m_memoryHigh 1048576.000000\n",
      testing::internal::GetCapturedStderr());
  for (void* p : blocks) grid->Free(p);
  cm.SetDbFile(nullptr);
}

TEST_F(TPXBasCamPoolTest, MaximumPointSnapshotsAndSummary) {
  testing::internal::CaptureStderr();
  TPXBasCamCacheManager& cm = Make(nullptr, nullptr, "1");  // 1 MB between snapshots
  testing::internal::GetCapturedStderr();
  cm.AddPurgeList(1);
  const char* names[] = {"a", "b"};
  cm.AddPools(2, names);
  unsigned int block = 0;
  cm.Free(cm.Alloc(5000, block));  // cached before the stream: not counted
  MemoryFile stats;
  cm.SetDbFile(stats.get());
  TPXBasCamPool *a = cm.GetPool(0), *b = cm.GetPool(1);
  a->Free(a->Alloc(20000));                   // bin 4 counter: 24608
  std::vector<void*> held{b->Alloc(600000)};  // 786,464: no snapshot yet
  EXPECT_EQ(0u, cm.LastMaxPoint());
  held.push_back(b->Alloc(300000));  // past 1 MB: snapshot
  EXPECT_EQ(8224u + 24608u + 786464u + 393248u, cm.LastMaxPoint());

  cam_test::Summary s(cm);
  EXPECT_EQ(cm.LastMaxPoint(), s.current);
  EXPECT_EQ(8224u + 24608u, s.freeList);
  EXPECT_EQ((std::vector<int>{2, 1, 16}), (std::vector<int>{s.pools, s.lists, s.bins}));
  EXPECT_EQ(786464u, s.poolAtMax[1]) << "pool b at the snapshot, before its second block";
  EXPECT_EQ(786464u + 393248u, s.poolCurrent[1]);
  EXPECT_EQ(24608u, s.poolStaged[0]);
  EXPECT_EQ(24608u, s.poolMax[0]);
  EXPECT_EQ(24608u, s.binAtMax[4]) << "bin counters at the snapshot";
  EXPECT_EQ(0u, s.binAtMax[1]) << "the block cached before the stream was not counted then";
  EXPECT_EQ(8224u, s.binCurrent[1]) << "the summary recounts the free lists";
  EXPECT_EQ(3u, s.allocsAtMax) << "Alloc calls completed before the one that made the snapshot";
  for (void* p : held) b->Free(p);
}

}  // namespace
