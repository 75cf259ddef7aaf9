// TPXString_test.cpp: character positions, iteration, searches and edits with the ASCII flag,
// sharing, hashing and the BAD value.
#include "TPXStringTestSupport.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

// 'aé€😀': 1 + 2 + 3 + 4 bytes.
const char kMixed[] = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";

/// Whether the flag is exact or conservatively clear.
bool FlagHonest(const TPXString& s) {
  for (const char* p = s.CastToCharPtr(); *p; ++p)
    if (static_cast<unsigned char>(*p) >= 0x80) return !s.IsAscii();
  return true;
}

}  // namespace

TEST(TPXStringIndexing, MixedWidthCharactersCountAsOne) {
  const TPXString s(kMixed);
  EXPECT_EQ(4, s.GetLengthInChar());
  EXPECT_EQ(10, s.GetLengthInByte());
  EXPECT_FALSE(s.IsAscii());
  const unsigned codes[] = {0x61, 0xE9, 0x20AC, 0x1F600};
  for (unsigned i = 0; i < 4; ++i) EXPECT_EQ(codes[i], s[i].ConvertToUTF32()) << i;
  EXPECT_EQ(4u, std::string(s[3].CastToCharPtr()).size());
  EXPECT_EQ(0u, s[4].ConvertToUTF32());  // the end gives the empty character
  EXPECT_STREQ("", s[4].CastToCharPtr());

  const TPXString ascii("abc");
  EXPECT_TRUE(ascii.IsAscii());
  EXPECT_EQ('c', static_cast<char>(ascii[2]));
  EXPECT_EQ(0u, ascii[3].ConvertToUTF32());
}

// Overlong forms, encoded surrogates and codes past U+10FFFF are characters like any other,
// for every operation.
TEST(TPXStringLooseForms, EveryOperationTakesThemAsCharacters) {
  const TPXString s("x\xC0\x80\xED\xA0\x80\xF7\xBF\xBF\xBFy");
  EXPECT_FALSE(s.IsBAD());
  EXPECT_EQ(5, s.GetLengthInChar());
  EXPECT_EQ(11, s.GetLengthInByte());
  std::vector<int> codes;
  for (TPXStringiterator it = s.Begin(); it.NotDone(); ++it) codes.push_back(it.CodeAsUTF32());
  EXPECT_EQ((std::vector<int>{'x', 0, 0xD800, 0x1FFFFF, 'y'}), codes);
  EXPECT_EQ(0x1FFFFF, (s.End() - 2).CodeAsUTF32());
  EXPECT_STREQ("\xF7\xBF\xBF\xBF", s[3].CastToCharPtr());
  EXPECT_EQ(2, s.FindPosition(TPXString("\xED\xA0\x80"), 0));
  EXPECT_EQ(4, s.FindPosition(TPXString("y"), 1));

  TPXString edited = s;
  edited.Insert(3, TPXString("\xC3\xA9")).Remove(1, 2);
  EXPECT_EQ("x\xC3\xA9\xF7\xBF\xBF\xBFy", Text(edited));
  EXPECT_EQ(4, edited.GetLengthInChar());
  EXPECT_EQ(5, s.GetLengthInChar()) << "the copy it shared with is untouched";

  const TPXString high("\xED\xA0\x80\xF7\xBF\xBF\xBF");
  unsigned short units[4] = {1, 1, 1, 1};
  unsigned count = 0;
  EXPECT_EQ(TPXString::Success, high.ConvertToUTF16(units, &count));
  EXPECT_EQ(3u, count);  // the surrogate as it is, then a pair by the usual arithmetic
  EXPECT_EQ((std::vector<unsigned short>{0xD800, 0xDFBF, 0xDFFF}),
            std::vector<unsigned short>(units, units + 3));
  unsigned short wide[3] = {1, 1, 1};
  EXPECT_EQ(TPXString::Success, high.ConvertToWChar(wide));
  EXPECT_EQ((std::vector<unsigned short>{0xD800, '?', 0}),
            std::vector<unsigned short>(wide, wide + 3));
  char utf8[16];
  unsigned length = sizeof utf8;
  EXPECT_EQ(TPXString::Success, high.ConvertToUTF8(utf8, &length));
  EXPECT_EQ(7u, length);
}

TEST(TPXStringIterator, WalksForwardBackAndByJumps) {
  const TPXString s(kMixed);
  std::u32string seen;
  for (TPXStringiterator it = s.Begin(); it.NotDone(); ++it)
    seen += static_cast<char32_t>(it.CodeAsUTF32());
  EXPECT_EQ(U"a\u00E9\u20AC\U0001F600", seen);

  TPXStringiterator end = s.End();
  EXPECT_TRUE(end.Done());
  EXPECT_EQ(4, end - s.Begin());
  TPXStringiterator it = end - 2;
  EXPECT_EQ(0x20AC, it.CodeAsUTF32());
  EXPECT_EQ(3, it.ByteLength());
  EXPECT_EQ(1, (it - 2).ByteLength());  // back to 'a'
  --it;
  EXPECT_EQ(0xE9, it.Char().ConvertToUTF32());
  EXPECT_EQ(6, (s.Begin() + 3).BytePosition());
  // Stepping back from the first character has no previous character to take.
  EXPECT_THROW((void)(s.Begin() - 1), TPXBasAssertException);

  const TPXString ascii("hello");
  EXPECT_EQ('l', static_cast<char>((ascii.Begin() + 3).Char()));
  EXPECT_EQ('e', static_cast<char>((ascii.End() - 4).Char()));
}

TEST(TPXStringSearch, FindPositionCountsCharacters) {
  const TPXString s("a\xC3\xA9\x62");  // 'aéb'
  struct Row {
    const char* pattern;
    int start, expected;
  } rows[] = {
      {"b", 0, 2},        {"b", 2, 2}, {"b", 3, -1}, {"b", -1, -1},
      {"\xC3\xA9", 0, 1}, {"", 1, 1},  {"x", 0, -1}, {"\xC3\xA9\x62z", 0, -1},
  };
  for (const Row& row : rows)
    EXPECT_EQ(row.expected, s.FindPosition(TPXString(row.pattern), row.start))
        << row.pattern << " from " << row.start;
  EXPECT_EQ(-1, TPXString().FindPosition(TPXString(""), 0));
}

TEST(TPXStringEdit, ReplaceInsertRemoveKeepTheFlagRight) {
  // Out-of-range starts and counts change nothing; the flag follows what stays.
  struct Row {
    const char* text;
    int start, count;
    const char *with, *expected;
    bool ascii;
  } rows[] = {
      {"abc", 3, 0, "x", "abc", true},
      {"abc", 0, 0, "x", "xabc", true},
      {"abc", 1, 3, "x", "abc", true},
      {"abc", 1, -1, "x", "abc", true},
      {"abc", -1, 1, "x", "abc", true},
      {"", 0, 0, "x", "", true},
      {"abc", 1, 1, "\xC3\xA9", "a\xC3\xA9\x63", false},
      {"a\xC3\xA9\x63", 1, 1, "b", "abc", true},
      {"\xC3\xA9\x61\xC3\xA9", 0, 1, "b", "ba\xC3\xA9", false},
      {"a\xC3\xA9", 0, 1, "b", "b\xC3\xA9", false},
      {"\xF0\x9F\x98\x80xyz", 0, 2, "", "yz", true},
      {"ab\xE2\x82\xAC", 1, 2, "Q", "aQ", true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.text) + " " + std::to_string(row.start));
    TPXString s(row.text);
    const TPXString copy = s;
    s.ReplaceSubString(row.start, row.count, TPXString(row.with));
    EXPECT_EQ(row.expected, Text(s));
    EXPECT_EQ(row.ascii, s.IsAscii());
    EXPECT_EQ(row.text, Text(copy)) << "a copy changed";
  }
  TPXString s("abc");
  s.Remove(0, 2);
  EXPECT_EQ("c", Text(s));
  TPXString self("ab");
  self.Insert(1, self);  // the text is the string itself
  EXPECT_EQ("aabb", Text(self));
  TPXString padded("abcd");
  padded.ReplaceSubString(1, 2, TPXString("\xC3\xA9xyz"), 2);
  EXPECT_EQ("a\xC3\xA9xd", Text(padded));
  padded.ReplaceSubString(0, 1, TPXString("q"), 3);
  EXPECT_EQ("q  \xC3\xA9xd", Text(padded));
}

TEST(TPXStringEdit, ReplaceAllAndFirst) {
  TPXString banana("banana");
  banana.ReplaceAll(TPXString("a"), TPXString("aa"));
  EXPECT_EQ("baanaanaa", Text(banana));
  TPXString mixed("\xC3\xA9x\xC3\xA9");
  mixed.ReplaceAll(TPXString("\xC3\xA9"), TPXString("e"));
  EXPECT_EQ("exe", Text(mixed));
  EXPECT_TRUE(mixed.IsAscii());
  TPXString unchanged("abc");
  unchanged.ReplaceAll(TPXString(""), TPXString("x"));
  EXPECT_EQ("abc", Text(unchanged));
  TPXString self("abab");
  self.ReplaceAll(self, TPXString("z"));  // the pattern is the string itself
  EXPECT_EQ("z", Text(self));

  TPXString first("x\xE2\x82\xAC\x62\xE2\x82\xAC");
  EXPECT_EQ(1, first.ReplaceSubString(TPXString("\xE2\x82\xAC"), TPXString("E")));
  EXPECT_EQ("xEb\xE2\x82\xAC", Text(first));
  EXPECT_EQ(-1, first.ReplaceSubString(TPXString("q"), TPXString("E")));
}

TEST(TPXStringEdit, StripModes) {
  struct Row {
    const char* text;
    TPXString::TPXStripMode mode;
    const char *c, *expected;
  } rows[] = {
      {"  ab  ", TPXString::TPXStripBoth, " ", "ab"},
      {"   ", TPXString::TPXStripBoth, " ", ""},
      {"  ab  ", TPXString::TPXStripLeading, " ", "ab  "},
      {"  a b  ", TPXString::TPXStripTrailing, " ", "  a b"},
      {"banana", TPXString::TPXStripAll, "a", "bnn"},
      {"\xC3\xA9\x61\xC3\xA9\xC3\xA9", TPXString::TPXStripBoth, "\xC3\xA9", "a"},
      {"\xC3\xA9\x61\xC3\xA9\x62", TPXString::TPXStripAll, "\xC3\xA9", "ab"},
      {"", TPXString::TPXStripBoth, " ", ""},
  };
  for (const Row& row : rows) {
    const TPXString s(row.text);
    const TPXString out = s.Strip(row.mode, TPXChar::Make(row.c));
    EXPECT_EQ(row.expected, Text(out)) << row.text;
    EXPECT_TRUE(FlagHonest(out)) << row.text;
    EXPECT_EQ(row.text, Text(s));
  }
  // Stripping a multi-byte character away leaves exact ASCII.
  EXPECT_TRUE(
      TPXString("\xC3\xA9\x61").Strip(TPXString::TPXStripAll, TPXChar::Make("\xC3\xA9")).IsAscii());
}

TEST(TPXStringEdit, ResizeAndSubString) {
  struct Case {
    const char* text;
    int length;
    const char* fill;
    int truncate;
    const char* expected;
    bool ascii;
  } resizes[] = {
      {"ab", 5, "-", 0, "ab---", true},
      {"ab", 1, "-", 0, "ab", true},
      {"ab", 1, "-", 1, "a", true},
      {"\xC3\xA9\x61\x62", -3, "-", 1, "", true},
      {"a", 3, "\xE2\x82\xAC", 0, "a\xE2\x82\xAC\xE2\x82\xAC", false},
      {"a\xE2\x82\xAC", 1, " ", 1, "a", true},
  };
  for (const Case& c : resizes) {
    SCOPED_TRACE(std::string(c.text) + " " + std::to_string(c.length));
    TPXString s(c.text);
    s.Resize(c.length, TPXChar::Make(c.fill), c.truncate);
    EXPECT_EQ(c.expected, Text(s));
    EXPECT_EQ(c.ascii, s.IsAscii());
  }
  struct Sub {
    const char* text;
    int start, count;
    const char* expected;
    bool ascii;  // every character taken is one byte
  } subs[] = {{"a\xC3\xA9\x62", 1, 2, "\xC3\xA9\x62", false},
              {"a\xC3\xA9\x62", 2, 100, "b", true},
              {"abc", 1, 2, "bc", true},
              {"abc", 3, 2, "", true},
              {"abc", -1, 2, "", true}};
  for (const Sub& c : subs) {
    const TPXString sub = TPXString(c.text).SubString(c.start, c.count);
    EXPECT_EQ(c.expected, Text(sub)) << c.text << " " << c.start;
    EXPECT_EQ(c.ascii, sub.IsAscii()) << c.text << " " << c.start;
  }
}

TEST(TPXStringEdit, CaseChangesTouchOnlyAsciiAndShareWhenUnchanged) {
  TPXString s("Ab\xC3\x89z");  // 'AbÉz'
  const TPXString copy = s;
  s.ASCIIToUpper();
  EXPECT_EQ("AB\xC3\x89Z", Text(s));
  EXPECT_EQ("Ab\xC3\x89z", Text(copy));
  s.ASCIIToLower();
  EXPECT_EQ("ab\xC3\x89z", Text(s));
  TPXString nothing("123 \xC3\xA9");
  const TPXString shared = nothing;
  nothing.ASCIIToUpper();
  EXPECT_EQ(shared.CastToCharPtr(), nothing.CastToCharPtr());  // not copied
}

TEST(TPXStringConcat, FlagIsTheAndOfBothSides) {
  const TPXString a("ab");
  const TPXString e("\xC3\xA9");
  EXPECT_TRUE((a + "cd").IsAscii());
  EXPECT_FALSE((a + e).IsAscii());
  EXPECT_FALSE(("x" + e).IsAscii());
  TPXString s("n=");
  s += -5;
  s += 7u;
  s += -9000000000LL;
  s += 18000000000ULL;
  s += TPXChar::Make("\xE2\x82\xAC");
  EXPECT_EQ("n=-57-900000000018000000000\xE2\x82\xAC", Text(s));
  EXPECT_FALSE(s.IsAscii());
  TPXString self("ab");
  self += self;
  EXPECT_EQ("abab", Text(self));
}

TEST(TPXStringCompareHash, BytesAsUnsignedAndSampledHash) {
  EXPECT_EQ(0, TPXString("abc").Compare("abc"));
  EXPECT_EQ(-1, TPXString("ab").Compare("abc"));
  EXPECT_EQ(1, TPXString("\xC3\xA9").Compare("z"));  // 0xC3 above 'z' as unsigned
  EXPECT_EQ(-1, TPXString("a").Compare(TPXString("\xC3\xA9")));
  EXPECT_EQ(97u, TPXString("a").ComputeHashKey());
  EXPECT_EQ(0u, TPXString().ComputeHashKey());
  EXPECT_EQ(97u * 37u + 98u, TPXString("ab").ComputeHashKey());
  // Signed bytes: 0xC3 counts as -61.
  EXPECT_EQ(((0u - 61u) * 37u + static_cast<unsigned>(-87)) & 0x7FFFFFFFu,
            TPXString("\xC3\xA9").ComputeHashKey());
  // Long texts are sampled every (length / 64) bytes: a change between samples is not seen.
  std::string longText(640, 'x');
  const unsigned h = TPXString(longText.c_str()).ComputeHashKey();
  longText[5] = 'y';
  EXPECT_EQ(h, TPXString(longText.c_str()).ComputeHashKey());
  longText[10] = 'y';
  EXPECT_NE(h, TPXString(longText.c_str()).ComputeHashKey());
}

TEST(TPXStringBad, FailedBuildLeavesAnInertBadValue) {
  TPXString s("ok");
  EXPECT_EQ(TPXString::Failure, s.BuildFromUTF8("\xC3\x28"));
  EXPECT_TRUE(s.IsBAD());
  EXPECT_EQ(2147483647, s.GetLengthInByte());
  EXPECT_STREQ("", s.CastToCharPtr());
  EXPECT_EQ(0, s.GetLengthInChar());
  EXPECT_EQ(0u, s[0].ConvertToUTF32());
  EXPECT_TRUE(s.Begin().Done());
  EXPECT_EQ(-1, s.FindPosition(TPXString("a"), 0));
  const TPXString copy = s;
  EXPECT_TRUE(copy.IsBAD());
  s.Insert(0, TPXString("x"));
  s.Resize(4, TPXChar('x'), 0);
  s.ASCIIToUpper();
  EXPECT_TRUE(s.IsBAD());
  EXPECT_TRUE((TPXString("a") + copy).IsBAD());
  TPXString appended("a");
  appended += "\xFF";
  EXPECT_TRUE(appended.IsBAD());
  unsigned length = 7;
  EXPECT_EQ(TPXString::Failure, s.ConvertToUTF8(nullptr, &length));
  EXPECT_EQ(0u, length);
  EXPECT_EQ(TPXString::Failure, s.ConvertToUTF16(nullptr, &length));
  s = "fine";
  const TPXString shared = s;
  EXPECT_EQ(s.CastToCharPtr(), shared.CastToCharPtr());
  s.Reset();  // a reset string is null and ASCII; its former copies keep their text
  EXPECT_TRUE(s.IsNull() && s.IsAscii());
  EXPECT_EQ("fine", Text(shared));
  s.ToBAD();
  EXPECT_TRUE(s.IsBAD());
  s.Reset();
  EXPECT_FALSE(s.IsBAD());
}

TEST(TPXStringDeathTest, BrokenPositionsAreFatal) {
  const TPXString ascii("abc");
  const TPXString mixed(kMixed);
  EXPECT_DEATH((void)ascii[0x80000000u],
               "AssertionFailed:iPos >=0 \\[TPXBase/TPXBasString.m/src/TPXString:[0-9]+\\]");
  EXPECT_DEATH((void)ascii[4], "AssertionFailed:iPos <= atr_StringBase::Length\\(\\)");
  EXPECT_DEATH((void)mixed[6], "AssertionFailed:iPos == 0");
  EXPECT_DEATH(++mixed.End(), "AssertionFailed:NotDone\\(\\)");
  EXPECT_DEATH(
      (void)(ascii.Begin() + 4),
      "AssertionFailed:temp.m_pos >= 0 &&temp.m_pos <= m_string->atr_StringBase::Length\\(\\)");
  EXPECT_DEATH((void)(ascii.Begin() - mixed.Begin()), "AssertionFailed:i.m_string == m_string");
}
