// Allocation holder: growth, size checks at free, the summary.
#include "cam_TestSupport.h"

namespace {

using Holder = TPXBasAtiGlobalSingleton<TPXBasCamAllocationHolder>;
const char kMismatch[] = "allocation size doesn't match the free size\n";

TEST(TPXBasCamAllocationHolderTest, GrowsInStepsOfAHundredWarnsOnOtherSizesAndSummarises) {
  Holder::Finalize();
  TPXBasCamAllocationHolder& h = Holder::Instance();
  for (unsigned int id : {0u, 100u, 450u}) {  // far ids grow the table until they fit
    h.Alloc(id, 1048576);
    EXPECT_EQ(id / 100 * 100 + 100, h.Capacity()) << id;
  }
  EXPECT_EQ(TPXBasCamAllocationHolder::kFree, h.SizeOf(101));
  struct Case {
    unsigned int id, allocSize, freeSize;
    const char* warning;
  } frees[] = {
      {5, 64, 64, ""}, {5, 64, 32, kMismatch}, {7000, 0, 1, kMismatch}};  // 0: never recorded
  for (const Case& c : frees) {
    if (c.allocSize != 0) h.Alloc(c.id, c.allocSize);
    testing::internal::CaptureStderr();
    h.Free(c.id, c.freeSize);
    EXPECT_EQ(c.warning, testing::internal::GetCapturedStderr());
    EXPECT_EQ(TPXBasCamAllocationHolder::kFree, h.SizeOf(c.id)) << "forgotten either way";
  }
  h.Free(450, 1048576);
  cam_test::MemoryFile out;
  h.SetSummaryFile(out.get());
  h.Summary();
  EXPECT_EQ("0 -- 1048576\n100 -- 1048576\ntotal 2.000000\n", out.text());
  h.SetSummaryFile(nullptr);
  Holder::Finalize();
}

}  // namespace
