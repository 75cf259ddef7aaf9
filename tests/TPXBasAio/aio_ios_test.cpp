// Tests of the stream base: ownership of the file, state bits and format settings.
#include "aio_ios.h"

#include "aio_TestSupport.h"
#include "aio_istream.h"
#include "aio_ostream.h"

#include <fcntl.h>
#include <gtest/gtest.h>

namespace {

bool DescriptorOpen(int fd) { return fcntl(fd, F_GETFD) != -1; }

TEST(aio_iosOwnership, OwnedFilesAreClosedAndOthersAreNot) {
  const int fds = aio_test::OpenFdCount();
  FILE* owned = std::tmpfile();
  FILE* borrowed = std::tmpfile();
  const int ownedFd = fileno(owned);
  {
    aio_ostream out;
    out.attach(owned, true);
    out.clear(aio_ios::failbit);
    // Attaching another file closes the owned one and resets the state.
    out.attach(borrowed, false);
    EXPECT_FALSE(DescriptorOpen(ownedFd));
    EXPECT_EQ(0, out.rdstate());
    EXPECT_FALSE(out.owned());
    // Attaching over a file that is not owned leaves it open and keeps the state.
    out.clear(aio_ios::badbit);
    out.attach(nullptr, false);
    EXPECT_TRUE(DescriptorOpen(fileno(borrowed)));
    EXPECT_EQ(aio_ios::badbit, out.rdstate());
    out.attach(borrowed, false);
  }  // the destructor leaves a file that is not owned open
  EXPECT_NE(EOF, std::fputc('x', borrowed));
  std::fclose(borrowed);

  {
    aio_istream in;
    in.attach(std::tmpfile(), true);
  }  // the destructor closes an owned file
  EXPECT_EQ(fds, aio_test::OpenFdCount());
}

TEST(aio_iosOwnership, CloseResetsAndReportsFailures) {
  const int fds = aio_test::OpenFdCount();
  aio_ostream out;
  EXPECT_FALSE(out.close());  // no file: nothing to report
  out.clear(aio_ios::failbit);
  out.attach(std::tmpfile(), true);
  EXPECT_EQ(aio_ios::failbit, out.rdstate());  // attaching over no owned file keeps the state
  out.clear(aio_ios::failbit | aio_ios::eofbit);
  EXPECT_FALSE(out.close());
  EXPECT_EQ(0, out.rdstate());
  EXPECT_EQ(nullptr, out.fptr());
  EXPECT_EQ(-1, out.fd());

  // Close also closes a file it does not own; a failing final flush is reported.
  FILE* full = std::fopen("/dev/full", "w");
  out.attach(full, false);
  out.print("pending");
  EXPECT_TRUE(out.close());
  EXPECT_FALSE(out.owned());
  EXPECT_EQ(fds, aio_test::OpenFdCount());
}

TEST(aio_iosState, BitsAccumulateUntilCleared) {
  aio_istream in;
  EXPECT_EQ(1, in.good());
  EXPECT_EQ(0, in.fail());
  in.get();
  in.get();
  EXPECT_EQ(aio_ios::failbit, in.rdstate());
  struct Row {
    int state;
    int good;
    int fail;
  } rows[] = {{0, 1, 0},
              {aio_ios::eofbit, 0, 0},
              {aio_ios::failbit, 0, aio_ios::failbit},
              {aio_ios::badbit, 0, aio_ios::badbit},
              {7, 0, 6}};
  for (const Row& row : rows) {
    in.clear(row.state);
    EXPECT_EQ(row.state, in.rdstate());
    EXPECT_EQ(row.good, in.good()) << row.state;
    EXPECT_EQ(row.fail, in.fail()) << row.state;
  }
  in.clear();
  EXPECT_EQ(1, in.good());
}

TEST(aio_iosFormat, SetfUnsetfAndWidths) {
  struct Row {
    int before;
    int bits;
    int mask;
    int after;
  } rows[] = {
      {0x0000, 0x0040, 0x0000, 0x0040},  // mask 0: or'ed in
      {0x0022, 0x0040, 0x0000, 0x0062},
      {0x0022, 0x0040, 0x0070, 0x0042},  // base bits replaced, left kept
      {0x0022, 0x0000, 0x0070, 0x0002},
      {0x0022, 0x00ff, 0x0010, 0x0032},  // only the bits under the mask
      {0x1802, 0x1000, 0x1800, 0x1002},
  };
  for (const Row& row : rows) {
    aio_ostream out;
    out.setf(row.before, 0);
    EXPECT_EQ(static_cast<unsigned>(row.before), out.setf(row.bits, row.mask));
    EXPECT_EQ(row.after, out.flags()) << row.before << " " << row.bits << " " << row.mask;
  }
  aio_ostream out;
  out.setf(0x0f0f, 0);
  EXPECT_EQ(0x0f0fu, out.unsetf(0x0101));
  EXPECT_EQ(0x0e0e, out.flags());

  EXPECT_EQ(6, out.precision());
  out.setprecision(3).setwidth(7, true);
  EXPECT_EQ(3, out.precision());
  EXPECT_EQ(7, out.width());
  EXPECT_EQ(0, out.flags() & aio_ios::widthonce);
  out.setwidth(4, false);
  EXPECT_EQ(aio_ios::widthonce, out.flags() & aio_ios::widthonce);
  out.setwidth(5, true);  // keep leaves the one-shot bit as it was
  EXPECT_EQ(aio_ios::widthonce, out.flags() & aio_ios::widthonce);
}

}  // namespace
