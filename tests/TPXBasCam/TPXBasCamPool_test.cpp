// Pools: ids, accounting with and without a stream, limits and the overflow warning, reports,
// maximum-point snapshots and the summary.
#include "cam_TestSupport.h"

#include <string>
#include <vector>

namespace {

using TPXBasCamPoolTest = cam_test::FreshManager;

using cam_test::FreshManager;
using cam_test::MemoryFile;

TEST_F(TPXBasCamPoolTest, AddPoolsGivesNewNamesTheNextIds) {
  TPXBasCamCacheManager& cm = Make();
  const char* first[] = {"mesh", "solver"};
  EXPECT_EQ(0, cm.AddPools(2, first));
  const char* second[] = {"solver", "results"};
  EXPECT_EQ(2, cm.AddPools(2, second));
  EXPECT_EQ(3, cm.NumPools());
  EXPECT_STREQ("results", cm.GetPool(2)->Name());
  EXPECT_EQ(2, cm.GetPool(2)->Id());
  EXPECT_EQ(0, cm.AddPools(2, first)) << "nothing new";
  EXPECT_EQ(0, cm.AddPools(0, first));
  EXPECT_EQ(nullptr, cm.GetPool(3));
  EXPECT_EQ(nullptr, cm.GetPool(-1));
  std::string longName(1500, 'n');
  const char* longNames[] = {longName.c_str()};
  EXPECT_EQ(3, cm.AddPools(1, longNames));
  EXPECT_EQ(1023u, std::string(cm.GetPool(3)->Name()).size()) << "names keep 1023 characters";
}

TEST_F(TPXBasCamPoolTest, PoolsAccountOnlyWhileAStreamIsSet) {
  TPXBasCamCacheManager& cm = Make();
  const char* names[] = {"p"};
  cm.AddPools(1, names);
  TPXBasCamPool* pool = cm.GetPool(0);
  MemoryFile report;
  void* quiet = pool->Alloc(4096);
  EXPECT_EQ(0u, pool->MemoryCurrent());
  pool->MemoryReport();
  pool->Free(quiet);
  EXPECT_EQ(0u, pool->MemoryMax());

  cm.SetDbFile(report.get());
  EXPECT_EQ("", report.text());
  void* p = pool->Alloc(4096);
  EXPECT_EQ(4128u, pool->AllocSize(p));
  EXPECT_EQ(4096u, pool->ActualSizeForUse(p));
  EXPECT_EQ(4128u, pool->MemoryCurrent());
  EXPECT_EQ(4128u, pool->MemoryStagedMax());
  EXPECT_EQ(4128u, pool->MemoryMax());
  EXPECT_EQ(4128u, pool->Free(p));
  EXPECT_EQ(0u, pool->MemoryCurrent());
  EXPECT_EQ(4128u, pool->MemoryStagedMax());
  EXPECT_EQ(4128u, pool->MemoryMax());
  cm.ZeroMaxInPools();
  EXPECT_EQ(0u, pool->MemoryStagedMax());
  EXPECT_EQ(4128u, pool->MemoryMax());
  EXPECT_EQ(0u, pool->Free(nullptr));
  EXPECT_EQ(0u, pool->AllocSize(nullptr));
  EXPECT_EQ(nullptr, pool->Alloc(0));
  EXPECT_EQ(0u, pool->MemoryCurrent());
  cm.SetDbFile(nullptr);
}

TEST_F(TPXBasCamPoolTest, ReportLinesAreInMegabytes) {
  TPXBasCamCacheManager& cm = Make();
  MemoryFile report;
  cm.SetDbFile(report.get());
  const char* names[] = {"mesh", "grid"};
  cm.AddPools(2, names);  // pools made after the stream get it too
  cm.SetPoolLimit(1, 1048576, 3145728, 0.25);
  TPXBasCamPool* grid = cm.GetPool(1);
  void* a = grid->Alloc(1048576 - 32);  // bin 15: 1,048,608 bytes
  void* b = grid->Alloc(1048576 - 32 - 4096);
  grid->Free(b);
  grid->MemoryReport();
  cm.GetPool(0)->MemoryReport();
  EXPECT_EQ(
      "poolId 1 (grid): current 1.000031 -- high 3.000000 -- low 1.000000 -- maxUsed "
      "2.000061\n"
      "poolId 0 (mesh): current 0.000000 -- high 0.000000 -- low 0.000000 -- maxUsed "
      "0.000000\n",
      report.text());
  grid->Free(a);
  cm.SetDbFile(nullptr);
}

TEST_F(TPXBasCamPoolTest, OverflowWarningOnlyWhenSwitchedOnAndAboveTheTolerance) {
  TPXBasCamCacheManager& cm = Make();
  cm.SetMemoryLimit(100000000);
  MemoryFile stats;
  cm.SetDbFile(stats.get());
  const char* names[] = {"big"};
  cm.AddPools(1, names);
  cm.SetPoolLimit(0, 0, 1048576, 0.5);  // warns above 1,572,864 bytes
  TPXBasCamPool* pool = cm.GetPool(0);
  EXPECT_FALSE(pool->WarnOverflow());
  std::vector<void*> blocks;
  testing::internal::CaptureStderr();
  blocks.push_back(pool->Alloc(1000000));  // 1,048,608
  blocks.push_back(pool->Alloc(1000000));  // 2,097,216: above, but the warning is off
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  for (void* p : blocks) pool->Free(p);
  blocks.clear();
  pool->SetWarnOverflow(true);
  testing::internal::CaptureStderr();
  blocks.push_back(pool->Alloc(500000));  // 524,320
  blocks.push_back(pool->Alloc(500000));  // 1,048,640
  blocks.push_back(pool->Alloc(500000));  // 1,572,960: above 1,572,864
  EXPECT_EQ(
      "WARNING:pool 0 (big) overflows: Current 1572960.000000, m_memoryHigh "
      "1048576.000000\n",
      testing::internal::GetCapturedStderr());
  for (void* p : blocks) pool->Free(p);
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
  void* early = cm.Alloc(5000, block);  // cached before the stream: not counted
  cm.Free(early);
  MemoryFile stats;
  cm.SetDbFile(stats.get());
  TPXBasCamPool* a = cm.GetPool(0);
  TPXBasCamPool* b = cm.GetPool(1);
  void* small = a->Alloc(20000);
  a->Free(small);  // bin 4 counter: 24608
  std::vector<void*> held;
  held.push_back(b->Alloc(600000));  // 786,464: no snapshot yet
  EXPECT_EQ(0u, cm.LastMaxPoint());
  held.push_back(b->Alloc(300000));  // past 1 MB: snapshot
  unsigned int snapshot = cm.LastMaxPoint();
  EXPECT_EQ(8224u + 24608u + 786464u + 393248u, snapshot);

  unsigned int mc, fl, *pc, *pm, *ps, *px, *lc, *lm, *bc, *bm, at;
  int np, nl, nb;
  cm.MemorySummary(mc, fl, np, pc, pm, ps, px, nl, lc, lm, nb, bc, bm, at);
  EXPECT_EQ(snapshot, mc);
  EXPECT_EQ(8224u + 24608u, fl);
  EXPECT_EQ(2, np);
  EXPECT_EQ(1, nl);
  EXPECT_EQ(16, nb);
  EXPECT_EQ(0u, pm[0]);
  EXPECT_EQ(786464u, pm[1]) << "pool b at the snapshot, before its second block";
  EXPECT_EQ(0u, pc[0]);
  EXPECT_EQ(786464u + 393248u, pc[1]);
  EXPECT_EQ(24608u, ps[0]);
  EXPECT_EQ(24608u, px[0]);
  EXPECT_EQ(24608u, bm[4]) << "bin counters at the snapshot";
  EXPECT_EQ(0u, bm[1]) << "the block cached before the stream was not counted then";
  EXPECT_EQ(8224u, bc[1]) << "the summary recounts the free lists";
  EXPECT_EQ(24608u, bc[4]);
  EXPECT_EQ(3u, at) << "Alloc calls completed before the one that made the snapshot";
  for (void* p : held) b->Free(p);
  cm.SetDbFile(nullptr);
}

TEST_F(TPXBasCamPoolTest, NoSnapshotUnderTheDefaultToleranceAndLimit) {
  TPXBasCamCacheManager& cm = Make();
  MemoryFile stats;
  cm.SetDbFile(stats.get());
  unsigned int block = 0;
  std::vector<void*> held;
  for (int i = 0; i < 15; ++i) held.push_back(cm.Alloc(1000000, block));
  EXPECT_EQ(0u, cm.LastMaxPoint());
  for (void* p : held) cm.Free(p);
  cm.SetDbFile(nullptr);
}

}  // namespace
