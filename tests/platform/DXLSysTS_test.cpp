// Platform string stand-ins and the fatal-error service.
#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"

#include <string>

namespace {

TEST(DXLString, CopiesItsText) {
  char text[] = "abc";
  DXLString s(text);
  text[0] = 'X';
  EXPECT_STREQ("abc", s.CastToCharPtr());
  s = nullptr;
  EXPECT_STREQ("", s.CastToCharPtr());
  DXLString t = DXLString("q");
  s = t;
  EXPECT_STREQ("q", s.CastToCharPtr());
}

TEST(DXLUnicodeString, Utf8RoundTripsAndRejectsInvalidInput) {
  struct Row {
    const char* utf8;
    int units;
  };
  const Row valid[] = {{"", 0},
                       {"a", 1},
                       {"\xC3\xA9", 1},
                       {"\xE2\x82\xAC", 1},
                       {"\xF0\x9F\x98\x80", 2},
                       {"x\xF4\x8F\xBF\xBFy", 4}};
  for (const Row& r : valid) {
    DXLUnicodeString u;
    int bytes = static_cast<int>(std::string(r.utf8).size());
    ASSERT_EQ(0, u.BuildFromUTF8(r.utf8, bytes)) << r.utf8;
    EXPECT_EQ(r.units, u.GetLengthInChar()) << r.utf8;
    char out[32];
    int count = 4 * u.GetLengthInChar();
    ASSERT_EQ(0, u.ConvertToUTF8(out, count));
    EXPECT_EQ(std::string(r.utf8), std::string(out, count));
  }
  const char* invalid[] = {
      "\x80", "\xC0\xAF", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82", "\xFF"};
  for (const char* bad : invalid) {
    DXLUnicodeString u;
    EXPECT_EQ(-1, u.BuildFromUTF8(bad, static_cast<int>(std::string(bad).size()))) << bad;
    EXPECT_EQ(0, u.GetLengthInChar());
  }
}

TEST(DXLUnicodeString, ConvertReportsSmallBuffersAndLoneSurrogates) {
  const unsigned short euro[] = {0x20AC};
  DXLUnicodeString u(euro, 1);
  char out[4];
  int count = 2;
  EXPECT_EQ(-1, u.ConvertToUTF8(out, count));
  EXPECT_EQ(0, count);
  const unsigned short lone[][2] = {{0xD800, 0x41}, {0xDC00, 0xD800}};
  for (const auto& units : lone) {
    DXLUnicodeString s(units, 2);
    count = 4;
    EXPECT_EQ(-1, s.ConvertToUTF8(out, count));
  }
}

TEST(DXLFatalErrorDeathTest, OneLineWithPathAndLine) {
  EXPECT_DEATH(DXLFatalError("broken", "x", nullptr, nullptr, "a/b/c", 12),
               "^broken \\[a/b/c:12\\]\n$");
  EXPECT_DEATH(DXLFatalError(nullptr, nullptr, nullptr, nullptr, nullptr, 0), "^ \\[:0\\]\n$");
}

}  // namespace
