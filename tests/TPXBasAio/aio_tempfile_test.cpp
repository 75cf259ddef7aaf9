// Tests of temporary file creation: directory choice, names and the fatal ends.
#include "aio_tempfile.h"

#include "aio_TestSupport.h"
#include "kld_TestSupport.h"
#include "mem_Alloc.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using kld_test::ScopedEnv;

// Creates a temporary file and returns its name; checks it is open for update.
std::string Create() {
  char* name = nullptr;
  FILE* f = aio_createTempFile(name);
  EXPECT_NE(nullptr, f);
  EXPECT_NE(nullptr, name);
  std::string result = name != nullptr ? name : "";
  if (f != nullptr) {
    EXPECT_EQ(3u, std::fwrite("abc", 1, 3, f));
    std::rewind(f);
    char buf[4] = {};
    EXPECT_EQ(3u, std::fread(buf, 1, 3, f));
    EXPECT_STREQ("abc", buf);
    std::fclose(f);
  }
  mem_Free(name);
  return result;
}

TEST(aio_createTempFile, DirectoryChoiceAndName) {
  aio_test::TempDir tmpdir;
  aio_test::TempDir temp;
  const std::string withSlash = tmpdir.path() + "/";
  const int fds = aio_test::OpenFdCount();
  struct Row {
    const char* name;
    const char* tmpdirValue;
    const char* tempValue;
    std::string expectedDir;
  } rows[] = {
      {"TMPDIR first", tmpdir.path().c_str(), temp.path().c_str(), tmpdir.path()},
      {"TEMP without TMPDIR", nullptr, temp.path().c_str(), temp.path()},
      {"empty TMPDIR counts as unset", "", temp.path().c_str(), temp.path()},
      {"trailing slash not doubled", withSlash.c_str(), nullptr, tmpdir.path()},
  };
  for (const Row& row : rows) {
    ScopedEnv a("TMPDIR", row.tmpdirValue);
    ScopedEnv b("TEMP", row.tempValue);
    const std::string name = Create();
    const std::string prefix = row.expectedDir + "/utl";
    EXPECT_EQ(prefix, name.substr(0, prefix.size())) << row.name;
    EXPECT_EQ(prefix.size() + 6, name.size()) << row.name;
    EXPECT_EQ("abc", aio_test::FileText(name)) << row.name;  // exists after closing
  }
  // Every call gives a new file.
  ScopedEnv a("TMPDIR", tmpdir.path().c_str());
  EXPECT_NE(Create(), Create());
  EXPECT_EQ(fds, aio_test::OpenFdCount());
}

TEST(aio_createTempFileDeathTest, FatalWithoutAUsableDirectory) {
  EXPECT_DEATH(
      {
        ScopedEnv a("TMPDIR", nullptr);
        ScopedEnv b("TEMP", nullptr);
        char* name = nullptr;
        aio_createTempFile(name);
      },
      "^\\*\\*\\* Error: Cannot determine the name of the temporary directory on this "
      "machine\\.\n\\*\\*\\*        Please check if TMPDIR or TEMP are set and point to a "
      "writable directory\n$");
  EXPECT_DEATH(
      {
        ScopedEnv a("TMPDIR", "/nonexistent/aio");
        char* name = nullptr;
        aio_createTempFile(name);
      },
      "^\\*\\*\\* Error: Cannot create a temporary file in /nonexistent/aio\n$");
}

}  // namespace
