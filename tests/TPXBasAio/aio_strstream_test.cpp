// Tests of the string stream: snapshots of the text, its temporary file's life.
#include "aio_strstream.h"

#include "aio_TestSupport.h"
#include "kld_TestSupport.h"
#include "mem_Alloc.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

namespace {

using kld_test::ScopedEnv;

unsigned int g_lastRequest = 0;
void* CountingAllocate(unsigned int size) {
  g_lastRequest = size;
  return mem_Malloc(size);
}

TEST(aio_ostrstream, SnapshotsAndTheTemporaryFileLife) {
  aio_test::TempDir dir;
  ScopedEnv env("TMPDIR", dir.path.c_str());
  const int fds = aio_test::OpenFdCount();
  {
    aio_ostrstream s;
    EXPECT_EQ(1u, aio_test::Files(dir.path).size());
    EXPECT_STREQ("", s.str());
    s.print("abc");
    EXPECT_STREQ("abc", s.str());
    // Writing goes on at the end after a snapshot, and formatting still applies.
    s.setwidth(4, false);
    s.print_int(7).write("\0z", 2);  // NUL bytes are text too
    char* adopted = s.adoptString(&CountingAllocate);
    EXPECT_EQ(10u, g_lastRequest);  // bytes written + 1
    EXPECT_EQ(0, std::memcmp("abc   7\0z", adopted, 10));
    mem_Free(adopted);
    // A text far beyond the standard I/O buffer, read back twice.
    std::string expected = std::string("abc   7\0z", 9);
    for (int i = 0; i < 50000; ++i) {
      s.print_int(i).put(' ');
      expected += std::to_string(i) + ' ';
    }
    EXPECT_EQ(expected, std::string(s.str(), expected.size()));
    s.print("end");
    EXPECT_EQ(expected + "end", std::string(s.str(), expected.size() + 3));
    EXPECT_EQ(0, s.rdstate());
  }
  // The file goes with the stream, also after adoptString.
  EXPECT_TRUE(aio_test::Files(dir.path).empty());
  EXPECT_EQ(fds, aio_test::OpenFdCount());
}

TEST(aio_ostrstream, AllocationFailuresLeaveTheTextIntact) {
  aio_test::TempDir dir;
  ScopedEnv env("TMPDIR", dir.path.c_str());
  aio_ostrstream s;
  s.print("abc");
  EXPECT_EQ(nullptr, s.adoptString([](unsigned int) -> void* { return nullptr; }));
  s.print("d");
  {
    kld_test::AllocationFailureGuard guard(0);
    EXPECT_THROW(s.str(), std::bad_alloc);
  }
  s.print("e");
  EXPECT_STREQ("abcde", s.str());
}

TEST(aio_ostrstreamDeathTest, FileThatCannotBeDeletedIsFatal) {
  aio_test::TempDir dir;
  EXPECT_DEATH(
      {
        ScopedEnv a("TMPDIR", dir.path.c_str());
        auto* s = new aio_ostrstream;
        chmod(dir.path.c_str(), 0555);  // a directory the process may not change
        if (geteuid() == 0 && setuid(65534) != 0) std::abort();
        delete s;
      },
      "^\\*\\*\\* Error: file " + dir.path + "/utl[A-Za-z0-9]{6} cannot be deleted\n$");
}

}  // namespace
