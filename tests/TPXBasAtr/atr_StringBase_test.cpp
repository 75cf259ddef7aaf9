// Storage, sharing, statistics, searches and edits of the copy-on-write byte string.
#include "atr_TestSupport.h"

#include <cstring>
#include <optional>

namespace {

using atr_test::Of;
using atr_test::StatisticsOf;
using atr_test::TestString;
using Edit = std::function<void(TestString&)>;

TEST(atr_StringStorage, SizeClassesSeparateBuffersAndGrowth) {
  const struct {
    int length, capacity;
    bool inlineText;
  } cases[] = {{0, 20, true},    {14, 20, true},    {15, 52, true},
               {47, 84, true},   {79, 116, true},   {207, 244, true},
               {238, 244, true}, {239, 240, false}, {5000, 5001, false}};
  for (const auto& c : cases) {
    const std::string text(static_cast<std::size_t>(c.length), 'x');
    const TestString s = Of(text);
    EXPECT_EQ(c.capacity, s.Capacity()) << "length " << c.length;
    EXPECT_EQ(c.inlineText, s.Inline()) << "length " << c.length;
    EXPECT_EQ(text, s.Text());
    EXPECT_EQ(ATR_EOS, s.CStr()[c.length]);
  }

  // Growth stays in place while the size class has room, then moves.
  TestString s("abcdefghijklmn");
  const char* const first = s.CStr();
  for (int i = 0; i < 5; ++i) s.Append("x", 1);
  EXPECT_EQ(first, s.CStr());
  s.Append("y", 1);
  EXPECT_EQ(52, s.Capacity());
  EXPECT_EQ("abcdefghijklmnxxxxxy", s.Text());
  // Past the last size class (243 bytes) each growth gets an exact separate buffer.
  TestString big = Of(std::string(238, 'a'));
  const int steps[][3] = {{243, 244, 1}, {244, 245, 0}, {245, 246, 0}};
  for (const auto& step : steps) {
    while (big.Length() < step[0]) big.Append("b", 1);
    EXPECT_EQ(step[1], big.Capacity()) << step[0];
    EXPECT_EQ(step[2] != 0, big.Inline()) << step[0];
  }
  EXPECT_EQ(std::string(238, 'a') + std::string(7, 'b'), big.Text());
}

TEST(atr_StringStorage, ConstructorsFromTextLengthTagsAndNumbers) {
  EXPECT_FALSE(TestString(static_cast<const char*>(nullptr)).HasHeader());
  const TestString empty("");
  EXPECT_FALSE(empty.HasHeader());
  EXPECT_STREQ("", empty.CStr());
  EXPECT_TRUE(TestString("abc", 0).HasHeader());  // an explicit length always gets storage
  EXPECT_EQ(std::string("a\0b", 3), TestString("a\0b", 3).Text());

  TestString sized(100, atr_StringBase::PreSize);
  EXPECT_EQ(116, sized.Capacity());
  std::strcpy(sized.GetBuffPtr(), "written directly");
  sized.SetStringLength(16);
  EXPECT_EQ("written directly", sized.Text());

  // An adopted buffer is released by the string (a leak here is an AddressSanitizer report).
  char* buffer = static_cast<char*>(mem_Malloc(4));
  std::memcpy(buffer, "own", 4);
  TestString adopted(buffer, 3, atr_StringBase::Adopt);
  EXPECT_EQ(buffer, adopted.CStr());
  adopted.Append("ed", 2);
  EXPECT_EQ("owned", adopted.Text());

  const std::pair<TestString, const char*> numbers[] = {
      {TestString(1e20), "1e+20"},
      {TestString(1e-5f), "1e-05"},
      {TestString(1.0 / 3), "0.333333333333333"},
      {TestString(1.0f / 3), "0.333333"},
      {TestString(-2147483647 - 1), "-2147483648"},
      {TestString(4294967295u), "4294967295"},
      {TestString(-1.5e-300), "-1.5e-300"}};
  for (const auto& [number, text] : numbers) EXPECT_EQ(text, number.Text());
  const char* exponents[][2] = {{"1.5e-007", "1.5e-07"}, {"1e005", "1e05"}, {"1e+0050", "1e+0050"}};
  for (const auto& e : exponents) {
    char buf[16];
    std::strcpy(buf, e[0]);
    const int len = TestString::NormaliseExponent(buf, static_cast<int>(std::strlen(buf)));
    EXPECT_EQ(std::string(e[1]), std::string(buf, static_cast<std::size_t>(len))) << e[0];
    EXPECT_EQ(ATR_EOS, buf[len]) << e[0];
  }
}

// Every edit made on one copy of a shared string leaves the other copy as it was; every edit
// of a borrowed text copies it first and never writes the text itself.
TEST(atr_StringSharing, EveryEditOfACopyLeavesTheOriginal) {
  const Edit edits[] = {
      // clang-format off
      [](TestString& s) { s.Append("!", 1); }, [](TestString& s) { s.insert(1, "++", 2, 0, 2); },
      [](TestString& s) { s.replace(0, 2, "Z", 1, 0, 1); }, [](TestString& s) { s.Replace(1, 1, "zz", 2); },
      [](TestString& s) { s.Erase(0, 1); }, [](TestString& s) { s.LeftTrim("ab"); },
      [](TestString& s) { s.RightTrim(" "); }, [](TestString& s) { s.Trim("b"); },
      [](TestString& s) { s.ToUpper(); }, [](TestString& s) { s.Capitalize(); },
      [](TestString& s) { s.Reverse(); }, [](TestString& s) { s.Substitute("b", "BB", 5); },
      [](TestString& s) { s[0] = 'Q'; }, [](TestString& s) { s = "other"; },
      // clang-format on
  };
  for (const std::string& text : {std::string("abc b "), std::string(300, 'b') + " "})
    for (bool borrow : {false, true})
      for (std::size_t i = 0; i < std::size(edits); ++i) {
        SCOPED_TRACE("edit " + std::to_string(i) + (borrow ? " of a borrowed text" : ""));
        const std::string source = text;  // what a borrowing string reads
        TestString original =
            borrow ? TestString(source.c_str(), int(source.size()), atr_StringBase::Borrow)
                   : Of(source);
        TestString copy = original;
        edits[i](copy);
        EXPECT_EQ(text, original.Text());
        EXPECT_NE(text, copy.Text());
        EXPECT_EQ(1, original.References());
        if (!borrow) continue;
        EXPECT_EQ(source.c_str(), original.CStr());
        edits[i](original);  // the sole borrower edits: a copy of its own first
        EXPECT_NE(source.c_str(), original.CStr());
        EXPECT_EQ(text, source);
      }
}

// Copies share until one is changed; with every allocation refused, operations that need no
// new storage still succeed.
TEST(atr_StringSharing, CopiesAndUnchangedCaseConversionsAllocateNothing) {
  TestString a("ALREADY UPPER"), lower("already lower 123"), roomy("abc"), e;
  const TestString lowerCopy = lower;
  {
    kld_test::AllocationFailureGuard noAllocation(0);
    TestString b = a, c;
    c = b;
    TestString& alias = c;  // through an alias: compilers flag a literal self-assignment
    c = alias;              // self-assignment keeps the count
    b.ToUpper();
    lower.ToLower();
    EXPECT_EQ(3, a.References());
    EXPECT_EQ(a.CStr(), b.CStr());
    EXPECT_EQ(lowerCopy.CStr(), lower.CStr());
    c = "";  // drops c's header, leaves a untouched
    EXPECT_FALSE(c.HasHeader());
    EXPECT_EQ(2, a.References());
    roomy.Append("defgh", 5);  // fits in its size class
    roomy.Erase(0, 1);         // sole owner: in place
    EXPECT_EQ("bcdefgh", roomy.Text());
    e.ToUpper();
    e.Reverse();
    EXPECT_FALSE(e.HasHeader());
  }
  TestString c = a;
  EXPECT_EQ('L', c[1]);  // a writable reference isolates even when only read through
  EXPECT_NE(a.CStr(), c.CStr());
}

// An allocation that fails in the middle of an edit leaves the string and its sharers as they
// were, and leaks nothing.
TEST(atr_StringSharing, FailedEditLeavesTheStringsIntact) {
  const std::string tail(40, 't');
  const auto attempt = [](const std::function<void()>& f) {
    try {
      f();
    } catch (const std::bad_alloc&) {
    }
  };
  for (const std::string& text : {std::string("abc"), std::string(300, 'l')})
    for (long n = 0; n < 4; ++n) {
      TestString a = Of(text), b = a, alone = Of(text);
      TestString borrowed("borrowed", 8, atr_StringBase::Borrow);
      {
        kld_test::AllocationFailureGuard fail(n);
        attempt([&] { b.Append(tail.c_str(), 40); });
        attempt([&] { alone.insert(1, tail.c_str(), 40, 0, 40); });
        attempt([&] { borrowed.Append(tail.c_str(), 40); });
      }
      EXPECT_EQ(text, a.Text()) << "allocation " << n + 1 << " failed";
      EXPECT_TRUE(b.Text() == text || b.Text() == text + tail) << n;
      EXPECT_TRUE(alone.Text() == text || alone.Text() == text.substr(0, 1) + tail + text.substr(1))
          << n;
      EXPECT_TRUE(borrowed.Text() == "borrowed" || borrowed.Text() == "borrowed" + tail) << n;
    }
}

TEST(atr_StringStatistics, ReportByteForByteOnlyWhenAsked) {
  EXPECT_EQ(
      "       0 Reps Created\n       1 Strings Created\n       0 Extension Failures\n"
      "       0 Active\n       0 Bytes in use\n       1 Maximum active\n"
      "      20 Maximum bytes in use\n    10.0 Mean length\n     0.0 Sigma length\n"
      "    10.0 Mean spare\n     0.0 Sigma spare\n",
      StatisticsOf([] { TestString ten("0123456789"); }).first);

  EXPECT_EQ("", StatisticsOf([] { TestString quiet("abc"); }, nullptr).first);  // not asked
}

TEST(atr_StringStatistics, CountsEachLayoutAndEveryMove) {
  std::optional<TestString> live;
  // Reps, strings, extension failures, active, bytes, maximum active, maximum bytes, mean and
  // sigma of lengths, mean and sigma of spare room.
  const struct {
    const char* name;
    std::function<void()> work;
    std::vector<double> figures;
  } cases[] = {
      // clang-format off
      {"copies create nothing", [] { TestString a("abc"); TestString b = a, c = b; c = a; }, {0, 1, 0, 0, 0, 1, 20, 3, 0, 17, 0}},
      {"growing past the size class", [] { TestString s("abcdefghijklmn"); for (int i = 0; i < 6; ++i) s.Append("x", 1); }, {0, 2, 1, 0, 0, 2, 72, 19.5, 0.5, 16.5, 15.5}},
      {"long text: header alone", [] { TestString s = Of(std::string(239, 'x')); }, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0}},
      {"borrowed, then copied on change", [] { TestString s("text", 4, atr_StringBase::Borrow); s.Append("!", 1); }, {1, 1, 0, 0, 0, 2, 20, 5, 0, 15, 0}},
      {"a live string stays active", [&live] { live.emplace("x"); }, {0, 1, 0, 1, 20, 1, 20, 0, 0, 0, 0}},
      {"shared string edited", [] { TestString a("abcd"); TestString b = a; b.Erase(0, 1); }, {0, 2, 0, 0, 0, 2, 40, 3.5, 0.5, 16.5, 0.5}},
      {"different lengths", [] { TestString a("12"); TestString b("123456"); }, {0, 2, 0, 0, 0, 2, 40, 4, 2, 16, 2}},
      // clang-format on
  };
  for (const auto& c : cases) EXPECT_EQ(c.figures, StatisticsOf(c.work).second) << c.name;
  live.reset();
}

// Find and rfind give the length when nothing is found.
TEST(atr_StringSearch, FindRfindCompareSubstrAndIndex) {
  const struct {
    const char* text;
    const char* what;
    int start, expected;
  } finds[] = {{"abc", "x", 0, 3},     {"", "", 0, 0},        {"abcabc", "bc", 2, 4},
               {"abcabc", "bc", 5, 6}, {"abc", "", 2, 2},     {"abc", "a", 4, 3},
               {"abc", "a", -1, 3},    {"abc", "abcd", 0, 3}, {"aab", "ab", 0, 1}},
    rfinds[] = {{"abc", "a", 0, 3},     {"abcabc", "a", 1, 0},  {"abcabc", "a", 100, 3},
                {"abcabc", "bc", 4, 4}, {"abcabc", "bc", 3, 1}, {"aaaa", "aa", 10, 2},
                {"abc", "", 5, 3},      {"abc", "a", -5, 3},    {"", "a", 5, 0}};
  for (const auto& c : finds)
    EXPECT_EQ(c.expected, TestString(c.text).Find(c.what, c.start)) << c.text << "/" << c.what;
  for (const auto& c : rfinds)
    EXPECT_EQ(c.expected, TestString(c.text).rfind(c.what, int(std::strlen(c.what)), c.start))
        << c.text << " / " << c.what << " limit " << c.start;
  const TestString zeros("a\0bc\0bc", 7);
  EXPECT_EQ(5, zeros.Find("bc", 3));  // the search covers the whole length, zero bytes included
  EXPECT_EQ(4, TestString("abcabc").rfind("bcX", 2, 6));  // only textLength bytes count

  const struct {
    const char *a, *b;
    int expected;
  } order[] = {{"abc", "abc", 0}, {"abc", "abd", -1}, {"b", "abc", 1},
               {"", "a", -1},     {"\xE9", "e", 1},   {"a", nullptr, 1}};
  for (const auto& c : order) EXPECT_EQ(c.expected, TestString(c.a).Compare(c.b)) << c.a;

  const TestString s("hello");
  const int substr[][3] = {{0, ATR_TO_END, 5}, {3, 10, 2}, {5, 3, 0}, {2, -4, 0}};
  for (const auto& c : substr) EXPECT_EQ(c[2], s.Substr(c[0], c[1])) << c[0] << "," << c[1];
  EXPECT_EQ(ATR_EOS, std::as_const(s)[5]);
  const TestString none;
  EXPECT_EQ(ATR_EOS, none[0]);
}

TEST(atr_StringEdit, EveryEditGivesItsTextLengthAndTerminator) {
  atr_test::ScopedCtype utf8("C.UTF-8");  // case changes skip multi-byte characters
  ASSERT_TRUE(utf8.ok());
  const std::string big(300, 'b');
  // clang-format off
  const struct { std::string before; Edit edit; std::string after; } cases[] = {
      {"ab", [](TestString& s) { s.append("0123", 4, 1, 2); }, "ab12"},
      {"a", [](TestString& s) { s.Append("\0z", 2); }, std::string("a\0z", 3)},
      {"abcd", [](TestString& s) { s.insert(2, "XYZ", 3, 1, 5); }, "abYZcd"},
      {"", [](TestString& s) { s.insert(0, "XY", 2, 0, 9); }, "XY"},
      {big, [](TestString& s) { s.insert(1, "XY", 2, 0, 9); }, "bXY" + std::string(299, 'b')},
      {"abcdef", [](TestString& s) { s.replace(1, 1, "XYZ", 3, 0, 9); }, "aXYZcdef"},
      {"abcdef", [](TestString& s) { s.replace(2, ATR_TO_END, "!", 1, 0, 1); }, "ab!"},
      {"abcdef", [](TestString& s) { s.replace(0, 1, "XYZ", 3, 3, 1); }, "bcdef"},
      {"abcdef", [](TestString& s) { s.Replace(4, 9, "xyz", 2); }, "abcdxy"},
      {"abcdef", [](TestString& s) { s.Erase(1, 2); }, "adef"},
      {big, [](TestString& s) { s.Erase(0, 250); }, std::string(50, 'b')},
      {"abc", [](TestString& s) { s.Erase(1, -3); }, "abc"},
      {"a,b,,d", [](TestString& s) { s.Trim(","); }, "abd"},
      {"a b", [](TestString& s) { s.Trim(nullptr); }, "a b"},
      {"xxyaxx", [](TestString& s) { s.LeftTrim("xy"); }, "axx"},
      {"xxaxyx", [](TestString& s) { s.RightTrim("xy"); }, "xxa"},
      {"xyx", [](TestString& s) { s.RightTrim("xy"); }, ""},
      {std::string("a\0b", 3), [](TestString& s) { s.Trim("b"); }, std::string("a\0", 2)},
      {"a", [](TestString& s) { s.Substitute("a", "aa", 3); }, "aaaa"},
      {"a-b-c-d", [](TestString& s) { s.Substitute("-", "+", 2); }, "a+b+c-d"},
      {"a-b-c", [](TestString& s) { s.Substitute("-", nullptr, 9); }, "abc"},
      {"abc", [](TestString& s) { s.Substitute("", "x", 3); }, "abc"},
      {std::string(200, '.'), [](TestString& s) { s.Substitute(".", "::", 100); }, std::string(200, ':') + std::string(100, '.')},
      {"\xC3\xA9x", [](TestString& s) { s.Reverse(); }, "x\xA9\xC3"},
      {"abc", [](TestString& s) { s = "longer than the old text, in a new class"; }, "longer than the old text, in a new class"},
      {"ABC dEF 1", [](TestString& s) { s.ToLower(); }, "abc def 1"},
      {"\xC3\xA9t\xC3\xA9", [](TestString& s) { s.ToUpper(); }, "\xC3\xA9T\xC3\xA9"},
      {"\xC3" "AB", [](TestString& s) { s.ToLower(); }, "\xC3" "ab"},
      {std::string("a\0b", 3), [](TestString& s) { s.ToUpper(); }, std::string("A\0B", 3)},
      {"abc", [](TestString& s) { s.Capitalize(); }, "Abc"},
      {"\xC3\xA9t", [](TestString& s) { s.Capitalize(); }, "\xC3\xA9t"},
      // clang-format on
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE("edit " + std::to_string(i));
    TestString s = Of(cases[i].before);
    cases[i].edit(s);
    EXPECT_EQ(cases[i].after, s.Text());
    EXPECT_EQ(ATR_EOS, s.CStr()[s.Length()]);
  }
}

// A source text inside the string being edited gives what a separate copy of it would give,
// whether the edit stays in place or moves the storage.
TEST(atr_StringEdit, SourceInsideTheEditedString) {
  using T = const std::string&;
  // clang-format off
  const struct { Edit edit; std::function<std::string(T)> expected; } cases[] = {
      {[](TestString& s) { s.Append(s); }, [](T t) { return t + t; }},
      {[](TestString& s) { s.append(s.CStr(), s.Length(), 1, ATR_TO_END); }, [](T t) { return t + t.substr(1); }},
      {[](TestString& s) { s.insert(1, s.CStr(), s.Length(), 2, ATR_TO_END); }, [](T t) { return t.substr(0, 1) + t.substr(2) + t.substr(1); }},
      {[](TestString& s) { s.replace(1, 2, s.CStr(), s.Length(), 0, ATR_TO_END); }, [](T t) { return t.substr(0, 1) + t + t.substr(3); }},
      {[](TestString& s) { s.replace(0, 1, s.CStr(), s.Length(), 3, 2); }, [](T t) { return t.substr(3, 2) + t.substr(1); }},
      {[](TestString& s) { s.Replace(0, 1, s); }, [](T t) { return t + t.substr(1); }},
      {[](TestString& s) { s.Replace(2, 1, s.CStr() + 1, s.Length() - 1); }, [](T t) { return t.substr(0, 2) + t.substr(1) + t.substr(3); }},
      {[](TestString& s) { s = s.CStr() + 2; }, [](T t) { return t.substr(2); }},
      {[](TestString& s) { s.Substitute("x", s.CStr(), 1); }, [](T t) { std::string r = t; return r.replace(r.find('x'), 1, t); }},
      {[](TestString& s) { s.Substitute(s.CStr() + s.Length() - 2, "", 1); }, [](T t) { return t.substr(0, t.size() - 2); }},
      // clang-format on
  };
  // Room to spare, a full size class, a separate buffer.
  for (const std::string& text :
       {std::string("abcxe"), std::string("abcdefghijklxn"), "ab" + std::string(250, 'c') + "xq"})
    for (std::size_t i = 0; i < std::size(cases); ++i) {
      TestString s = Of(text);
      cases[i].edit(s);
      EXPECT_EQ(cases[i].expected(text), s.Text()) << "case " << i << " on " << text.size();
    }
}

using atr_StringBaseDeathTest = ::testing::Test;

#define ATR_REPORT(expr) \
  "AssertionFailed:" expr " \\[TPXBase/TPXBasAtr.m/src/atr_StringBase:[0-9]+\\]"

TEST(atr_StringBaseDeathTest, IndexPositionAndLengthOutOfRange) {
  // clang-format off
  const struct { Edit edit; const char* report; } cases[] = {
      {[](TestString& s) { (void)std::as_const(s)[4]; }, ATR_REPORT("ix <= Length\\(\\)")},
      {[](TestString& s) { (void)std::as_const(s)[-1]; }, ATR_REPORT("ix <= Length\\(\\)")},
      {[](TestString& s) { s[3] = 'x'; }, ATR_REPORT("ix < Length\\(\\)")},
      {[](TestString& s) { s.Erase(4, 1); }, ATR_REPORT("\\(start <= oldLength\\) && \"Erase: start out of range\"")},
      {[](TestString& s) { (void)s.Substr(4, 1); }, ATR_REPORT("\\(start <= length\\) && \"Substr: start out of range\"")},
      {[](TestString& s) { s.append("xy", 2, 3, 1); }, ATR_REPORT("\\(start <= clen\\) && \"Append: start out of range\"")},
      {[](TestString& s) { s.insert(-1, "xy", 2, 0, 1); }, ATR_REPORT("\\(start1 <= oldLength\\) && \"Insert: start1 out of range\"")},
      {[](TestString& s) { s.insert(0, "xy", 2, 3, 1); }, ATR_REPORT("\\(start2 <= slen\\) && \"Insert: start2 out of range\"")},
      {[](TestString& s) { s.replace(4, 0, "xy", 2, 0, 1); }, ATR_REPORT("\\(start1 <= oldLength\\) && \"Replace: start1 out of range\"")},
      {[](TestString& s) { s.replace(0, 0, "xy", 2, 3, 1); }, ATR_REPORT("\\(start2 <= slen\\) && \"Replace: start2 out of range\"")},
      {[](TestString& s) { s.SetStringLength(2); }, ATR_REPORT("m_StringRep && m_Buff\\[len\\] == ATR_EOS")},
      {[](TestString& s) { s = ""; s.SetStringLength(0); }, ATR_REPORT("m_StringRep && m_Buff\\[len\\] == ATR_EOS")},
      // clang-format on
  };
  for (const auto& c : cases) {
    TestString s("abc");
    EXPECT_DEATH(c.edit(s), c.report);
  }
}

}  // namespace
