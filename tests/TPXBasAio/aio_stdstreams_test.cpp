// Tests of the standard stream objects: attached by the set-up, alive until the very end.
#include "aio_stdstreams.h"

#include "KLDTPXBasCoreUtils_Lifecycle.h"
#include "aio_TestSupport.h"
#include "kld_TestSupport.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

bool g_writeAtUnload = false;

// Runs after every static destructor of the process (the executable's own ELF destructor,
// which the loader runs before those of the libraries it loaded).
__attribute__((destructor)) void WriteAfterStaticDestructors() {
  if (g_writeAtUnload) {
    aio_cerr.print("late ").print_int(42).put('\n');
    aio_cerr.flush();
  }
}

TEST(aio_stdstreams, AttachedNotOwnedAfterLoad) {
  EXPECT_EQ(stdin, aio_cin.fptr());
  EXPECT_EQ(stdout, aio_cout.fptr());
  EXPECT_EQ(stderr, aio_cerr.fptr());
  EXPECT_FALSE(aio_cin.owned());
  EXPECT_FALSE(aio_cout.owned());
  EXPECT_FALSE(aio_cerr.owned());
}

TEST(aio_stdstreams, SetUpRunsAgainOnlyAfterTheLastFinalise) {
  FILE* other = std::tmpfile();
  int tally = 0;
  aio_cout.attach(other, false);
  TPXBasAio_initialize(tally);  // nested: no set-up
  EXPECT_EQ(other, aio_cout.fptr());
  TPXBasAio_finalize(tally);
  EXPECT_EQ(0, tally);
  {
    kld_test::FreshLibrary fresh;  // the module's last finalise: the streams stay attached
    EXPECT_EQ(other, aio_cout.fptr());
    aio_cout.print("x");
    EXPECT_EQ(0, aio_cout.rdstate());
  }  // first initialise again: attached to the standard files anew
  EXPECT_EQ(stdout, aio_cout.fptr());
  EXPECT_EQ(stdin, aio_cin.fptr());
  EXPECT_EQ("x", aio_test::Contents(other));
  std::fclose(other);
}

TEST(aio_stdstreamsDeathTest, UsableAfterStaticDestructorsAtExit) {
  EXPECT_EXIT(
      {
        g_writeAtUnload = true;
        std::exit(0);
      },
      testing::ExitedWithCode(0), "late 42\n");
}

}  // namespace
