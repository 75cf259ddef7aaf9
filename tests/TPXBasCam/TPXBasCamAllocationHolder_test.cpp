// Allocation holder: growth, size checks at free, the summary.
#include "cam_TestSupport.h"

namespace {

using Holder = TPXBasAtiGlobalSingleton<TPXBasCamAllocationHolder>;

class TPXBasCamAllocationHolderTest : public ::testing::Test {
 protected:
  void SetUp() override { Holder::Finalize(); }
  void TearDown() override { Holder::Finalize(); }
};

TEST_F(TPXBasCamAllocationHolderTest, TableGrowsInStepsOfAHundred) {
  TPXBasCamAllocationHolder& h = Holder::Instance();
  EXPECT_EQ(0u, h.Capacity());
  h.Alloc(0, 10);
  EXPECT_EQ(100u, h.Capacity());
  h.Alloc(100, 20);
  EXPECT_EQ(200u, h.Capacity());
  h.Alloc(450, 30);
  EXPECT_EQ(500u, h.Capacity()) << "far ids grow the table until they fit";
  EXPECT_EQ(10u, h.SizeOf(0));
  EXPECT_EQ(20u, h.SizeOf(100));
  EXPECT_EQ(TPXBasCamAllocationHolder::kFree, h.SizeOf(101));
  EXPECT_EQ(TPXBasCamAllocationHolder::kFree, h.SizeOf(5000));
}

TEST_F(TPXBasCamAllocationHolderTest, FreeWarnsOnADifferentSizeAndForgetsEitherWay) {
  TPXBasCamAllocationHolder& h = Holder::Instance();
  struct {
    unsigned int allocSize, freeSize;
    const char* warning;
  } rows[] = {{64, 64, ""}, {64, 32, "allocation size doesn't match the free size\n"}, {0, 0, ""}};
  for (const auto& row : rows) {
    h.Alloc(5, row.allocSize);
    testing::internal::CaptureStderr();
    h.Free(5, row.freeSize);
    EXPECT_EQ(row.warning, testing::internal::GetCapturedStderr());
    EXPECT_EQ(TPXBasCamAllocationHolder::kFree, h.SizeOf(5));
  }
  testing::internal::CaptureStderr();
  h.Free(7000, 1);  // never recorded
  EXPECT_EQ("allocation size doesn't match the free size\n",
            testing::internal::GetCapturedStderr());
}

TEST_F(TPXBasCamAllocationHolderTest, SummaryListsLiveAllocations) {
  TPXBasCamAllocationHolder& h = Holder::Instance();
  cam_test::MemoryFile out;
  h.Alloc(3, 1048576);
  h.Alloc(5, 64);
  h.Alloc(7, 1048576);
  h.Free(5, 64);
  h.Summary();  // no stream
  h.SetSummaryFile(out.get());
  h.Summary();
  EXPECT_EQ("3 -- 1048576\n7 -- 1048576\ntotal 2.000000\n", out.text());
  h.SetSummaryFile(nullptr);
}

}  // namespace
