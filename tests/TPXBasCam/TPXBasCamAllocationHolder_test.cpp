// Allocation holder: growth, size checks at free, the summary.
#include "cam_TestSupport.h"

namespace {

using Holder = TPXBasAtiGlobalSingleton<TPXBasCamAllocationHolder>;

TEST(TPXBasCamAllocationHolderTest, GrowsInStepsOfAHundredWarnsOnOtherSizesAndSummarises) {
  Holder::Finalize();
  TPXBasCamAllocationHolder& h = Holder::Instance();
  struct {
    unsigned int id, capacity;
  } growth[] = {{0, 100}, {100, 200}, {450, 500}};  // far ids grow the table until they fit
  for (const auto& row : growth) {
    h.Alloc(row.id, 1048576);
    EXPECT_EQ(row.capacity, h.Capacity()) << row.id;
  }
  EXPECT_EQ(TPXBasCamAllocationHolder::kFree, h.SizeOf(101));
  struct {
    unsigned int freeSize;
    const char* warning;
  } frees[] = {{64, ""}, {32, "allocation size doesn't match the free size\n"}};
  for (const auto& row : frees) {
    h.Alloc(5, 64);
    testing::internal::CaptureStderr();
    h.Free(5, row.freeSize);
    EXPECT_EQ(row.warning, testing::internal::GetCapturedStderr());
    EXPECT_EQ(TPXBasCamAllocationHolder::kFree, h.SizeOf(5)) << "forgotten either way";
  }
  testing::internal::CaptureStderr();
  h.Free(7000, 1);  // never recorded
  EXPECT_EQ("allocation size doesn't match the free size\n",
            testing::internal::GetCapturedStderr());
  h.Free(450, 1048576);
  cam_test::MemoryFile out;
  h.Summary();  // no stream: nothing
  h.SetSummaryFile(out.get());
  h.Summary();
  EXPECT_EQ("0 -- 1048576\n100 -- 1048576\ntotal 2.000000\n", out.text());
  h.SetSummaryFile(nullptr);
  Holder::Finalize();
}

}  // namespace
