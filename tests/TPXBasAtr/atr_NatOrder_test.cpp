// Natural-order comparison and the natural-order switch set by the module's initialise.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"
#include "kld_TestSupport.h"

#include <string>

namespace {

TEST(atr_NatOrder, OrdersTextsByEmbeddedNumbersAndSignedBytes) {
  const std::string longRun(1000, '7');
  const std::string longA = "v" + longRun + "a", longB = "v" + longRun + "b";
  // expected: strnatcmp(a, b)
  // clang-format off
  const struct { const char *a, *b; int expected; } cases[] = {
      {"part9", "part10", -1}, {"x100", "x99", 1},
      {"a19b", "a20a", -1},  // same length: the first differing digit decides
      // Leading zeros compare like fractions; the shorter zero-led run is less.
      {"1.05", "1.5", -1}, {"img12", "img012", 1}, {"010", "02", -1}, {"0", "00", -1}, {"01x", "012", -1},
      {"a10x", "a10y", -1}, {"a001b", "a001b", 0}, {longA.c_str(), longB.c_str(), -1},
      // Plain bytes: no case folding, no skipping of blanks, the terminator is a byte too.
      {"Abc", "abc", -1}, {"a b", "ab", -1}, {"a", "a1", -1}, {"a1", "aa", -1}, {"", "a", -1},
      // Bytes from 0x80 up are negative: below every ASCII byte and the terminator.
      {"a\xE9", "a", -1}, {"a\x80", "a\x7F", -1},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string("\"") + c.a + "\" vs \"" + c.b + "\"");
    EXPECT_EQ(c.expected, strnatcmp(c.a, c.b));
    EXPECT_EQ(-c.expected, strnatcmp(c.b, c.a));
  }
}

TEST(atr_NatOrderDeathTest, NullTextIsFatal) {
  EXPECT_DEATH(strnatcmp(nullptr, "a"),
               "AssertionFailed:a && b \\[TPXBase/TPXBasAtr.m/src/atr_NatOrder:[0-9]+\\]");
}

// Restarts the library with the variable as given and gives the switch it then reads.
int SwitchAfterRestart(const char* value) {
  int seen = 0;
  {
    kld_test::FreshLibrary fresh;  // down now, up again at the end of the block
    kld_test::ScopedEnv env("KLD_USE_NATURAL_ORDER_SORT", value);
    atr_setNaturalOrder(-7);  // must be overwritten by the next initialise
    DllMain(nullptr, 1, nullptr);
    seen = atr_getNaturalOrder();
    DllMain(nullptr, 0, nullptr);
  }
  return seen;
}

TEST(atr_NatOrderSwitch, InitialiseReadsTheVariableOnlyOnFirstEntry) {
  EXPECT_EQ(1, SwitchAfterRestart(nullptr));  // any value, even "0", turns it off
  for (const char* value : {"", "1", "0"}) EXPECT_EQ(0, SwitchAfterRestart(value)) << value;

  // A nested initialise does not read the variable again.
  kld_test::ScopedEnv unset("KLD_USE_NATURAL_ORDER_SORT", nullptr);
  {
    kld_test::FreshLibrary fresh;
    DllMain(nullptr, 1, nullptr);
    ASSERT_EQ(1, atr_getNaturalOrder());
    kld_test::ScopedEnv set("KLD_USE_NATURAL_ORDER_SORT", "1");
    int tally = 0;
    TPXBasAtr_initialize(tally);
    EXPECT_EQ(1, atr_getNaturalOrder());
    TPXBasAtr_finalize(tally);
    DllMain(nullptr, 0, nullptr);
  }
  EXPECT_EQ(1, atr_getNaturalOrder());
}

}  // namespace
