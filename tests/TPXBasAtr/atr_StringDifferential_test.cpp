// The byte string's searches, sub-strings and appends against the plain byte rules, on
// pseudo-random texts: short and long, with frequent and rare bytes, zero bytes included.
#include "atr_TestSupport.h"

#include <cstring>
#include <random>

namespace {

using atr_test::Of;
using atr_test::StatisticsOf;
using atr_test::TestString;

// Texts over a few bytes, so that partial matches are frequent, plus a rare one now and then.
std::string RandomText(std::mt19937& rng, std::size_t maxLength, bool withZeros) {
  static const char kBytes[] = {'a', 'b', 'a', 'b', 'c', '\xE9', '\0'};
  const std::size_t alphabet = withZeros ? sizeof kBytes : sizeof kBytes - 1;
  std::string text(std::uniform_int_distribution<std::size_t>(0, maxLength)(rng), 'a');
  for (char& c : text) {
    c = kBytes[std::uniform_int_distribution<std::size_t>(0, alphabet - 1)(rng)];
    if (rng() % 97 == 0) c = 'z';
  }
  return text;
}

bool MatchesAt(const std::string& text, const std::string& needle, int at) {
  if (at + needle.size() > text.size()) return false;
  for (std::size_t k = 0; k < needle.size(); ++k)
    if (text[at + k] != needle[k]) return false;
  return true;
}

// The first position at or after start where needle's bytes all match, else the length.
int PlainFind(const std::string& text, const std::string& needle, int start) {
  const int length = static_cast<int>(text.size());
  if (start < 0 || start > length) return length;
  for (int at = start; at <= length; ++at)
    if (MatchesAt(text, needle, at)) return at;
  return length;
}

// The last position not above limit where needle matches, else the length.
int PlainRfind(const std::string& text, const std::string& needle, int limit) {
  const int length = static_cast<int>(text.size());
  if (needle.empty() || limit == 0) return length;
  int found = length;
  for (int at = 0; at <= limit && at < length; ++at)
    if (MatchesAt(text, needle, at)) found = at;
  return found;
}

// A needle cut from the text (so that it is found), or made up.
std::string RandomNeedle(std::mt19937& rng, const std::string& text, bool withZeros) {
  const std::size_t m = std::uniform_int_distribution<std::size_t>(0, 9)(rng);
  if (rng() % 2 == 0 && text.size() >= m) {
    const std::size_t at = std::uniform_int_distribution<std::size_t>(0, text.size() - m)(rng);
    return text.substr(at, m);
  }
  return RandomText(rng, m, withZeros).substr(0, m);
}

TEST(atr_StringDifferential, FindAndRfindFollowTheByteRules) {
  std::mt19937 rng(20261124);
  for (int round = 0; round < 3000; ++round) {
    const std::size_t maxLength = round % 3 == 0 ? 1500 : 60;  // separate and inline storage
    const std::string text = RandomText(rng, maxLength, true);
    const TestString s = Of(text);
    // Find takes a terminated needle: no zero bytes in it.
    std::string needle = RandomNeedle(rng, text, false);
    needle = needle.substr(0, needle.find('\0'));
    const int start = std::uniform_int_distribution<int>(-2, int(text.size()) + 2)(rng);
    ASSERT_EQ(PlainFind(text, needle, start), s.Find(needle.c_str(), start))
        << "text of " << text.size() << " bytes, needle '" << needle << "', start " << start;

    const std::string any = RandomNeedle(rng, text, true);  // rfind counts zero bytes
    const int limit = std::uniform_int_distribution<int>(-2, int(text.size()) + 2)(rng);
    ASSERT_EQ(PlainRfind(text, any, limit), s.rfind(any.data(), int(any.size()), limit))
        << "text of " << text.size() << " bytes, needle of " << any.size() << ", limit " << limit;
  }
}

TEST(atr_StringDifferential, SubstrTakesTheBytesThatRemain) {
  std::mt19937 rng(7);
  for (int round = 0; round < 2000; ++round) {
    const std::string text = RandomText(rng, round % 4 == 0 ? 600 : 300, true);
    const atr_String s = atr_MakeAtrString(atr_StringBasePrv(Of(text)));
    const unsigned start = std::uniform_int_distribution<unsigned>(0, unsigned(text.size()))(rng);
    const unsigned n = rng() % 8 == 0 ? 4294967295u : unsigned(rng() % 300);
    const atr_String part = s.Substr(start, n);
    const std::string expected = text.substr(start, n);
    ASSERT_EQ(expected, std::string(part.CStr(), part.Length())) << start << "," << n;
    ASSERT_EQ(ATR_EOS, part.CStr()[part.Length()]);
  }
}

// Appends of random pieces (from other texts and from the string itself) give the
// concatenation, keep shared copies as they were, and move the storage exactly as the size
// classes say: in place while the class has room, to the class of the new length (up to 238
// bytes) or to an exact separate buffer otherwise.
TEST(atr_StringDifferential, AppendsConcatenateAndGrowByTheSizeClasses) {
  std::mt19937 rng(11);
  for (int round = 0; round < 200; ++round) {
    TestString s;
    std::string expected;
    int capacity = -1;  // no header yet
    bool inlineText = false;
    while (expected.size() < 400) {
      const std::string piece = RandomText(rng, rng() % 5 == 0 ? 40 : 3, true);
      // Now and then a sharer, which the append must leave as it was.
      const bool shared = rng() % 3 == 0;
      const TestString before = shared ? s : TestString();
      const bool fromItself = rng() % 4 == 0 && !expected.empty();
      const std::string source = fromItself ? expected : piece;
      const int start = std::uniform_int_distribution<int>(0, int(source.size()))(rng);
      const int n = std::uniform_int_distribution<int>(-1, int(source.size()) + 1)(rng);
      const std::string beforeText = expected;
      if (fromItself)
        s.append(s.CStr(), s.Length(), start, n);
      else
        s.append(piece.data(), int(piece.size()), start, n);
      const std::size_t count = n <= 0 ? 0 : std::min<std::size_t>(source.size() - start, n);
      expected += source.substr(start, count);
      ASSERT_EQ(expected, s.Text());
      ASSERT_EQ(ATR_EOS, s.CStr()[s.Length()]);
      if (shared) {
        ASSERT_EQ(beforeText, before.Text());
      }
      if (count == 0) continue;
      // A sharer forces new storage, as does a sole owner that grows past its capacity; the
      // size classes decide how much.
      const int length = int(expected.size());
      if ((shared && before.HasHeader()) || capacity <= length) {
        inlineText = length <= 238;
        capacity = inlineText ? 32 * ((length + 17) >> 5) + 20 : length + 1;
      }
      ASSERT_EQ(capacity, s.Capacity()) << "length " << length;
      ASSERT_EQ(inlineText, s.Inline()) << "length " << length;
    }
  }
}

// Growing one byte at a time, the statistics count one block per size class passed and one
// extension failure per move out of a full class; the appends that fit count nothing.
TEST(atr_StringDifferential, ByteByByteGrowthCountsEachMoveOnce) {
  const std::vector<double> figures = StatisticsOf([] {
                                        TestString s;
                                        for (int i = 0; i < 200; ++i) s.Append("x", 1);
                                      }).second;
  ASSERT_EQ(11u, figures.size());
  EXPECT_EQ(0, figures[0]);  // reps created
  EXPECT_EQ(7, figures[1]);  // blocks of capacity 20, 52, 84, 116, 148, 180, 212
  EXPECT_EQ(6, figures[2]);  // extension failures: every move but the first allocation
  EXPECT_EQ(0, figures[3]);  // active
  EXPECT_EQ(0, figures[4]);  // bytes in use
  // A new block is made before the old one goes: two at a time at most.
  EXPECT_EQ(2, figures[5]);          // maximum active
  EXPECT_EQ(180 + 212, figures[6]);  // maximum bytes in use
}

}  // namespace
