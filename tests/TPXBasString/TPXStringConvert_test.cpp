// TPXStringConvert_test.cpp: building from and converting to UTF-8, UTF-16, 16-bit
// characters, the process locale, numbers and the platform strings, on good and bad input.
#include "TPXStringTestSupport.h"
#include "kld_TestSupport.h"

#include <clocale>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {}  // namespace

TEST(TPXStringFromUtf8, ValidatesStructureAndRange) {
  struct Row {
    const char* name;
    std::string bytes;
    bool ok;
    bool ascii;
  } rows[] = {
      {"ascii", "abc", true, true},
      {"mixed", "a\xC3\xA9\xF0\x9F\x98\x80", true, false},
      {"bad continuation", "\xC3\x28", false, true},
      {"lone continuation", "\x80", false, true},
      {"truncated at the end", "ab\xE2\x82", false, true},
      {"lead byte F8", "\xF8\x80\x80\x80\x80", false, true},
      // Every lead byte up to 0xF7 announces its sequence; the code is not checked.
      {"above U+10FFFF", "\xF4\x90\x80\x80", true, false},
      {"U+10FFFF", "\xF4\x8F\xBF\xBF", true, false},
      {"F5 lead", "\xF5\x80\x80\x80", true, false},
      {"largest four-byte form", "\xF7\xBF\xBF\xBF", true, false},
      {"missing continuation", "\xF7\xBF\xBF", false, true},
      {"stray continuation after a sequence", "\xC3\xA9\xA9", false, true},
      {"overlong accepted", "\xC0\x80", true, false},
      {"encoded surrogate accepted", "\xED\xA0\x80", true, false},
      {"embedded zero byte", std::string("a\0b", 3), true, true},
  };
  for (const Row& row : rows) {
    TPXString s("before");
    const TPXString::Result r =
        s.BuildFromUTF8(row.bytes.data(), static_cast<unsigned>(row.bytes.size()));
    EXPECT_EQ(row.ok ? TPXString::Success : TPXString::Failure, r) << row.name;
    EXPECT_EQ(!row.ok, s.IsBAD()) << row.name;
    if (row.ok) {
      EXPECT_EQ(static_cast<int>(row.bytes.size()), s.GetLengthInByte()) << row.name;
      EXPECT_EQ(row.ascii, s.IsAscii()) << row.name;
    }
  }
  // The count bounds the read: a sequence cut by the count is invalid even if bytes follow.
  TPXString cut;
  EXPECT_EQ(TPXString::Failure, cut.BuildFromUTF8("\xC3\xA9", 1));
  TPXString empty("x");
  EXPECT_EQ(TPXString::Success, empty.BuildFromUTF8(nullptr));
  EXPECT_TRUE(empty.IsNull());
  EXPECT_TRUE(empty.IsAscii());
}

TEST(TPXStringUtf16, PairsSurrogatesAndRejectsBrokenOnes) {
  struct Row {
    const char* name;
    std::vector<unsigned short> units;
    const char* expected;  // null: failure
  } rows[] = {
      {"pair", {0xD83D, 0xDE00}, "\xF0\x9F\x98\x80"},
      {"lone low", {0xDC00}, nullptr},
      {"lone high at the end", {0x61, 0xD83D}, nullptr},
      {"reversed pair", {0xDE00, 0xD83D}, nullptr},
      {"high then ascii", {0xD83D, 0x61}, nullptr},
      {"zero unit inside", {0x61, 0, 0x62}, nullptr},
      {"bmp", {0x61, 0xE9, 0x20AC}, "a\xC3\xA9\xE2\x82\xAC"},
  };
  for (const Row& row : rows) {
    TPXString s;
    const TPXString::Result r =
        s.BuildFromUTF16(row.units.data(), static_cast<unsigned>(row.units.size()));
    if (row.expected == nullptr) {
      EXPECT_EQ(TPXString::Failure, r) << row.name;
      EXPECT_TRUE(s.IsBAD()) << row.name;
    } else {
      EXPECT_EQ(TPXString::Success, r) << row.name;
      EXPECT_EQ(row.expected, Text(s)) << row.name;
      // And back out.
      unsigned count = 0;
      EXPECT_EQ(TPXString::Success, s.ConvertToUTF16(nullptr, &count));
      std::vector<unsigned short> out(count);
      s.ConvertToUTF16(out.data(), &count);
      EXPECT_EQ(row.units, out) << row.name;
    }
  }
  TPXString none("x");
  EXPECT_EQ(TPXString::Success, none.BuildFromUTF16(nullptr, 3));
  EXPECT_TRUE(none.IsNull());
  unsigned count = 9;
  none.ConvertToUTF16(nullptr, &count);
  EXPECT_EQ(0u, count);
}

TEST(TPXStringWChar, OneUnitPerCharacterQuestionMarkAboveBmp) {
  const TPXString s("a\xC3\xA9\xF0\x9F\x98\x80");
  unsigned short out[4] = {1, 1, 1, 1};
  EXPECT_EQ(TPXString::Success, s.ConvertToWChar(out));
  const unsigned short expected[4] = {0x61, 0xE9, '?', 0};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(expected[i], out[i]) << i;

  TPXString back;
  EXPECT_EQ(TPXString::Success, back.BuildFromWChar(out));
  EXPECT_EQ("a\xC3\xA9?", Text(back));
  // Each unit is a character of its own: a surrogate pair is two encoded surrogates, and
  // comes back as the same two units.
  const unsigned short pair[] = {0xD83D, 0xDE00, 0};
  EXPECT_EQ(TPXString::Success, back.BuildFromWChar(pair));
  EXPECT_EQ("\xED\xA0\xBD\xED\xB8\x80", Text(back));
  EXPECT_EQ(2, back.GetLengthInChar());
  EXPECT_FALSE(back.IsAscii());
  unsigned short units[3] = {1, 1, 1};
  EXPECT_EQ(TPXString::Success, back.ConvertToWChar(units));
  EXPECT_EQ(0xD83D, units[0]);
  EXPECT_EQ(0xDE00, units[1]);
  EXPECT_EQ(0, units[2]);
  const unsigned short ascii[] = {0x41, 0x42, 0};
  EXPECT_EQ(TPXString::Success, back.BuildFromWChar(ascii));
  EXPECT_TRUE(back.IsAscii());
}

TEST(TPXStringUtf8Out, MeasureThenCopy) {
  const TPXString s("a\xC3\xA9");
  unsigned length = 0;
  EXPECT_EQ(TPXString::Success, s.ConvertToUTF8(nullptr, &length));
  EXPECT_EQ(3u, length);
  std::vector<char> out(length + 1, 'x');
  s.ConvertToUTF8(out.data(), nullptr);
  EXPECT_STREQ("a\xC3\xA9", out.data());
  char lone = 'x';
  TPXString().ConvertToUTF8(&lone, nullptr);
  EXPECT_EQ('\0', lone);
}

// The locale round trips of whole strings are also checked through TPXOsString and the
// Fortran entry points (TPXOsString_test.cpp).
TEST(TPXStringLocale, SevenBitLocaleRefusesWhatItCannotHold) {
  ScopedCtype c("C");
  ASSERT_TRUE(c.ok);
  TPXString s;
  EXPECT_EQ(TPXString::Failure, s.BuildFromLocale("caf\xE9"));
  EXPECT_TRUE(s.IsBAD());
  EXPECT_EQ(TPXString::Success, s.BuildFromLocale("plain"));
  EXPECT_TRUE(s.IsAscii());
  // The string may be rebuilt from its own bytes.
  EXPECT_EQ(TPXString::Success, s.BuildFromLocale(s.CastToCharPtr()));
  EXPECT_EQ("plain", Text(s));
  unsigned length = 0;
  EXPECT_EQ(TPXString::Failure, TPXString("\xC3\xA9").ConvertToLocale(nullptr, &length));
  EXPECT_LT(static_cast<int>(length), 0);
  char out[6];
  EXPECT_EQ(TPXString::Success, TPXString("plain").ConvertToLocale(out, &length));
  EXPECT_STREQ("plain", out);

  TPXChar e = TPXChar::Make("\xC3\xA9");
  EXPECT_EQ(TPXChar::Failure, e.ConvertToLocale(nullptr, &length));
  EXPECT_EQ(TPXChar::Failure, e.BuildFromLocale("\xE9"));
  EXPECT_STREQ("?", e.CastToCharPtr());
  EXPECT_EQ(TPXChar::Success, TPXChar::Make("a").ConvertToLocale(nullptr, &length));
  EXPECT_EQ(1u, length);
  EXPECT_EQ(TPXChar::Success, e.BuildFromLocale("xy"));
  EXPECT_EQ(static_cast<unsigned>('x'), e.ConvertToUTF32());
}

TEST(TPXStringLocale, InvalidLocaleTextFailsAndUtf8LookalikesWarnWhenAsked) {
  ScopedCtype utf8("C.UTF-8");
  if (!utf8.ok) GTEST_SKIP() << "no UTF-8 locale on this system";
  TPXString s;
  EXPECT_EQ(TPXString::Failure, s.BuildFromLocale("a\xFF"));
  EXPECT_TRUE(s.IsBAD());
  kld_test::ScopedEnv warn("_TPX_FAIL_ON_BAD", "1");
  testing::internal::CaptureStderr();
  EXPECT_EQ(TPXString::Success, s.BuildFromLocale("\xC3\xA9"));
  const std::string err = testing::internal::GetCapturedStderr();
  // The setting is read once per process: it may have been read unset before this test.
  if (!err.empty()) {
    EXPECT_EQ("Possible conversion from UTF8: \xC3\xA9\n", err);
  }
  EXPECT_EQ("\xC3\xA9", Text(s));
}

// The text built from a number, or "<bad>" for a failure that leaves the string BAD.
template <class T>
std::string Built(T value, const char* format) {
  TPXString s;
  const TPXString::Result r = s.BuildFromNum(value, format);
  return r == TPXString::Success ? Text(s) : s.IsBAD() ? "<bad>" : "<failure, not BAD>";
}

TEST(TPXStringNumbers, FormatsAndScansOneConversionOfTheRightType) {
  EXPECT_EQ("00042", Built(42, "%05d"));
  EXPECT_EQ("v=2.50", Built(2.5, "v=%.2f"));
  EXPECT_EQ("1.5", Built(static_cast<long double>(1.5), "%g"));
  EXPECT_EQ("-5000000000", Built(-5000000000LL, "%lld"));
  EXPECT_EQ(std::string(399, ' ') + "1", Built(1, "%400d"));  // longer than any fixed buffer
  for (const char* format : {"%s", "%d %d", "no conversion", "%lld", "%*d", "%n", "%"})
    EXPECT_EQ("<bad>", Built(3, format)) << format;
  EXPECT_EQ("<bad>", Built(3, nullptr));
  EXPECT_EQ("<bad>", Built(1.0, "%d"));
  EXPECT_EQ("<bad>", Built(200, "%c"));  // a byte that is not UTF-8

  int i = 0;
  EXPECT_EQ(TPXString::Success, TPXString(" 17 ").ConvertToNum(&i, "%d"));
  EXPECT_EQ(17, i);
  double d = 0;
  EXPECT_EQ(TPXString::Success, TPXString("2.25").ConvertToNum(&d, "%lf"));
  EXPECT_EQ(2.25, d);
  EXPECT_EQ(TPXString::Failure, TPXString("2.25").ConvertToNum(&d, "%f"));  // float into double
  long double ld = 0;
  EXPECT_EQ(TPXString::Success, TPXString("0.5").ConvertToNum(&ld, "%lf"));
  EXPECT_EQ(0.5L, ld);
  unsigned long long ull = 0;
  EXPECT_EQ(TPXString::Success, TPXString("18446744073709551615").ConvertToNum(&ull, "%llu"));
  EXPECT_EQ(18446744073709551615ULL, ull);
  EXPECT_EQ(TPXString::Failure, TPXString("abc").ConvertToNum(&i, "%d"));
  EXPECT_EQ(TPXString::Failure, TPXString("1").ConvertToNum(&i, "%s"));
}

TEST(TPXStringPlatform, DxlStringsInAndOut) {
  EXPECT_STREQ("a?b?", TPXString("a\tb\xE2\x82\xAC").ToDXL().CastToCharPtr());
  EXPECT_EQ("a\xC3\xA9", Text(TPXString(DXLString("a\xC3\xA9"))));
  const TPXString mixed("x\xF0\x9F\x98\x80");
  const DXLUnicodeString u = mixed.ToDXLU();
  EXPECT_EQ(3, u.GetLengthInChar());
  EXPECT_EQ("x\xF0\x9F\x98\x80", Text(TPXString(u)));
  const unsigned short lone[] = {0xD800};
  EXPECT_TRUE(TPXString(DXLUnicodeString(lone, 1)).IsBAD());
  EXPECT_TRUE(TPXString(DXLUnicodeString()).IsNull());
}
