// Tests of the output manipulators.
#include "aio_manip.h"

#include "aio_TestSupport.h"

#include <gtest/gtest.h>

namespace {

TEST(aio_manip, ChainAndChangeTheSettings) {
  FILE* f = std::tmpfile();
  aio_ostream out;
  out.attach(f, true);
  aio_setiosflags(aio_setiosflags(out, aio_ios::hex), aio_ios::left).print_int(255).put('|');
  aio_setwidth(out, 4).print_int(255).put('|');
  aio_resetiosflags(out, aio_ios::hex | aio_ios::left);
  aio_setwidth(aio_setprecision(out, 2), 6).print_double(3.14159).put('|');
  aio_setiosflags(out, aio_ios::fixed).print_double(2.0);
  EXPECT_EQ("ff|ff  |   3.1|2.00", aio_test::Contents(f));
  EXPECT_EQ(aio_ios::fixed, out.flags());
  EXPECT_EQ(&out, &aio_setwidth(out, 1));
}

}  // namespace
