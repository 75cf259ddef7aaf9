// Tests of the string stream: snapshots of the text, its temporary file's life.
#include "aio_strstream.h"

#include "aio_TestSupport.h"
#include "kld_TestSupport.h"
#include "mem_Alloc.h"

#include <cstring>
#include <dirent.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

using kld_test::ScopedEnv;

// Names of the files in a directory.
std::vector<std::string> Files(const std::string& dir) {
  std::vector<std::string> names;
  if (DIR* d = opendir(dir.c_str())) {
    while (dirent* e = readdir(d))
      if (e->d_name[0] != '.') names.push_back(e->d_name);
    closedir(d);
  }
  return names;
}

unsigned int g_lastRequest = 0;
void* CountingAllocate(unsigned int size) {
  g_lastRequest = size;
  return mem_Malloc(size);
}

TEST(aio_ostrstream, SnapshotsOfTheTextWrittenSoFar) {
  aio_test::TempDir dir;
  ScopedEnv env("TMPDIR", dir.path().c_str());
  aio_ostrstream s;
  EXPECT_STREQ("", s.str());
  s.print("abc");
  const char* first = s.str();
  EXPECT_STREQ("abc", first);
  s.print("de");
  EXPECT_STREQ("abcde", s.str());
  // Writing goes on at the end after a snapshot, and formatting still applies.
  s.setwidth(4, false);
  s.print_int(7);
  char* adopted = s.adoptString(&CountingAllocate);
  EXPECT_EQ(10u, g_lastRequest);  // bytes written + 1
  EXPECT_STREQ("abcde   7", adopted);
  mem_Free(adopted);
  s.write("\0z", 2);  // NUL bytes are text too
  adopted = s.adoptString(&CountingAllocate);
  EXPECT_EQ(0, std::memcmp("abcde   7\0z", adopted, 12));
  mem_Free(adopted);
  EXPECT_EQ(0, s.rdstate());
}

TEST(aio_ostrstream, LargeTextRoundTrips) {
  aio_test::TempDir dir;
  ScopedEnv env("TMPDIR", dir.path().c_str());
  aio_ostrstream s;
  std::string expected;
  for (int i = 0; i < 100000; ++i) {
    s.print_int(i).put(' ');
    expected += std::to_string(i) + ' ';
  }
  EXPECT_EQ(expected, s.str());
  s.print("end");
  EXPECT_EQ(expected + "end", s.str());
}

TEST(aio_ostrstream, TemporaryFileLivesAsLongAsTheStream) {
  aio_test::TempDir dir;
  ScopedEnv env("TMPDIR", dir.path().c_str());
  const int fds = aio_test::OpenFdCount();
  {
    aio_ostrstream s;
    const std::vector<std::string> files = Files(dir.path());
    ASSERT_EQ(1u, files.size());
    EXPECT_EQ("utl", files[0].substr(0, 3));
    s.print("text");
    EXPECT_STREQ("text", s.str());
  }
  EXPECT_TRUE(Files(dir.path()).empty());
  {
    // The caller keeps an adopted string after the stream and its file are gone.
    char* kept = nullptr;
    {
      aio_ostrstream s;
      s.print("kept");
      kept = s.adoptString(&CountingAllocate);
    }
    EXPECT_TRUE(Files(dir.path()).empty());
    EXPECT_STREQ("kept", kept);
    mem_Free(kept);
  }
  EXPECT_EQ(fds, aio_test::OpenFdCount());
}

TEST(aio_ostrstream, AllocationFailures) {
  aio_test::TempDir dir;
  ScopedEnv env("TMPDIR", dir.path().c_str());
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

TEST(aio_ostrstreamDeathTest, FatalEnds) {
  EXPECT_DEATH(
      {
        ScopedEnv a("TMPDIR", nullptr);
        ScopedEnv b("TEMP", nullptr);
        aio_ostrstream s;
      },
      "^\\*\\*\\* Error: Cannot determine the name of the temporary directory on this "
      "machine\\.\n\\*\\*\\*        Please check if TMPDIR or TEMP are set");
  aio_test::TempDir dir;
  EXPECT_DEATH(
      {
        ScopedEnv a("TMPDIR", dir.path().c_str());
        auto* s = new aio_ostrstream;
        // A directory the process may not change: the file cannot be deleted.
        chmod(dir.path().c_str(), 0555);
        if (geteuid() == 0 && setuid(65534) != 0) std::abort();
        delete s;
      },
      "^\\*\\*\\* Error: file " + dir.path() + "/utl[A-Za-z0-9]{6} cannot be deleted\n$");
}

}  // namespace
