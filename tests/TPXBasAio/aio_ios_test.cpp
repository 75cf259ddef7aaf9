// Tests of the stream base: ownership of the file, state bits and format settings.
#include "aio_ios.h"

#include "aio_TestSupport.h"
#include "aio_istream.h"
#include "aio_ostream.h"

#include <fcntl.h>
#include <gtest/gtest.h>

namespace {

TEST(aio_iosOwnership, OwnedFilesAreClosedAndOthersAreNot) {
  const int fds = aio_test::OpenFdCount();
  FILE* owned = std::tmpfile();
  FILE* borrowed = std::tmpfile();
  const int ownedFd = fileno(owned);
  {
    aio_ostream out;
    out.clear(aio_ios::failbit);
    out.attach(owned, true);  // over no owned file: the state stays
    EXPECT_EQ(aio_ios::failbit, out.rdstate());
    // Attaching another file closes the owned one and resets the state.
    out.attach(borrowed, false);
    EXPECT_EQ(-1, fcntl(ownedFd, F_GETFD));
    EXPECT_EQ(0, out.rdstate());
    EXPECT_FALSE(out.owned());
    // Attaching over a file that is not owned leaves it open and keeps the state.
    out.clear(aio_ios::badbit);
    out.attach(nullptr, false).attach(borrowed, false);
    EXPECT_EQ(aio_ios::badbit, out.rdstate());
    aio_istream in;
    in.attach(std::tmpfile(), true);  // the destructor closes an owned file
  }                                   // and leaves one that is not owned open
  EXPECT_NE(EOF, std::fputc('x', borrowed));
  std::fclose(borrowed);
  EXPECT_EQ(fds, aio_test::OpenFdCount());

  // Streams adopting a descriptor own the file they open on it.
  int pipeFds[2];
  ASSERT_EQ(0, pipe(pipeFds));
  {
    aio_ostream out;
    out.adopt(pipeFds[1]).print("hi\n").flush();  // before the reader closes its end
    aio_istream in;
    in.adopt(pipeFds[0]);
  }
  EXPECT_EQ(fds, aio_test::OpenFdCount());
  aio_istream bad;  // a bad descriptor leaves the stream without a file
  bad.adopt(-1);
  EXPECT_EQ(nullptr, bad.fptr());
  EXPECT_EQ(aio_ios::failbit, bad.rdstate());
}

TEST(aio_iosOwnership, CloseResetsAndReportsFailures) {
  const int fds = aio_test::OpenFdCount();
  aio_ostream out;
  EXPECT_FALSE(out.close());  // no file: nothing to report
  out.attach(std::tmpfile(), true);
  out.clear(aio_ios::failbit | aio_ios::eofbit);
  EXPECT_FALSE(out.close());
  EXPECT_EQ(0, out.rdstate());
  EXPECT_EQ(-1, out.fd());
  // Close also closes a file it does not own; a failing final flush is reported.
  out.attach(std::fopen("/dev/full", "w"), false);
  out.print("pending");
  EXPECT_TRUE(out.close());
  EXPECT_EQ(fds, aio_test::OpenFdCount());
}

TEST(aio_iosFormat, SetfUnsetfAndWidths) {
  const int rows[][4] = {
      // before, bits, mask, after
      {0x0022, 0x0040, 0x0000, 0x0062},  // mask 0: or'ed in
      {0x0022, 0x0040, 0x0070, 0x0042},  // base bits replaced, left kept
      {0x0022, 0x00ff, 0x0010, 0x0032},  // only the bits under the mask
  };
  for (const auto& row : rows) {
    aio_ostream out;
    out.setf(row[0], 0);
    EXPECT_EQ(static_cast<unsigned>(row[0]), out.setf(row[1], row[2]));
    EXPECT_EQ(row[3], out.flags()) << row[0] << " " << row[1] << " " << row[2];
  }
  aio_ostream out;
  out.setf(0x0f0f, 0);
  EXPECT_EQ(0x0f0fu, out.unsetf(0x0101));
  EXPECT_EQ(0x0e0e, out.flags());
  out.setwidth(4, false);
  out.setwidth(5, true);  // keep leaves the one-shot bit as it was
  EXPECT_EQ(aio_ios::widthonce, out.flags() & aio_ios::widthonce);
  aio_istream in;  // fail() is failbit or badbit, never the end alone
  in.clear(aio_ios::eofbit);
  EXPECT_EQ(0, in.fail());
}

}  // namespace
