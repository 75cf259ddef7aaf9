// Size recorder: classes, labels and shares of the summary.
#include "cam_TestSupport.h"

#include <sstream>
#include <string>
#include <vector>

namespace {

using Recorder = TPXBasAtiGlobalSingleton<TPXBasCamSizeRecorder>;

class TPXBasCamSizeRecorderTest : public ::testing::Test {
 protected:
  void SetUp() override { Recorder::Finalize(); }
  void TearDown() override { Recorder::Finalize(); }
};

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

TEST_F(TPXBasCamSizeRecorderTest, SizesFallIntoPowerOfTwoClasses) {
  TPXBasCamSizeRecorder& r = Recorder::Instance();
  struct {
    unsigned int size;
    int cls;
  } rows[] = {{0, 0},
              {2, 0},
              {3, 1},
              {4, 1},
              {5, 2},
              {1024, 9},
              {1025, 10},
              {2147483648u, 30},
              {2147483649u, 34},
              {3000000000u, 34}};
  for (const auto& row : rows) {
    unsigned int before = r.Count(row.cls);
    r.Register(row.size);
    EXPECT_EQ(before + 1, r.Count(row.cls)) << row.size;
  }
  EXPECT_EQ(2u, r.Count(0));
  EXPECT_EQ(2u, r.Bytes(0));
  EXPECT_EQ(10u, r.TotalCount());
  EXPECT_EQ(0u, r.Bound(31));
  EXPECT_EQ(2147483648u, r.Bound(30));
}

TEST_F(TPXBasCamSizeRecorderTest, SummaryLabelsAndShares) {
  TPXBasCamSizeRecorder& r = Recorder::Instance();
  cam_test::MemoryFile out;
  r.Summary();  // no stream: nothing, and no crash
  r.SetSummaryFile(out.get());
  r.Summary();
  std::vector<std::string> empty = Lines(out.text());
  ASSERT_EQ(38u, empty.size());
  EXPECT_EQ("BinSize -- TotalSize -- Size Percentage -- TotalNum -- Num Percentage", empty[0]);
  EXPECT_EQ("2 Bytes -- 0.000000 -- 0.000000 -- 0.000000 -- 0.000000", empty[1]);
  EXPECT_EQ("", empty[36]);
  EXPECT_EQ("", empty[37]);
  cam_test::MemoryFile second;
  r.SetSummaryFile(second.get());
  r.Register(3);
  r.Register(1);
  r.Register(1000);
  r.Summary();
  std::vector<std::string> lines = Lines(second.text());
  ASSERT_EQ(38u, lines.size());
  EXPECT_EQ("2 Bytes -- 1.000000 -- 0.000996 -- 1.000000 -- 0.333333", lines[1]);
  EXPECT_EQ("4 Bytes -- 3.000000 -- 0.002988 -- 1.000000 -- 0.333333", lines[2]);
  EXPECT_EQ("1 KB -- 1000.000000 -- 0.996016 -- 1.000000 -- 0.333333", lines[10]);
  EXPECT_EQ("1 MB -- 0.000000 -- 0.000000 -- 0.000000 -- 0.000000", lines[20]);
  EXPECT_EQ("1 GB -- 0.000000 -- 0.000000 -- 0.000000 -- 0.000000", lines[30]);
  EXPECT_EQ("2 GB -- 0.000000 -- 0.000000 -- 0.000000 -- 0.000000", lines[31]);
  for (int cls = 31; cls <= 34; ++cls)
    EXPECT_EQ("0 Bytes -- 0.000000 -- 0.000000 -- 0.000000 -- 0.000000", lines[cls + 1]);
  r.SetSummaryFile(nullptr);
}

}  // namespace
