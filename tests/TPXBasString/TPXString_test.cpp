// TPXString_test.cpp: character positions, iteration, searches and edits with the ASCII flag,
// sharing, hashing and the BAD value.
#include "TPXStringTestSupport.h"
#include "kld_TestSupport.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <thread>
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

namespace {

// A long mixed text: characters of 1 to 4 bytes in an irregular order, so that the points of
// the character index fall on every kind of character.
std::string LongMixed(std::size_t bytes) {
  static const char* const kPieces[] = {
      "a", "\xC3\xA9", "bc", "\xE2\x82\xAC", "d", "\xF0\x9F\x98\x80", "\xC3\xA9\xC3\xA9", "e"};
  std::mt19937 rng(static_cast<unsigned>(bytes));
  std::string text;
  while (text.size() < bytes) text += kPieces[rng() % 8];
  return text;
}

// The byte offset of every character of well-formed text, and of its end.
std::vector<int> Offsets(const std::string& text) {
  std::vector<int> offsets;
  for (std::size_t i = 0; i < text.size(); ++i)
    if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) offsets.push_back(int(i));
  offsets.push_back(int(text.size()));
  return offsets;
}

// A view of the index attached to a string's text.
class IndexProbe : public TPXString {
 public:
  static const void* Of(const TPXString& s) {
    IndexProbe probe;
    probe.TPXString::operator=(s);  // shares the text, and so its index
    return probe.AttachedIndex();
  }
};

// Every character the index can mislead about: both sides of each point of the index (every
// 256 characters), the ends, and jumps of the iterator and searches from those positions.
// Searches and sub-strings allocate: allocate false leaves them out.
void ExpectPositions(const TPXString& s, const std::string& text, bool allocate = true) {
  const std::vector<int> at = Offsets(text);
  const int chars = int(at.size()) - 1;
  ASSERT_EQ(chars, s.GetLengthInChar());
  std::vector<int> probes = {0, 1, chars - 1, chars};
  for (int point = 256; point <= chars; point += 256)
    for (int d : {-1, 0, 1})
      if (point + d <= chars) probes.push_back(point + d);
  for (int i : probes) {
    const std::string expected = text.substr(at[i], at[i + (i < chars)] - at[i]);
    ASSERT_EQ(expected, s[unsigned(i)].CastToCharPtr()) << "character " << i;
    const TPXStringiterator it = s.Begin() + i;
    ASSERT_EQ(at[i], it.BytePosition()) << i;
    const TPXStringiterator back = s.End() - (chars - i);
    ASSERT_EQ(at[i], back.BytePosition()) << i;
    ASSERT_EQ(i, back.Index()) << i;
    if (i == chars || !allocate) continue;
    // The character itself is found at i (searching from a little before it) and the
    // sub-string from i holds its bytes.
    ASSERT_EQ(expected, Text(s.SubString(i, 1))) << i;
    const int from = i >= 3 ? i - 3 : 0;
    const int found = s.FindPosition(TPXString(expected.c_str()), from);
    ASSERT_EQ(text.substr(at[found], expected.size()), expected) << i;
    ASSERT_LE(found, i);
  }
}

}  // namespace

// The character index of long mixed texts gives the positions that a walk would, on both
// sides of its points; it is built once, shared by copies, and dropped by every change.
TEST(TPXStringIndex, PositionsMatchAWalkAndChangesDropTheIndex) {
  std::string text = LongMixed(20000);
  TPXString s(text.c_str());
  EXPECT_EQ(nullptr, IndexProbe::Of(s));  // built on first need only
  ExpectPositions(s, text);
  const void* const index = IndexProbe::Of(s);
  EXPECT_NE(nullptr, index);

  // A copy shares it; the first change of either gives the changed one new text without
  // an index, and the other keeps both.
  TPXString copy = s;
  EXPECT_EQ(index, IndexProbe::Of(copy));
  copy.ReplaceSubString(0, 1, TPXString("\xE2\x82\xAC"));
  EXPECT_EQ(index, IndexProbe::Of(s));
  ExpectPositions(copy, "\xE2\x82\xAC" + text.substr(1));
  ExpectPositions(s, text);

  // Edits of a sole owner in place: the same bytes in another number of characters, fewer
  // bytes, a cut; each must drop the index before it is read again.
  const struct {
    const char* name;
    std::function<void(TPXString&, std::string&)> edit;
  } edits[] = {
      {"2 bytes for 2 characters",
       [](TPXString& t, std::string& x) {
         const int e = t.FindPosition(TPXString("\xC3\xA9"), 0);
         t.ReplaceSubString(e, 1, TPXString("xy"));
         x.replace(x.find("\xC3\xA9"), 2, "xy");
       }},
      {"remove",
       [](TPXString& t, std::string& x) {
         t.Remove(0, 3);
         x.erase(0, Offsets(x)[3]);
       }},
      {"truncate",
       [](TPXString& t, std::string& x) {
         t.Resize(5000, TPXChar(' '), 1);
         x.erase(Offsets(x)[5000]);
       }},
      {"append",
       [](TPXString& t, std::string& x) {
         t += "\xC3\xA9z";
         x += "\xC3\xA9z";
       }},
  };
  for (const auto& e : edits) {
    SCOPED_TRACE(e.name);
    (void)s[unsigned(s.GetLengthInChar() - 1)];  // the index exists before the edit
    ASSERT_NE(nullptr, IndexProbe::Of(s));
    e.edit(s, text);
    EXPECT_EQ(nullptr, IndexProbe::Of(s));
    ExpectPositions(s, text);
  }

  // Short and ASCII texts are walked or computed, never indexed.
  const TPXString shortMixed(LongMixed(4000).c_str());
  const TPXString ascii(std::string(20000, 'a').c_str());
  (void)shortMixed[100];
  (void)ascii[19999];
  EXPECT_EQ(nullptr, IndexProbe::Of(shortMixed));
  EXPECT_EQ(nullptr, IndexProbe::Of(ascii));
}

// Readers of one text on several threads race to build its index: each gets the right
// character and one index stays attached (a race here is a ThreadSanitizer report).
TEST(TPXStringIndex, ConcurrentFirstReadersAgree) {
  const std::string text = LongMixed(200000);
  const std::vector<int> at = Offsets(text);
  const int last = int(at.size()) - 2;
  const std::string expected = text.substr(at[last]);
  const TPXString s(text.c_str());
  std::atomic<bool> go{false};
  std::vector<std::string> seen(4);
  std::vector<std::thread> readers;
  for (std::string& out : seen)
    readers.emplace_back([&] {
      while (!go.load()) std::this_thread::yield();
      out = s[unsigned(last)].CastToCharPtr();
    });
  go = true;
  for (std::thread& t : readers) t.join();
  for (const std::string& out : seen) EXPECT_EQ(expected, out);
  EXPECT_NE(nullptr, IndexProbe::Of(s));
}

// Without memory for an index, positions are walked: the same answers.
TEST(TPXStringIndex, NoMemoryForTheIndexStillGivesPositions) {
  const std::string text = LongMixed(10000);
  const TPXString s(text.c_str());
  kld_test::AllocationFailureGuard noAllocation(0);
  ExpectPositions(s, text, false);
  EXPECT_EQ(nullptr, IndexProbe::Of(s));
}

TEST(TPXStringDeathTest, BrokenPositionsAreFatal) {
  const TPXString ascii("abc");
  const TPXString mixed(kMixed);
  EXPECT_DEATH((void)ascii[0x80000000u],
               "AssertionFailed:iPos >=0 \\[TPXBase/TPXBasString.m/src/TPXString:[0-9]+\\]");
  EXPECT_DEATH((void)ascii[4], "AssertionFailed:iPos <= atr_StringBase::Length\\(\\)");
  EXPECT_DEATH((void)mixed[6], "AssertionFailed:iPos == 0");
  const TPXString indexed(LongMixed(20000).c_str());
  const unsigned chars = unsigned(indexed.GetLengthInChar());  // builds the index
  EXPECT_DEATH((void)indexed[chars + 1], "AssertionFailed:iPos == 0");
  EXPECT_DEATH((void)(indexed.Begin() + int(chars + 1)), "AssertionFailed:NotDone\\(\\)");
  EXPECT_DEATH(++mixed.End(), "AssertionFailed:NotDone\\(\\)");
  EXPECT_DEATH(
      (void)(ascii.Begin() + 4),
      "AssertionFailed:temp.m_pos >= 0 &&temp.m_pos <= m_string->atr_StringBase::Length\\(\\)");
  EXPECT_DEATH((void)(ascii.Begin() - mixed.Begin()), "AssertionFailed:i.m_string == m_string");
}
