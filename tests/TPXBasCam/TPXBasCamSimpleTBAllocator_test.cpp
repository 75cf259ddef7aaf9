// Small-block allocator: chunk sizes, cutting from the end, merging in variable mode, whole
// blocks in fixed-size mode, large blocks, failures.
#include "cam_TestSupport.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace {

using TPXBasCamSimpleTBAllocatorTest = cam_test::FreshManager;

/// Records what the small-block allocator asks of its large-block allocator.
class RecordingAllocator : public TPXBasMemAllocator {
 public:
  explicit RecordingAllocator(std::vector<unsigned int>* sizes, std::vector<void*>* freed)
      : m_sizes(sizes), m_freed(freed) {}
  void* Alloc(unsigned int size) override {
    m_sizes->push_back(size);
    return TPXBasMemAllocator::Alloc(size);
  }
  void Free(void* block) override {
    m_freed->push_back(block);
    TPXBasMemAllocator::Free(block);
  }

 private:
  std::vector<unsigned int>* m_sizes;
  std::vector<void*>* m_freed;
};

char* Bytes(void* p) { return static_cast<char*>(p); }

TEST(TPXBasCamSimpleTBAllocator, VariableModeCutsFromTheChunkEnd) {
  std::vector<unsigned int> sizes;
  std::vector<void*> freed;
  {
    TPXBasCamSimpleTBAllocator tb(TPXBasAllocator(new RecordingAllocator(&sizes, &freed)), false, 0,
                                  512);
    unsigned int allocated = 0;
    void* a = tb.Alloc(10, allocated);
    EXPECT_EQ(10u, allocated) << "the request, not the rounded size";
    ASSERT_EQ(1u, sizes.size());
    EXPECT_EQ(512u * 16 + 16, sizes[0]);
    void* b = tb.Alloc(10);
    EXPECT_EQ(Bytes(a) - 32, Bytes(b)) << "two units each, cut from the end";
    EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(a) % 16);
    void* c = tb.Alloc(17);  // three units
    EXPECT_EQ(Bytes(b) - 48, Bytes(c));
    EXPECT_EQ(1u, sizes.size());
    void* big = tb.Alloc(4080);  // 4080 + 16 reaches 4096: a large block
    ASSERT_EQ(2u, sizes.size());
    EXPECT_EQ(4096u, sizes[1]);
    void* below = tb.Alloc(4079);  // 256 units: small, from the rest of the chunk
    EXPECT_EQ(2u, sizes.size());
    tb.Free(big);
    ASSERT_EQ(1u, freed.size());
    EXPECT_EQ(Bytes(big) - 16, freed[0]);
    tb.Free(below);
    tb.Free(nullptr);
    tb.Free(a);
  }
  EXPECT_EQ(sizes.size(), freed.size()) << "the chunk goes back at destruction";
}

TEST(TPXBasCamSimpleTBAllocator, VariableModeMergesNeighbours) {
  std::vector<unsigned int> sizes;
  std::vector<void*> freed;
  TPXBasCamSimpleTBAllocator tb(TPXBasAllocator(new RecordingAllocator(&sizes, &freed)), false, 0,
                                200);
  void* a = tb.Alloc(10);
  void* b = tb.Alloc(10);
  void* c = tb.Alloc(17);
  // Freed in an order that merges with the successor, the predecessor and both.
  for (auto order : {std::vector<void*>{b, a, c}, std::vector<void*>{a, c, b}}) {
    for (void* p : order) tb.Free(p);
    void* whole = tb.Alloc(200 * 16 - 31);  // 200 units: the whole chunk again
    EXPECT_EQ(1u, sizes.size()) << "merged blocks serve the request without a new chunk";
    EXPECT_EQ(Bytes(c) - 193 * 16, Bytes(whole)) << "one block from the chunk's start";
    tb.Free(whole);
    a = tb.Alloc(10);
    b = tb.Alloc(10);
    c = tb.Alloc(17);
  }
  void* more = tb.Alloc(3100);  // 195 units: more than the 193 left
  EXPECT_EQ(2u, sizes.size()) << "no room left: a second chunk";
  tb.Free(more);
  tb.Free(a);
  tb.Free(b);
  tb.Free(c);
}

TEST(TPXBasCamSimpleTBAllocator, FixedModeKeepsBlocksWhole) {
  std::vector<unsigned int> sizes;
  std::vector<void*> freed;
  TPXBasCamSimpleTBAllocator tb(TPXBasAllocator(new RecordingAllocator(&sizes, &freed)), true, 40,
                                100);
  EXPECT_EQ(4u, tb.BlockUnits()) << "(40 + 15) / 16 + 1";
  EXPECT_EQ(100u, tb.ChunkUnits());
  TPXBasCamSimpleTBAllocator odd(TPXBasAllocator(new TPXBasMemAllocator), true, 40, 3);
  EXPECT_EQ(4u, odd.ChunkUnits()) << "never below one block";
  TPXBasCamSimpleTBAllocator round(TPXBasAllocator(new TPXBasMemAllocator), true, 40, 102);
  EXPECT_EQ(100u, round.ChunkUnits()) << "a multiple of the block units";

  void* a = tb.Alloc(1);
  void* b = tb.Alloc(40);
  EXPECT_EQ(Bytes(a) - 64, Bytes(b)) << "every block has the block size";
  tb.Free(a);
  tb.Free(b);
  // Without merging the two freed blocks stay separate and come back one for one.
  void* c = tb.Alloc(8);
  void* d = tb.Alloc(8);
  EXPECT_TRUE((c == a && d == b) || (c == b && d == a));
  std::vector<void*> all{c, d};
  for (int i = 0; i < 23; ++i) all.push_back(tb.Alloc(40));  // 25 blocks fill one chunk
  EXPECT_EQ(1u, sizes.size());
  all.push_back(tb.Alloc(40));
  EXPECT_EQ(2u, sizes.size());
  std::sort(all.begin(), all.end());
  EXPECT_EQ(all.end(), std::adjacent_find(all.begin(), all.end())) << "no block handed out twice";
  for (void* p : all) tb.Free(p);
}

// Random allocations and frees with content checks: no block overlaps another and the
// allocator survives any order of frees, in both modes.
TEST(TPXBasCamSimpleTBAllocator, RandomUseKeepsBlocksApart) {
  for (bool fixed : {false, true}) {
    SCOPED_TRACE(fixed);
    TPXBasCamSimpleTBAllocator tb(static_cast<TPXBasCamPool*>(nullptr), fixed, 200, 64);
    std::mt19937 rng(fixed ? 7 : 11);
    struct Live {
      unsigned char* p;
      unsigned int size;
      unsigned char fill;
    };
    std::vector<Live> live;
    for (int step = 0; step < 4000; ++step) {
      if (live.empty() || rng() % 3 != 0) {
        unsigned int size = fixed ? 1 + rng() % 200 : 1 + rng() % (rng() % 8 == 0 ? 6000 : 300);
        auto* p = static_cast<unsigned char*>(tb.Alloc(size));
        ASSERT_NE(nullptr, p);
        unsigned char fill = static_cast<unsigned char>(step);
        std::memset(p, fill, size);
        live.push_back({p, size, fill});
      } else {
        size_t i = rng() % live.size();
        for (unsigned int k = 0; k < live[i].size; ++k)
          ASSERT_EQ(live[i].fill, live[i].p[k]) << "block overwritten at step " << step;
        tb.Free(live[i].p);
        live[i] = live.back();
        live.pop_back();
      }
    }
    for (const Live& l : live) tb.Free(l.p);
  }
}

TEST_F(TPXBasCamSimpleTBAllocatorTest, PoolBackedChunksAndFailures) {
  TPXBasCamCacheManager& cm = Make();
  const char* names[] = {"tb"};
  cm.AddPools(1, names);
  cam_test::MemoryFile stats;
  cm.SetDbFile(stats.get());
  TPXBasCamPool* pool = cm.GetPool(0);
  {
    TPXBasCamSimpleTBAllocator tb(pool, false, 0, 100);
    void* p = tb.Alloc(32);
    EXPECT_EQ(4128u, pool->MemoryCurrent()) << "one chunk from the pool";
    tb.Free(p);
  }
  EXPECT_EQ(0u, pool->MemoryCurrent()) << "the chunk goes back with the allocator";
  {
    TPXBasCamSimpleTBAllocator tb(static_cast<TPXBasCamPool*>(nullptr), false, 0, 100);
    kld_test::AllocationFailureGuard failing(0);
    unsigned int allocated = 5;
    EXPECT_EQ(nullptr, tb.Alloc(32, allocated));
    EXPECT_EQ(32u, allocated);
    EXPECT_EQ(nullptr, tb.Alloc(5000));
  }
  cm.SetDbFile(nullptr);
}

}  // namespace
