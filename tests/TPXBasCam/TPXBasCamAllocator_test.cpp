// Pool allocators and the host allocator: zeroing, reported sizes, failures, large-block
// allocators.
#include "cam_TestSupport.h"

#include <cstring>

namespace {

using TPXBasCamAllocatorTest = cam_test::FreshManager;
using cam_test::CountingHandler;

TEST_F(TPXBasCamAllocatorTest, PoolAllocatorsZeroOrNotAndReportWholeBlocks) {
  TPXBasCamCacheManager& cm = Make();
  TPXBasCamPool* pool = OnePool(cm);
  void* dirty = pool->Alloc(100);  // a dirty block on the free list makes zeroing observable
  std::memset(dirty, 0xAB, 4096);
  pool->Free(dirty);
  TPXBasCamAllocator zeroing(pool);
  TPXBasCamAllocatorNoInit raw(pool);
  unsigned int allocated = 0;
  unsigned char* z = static_cast<unsigned char*>(zeroing.Alloc(100, allocated));
  ASSERT_EQ(dirty, z);
  EXPECT_EQ(4128u, allocated);
  EXPECT_EQ(std::string(100, '\0'), std::string(z, z + 100));
  EXPECT_EQ(0xAB, z[100]) << "only the request is zeroed";
  std::memset(z, 0xCD, 100);
  zeroing.Free(z);
  unsigned char* r = static_cast<unsigned char*>(raw.Alloc(100, allocated));
  EXPECT_EQ(0xCD, r[0]);
  EXPECT_EQ(4128u, allocated);
  raw.deallocate(r, 0);
  r = static_cast<unsigned char*>(zeroing.allocate(50, nullptr));
  EXPECT_EQ(0, r[0]) << "allocate zeroes too";
  zeroing.deallocate(r, 7);
  // When the pool gives nothing: the zeroing allocator leaves the size, NoInit sets 0.
  cm.SetMemoryLimit(1000);
  int calls = 0;
  cm.SetErrorHandler(new CountingHandler(&calls));
  cm.ClearFreeList();
  allocated = 55;
  EXPECT_EQ(nullptr, zeroing.Alloc(100, allocated));
  EXPECT_EQ(55u, allocated);
  EXPECT_EQ(nullptr, raw.Alloc(100, allocated));
  EXPECT_EQ(0u, allocated);
  EXPECT_EQ(2, calls);
}

TEST_F(TPXBasCamAllocatorTest, MCAllocatorZeroesAndCarriesItsLargeBlockAllocator) {
  TPXBasMCAllocator mc;
  unsigned int allocated = 0;
  unsigned char* p = static_cast<unsigned char*>(mc.Alloc(64, allocated));
  EXPECT_EQ(64u, allocated);
  EXPECT_EQ(std::string(64, '\0'), std::string(p, p + 64));
  mc.deallocate(p, 0);
  TPXBasAllocator other, large(new TPXBasMemAllocator);
  EXPECT_NE(nullptr, mc.LargeBlockAllocator(other).Get()) << "its own, not the argument";
  mc.SetLargeBlockAllocator(large);
  EXPECT_EQ(large.Get(), mc.LargeBlockAllocator(other).Get());
  kld_test::AllocationFailureGuard failing(0);
  allocated = 9;
  EXPECT_EQ(nullptr, mc.Alloc(64, allocated));
  EXPECT_EQ(9u, allocated) << "left alone when nothing is given";
}

TEST(TPXBasCamAllocatorDeathTest, NullPoolIsFatal) {
  EXPECT_DEATH(
      TPXBasCamAllocator(nullptr),
      "AssertionFailed:NULL != mPool \\[TPXBase/TPXBasCam.m/src/TPXBasCamAllocator:[0-9]+\\]");
  EXPECT_DEATH(TPXBasCamAllocatorNoInit(nullptr), "AssertionFailed:NULL != mPool");
}

}  // namespace
