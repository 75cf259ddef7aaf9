// Tests of the standard stream objects: attached by the set-up, alive until the very end.
#include "aio_stdstreams.h"

#include "KLDTPXBasCoreUtils_Lifecycle.h"
#include "aio_TestSupport.h"
#include "kld_TestSupport.h"

#include <gtest/gtest.h>

namespace {

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
  EXPECT_EQ(stderr, aio_cerr.fptr());
  EXPECT_FALSE(aio_cin.owned() || aio_cout.owned() || aio_cerr.owned());
  EXPECT_EQ("x", aio_test::Contents(other));
  std::fclose(other);
}

}  // namespace
