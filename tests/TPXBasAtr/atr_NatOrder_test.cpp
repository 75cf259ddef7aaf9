// Natural-order comparison and the natural-order switch set by the module's initialise.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"
#include "kld_TestSupport.h"

#include <string>

namespace {

struct NatCase {
  const char* a;
  const char* b;
  int expected;  // strnatcmp(a, b)
};

TEST(atr_NatOrder, OrdersTextsByEmbeddedNumbersAndSignedBytes) {
  const std::string longRun(1000, '7');
  const std::string longA = "v" + longRun + "a";
  const std::string longB = "v" + longRun + "b";
  const NatCase cases[] = {
      // clang-format off
      // Numbers without leading zeros compare by value.
      {"part9", "part10", -1}, {"a2b", "a10b", -1}, {"x100", "x99", 1}, {"a99", "a100", -1},
      // Same length: the first differing digit decides even if later digits disagree.
      {"a19b", "a20a", -1},
      // Leading zeros compare like fractions.
      {"1.05", "1.5", -1}, {"a01", "a1", -1}, {"img12", "img012", 1}, {"010", "02", -1},
      {"0", "00", -1}, {"01x", "012", -1},  // the shorter zero-led run is less whatever follows
      // Equal numbers: the walk goes on after the runs.
      {"a10x", "a10y", -1}, {"a001b", "a001b", 0}, {longA.c_str(), longB.c_str(), -1},
      // Plain bytes: no case folding, no skipping of blanks, the terminator is a byte too.
      {"abc", "abc", 0}, {"Abc", "abc", -1}, {"a b", "ab", -1}, {"a", "a1", -1}, {"a1", "aa", -1},
      {"1a", "1", 1}, {"", "a", -1},
      // Bytes from 0x80 up are negative: below every ASCII byte and the terminator.
      {"a\xE9", "a", -1}, {"a\x80", "a\x7F", -1},
      // clang-format on
  };
  for (const NatCase& c : cases) {
    SCOPED_TRACE(std::string("\"") + c.a + "\" vs \"" + c.b + "\"");
    EXPECT_EQ(c.expected, strnatcmp(c.a, c.b));
    EXPECT_EQ(-c.expected, strnatcmp(c.b, c.a));
  }
}

TEST(atr_NatOrderDeathTest, NullTextIsFatal) {
  EXPECT_DEATH(strnatcmp(nullptr, "a"),
               "AssertionFailed:a && b \\[TPXBase/TPXBasAtr.m/src/atr_NatOrder:[0-9]+\\]");
  EXPECT_DEATH(strnatcmp("a", nullptr), "AssertionFailed:a && b \\[");
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
  struct {
    const char* value;  // nullptr: unset
    int expected;
  } const cases[] = {{nullptr, 1}, {"", 0}, {"1", 0}, {"0", 0}, {"no", 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value ? c.value : "(unset)");
    EXPECT_EQ(c.expected, SwitchAfterRestart(c.value));
  }

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

  // The setter stores any value unchanged.
  atr_setNaturalOrder(42);
  EXPECT_EQ(42, atr_getNaturalOrder());
  atr_setNaturalOrder(1);
}

}  // namespace
