// The public byte string: concatenation, sub-strings, fields, placeholders, line breaking,
// encoding conversion, and the public wrappers.
#include "KLDTPXBasCoreUtils.h"
#include "atr_StringTestSupport.h"
#include "gtest/gtest.h"
#include "kld_TestSupport.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

namespace {

using atr_test::ScopedCtype;
using atr_test::TestString;

std::string Str(const atr_String& s) { return std::string(s.CStr(), s.Length()); }

// An atr_String holding exactly these bytes, zero bytes included.
atr_String Bytes(const std::string& bytes) {
  const TestString base(bytes);
  return atr_MakeAtrString(atr_StringBasePrv(base));
}

// ---------------------------------------------------------------------------------------------
// Construction, concatenation and sub-strings.
// ---------------------------------------------------------------------------------------------

TEST(atr_StringMake, CopiesConcatenatesAndCutsBytes) {
  EXPECT_EQ("", Str(atr_MakeAtrString(static_cast<const char*>(nullptr))));
  EXPECT_EQ("abc", Str(atr_MakeAtrString("abc")));
  EXPECT_EQ("-42", Str(atr_String(-42)));
  const atr_StringBasePrv prv("shared?");
  const atr_String copy = atr_MakeAtrString(prv);
  EXPECT_EQ("shared?", Str(copy));
  EXPECT_NE(prv.CStr(), copy.CStr());  // a copy, not a sharer
  EXPECT_EQ(std::string("a\0b", 3), Str(Bytes(std::string("a\0b", 3))));

  // The left operand is copied only when shared.
  const atr_String a = atr_MakeAtrString("ab");
  const atr_String b = atr_MakeAtrString("cd");
  EXPECT_EQ("abcd", Str(a + b));
  EXPECT_EQ("ab", Str(a));
  EXPECT_EQ("abab", Str(a + a));
  EXPECT_EQ("cd", Str(atr_String() + b));
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
  } cases[] = {{0, 5, "hello"}, {6, 100, "world"}, {6, 4294967295u, "world"},
               {11, 3, ""},     {3, 0, ""},        {0, 11, "hello world"}};
  for (const auto& sub : cases)
    EXPECT_EQ(sub.expected, Str(s.Substr(sub.start, sub.n))) << sub.start << "," << sub.n;
  EXPECT_EQ(std::string("\0b", 2), Str(Bytes(std::string("a\0bc", 4)).Substr(1, 2)));
}

// ---------------------------------------------------------------------------------------------
// Fields.
// ---------------------------------------------------------------------------------------------

TEST(atr_StringFields, ExtractFindsTheNthFieldWithOrWithoutQuotes) {
  const struct {
    const char* text;
    unsigned n;
    char quote;  // 0: none
    const char* expected;
  } cases[] = {
      // clang-format off
      {"a,b,d", 1, 0, "b"}, {"a,b,", 1, 0, "b"}, {"a,,d", 1, 0, ""}, {"a,b,", 2, 0, ""},
      {"a,b", 3, 0, ""}, {",b", 0, 0, ""}, {"a,b,d", 0, 0, "a"}, {"a,b,d", 2, 0, "d"},
      {"abc", 0, 0, "abc"}, {"abc", 1, 0, ""}, {"", 0, 0, ""}, {",", 1, 0, ""},
      {"x,yy,zzz", 2, 0, "zzz"},
      {"\"x\"\"y\"", 0, '"', "x\"y"}, {"\"a\",\"b\"", 1, '"', "b"},
      {"\"a,b\"", 0, '"', "a"},  // the field ends at the separator, quotes or not
      {"\"a,b\"", 1, '"', "b"}, {"\"\"\"\"", 0, '"', "\"\""}, {"\"\"\"", 0, '"', "\""},
      {"\"", 0, '"', ""}, {"ab\"", 0, '"', "ab"}, {"plain,text", 1, '"', "text"},
      {"a,,c", 1, '"', ""},
      // clang-format on
  };
  for (const auto& c : cases) {
    const atr_String text = atr_MakeAtrString(c.text);
    EXPECT_EQ(c.expected, Str(c.quote ? text.extract(c.n, ',', c.quote) : text.extract(c.n, ',')))
        << c.text << " field " << c.n;
  }
  EXPECT_EQ(std::string("b\0c", 3), Str(Bytes(std::string("a;b\0c;d", 7)).extract(1, ';')));
}

// ---------------------------------------------------------------------------------------------
// Placeholders.
// ---------------------------------------------------------------------------------------------

TEST(atr_StringPlaceholders, ReplaceNonTranslatedTakesTheFirstOccurrenceOnly) {
  const atr_String value = atr_MakeAtrString("V");
  const struct {
    const char* name;
    const char* before;
    std::function<void(atr_String&)> replace;
    const char* after;
  } cases[] = {
      // clang-format off
      {"position text", "x %2$s y %2$s", [](atr_String& s) { s.ReplaceNonTranslated(2, "abc"); }, "x abc y %2$s"},
      {"position 0 int", "n=%d, m=%d", [](atr_String& s) { s.ReplaceNonTranslated(0, 5); }, "n=5, m=%d"},
      {"position int", "%1$d%12$d", [](atr_String& s) { s.ReplaceNonTranslated(12, -3); }, "%1$d-3"},
      {"position string", "[%1$s]", [&](atr_String& s) { s.ReplaceNonTranslated(1, value); }, "[V]"},
      {"position 0 string", "%s and %s", [&](atr_String& s) { s.ReplaceNonTranslated(0, value); }, "V and %s"},
      {"null value", "<%3$s>", [](atr_String& s) { s.ReplaceNonTranslated(3, nullptr); }, "<>"},
      {"absent", "no placeholder", [](atr_String& s) { s.ReplaceNonTranslated(1, "x"); }, "no placeholder"},
      {"type matters", "%1$s", [](atr_String& s) { s.ReplaceNonTranslated(1, 7); }, "%1$s"},
      {"key", "Hello NAME, NAME", [](atr_String& s) { s.ReplaceNonTranslated("NAME", "Ann"); }, "Hello Ann, NAME"},
      {"key string", "<K>", [&](atr_String& s) { s.ReplaceNonTranslated("K", value); }, "<V>"},
      {"null key", "abc", [](atr_String& s) { s.ReplaceNonTranslated(nullptr, "x"); }, "abc"},
      {"value is the string", "a%1$sb", [](atr_String& s) { s.ReplaceNonTranslated(1, s); }, "aa%1$sbb"},
      // clang-format on
  };
  for (const auto& c : cases) {
    atr_String s = atr_MakeAtrString(c.before);
    const atr_String before = s;
    c.replace(s);
    EXPECT_EQ(c.after, Str(s)) << c.name;
    EXPECT_EQ(c.before, Str(before)) << c.name << ": the copy changed too";
  }
}

// ---------------------------------------------------------------------------------------------
// Line breaking.
// ---------------------------------------------------------------------------------------------

// BreakLineString keeps the word that crosses the width on its line; AddLineBreaks breaks each
// line of a text and, when asked to keep broken texts, leaves a text that has a line end as is.
TEST(atr_StringLines, BreakLineStringAndAddLineBreaks) {
  enum Call { Break, Add, AddKeep };
  const struct {
    std::string text;
    unsigned width;
    Call call;
    std::string expected;
  } cases[] = {
      // clang-format off
      {"aaaa bbbb cccc dddd", 10, Break, "aaaa bbbb cccc\ndddd"},
      {"aaaa bbbb cccc dddd", 4, Break, "aaaa\nbbbb\ncccc\ndddd"},
      {"aaaa bbbb cccc dddd", 5, Break, "aaaa bbbb\ncccc dddd"},
      {"ab cd", 0, Break, "ab\ncd"},  // width 0 is taken as 1
      {"ab cd", 1, Break, "ab\ncd"}, {"  aa bb", 3, Break, "  aa\nbb"}, {"aa   bb", 2, Break, "aa\n  bb"},
      {"abcdefghij kl", 4, Break, "abcdefghij\nkl"}, {"aaaa bbbb\n", 4, Break, "aaaa\nbbbb\n"},
      {"aaaa bbbb ", 4, Break, "aaaa\nbbbb"}, {"aaaa\tbbbb", 4, Break, "aaaa\nbbbb"},
      {"nospacesatall", 3, Break, "nospacesatall"}, {"      ", 3, Break, "      "},
      {"\xC3\xA9\xC3\xA9 \xC3\xA9", 4, Break, "\xC3\xA9\xC3\xA9\n\xC3\xA9"},  // bytes, not characters
      {std::string("a\0b c", 5), 2, Break, std::string("a\0b\nc", 5)},
      {"aaaa bbbb\ncc dd ee", 5, Add, "aaaa bbbb\ncc dd\nee"},
      {"aaaa bbbb\ncc dd ee", 4, Add, "aaaa\nbbbb\ncc dd\nee"},
      {"aaaa bbbb\ncc dd ee", 5, AddKeep, "aaaa bbbb\ncc dd ee"},
      {"aaaa bbbb cc", 5, AddKeep, "aaaa bbbb\ncc"}, {"ab\ncd ef gh\n", 5, Add, "ab\ncd ef\ngh\n"},
      {"one\n\ntwo three", 3, Add, "one\n\ntwo\nthree"}, {"a b c d", 0, Add, "a\nb\nc\nd"},
      {"", 0, Add, ""},
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

// The testing mode is fixed at its first use in a process, so each setting runs in a fresh
// child process of its own.
class atr_StringTestingModeDeathTest : public ::testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

[[noreturn]] void CheckTestingMode(bool expectOn) {
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
  EXPECT_EXIT(
      {
        setenv("KALDER_LANG", "", 1);
        setenv("KLD_QA_PRINT", "1", 1);
        setenv("QFN_DICT_DIR", "/nowhere", 1);
        CheckTestingMode(true);
      },
      ::testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        setenv("KALDER_LANG", "x", 1);
        unsetenv("KLD_QA_PRINT");
        setenv("QFN_DICT_DIR", "/nowhere", 1);
        CheckTestingMode(false);
      },
      ::testing::ExitedWithCode(0), "");
}

// ---------------------------------------------------------------------------------------------
// Encoding conversion.
// ---------------------------------------------------------------------------------------------

TEST(atr_StringConversion, AsciiIsSharedOtherTextIsConvertedOrReported) {
  const atr_String ascii = atr_MakeAtrString("plain ASCII");
  {
    kld_test::AllocationFailureGuard noAllocation(0);
    EXPECT_EQ(ascii.CStr(), ascii.LocaleToUTF8().CStr());
    EXPECT_EQ(ascii.CStr(), ascii.UTF8ToLocale().CStr());
    EXPECT_EQ("", Str(atr_String().LocaleToUTF8()));
  }
  const std::string error = "****ERROR: Transcoding Error: ";
  {
    ScopedCtype utf8("C.UTF-8");
    ASSERT_TRUE(utf8.ok());
    const struct {
      std::string in;
      bool toUtf8;
      std::string out;
    } cases[] = {
        {"caf\xC3\xA9", true, "caf\xC3\xA9"},      {"caf\xC3\xA9", false, "caf\xC3\xA9"},
        {"\xE2\x82\xAC!", false, "\xE2\x82\xAC!"}, {"bad \xC3", true, error + "bad \xC3"},
        {"bad \xC3", false, error + "bad \xC3"},   {"\xFF", false, error + "\xFF"},
    };
    for (const auto& c : cases) {
      const atr_String in = Bytes(c.in);
      EXPECT_EQ(c.out, Str(c.toUtf8 ? in.LocaleToUTF8() : in.UTF8ToLocale()))
          << c.in << (c.toUtf8 ? " to UTF-8" : " to locale");
      EXPECT_EQ(c.in, Str(in));
    }
  }
  {
    ScopedCtype c("C");
    ASSERT_TRUE(c.ok());
    EXPECT_EQ(error + "\xC3\xA9", Str(Bytes("\xC3\xA9").UTF8ToLocale()));
    EXPECT_EQ(error + "\xE9", Str(Bytes("\xE9").LocaleToUTF8()));
  }
}

// ---------------------------------------------------------------------------------------------
// Public wrappers.
// ---------------------------------------------------------------------------------------------

TEST(atr_StringBasePrv, ForwardsAndShares) {
  atr_StringBasePrv p("abc");
  p += "def";
  p += atr_StringBasePrv("!");
  EXPECT_STREQ("abcdef!", p.CStr());
  EXPECT_EQ(7u, p.Length());
  p.Append("xyz", 2);
  p.Append("q", 100);  // at most n bytes: stops at the terminator
  EXPECT_STREQ("abcdef!xyq", p.CStr());
  p.RightTrim("qy");
  EXPECT_STREQ("abcdef!x", p.CStr());
  p.Substitute("!", "--", 4294967295u);
  EXPECT_STREQ("abcdef--x", p.CStr());
  EXPECT_EQ(0, p.Compare("abcdef--x"));
  EXPECT_EQ(-1, p.Compare("b"));

  atr_String target = atr_MakeAtrString("old");
  p.AssignTo(target);
  EXPECT_EQ(p.CStr(), target.CStr());
  atr_StringBasePrv q;
  q = p;
  EXPECT_EQ(p.CStr(), q.CStr());
  q.Erase();
  EXPECT_EQ(0u, q.Length());
  EXPECT_STREQ("abcdef--x", p.CStr());
  q = "new";
  EXPECT_STREQ("new", q.CStr());
  q = static_cast<const atr_StringBase&>(target);
  EXPECT_EQ(target.CStr(), q.CStr());

  const cow_String cow(std::string("a\0b", 3).c_str(), 3);
  EXPECT_EQ(0, std::memcmp("a\0b", cow.CStr(), 4));
  const cow_String empty("ignored", 0);
  EXPECT_STREQ("", empty.CStr());
}

using atr_StringDeathTest = ::testing::Test;

TEST(atr_StringDeathTest, SubstrPastTheEnd) {
  const atr_String s = atr_MakeAtrString("abc");
  EXPECT_DEATH((void)s.Substr(4, 1),
               "AssertionFailed:\\(start <= length\\) && \"Substr: start out of range\" "
               "\\[TPXBase/TPXBasAtr.m/src/atr_StringBase:[0-9]+\\]");
  EXPECT_DEATH((void)s.Substr(4294967295u, 1), "Substr: start out of range");
}

}  // namespace
