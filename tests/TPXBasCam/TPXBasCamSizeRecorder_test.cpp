// Size recorder: classes, labels and shares of the summary.
#include "cam_TestSupport.h"

#include <sstream>

namespace {

using Recorder = TPXBasAtiGlobalSingleton<TPXBasCamSizeRecorder>;

TEST(TPXBasCamSizeRecorderTest, ClassesLabelsAndShares) {
  Recorder::Finalize();
  TPXBasCamSizeRecorder& r = Recorder::Instance();
  cam_test::MemoryFile empty, out;
  r.SetSummaryFile(empty.get());
  r.Summary();  // nothing registered: shares are 0, not a division by zero
  EXPECT_NE(std::string::npos,
            empty.text().find("\n2 Bytes -- 0.000000 -- 0.000000 -- 0.000000 -- 0.000000\n"));
  r.SetSummaryFile(nullptr);
  struct Case {
    unsigned int size;
    int cls;
  } rows[] = {
      {0, 0},           {2, 0}, {3, 1}, {1000, 9}, {1025, 10}, {2147483648u, 30}, {2147483649u, 34},
      {3000000000u, 34}};
  for (const Case& c : rows) {
    unsigned int before = r.Count(c.cls);
    r.Register(c.size);
    EXPECT_EQ(before + 1, r.Count(c.cls)) << c.size;
  }
  EXPECT_EQ(2u, r.Bytes(0));
  EXPECT_EQ(8u, r.TotalCount());
  Recorder::Finalize();
  TPXBasCamSizeRecorder& fresh = Recorder::Instance();
  for (unsigned int size : {3u, 1u, 1000u}) fresh.Register(size);
  fresh.SetSummaryFile(out.get());
  fresh.Summary();
  std::vector<std::string> lines;
  std::istringstream in(out.text());
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  ASSERT_EQ(38u, lines.size());
  EXPECT_EQ("BinSize -- TotalSize -- Size Percentage -- TotalNum -- Num Percentage", lines[0]);
  EXPECT_EQ("2 Bytes -- 1.000000 -- 0.000996 -- 1.000000 -- 0.333333", lines[1]);
  EXPECT_EQ("4 Bytes -- 3.000000 -- 0.002988 -- 1.000000 -- 0.333333", lines[2]);
  EXPECT_EQ("1 KB -- 1000.000000 -- 0.996016 -- 1.000000 -- 0.333333", lines[10]);
  EXPECT_EQ("", lines[36] + lines[37]);
  const char* labels[] = {"1 MB", "1 GB", "2 GB", "0 Bytes", "0 Bytes", "0 Bytes", "0 Bytes"};
  const int classes[] = {19, 29, 30, 31, 32, 33, 34};
  for (int i = 0; i < 7; ++i)
    EXPECT_EQ(std::string(labels[i]) + " -- 0.000000 -- 0.000000 -- 0.000000 -- 0.000000",
              lines[classes[i] + 1]);
  fresh.SetSummaryFile(nullptr);
  Recorder::Finalize();
}

}  // namespace
