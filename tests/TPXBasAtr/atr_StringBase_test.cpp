// Storage, sharing, statistics, searches and edits of the copy-on-write byte string.
#include "atr_StringTestSupport.h"
#include "gtest/gtest.h"
#include "kld_TestSupport.h"

#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace {

using atr_test::ScopedCtype;
using atr_test::StatisticsOf;
using atr_test::TestString;

// ---------------------------------------------------------------------------------------------
// Storage and capacities.
// ---------------------------------------------------------------------------------------------

TEST(atr_StringStorage, SizeClassesAndSeparateBuffers) {
  const struct {
    int length;
    int capacity;
    bool inlineText;
  } cases[] = {{0, 20, true},     {1, 20, true},      {14, 20, true},   {15, 52, true},
               {46, 52, true},    {47, 84, true},     {78, 84, true},   {79, 116, true},
               {206, 212, true},  {207, 244, true},   {238, 244, true}, {239, 240, false},
               {240, 241, false}, {5000, 5001, false}};
  for (const auto& c : cases) {
    const std::string text(static_cast<std::size_t>(c.length), 'x');
    const TestString s(text);
    EXPECT_EQ(c.capacity, s.Capacity()) << "length " << c.length;
    EXPECT_EQ(c.inlineText, s.Inline()) << "length " << c.length;
    EXPECT_EQ(text, s.Text());
    EXPECT_EQ(ATR_EOS, s.CStr()[c.length]);
  }
}

TEST(atr_StringStorage, GrowingMovesOnlyWhenTheSizeClassIsFull) {
  TestString s("abcdefghijklmn");  // 14 bytes, capacity 20
  const char* const first = s.CStr();
  for (int length = 15; length <= 19; ++length) {
    s.Append("x", 1);
    EXPECT_EQ(first, s.CStr()) << "length " << length << " fits in place";
  }
  s.Append("y", 1);  // 20 bytes need capacity 21
  EXPECT_NE(first, s.CStr());
  EXPECT_EQ(52, s.Capacity());
  EXPECT_EQ("abcdefghijklmnxxxxxy", s.Text());

  // The last size class has room up to 243 bytes; then exact separate buffers, reallocated
  // for the exact new length at each growth.
  TestString big(std::string(238, 'a'));
  const struct {
    int length, capacity;
    bool inlineText;
  } steps[] = {{243, 244, true}, {244, 245, false}, {245, 246, false}};
  for (const auto& step : steps) {
    while (big.Length() < step.length) big.Append("b", 1);
    EXPECT_EQ(step.capacity, big.Capacity()) << step.length;
    EXPECT_EQ(step.inlineText, big.Inline()) << step.length;
  }
  EXPECT_EQ(std::string(238, 'a') + std::string(7, 'b'), big.Text());
}

TEST(atr_StringStorage, ConstructorsFromTextLengthAndTags) {
  const TestString none(static_cast<const char*>(nullptr));
  const TestString empty("");
  EXPECT_FALSE(none.HasHeader());
  EXPECT_FALSE(empty.HasHeader());
  EXPECT_STREQ("", empty.CStr());
  EXPECT_EQ(nullptr, empty.GetBuffPtr());

  const TestString zeroLength("abc", 0);  // an explicit length always gets storage
  EXPECT_TRUE(zeroLength.HasHeader());
  EXPECT_EQ(0, zeroLength.Length());
  const TestString withZero("a\0b", 3);
  EXPECT_EQ(std::string("a\0b", 3), withZero.Text());

  TestString sized(100, atr_StringBase::PreSize);
  EXPECT_EQ(0, sized.Length());
  EXPECT_EQ(116, sized.Capacity());
  std::strcpy(sized.GetBuffPtr(), "written directly");
  sized.SetStringLength(16);
  EXPECT_EQ("written directly", sized.Text());

  // An adopted buffer is released by the string (a leak here is an AddressSanitizer report).
  char* buffer = static_cast<char*>(mem_Malloc(4));
  std::memcpy(buffer, "own", 4);
  TestString adopted(buffer, 3, atr_StringBase::Adopt);
  EXPECT_EQ(buffer, adopted.CStr());
  EXPECT_EQ(4, adopted.Capacity());
  adopted.Append("ed", 2);
  EXPECT_EQ("owned", adopted.Text());
}

TEST(atr_StringStorage, NumbersAreFormattedWithShortExponents) {
  const std::pair<TestString, const char*> numbers[] = {
      // clang-format off
      {TestString(0.5), "0.5"}, {TestString(1e20), "1e+20"}, {TestString(1e-5f), "1e-05"},
      {TestString(1.0 / 3), "0.333333333333333"}, {TestString(1.0f / 3), "0.333333"},
      {TestString(1e100), "1e+100"}, {TestString(-2147483647 - 1), "-2147483648"},
      {TestString(4294967295u), "4294967295"}, {TestString(-1.5e-300), "-1.5e-300"},
      // clang-format on
  };
  for (const auto& [number, text] : numbers) EXPECT_EQ(text, number.Text());

  const struct {
    const char* in;
    const char* out;
  } exponents[] = {
      {"1e+005", "1e+05"}, {"1.5e-007", "1.5e-07"}, {"1e+100", "1e+100"},
      {"1e005", "1e05"},   {"1e+05", "1e+05"},      {"1e+0050", "1e+0050"},
      {"100", "100"},      {"e05", "e05"},          {"2.5", "2.5"},
  };
  for (const auto& e : exponents) {
    char buf[16];
    std::strcpy(buf, e.in);
    const int len = TestString::NormaliseExponent(buf, static_cast<int>(std::strlen(buf)));
    EXPECT_EQ(std::string(e.out), std::string(buf, static_cast<std::size_t>(len))) << e.in;
    EXPECT_EQ(ATR_EOS, buf[len]) << e.in;
  }
}

// ---------------------------------------------------------------------------------------------
// Copy-on-write and sharing.
// ---------------------------------------------------------------------------------------------

TEST(atr_StringSharing, CopiesShareUntilOneIsChanged) {
  TestString a("abcd");
  TestString c = a;
  EXPECT_EQ(a.CStr(), c.CStr());
  EXPECT_EQ(2, a.References());
  const char& read = c[1];  // a writable reference isolates even when only read through
  EXPECT_EQ('b', read);
  EXPECT_NE(a.CStr(), c.CStr());

  TestString d = a;
  d = "";  // drops d's header, leaves a untouched
  EXPECT_FALSE(d.HasHeader());
  EXPECT_EQ("abcd", a.Text());
  EXPECT_EQ(1, a.References());

  TestString e = a;
  e = e;  // self-assignment keeps the count
  a = a;
  EXPECT_EQ(2, a.References());
}

// Every edit of a shared string, made on one copy, must leave the other copy as it was; every
// edit of a borrowed text copies it first and never writes the text itself.
TEST(atr_StringSharing, EveryEditOfACopyLeavesTheOriginal) {
  const std::function<void(TestString&)> edits[] = {
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
  const std::string texts[] = {"abc b ", std::string(300, 'b') + " "};
  for (const std::string& text : texts)
    for (bool borrow : {false, true})
      for (std::size_t i = 0; i < sizeof edits / sizeof edits[0]; ++i) {
        SCOPED_TRACE("edit " + std::to_string(i) + (borrow ? " of a borrowed text" : ""));
        const std::string source = text;  // what a borrowing string reads
        const int length = static_cast<int>(source.size());
        TestString original = borrow ? TestString(source.c_str(), length, atr_StringBase::Borrow)
                                     : TestString(source);
        TestString copy = original;
        edits[i](copy);
        EXPECT_EQ(text, original.Text());
        EXPECT_NE(text, copy.Text());
        EXPECT_EQ(1, original.References());
        if (!borrow) continue;
        EXPECT_EQ(source.c_str(), original.CStr());
        EXPECT_EQ(0, original.Capacity());
        edits[i](original);  // the sole borrower edits: a copy of its own first
        EXPECT_NE(source.c_str(), original.CStr());
        EXPECT_EQ(text, source);
      }
}

// With every allocation refused, operations that need no new storage must still succeed.
TEST(atr_StringSharing, CopiesAndUnchangedCaseConversionsAllocateNothing) {
  TestString a("ALREADY UPPER");
  TestString lower("already lower 123");
  const TestString lowerCopy = lower;
  TestString roomy("abc");
  kld_test::AllocationFailureGuard noAllocation(0);
  TestString b = a;
  TestString c;
  c = b;
  b.ToUpper();
  lower.ToLower();
  EXPECT_EQ(3, a.References());
  EXPECT_EQ(lowerCopy.CStr(), lower.CStr());
  EXPECT_EQ(a.CStr(), b.CStr());
  roomy.Append("defgh", 5);  // fits in its size class
  roomy.Erase(0, 1);         // sole owner: in place
  EXPECT_EQ("bcdefgh", roomy.Text());
  TestString empty;
  empty.ToUpper();
  empty.Reverse();
  empty.Erase(0, 0);
  EXPECT_FALSE(empty.HasHeader());
}

// An allocation that fails in the middle of an edit leaves both the string and its sharers as
// they were, and leaks nothing.
TEST(atr_StringSharing, FailedEditLeavesTheStringsIntact) {
  const std::string texts[] = {"abc", std::string(14, 'i'), std::string(300, 'l')};
  for (const std::string& text : texts) {
    for (long n = 0; n < 4; ++n) {
      TestString a(text);
      TestString b = a;
      TestString alone(text);
      const char borrowedText[] = "borrowed";
      TestString borrowed(borrowedText, 8, atr_StringBase::Borrow);
      const std::string tail(40, 't');
      {
        kld_test::AllocationFailureGuard fail(n);
        try {
          b.Append(tail.c_str(), 40);
        } catch (const std::bad_alloc&) {
        }
        try {
          alone.insert(1, tail.c_str(), 40, 0, 40);
        } catch (const std::bad_alloc&) {
        }
        try {
          borrowed.Append(tail.c_str(), 40);
        } catch (const std::bad_alloc&) {
        }
      }
      EXPECT_EQ(text, a.Text()) << "allocation " << n + 1 << " failed";
      EXPECT_TRUE(b.Text() == text || b.Text() == text + tail) << n;
      EXPECT_TRUE(alone.Text() == text || alone.Text() == text.substr(0, 1) + tail + text.substr(1))
          << n;
      EXPECT_TRUE(borrowed.Text() == "borrowed" || borrowed.Text() == "borrowed" + tail) << n;
    }
  }
}

// ---------------------------------------------------------------------------------------------
// Statistics.
// ---------------------------------------------------------------------------------------------

TEST(atr_StringStatistics, ReportOfOneShortStringByteForByteOnlyWhenAsked) {
  const auto s = StatisticsOf([] { TestString ten("0123456789"); });
  EXPECT_EQ(
      "       0 Reps Created\n"
      "       1 Strings Created\n"
      "       0 Extension Failures\n"
      "       0 Active\n"
      "       0 Bytes in use\n"
      "       1 Maximum active\n"
      "      20 Maximum bytes in use\n"
      "    10.0 Mean length\n"
      "     0.0 Sigma length\n"
      "    10.0 Mean spare\n"
      "     0.0 Sigma spare\n",
      s.text);

  kld_test::FreshLibrary fresh;  // without the variable nothing is reported
  kld_test::ScopedEnv summary("ATR_SUMMARY", nullptr);
  int tally = 0;
  TPXBasAtr_initialize(tally);
  { TestString quiet("abc"); }
  testing::internal::CaptureStderr();
  TPXBasAtr_finalize(tally);
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(atr_StringStatistics, CountsEachLayoutAndEveryMove) {
  std::optional<TestString> live;
  const struct {
    const char* name;
    std::function<void()> work;
    int reps, strings, extensions, active, bytes, maxActive, maxBytes;
    double meanLength, sigmaLength, meanSpare, sigmaSpare;
  } cases[] = {
      // clang-format off
      {"copies create nothing", [] { TestString a("abc"); TestString b = a, c = b; c = a; },
       0, 1, 0, 0, 0, 1, 20, 3.0, 0.0, 17.0, 0.0},
      // the new block exists before the old goes
      {"growing past the size class",
       [] { TestString s("abcdefghijklmn"); for (int i = 0; i < 6; ++i) s.Append("x", 1); },
       0, 2, 1, 0, 0, 2, 72, 19.5, 0.5, 16.5, 15.5},
      {"long text: header alone", [] { TestString s(std::string(239, 'x')); },
       1, 0, 0, 0, 0, 1, 0, 0.0, 0.0, 0.0, 0.0},
      {"borrowed, then copied on change",
       [] { TestString s("text", 4, atr_StringBase::Borrow); s.Append("!", 1); },
       1, 1, 0, 0, 0, 2, 20, 5.0, 0.0, 15.0, 0.0},
      {"a live string stays active", [&live] { live.emplace("x"); },
       0, 1, 0, 1, 20, 1, 20, 0.0, 0.0, 0.0, 0.0},
      {"shared string edited", [] { TestString a("abcd"); TestString b = a; b.Erase(0, 1); },
       0, 2, 0, 0, 0, 2, 40, 3.5, 0.5, 16.5, 0.5},
      {"different lengths", [] { TestString a("12"); TestString b("123456"); },
       0, 2, 0, 0, 0, 2, 40, 4.0, 2.0, 16.0, 2.0},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const auto s = StatisticsOf(c.work);
    EXPECT_EQ(c.reps, s.repsCreated);
    EXPECT_EQ(c.strings, s.stringsCreated);
    EXPECT_EQ(c.extensions, s.extensionFailures);
    EXPECT_EQ(c.active, s.active);
    EXPECT_EQ(c.bytes, s.bytesInUse);
    EXPECT_EQ(c.maxActive, s.maximumActive);
    EXPECT_EQ(c.maxBytes, s.maximumBytesInUse);
    EXPECT_DOUBLE_EQ(c.meanLength, s.meanLength);
    EXPECT_DOUBLE_EQ(c.sigmaLength, s.sigmaLength);
    EXPECT_DOUBLE_EQ(c.meanSpare, s.meanSpare);
    EXPECT_DOUBLE_EQ(c.sigmaSpare, s.sigmaSpare);
  }
  live.reset();
}

// ---------------------------------------------------------------------------------------------
// Searches and comparison.
// ---------------------------------------------------------------------------------------------

// Find and rfind give the length when nothing is found.
TEST(atr_StringSearch, FindRfindCompareSubstrAndIndex) {
  const struct {
    const char* text;
    const char* what;
    int start;
    int expected;
  } finds[] =
      {
          // clang-format off
      {"abc", "x", 0, 3},     {"", "x", 0, 0},        {"", "", 0, 0},        {"abcabc", "bc", 0, 1},
      {"abcabc", "bc", 2, 4}, {"abcabc", "bc", 5, 6}, {"abc", "c", 3, 3},    {"abc", "", 2, 2},
      {"abc", "a", 4, 3},     {"abc", "a", -1, 3},    {"abc", "abcd", 0, 3}, {"aab", "ab", 0, 1},
          // clang-format on
      },
    rfinds[] = {
        // clang-format off
      {"abc", "a", 0, 3},     {"abcabc", "a", 1, 0},  {"abcabc", "a", 3, 3}, {"abcabc", "a", 100, 3},
      {"abcabc", "bc", 4, 4}, {"abcabc", "bc", 3, 1}, {"aaaa", "aa", 10, 2}, {"abc", "x", 5, 3},
      {"abc", "", 5, 3},      {"abc", "a", -5, 3},    {"", "a", 5, 0},
        // clang-format on
    };
  for (const auto& c : finds)
    EXPECT_EQ(c.expected, TestString(c.text).Find(c.what, c.start))
        << c.text << " / " << c.what << " @" << c.start;
  for (const auto& c : rfinds)
    EXPECT_EQ(c.expected,
              TestString(c.text).rfind(c.what, static_cast<int>(std::strlen(c.what)), c.start))
        << c.text << " / " << c.what << " limit " << c.start;
  const TestString zeros(std::string("a\0bc\0bc", 7));
  EXPECT_EQ(2, zeros.Find("bc", 0));  // the search covers the whole length, zero bytes included
  EXPECT_EQ(5, zeros.Find("bc", 3));
  EXPECT_EQ(4, TestString("abcabc").rfind("bcX", 2, 6));  // only textLength bytes count

  const struct {
    const char* a;
    const char* b;
    int expected;
  } order[] = {{"abc", "abc", 0}, {"abc", "abd", -1}, {"b", "abc", 1},  {"", "", 0},
               {"", "a", -1},     {"a", "", 1},       {"\xE9", "e", 1}, {"a", nullptr, 1}};
  for (const auto& c : order) EXPECT_EQ(c.expected, TestString(c.a).Compare(c.b)) << c.a;

  const TestString s("hello");
  const int substr[][3] = {{0, ATR_TO_END, 5}, {3, 10, 2}, {3, 1, 1}, {5, 3, 0}, {2, -4, 0}};
  for (const auto& c : substr) EXPECT_EQ(c[2], s.Substr(c[0], c[1])) << c[0] << "," << c[1];
  EXPECT_EQ('o', std::as_const(s)[4]);
  EXPECT_EQ(ATR_EOS, std::as_const(s)[5]);
  const TestString none;
  EXPECT_EQ(ATR_EOS, none[0]);
}

// ---------------------------------------------------------------------------------------------
// Edits.
// ---------------------------------------------------------------------------------------------

struct EditCase {
  const char* name;
  std::string before;
  std::function<void(TestString&)> edit;
  std::string after;
};

void RunEdits(const EditCase* cases, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const EditCase& c = cases[i];
    TestString s(c.before);
    c.edit(s);
    EXPECT_EQ(c.after, s.Text()) << c.name;
    EXPECT_EQ(static_cast<int>(c.after.size()), s.Length()) << c.name;
    EXPECT_EQ(ATR_EOS, s.CStr()[s.Length()]) << c.name;
  }
}

TEST(atr_StringEdit, EveryEditGivesItsTextLengthAndTerminator) {
  ScopedCtype utf8("C.UTF-8");  // case changes skip multi-byte characters
  ASSERT_TRUE(utf8.ok());
  const std::string big(300, 'b');
  const EditCase cases[] = {
      // clang-format off
      {"append part", "ab", [](TestString& s) { s.append("0123", 4, 1, 2); }, "ab12"},
      {"append to end", "ab", [](TestString& s) { s.append("0123", 4, 2, ATR_TO_END); }, "ab23"},
      {"append to empty", "", [](TestString& s) { s.Append("xy", 2); }, "xy"},
      {"append zero bytes", "a", [](TestString& s) { s.Append("\0z", 2); }, std::string("a\0z", 3)},
      {"insert middle", "abcd", [](TestString& s) { s.insert(2, "XYZ", 3, 1, 5); }, "abYZcd"},
      {"insert end", "abcd", [](TestString& s) { s.insert(4, "XY", 2, 0, 9); }, "abcdXY"},
      {"insert into empty", "", [](TestString& s) { s.insert(0, "XY", 2, 0, 9); }, "XY"},
      {"insert grows long", big, [](TestString& s) { s.insert(1, "XY", 2, 0, 9); }, "b" + std::string("XY") + std::string(299, 'b')},
      {"replace shorter", "abcdef", [](TestString& s) { s.replace(1, 3, "X", 1, 0, 1); }, "aXef"},
      {"replace longer", "abcdef", [](TestString& s) { s.replace(1, 1, "XYZ", 3, 0, 9); }, "aXYZcdef"},
      {"replace to end", "abcdef", [](TestString& s) { s.replace(2, ATR_TO_END, "!", 1, 0, 1); }, "ab!"},
      {"replace past source", "abcdef", [](TestString& s) { s.replace(0, 1, "XYZ", 3, 3, 1); }, "bcdef"},
      {"Replace by string", "abcdef", [](TestString& s) { s.Replace(0, 2, TestString("__")); }, "__cdef"},
      {"Replace by text", "abcdef", [](TestString& s) { s.Replace(4, 9, "xyz", 2); }, "abcdxy"},
      {"erase middle", "abcdef", [](TestString& s) { s.Erase(1, 2); }, "adef"},
      {"erase to end", "abcdef", [](TestString& s) { s.Erase(3, ATR_TO_END); }, "abc"},
      {"erase all", "abcdef", [](TestString& s) { s.Erase(0, ATR_TO_END); }, ""},
      {"erase long", big, [](TestString& s) { s.Erase(0, 250); }, std::string(50, 'b')},
      {"erase negative count", "abc", [](TestString& s) { s.Erase(1, -3); }, "abc"},
      {"trim everywhere", "a,b,,d", [](TestString& s) { s.Trim(","); }, "abd"},
      {"trim blanks", " a b ", [](TestString& s) { s.Trim(" "); }, "ab"},
      {"trim null set", "a b", [](TestString& s) { s.Trim(nullptr); }, "a b"},
      {"left trim", "xxyaxx", [](TestString& s) { s.LeftTrim("xy"); }, "axx"},
      {"right trim", "xxaxyx", [](TestString& s) { s.RightTrim("xy"); }, "xxa"},
      {"right trim all", "xyx", [](TestString& s) { s.RightTrim("xy"); }, ""},
      {"trim keeps zero bytes", std::string("a\0b", 3), [](TestString& s) { s.Trim("b"); }, std::string("a\0", 2)},
      {"substitute grows again", "a", [](TestString& s) { s.Substitute("a", "aa", 3); }, "aaaa"},
      {"substitute count", "a-b-c-d", [](TestString& s) { s.Substitute("-", "+", 2); }, "a+b+c-d"},
      {"substitute removes", "a-b-c", [](TestString& s) { s.Substitute("-", nullptr, 9); }, "abc"},
      {"substitute empty from", "abc", [](TestString& s) { s.Substitute("", "x", 3); }, "abc"},
      {"substitute count 0", "abc", [](TestString& s) { s.Substitute("a", "x", 0); }, "abc"},
      {"substitute grows long", std::string(200, '.'), [](TestString& s) { s.Substitute(".", "::", 100); }, std::string(200, ':') + std::string(100, '.')},
      {"reverse bytes", "\xC3\xA9x", [](TestString& s) { s.Reverse(); }, "x\xA9\xC3"},
      {"assign text", "abc", [](TestString& s) { s = "longer than the old text, in a new class"; }, "longer than the old text, in a new class"},
      {"assign shorter", "abcdef", [](TestString& s) { s = "x"; }, "x"},
      {"upper", "abc Def 1", [](TestString& s) { s.ToUpper(); }, "ABC DEF 1"},
      {"lower", "ABC dEF 1", [](TestString& s) { s.ToLower(); }, "abc def 1"},
      {"upper skips é", "\xC3\xA9t\xC3\xA9", [](TestString& s) { s.ToUpper(); }, "\xC3\xA9T\xC3\xA9"},
      {"lower after invalid byte", "\xC3" "AB", [](TestString& s) { s.ToLower(); }, "\xC3" "ab"},
      {"zero byte", std::string("a\0b", 3), [](TestString& s) { s.ToUpper(); }, std::string("A\0B", 3)},
      {"capitalize", "abc", [](TestString& s) { s.Capitalize(); }, "Abc"},
      {"capitalize upper", "Abc", [](TestString& s) { s.Capitalize(); }, "Abc"},
      {"capitalize multibyte", "\xC3\xA9t", [](TestString& s) { s.Capitalize(); }, "\xC3\xA9t"},
      {"capitalize empty", "", [](TestString& s) { s.Capitalize(); }, ""},
      // clang-format on
  };
  RunEdits(cases, sizeof cases / sizeof cases[0]);
}

// A source text that lies inside the string being edited: the result is the one a separate
// copy of the source would give, whether the edit stays in place or moves the storage.
TEST(atr_StringEdit, SourceInsideTheEditedString) {
  struct Case {
    const char* name;
    std::function<void(TestString&)> edit;
    std::function<std::string(const std::string&)> expected;
  };
  const Case cases[] = {
      {"Append itself", [](TestString& s) { s.Append(s); },
       [](const std::string& t) { return t + t; }},
      {"append own tail", [](TestString& s) { s.append(s.CStr(), s.Length(), 1, ATR_TO_END); },
       [](const std::string& t) { return t + t.substr(1); }},
      {"insert itself", [](TestString& s) { s.insert(2, s.CStr(), s.Length(), 0, ATR_TO_END); },
       [](const std::string& t) { return t.substr(0, 2) + t + t.substr(2); }},
      {"insert own tail", [](TestString& s) { s.insert(1, s.CStr(), s.Length(), 2, ATR_TO_END); },
       [](const std::string& t) { return t.substr(0, 1) + t.substr(2) + t.substr(1); }},
      {"replace by itself",
       [](TestString& s) { s.replace(1, 2, s.CStr(), s.Length(), 0, ATR_TO_END); },
       [](const std::string& t) { return t.substr(0, 1) + t + t.substr(3); }},
      {"replace by own tail", [](TestString& s) { s.replace(0, 1, s.CStr(), s.Length(), 3, 2); },
       [](const std::string& t) { return t.substr(3, 2) + t.substr(1); }},
      {"Replace by itself", [](TestString& s) { s.Replace(0, 1, s); },
       [](const std::string& t) { return t + t.substr(1); }},
      {"Replace by own text", [](TestString& s) { s.Replace(2, 1, s.CStr() + 1, s.Length() - 1); },
       [](const std::string& t) { return t.substr(0, 2) + t.substr(1) + t.substr(3); }},
      {"assign own tail", [](TestString& s) { s = s.CStr() + 2; },
       [](const std::string& t) { return t.substr(2); }},
      {"substitute by itself", [](TestString& s) { s.Substitute("b", s.CStr(), 2); },
       [](const std::string& t) {
         std::string r = t;
         for (int i = 0; i < 2; ++i) {
           const auto p = r.find('b');
           if (p == std::string::npos) break;
           r.replace(p, 1, t);
         }
         return r;
       }},
      {"substitute own prefix",
       [](TestString& s) { s.Substitute(s.CStr() + s.Length() - 2, "", 1); },
       [](const std::string& t) { return t.substr(0, t.size() - 2); }},
  };
  // Room to spare, a full size class, a separate buffer.
  const std::string texts[] = {"abcde", "abcdefghijklmn", std::string(120, 'b') + "xyz",
                               "ab" + std::string(250, 'c') + "bq"};
  for (const std::string& text : texts) {
    for (const Case& c : cases) {
      TestString s(text);
      c.edit(s);
      EXPECT_EQ(c.expected(text), s.Text()) << c.name << " on " << text.size() << " bytes";
    }
  }
}

// ---------------------------------------------------------------------------------------------
// Broken invariants.
// ---------------------------------------------------------------------------------------------

using atr_StringBaseDeathTest = ::testing::Test;

#define ATR_REPORT(expr) \
  "AssertionFailed:" expr " \\[TPXBase/TPXBasAtr.m/src/atr_StringBase:[0-9]+\\]"

TEST(atr_StringBaseDeathTest, IndexPastTheText) {
  TestString s("abc");
  EXPECT_DEATH((void)std::as_const(s)[4], ATR_REPORT("ix <= Length\\(\\)"));
  EXPECT_DEATH((void)std::as_const(s)[-1], ATR_REPORT("ix <= Length\\(\\)"));
  EXPECT_DEATH(s[3] = 'x', ATR_REPORT("ix < Length\\(\\)"));
}

TEST(atr_StringBaseDeathTest, PositionsOutOfRange) {
  TestString s("abc");
  EXPECT_DEATH(s.Erase(4, 1),
               ATR_REPORT("\\(start <= oldLength\\) && \"Erase: start out of range\""));
  EXPECT_DEATH((void)s.Substr(4, 1),
               ATR_REPORT("\\(start <= length\\) && \"Substr: start out of range\""));
  EXPECT_DEATH(s.append("xy", 2, 3, 1),
               ATR_REPORT("\\(start <= clen\\) && \"Append: start out of range\""));
  EXPECT_DEATH(s.insert(-1, "xy", 2, 0, 1),
               ATR_REPORT("\\(start1 <= oldLength\\) && \"Insert: start1 out of range\""));
  EXPECT_DEATH(s.insert(0, "xy", 2, 3, 1),
               ATR_REPORT("\\(start2 <= slen\\) && \"Insert: start2 out of range\""));
  EXPECT_DEATH(s.replace(4, 0, "xy", 2, 0, 1),
               ATR_REPORT("\\(start1 <= oldLength\\) && \"Replace: start1 out of range\""));
  EXPECT_DEATH(s.replace(0, 0, "xy", 2, 3, 1),
               ATR_REPORT("\\(start2 <= slen\\) && \"Replace: start2 out of range\""));
}

TEST(atr_StringBaseDeathTest, LengthWithoutTerminator) {
  TestString s("abc");
  EXPECT_DEATH(s.SetStringLength(2), ATR_REPORT("m_StringRep && m_Buff\\[len\\] == ATR_EOS"));
  EXPECT_DEATH(s.SetStringLength(1000), ATR_REPORT("m_StringRep && m_Buff\\[len\\] == ATR_EOS"));
  TestString none;
  EXPECT_DEATH(none.SetStringLength(0), ATR_REPORT("m_StringRep && m_Buff\\[len\\] == ATR_EOS"));
}

}  // namespace
