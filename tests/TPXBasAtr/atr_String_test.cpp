// The public byte string: concatenation, sub-strings, fields, placeholders, line breaking,
// encoding conversion, and the public wrappers.
#include "atr_TestSupport.h"

#include <cstdlib>
#include <cstring>

namespace {

std::string Str(const atr_String& s) { return std::string(s.CStr(), s.Length()); }

// An atr_String holding exactly these bytes, zero bytes included.
atr_String Bytes(const std::string& bytes) {
  return atr_MakeAtrString(atr_StringBasePrv(atr_test::Of(bytes)));
}

TEST(atr_StringMake, CopiesConcatenatesAndCutsBytes) {
  EXPECT_EQ("", Str(atr_MakeAtrString(static_cast<const char*>(nullptr))));
  const atr_StringBasePrv prv("shared?");
  const atr_String copy = atr_MakeAtrString(prv);
  EXPECT_EQ("shared?", Str(copy));
  EXPECT_NE(prv.CStr(), copy.CStr());  // a copy, not a sharer

  // The left operand is copied only when shared.
  const atr_String a = atr_MakeAtrString("ab");
  EXPECT_EQ("abcd", Str(a + atr_MakeAtrString("cd")));
  EXPECT_EQ("abab", Str(a + a));
  EXPECT_EQ("ab", Str(a));
  atr_String c = atr_MakeAtrString("x");
  c.Append(c).Append(c);
  EXPECT_EQ("xxxx", Str(c));
  const std::string longText(300, 'l');
  atr_String l = atr_MakeAtrString(longText.c_str());
  l.Append(l);
  EXPECT_EQ(longText + longText, Str(l));

  // Substr takes at most the bytes that remain.
  const atr_String s = atr_MakeAtrString("hello world");
  const struct {
    unsigned start, n;
    const char* expected;
  } cases[] = {{0, 5, "hello"}, {6, 100, "world"}, {6, 4294967295u, "world"}, {11, 3, ""}};
  for (const auto& sub : cases)
    EXPECT_EQ(sub.expected, Str(s.Substr(sub.start, sub.n))) << sub.start << "," << sub.n;
  EXPECT_EQ(std::string("\0b", 2), Str(Bytes(std::string("a\0bc", 4)).Substr(1, 2)));
}

TEST(atr_StringFields, ExtractFindsTheNthFieldWithOrWithoutQuotes) {
  // quote: 0: none
  // clang-format off
  const struct { const char* text; unsigned n; char quote; const char* expected; } cases[] = {
      {"a,b,d", 1, 0, "b"}, {"a,,d", 1, 0, ""}, {"a,b,", 2, 0, ""}, {"a,b", 3, 0, ""},
      {",b", 0, 0, ""}, {"a,b,d", 0, 0, "a"}, {"x,yy,zzz", 2, 0, "zzz"}, {"abc", 1, 0, ""},
      {"\"x\"\"y\"", 0, '"', "x\"y"}, {"\"a\",\"b\"", 1, '"', "b"},
      {"\"a,b\"", 0, '"', "a"},  // the field ends at the separator, quotes or not
      {"\"a,b\"", 1, '"', "b"}, {"\"\"\"\"", 0, '"', "\"\""}, {"\"\"\"", 0, '"', "\""},
      {"\"", 0, '"', ""}, {"ab\"", 0, '"', "ab"}, {"a,,c", 1, '"', ""},
      // clang-format on
  };
  for (const auto& c : cases) {
    const atr_String text = atr_MakeAtrString(c.text);
    EXPECT_EQ(c.expected, Str(c.quote ? text.extract(c.n, ',', c.quote) : text.extract(c.n, ',')))
        << c.text << " field " << c.n;
  }
  EXPECT_EQ(std::string("b\0c", 3), Str(Bytes(std::string("a;b\0c;d", 7)).extract(1, ';')));
}

TEST(atr_StringPlaceholders, ReplaceNonTranslatedTakesTheFirstOccurrenceOnly) {
  const atr_String value = atr_MakeAtrString("V");
  const struct {
    const char* before;
    std::function<void(atr_String&)> replace;
    const char* after;
  } cases[] = {
      // clang-format off
      {"x %2$s y %2$s", [](atr_String& s) { s.ReplaceNonTranslated(2, "abc"); }, "x abc y %2$s"},
      {"n=%d, m=%d", [](atr_String& s) { s.ReplaceNonTranslated(0, 5); }, "n=5, m=%d"},
      {"%1$d%12$d", [](atr_String& s) { s.ReplaceNonTranslated(12, -3); }, "%1$d-3"},
      {"[%1$s]", [&](atr_String& s) { s.ReplaceNonTranslated(1, value); }, "[V]"},
      {"%s and %s", [&](atr_String& s) { s.ReplaceNonTranslated(0, value); }, "V and %s"},
      {"<%3$s>", [](atr_String& s) { s.ReplaceNonTranslated(3, nullptr); }, "<>"},
      {"%1$s", [](atr_String& s) { s.ReplaceNonTranslated(1, 7); }, "%1$s"},  // type matters
      {"Hello NAME, NAME", [](atr_String& s) { s.ReplaceNonTranslated("NAME", "Ann"); }, "Hello Ann, NAME"},
      {"<K>", [&](atr_String& s) { s.ReplaceNonTranslated("K", value); }, "<V>"},
      {"abc", [](atr_String& s) { s.ReplaceNonTranslated(nullptr, "x"); }, "abc"},
      {"a%1$sb", [](atr_String& s) { s.ReplaceNonTranslated(1, s); }, "aa%1$sbb"},
      // clang-format on
  };
  for (const auto& c : cases) {
    atr_String s = atr_MakeAtrString(c.before);
    const atr_String before = s;
    c.replace(s);
    EXPECT_EQ(c.after, Str(s)) << c.before;
    EXPECT_EQ(c.before, Str(before)) << c.before << ": the copy changed too";
  }
}

// BreakLineString keeps the word that crosses the width on its line; AddLineBreaks breaks each
// line of a text and, when asked to keep broken texts, leaves a text that has a line end as is.
TEST(atr_StringLines, BreakLineStringAndAddLineBreaks) {
  enum Call { Break, Add, AddKeep };
  // clang-format off
  const struct { std::string text; unsigned width; Call call; std::string expected; } cases[] = {
      {"aaaa bbbb cccc dddd", 10, Break, "aaaa bbbb cccc\ndddd"}, {"aaaa bbbb cccc dddd", 5, Break, "aaaa bbbb\ncccc dddd"},
      {"ab cd", 0, Break, "ab\ncd"}, {"  aa bb", 3, Break, "  aa\nbb"}, {"aa   bb", 2, Break, "aa\n  bb"},
      {"abcdefghij kl", 4, Break, "abcdefghij\nkl"}, {"aaaa bbbb\n", 4, Break, "aaaa\nbbbb\n"},
      {"aaaa bbbb ", 4, Break, "aaaa\nbbbb"}, {"aaaa\tbbbb", 4, Break, "aaaa\nbbbb"}, {"      ", 3, Break, "      "},
      {"\xC3\xA9\xC3\xA9 \xC3\xA9", 4, Break, "\xC3\xA9\xC3\xA9\n\xC3\xA9"},  // bytes, not characters
      {std::string("a\0b c", 5), 2, Break, std::string("a\0b\nc", 5)},
      {"aaaa bbbb\ncc dd ee", 4, Add, "aaaa\nbbbb\ncc dd\nee"}, {"aaaa bbbb\ncc dd ee", 5, AddKeep, "aaaa bbbb\ncc dd ee"},
      {"aaaa bbbb cc", 5, AddKeep, "aaaa bbbb\ncc"}, {"one\n\ntwo three", 3, Add, "one\n\ntwo\nthree"},
      {"a b c d", 0, Add, "a\nb\nc\nd"}, {"", 0, Add, ""},
      // clang-format on
  };
  for (const auto& c : cases) {
    const atr_String in = Bytes(c.text);
    EXPECT_EQ(c.expected,
              Str(c.call == Break ? atr_String::BreakLineString(in, c.width)
                                  : atr_String::AddLineBreaks(in, c.width, c.call == AddKeep)))
        << '"' << c.text << "\" width " << c.width << " call " << c.call;
  }
  // Texts left as they are come back sharing the argument's storage.
  const atr_String fits = atr_MakeAtrString("short text");
  EXPECT_EQ(fits.CStr(), atr_String::BreakLineString(fits, 10).CStr());
  EXPECT_EQ(fits.CStr(), atr_String::AddLineBreaks(fits, 10, false).CStr());
  const atr_String broken = atr_MakeAtrString("already\nbroken text here");
  EXPECT_EQ(broken.CStr(), atr_String::AddLineBreaks(broken, 3, true).CStr());
}

// The testing mode is fixed at its first use in a process: each setting runs in a child.
class atr_StringTestingModeDeathTest : public ::testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

[[noreturn]] void CheckTestingMode(const char* lang, const char* qaPrint, bool expectOn) {
  setenv("KALDER_LANG", lang, 1);
  if (qaPrint)
    setenv("KLD_QA_PRINT", qaPrint, 1);
  else
    unsetenv("KLD_QA_PRINT");
  setenv("QFN_DICT_DIR", "/nowhere", 1);
  std::setlocale(LC_ALL, "C.UTF-8");
  const std::string marker = "\xE3\x82\xBD\xE3\x83\xBC";
  bool good = atr_i18nTesting() == expectOn && marker == atr_i18nExtraCharacters();
  // The marker's first 4 bytes are invisible in the testing mode: the first word counts 5
  // visible bytes instead of 9, so at width 6 the line is not broken.
  const atr_String text = atr_MakeAtrString((marker + "abc def").c_str());
  const std::string broken = Str(atr_String::BreakLineString(text, 6));
  good = good && broken == (expectOn ? marker + "abc def" : marker + "abc\ndef");
  std::exit(good ? 0 : 1);
}

TEST_F(atr_StringTestingModeDeathTest, MarkersAreInvisibleWhenAllThreeVariablesExist) {
  EXPECT_EXIT(CheckTestingMode("", "1", true), ::testing::ExitedWithCode(0), "");
  EXPECT_EXIT(CheckTestingMode("x", nullptr, false), ::testing::ExitedWithCode(0), "");
}

TEST(atr_StringConversion, AsciiIsSharedOtherTextIsConvertedOrReported) {
  const atr_String ascii = atr_MakeAtrString("plain ASCII");
  {
    kld_test::AllocationFailureGuard noAllocation(0);
    EXPECT_EQ(ascii.CStr(), ascii.LocaleToUTF8().CStr());
    EXPECT_EQ(ascii.CStr(), ascii.UTF8ToLocale().CStr());
  }
  const std::string error = "****ERROR: Transcoding Error: ";
  // clang-format off
  const struct { const char* locale; std::string in; bool toUtf8; std::string out; } cases[] = {
      {"C.UTF-8", "caf\xC3\xA9", true, "caf\xC3\xA9"},
      {"C.UTF-8", "\xE2\x82\xAC!", false, "\xE2\x82\xAC!"},
      {"C.UTF-8", "bad \xC3", true, error + "bad \xC3"},
      {"C.UTF-8", "\xFF", false, error + "\xFF"},
      {"C", "\xC3\xA9", false, error + "\xC3\xA9"},
      {"C", "\xE9", true, error + "\xE9"},
  };
  // clang-format on
  for (const auto& c : cases) {
    atr_test::ScopedCtype ctype(c.locale);
    ASSERT_TRUE(ctype.ok());
    const atr_String in = Bytes(c.in);
    EXPECT_EQ(c.out, Str(c.toUtf8 ? in.LocaleToUTF8() : in.UTF8ToLocale())) << c.locale << c.in;
    EXPECT_EQ(c.in, Str(in));
  }
}

TEST(atr_StringBasePrv, ForwardsAndShares) {
  atr_StringBasePrv p("abc");
  p += atr_StringBasePrv("!");
  p.Append("xyz", 2);
  p.Append("q", 100);  // at most n bytes: stops at the terminator
  p.Substitute("!", "--", 4294967295u);
  EXPECT_STREQ("abc--xyq", p.CStr());
  atr_String target = atr_MakeAtrString("old");
  p.AssignTo(target);
  EXPECT_EQ(p.CStr(), target.CStr());
  atr_StringBasePrv q;
  q = static_cast<const atr_StringBase&>(target);
  EXPECT_EQ(target.CStr(), q.CStr());
  q.Erase();
  EXPECT_STREQ("abc--xyq", p.CStr());

  const cow_String cow(std::string("a\0b", 3).c_str(), 3);
  EXPECT_EQ(0, std::memcmp("a\0b", cow.CStr(), 4));
  EXPECT_STREQ("", cow_String("ignored", 0).CStr());
}

TEST(atr_StringDeathTest, SubstrPastTheEnd) {
  const atr_String s = atr_MakeAtrString("abc");
  EXPECT_DEATH((void)s.Substr(4294967295u, 1),
               "AssertionFailed:\\(start <= length\\) && \"Substr: start out of range\" "
               "\\[TPXBase/TPXBasAtr.m/src/atr_StringBase:[0-9]+\\]");
}

}  // namespace
