// Small-block allocator: chunk sizes, cutting from the end, merging in variable mode, whole
// blocks in fixed-size mode, large blocks, failures.
#include "cam_TestSupport.h"

#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using TPXBasCamSimpleTBAllocatorTest = cam_test::FreshManager;

/// Records what the small-block allocator asks of its large-block allocator.
struct Record {
  std::vector<unsigned int> sizes;
  std::vector<void*> freed;
};
struct RecordingAllocator : TPXBasMemAllocator {
  explicit RecordingAllocator(Record* r) : rec(r) {}
  void* Alloc(unsigned int size) override {
    return rec->sizes.push_back(size), TPXBasMemAllocator::Alloc(size);
  }
  void Free(void* block) override { rec->freed.push_back(block), TPXBasMemAllocator::Free(block); }
  Record* rec;
};

char* Bytes(void* p) { return static_cast<char*>(p); }

TEST(TPXBasCamSimpleTBAllocator, VariableModeCutsFromTheChunkEndAndMerges) {
  Record rec;
  {
    TPXBasCamSimpleTBAllocator tb(TPXBasAllocator(new RecordingAllocator(&rec)), false, 0, 200);
    unsigned int allocated = 0;
    void* a = tb.Alloc(10, allocated);
    EXPECT_EQ(10u, allocated) << "the request, not the rounded size";
    EXPECT_EQ((std::vector<unsigned int>{200 * 16 + 16}), rec.sizes);
    void* b = tb.Alloc(10);
    EXPECT_EQ(Bytes(a) - 32, Bytes(b)) << "two units each, cut from the end";
    void* c = tb.Alloc(17);  // three units
    EXPECT_EQ(Bytes(b) - 48, Bytes(c));
    void* big = tb.Alloc(4080);  // 4080 + 16 reaches 4096: a large block
    EXPECT_EQ(4096u, rec.sizes.back());
    tb.Free(big);
    EXPECT_EQ((std::vector<void*>{Bytes(big) - 16}), rec.freed);
    // Freed in orders that merge with the successor, the predecessor and both, the blocks
    // and the rest of the chunk serve a request of the whole chunk again.
    for (auto order : {std::vector<void*>{b, a, c}, std::vector<void*>{a, c, b}}) {
      for (void* p : order) tb.Free(p);
      void* whole = tb.Alloc(200 * 16 - 31);
      EXPECT_EQ(Bytes(c) - 193 * 16, Bytes(whole)) << "one block from the chunk's start";
      tb.Free(whole);
      a = tb.Alloc(10);
      b = tb.Alloc(10);
      c = tb.Alloc(17);
    }
    EXPECT_EQ(2u, rec.sizes.size()) << "no new chunk so far";
    tb.Free(tb.Alloc(3100));  // 195 units: more than the 193 left
    EXPECT_EQ(3u, rec.sizes.size());
    for (void* p : {a, b, c, static_cast<void*>(nullptr)}) tb.Free(p);
  }
  EXPECT_EQ(rec.sizes.size(), rec.freed.size()) << "the chunks go back at destruction";
}

TEST(TPXBasCamSimpleTBAllocator, FixedModeKeepsBlocksWhole) {
  // Chunk units are rounded to multiples of the block units, (80 + 15) / 16 + 1 = 6.
  for (auto [chunkUnits, expected] : {std::pair{100u, 96u}, {3u, 6u}, {102u, 102u}}) {
    TPXBasCamSimpleTBAllocator tb(TPXBasAllocator(new TPXBasMemAllocator), true, 80, chunkUnits);
    EXPECT_EQ(6u, tb.BlockUnits());
    EXPECT_EQ(expected, tb.ChunkUnits()) << chunkUnits;
  }
  Record rec;
  TPXBasCamSimpleTBAllocator tb(TPXBasAllocator(new RecordingAllocator(&rec)), true, 40, 100);
  void *a = tb.Alloc(1), *b = tb.Alloc(40);
  EXPECT_EQ(Bytes(a) - 64, Bytes(b)) << "every block has the block size";
  tb.Free(a), tb.Free(b);
  // Without merging the two freed blocks stay separate and come back one for one, in
  // address order from the free pointer.
  EXPECT_EQ(b, tb.Alloc(8));
  EXPECT_EQ(a, tb.Alloc(8));
  for (int i = 0; i < 23; ++i) tb.Alloc(40);  // 25 blocks fill one chunk
  EXPECT_EQ(1u, rec.sizes.size());
  tb.Alloc(40);
  EXPECT_EQ(2u, rec.sizes.size());
}

// Random allocations and frees with content checks: no block overlaps another and the
// allocator survives any order of frees, in both modes, with the allocator (and so the base
// element of its ring) above its chunks (on the stack) and below them (made first on the heap).
TEST(TPXBasCamSimpleTBAllocator, RandomUseKeepsBlocksApart) {
  for (int mode = 0; mode < 4; ++mode) {
    bool fixed = mode % 2 == 1;
    SCOPED_TRACE(mode);
    TPXBasCamSimpleTBAllocator onStack(static_cast<TPXBasCamPool*>(nullptr), fixed, 200, 64);
    auto* onHeap =
        new TPXBasCamSimpleTBAllocator(static_cast<TPXBasCamPool*>(nullptr), fixed, 200, 64);
    TPXBasCamSimpleTBAllocator& tb = mode < 2 ? onStack : *onHeap;
    std::mt19937 rng(static_cast<unsigned int>(mode));
    std::vector<std::pair<char*, std::string>> live;  // each block and its expected content
    for (int step = 0; step < 4000; ++step) {
      if (live.empty() || rng() % 3 != 0) {
        unsigned int size = fixed ? 1 + rng() % 200 : 1 + rng() % (rng() % 8 == 0 ? 6000 : 300);
        live.emplace_back(static_cast<char*>(tb.Alloc(size)), std::string(size, char(step)));
        ASSERT_NE(nullptr, live.back().first);
        std::memcpy(live.back().first, live.back().second.data(), size);
      } else {
        std::swap(live[rng() % live.size()], live.back());
        ASSERT_EQ(live.back().second, std::string(live.back().first, live.back().second.size()))
            << "block overwritten at step " << step;
        tb.Free(live.back().first);
        live.pop_back();
      }
    }
    for (const auto& l : live) tb.Free(l.first);
    delete onHeap;
  }
}

TEST_F(TPXBasCamSimpleTBAllocatorTest, PoolBackedChunksAndFailures) {
  TPXBasCamCacheManager& cm = Make();
  TPXBasCamPool* pool = OnePool(cm);
  cam_test::MemoryFile stats;
  cm.SetDbFile(stats.get());
  {
    TPXBasCamSimpleTBAllocator tb(pool, false, 0, 100);
    tb.Free(tb.Alloc(32));
    EXPECT_EQ(4128u, pool->MemoryCurrent()) << "one chunk from the pool";
  }
  EXPECT_EQ(0u, pool->MemoryCurrent()) << "the chunk goes back with the allocator";
  cm.SetDbFile(nullptr);
  TPXBasCamSimpleTBAllocator tb(static_cast<TPXBasCamPool*>(nullptr), true, 32, 100);
  kld_test::AllocationFailureGuard failing(0);
  unsigned int allocated = 5;
  EXPECT_EQ(nullptr, tb.Alloc(32, allocated));
  EXPECT_EQ(32u, allocated);
  EXPECT_EQ(nullptr, tb.Alloc(5000));
}

}  // namespace
