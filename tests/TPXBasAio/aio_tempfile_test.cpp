// Tests of temporary file creation: directory choice, names and the fatal ends.
#include "aio_tempfile.h"

#include "aio_TestSupport.h"
#include "kld_TestSupport.h"
#include "mem_Alloc.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using kld_test::ScopedEnv;

// Creates a temporary file open for update, writes "abc" to it and returns its name.
std::string Create() {
  char* name = nullptr;
  FILE* f = aio_createTempFile(name);
  EXPECT_TRUE(f != nullptr && name != nullptr);
  if (f == nullptr || name == nullptr) return "";
  const std::string result = name;
  mem_Free(name);
  std::fputs("abc", f);
  EXPECT_EQ("abc", aio_test::Contents(f));
  std::fclose(f);
  return result;
}

TEST(aio_createTempFile, DirectoryChoiceAndName) {
  aio_test::TempDir tmpdir, temp;
  const std::string withSlash = tmpdir.path + "/";
  const int fds = aio_test::OpenFdCount();
  struct Case {
    const char *tmpdirValue, *tempValue;
    std::string expectedDir;
  } cases[] = {
      {tmpdir.path.c_str(), temp.path.c_str(), tmpdir.path},  // TMPDIR first
      {nullptr, temp.path.c_str(), temp.path},
      {"", temp.path.c_str(), temp.path},         // empty counts as unset
      {withSlash.c_str(), nullptr, tmpdir.path},  // the slash is not doubled
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.tmpdirValue ? c.tmpdirValue : "unset"));
    ScopedEnv a("TMPDIR", c.tmpdirValue);
    ScopedEnv b("TEMP", c.tempValue);
    const std::string name = Create();
    const std::string prefix = c.expectedDir + "/utl";
    EXPECT_EQ(prefix, name.substr(0, prefix.size()));
    EXPECT_EQ(prefix.size() + 6, name.size());
    EXPECT_EQ("abc", aio_test::FileText(name));  // exists after closing
  }
  ScopedEnv a("TMPDIR", tmpdir.path.c_str());
  EXPECT_NE(Create(), Create());  // every call gives a new file
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
