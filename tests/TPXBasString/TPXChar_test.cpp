// TPXChar_test.cpp: building one character from UTF-8, UTF-32 and the locale.
#include "KLDTPXBasCoreUtils.h"

#include <gtest/gtest.h>
#include <string>

TEST(TPXCharBuild, FromUtf8AndUtf32) {
  struct Row {
    const char* text;
    TPXChar::Result result;
    unsigned code;
    const char* bytes;
  } rows[] = {
      {"", TPXChar::Success, 0, ""},
      {"ab", TPXChar::Success, 'a', "a"},
      {"\xF0\x9F\x98\x80z", TPXChar::Success, 0x1F600, "\xF0\x9F\x98\x80"},
      {"\xC3\x28", TPXChar::Failure, '?', "?"},
      {"\x80", TPXChar::Failure, '?', "?"},
      // The lead-byte rules only: overlong forms, surrogates and codes past U+10FFFF are read.
      {"\xF4\x90\x80\x80", TPXChar::Success, 0x110000, "\xF4\x90\x80\x80"},
      {"\xC0\x80", TPXChar::Success, 0, "\xC0\x80"},
      {"\xED\xA0\x80", TPXChar::Success, 0xD800, "\xED\xA0\x80"},
      {"\xF7\xBF\xBF\xBF", TPXChar::Success, 0x1FFFFF, "\xF7\xBF\xBF\xBF"},
      {"\xF8\x88\x80\x80\x80", TPXChar::Failure, '?', "?"},
      {"\xE2\x82", TPXChar::Failure, '?', "?"},
  };
  for (const Row& row : rows) {
    TPXChar c;
    EXPECT_EQ(row.result, c.BuildFromUTF8(row.text)) << row.text;
    EXPECT_EQ(row.code, c.ConvertToUTF32()) << row.text;
    EXPECT_STREQ(row.bytes, c.CastToCharPtr()) << row.text;
  }
  TPXChar c;
  EXPECT_EQ(TPXChar::Success, c.BuildFromUTF32(0x20AC));
  EXPECT_STREQ("\xE2\x82\xAC", c.CastToCharPtr());
  EXPECT_FALSE(c.IsAscii());
  EXPECT_EQ('?', static_cast<char>(c));
  EXPECT_EQ(TPXChar::Success, c.BuildFromUTF32(0x1FFFFF));
  EXPECT_STREQ("\xF7\xBF\xBF\xBF", c.CastToCharPtr());
  EXPECT_EQ(TPXChar::Success, c.BuildFromUTF32(0xDC00));
  EXPECT_STREQ("\xED\xB0\x80", c.CastToCharPtr());
  EXPECT_EQ(TPXChar::Failure, c.BuildFromUTF32(0x200000));
  EXPECT_STREQ("?", c.CastToCharPtr());
  EXPECT_EQ(TPXChar::Failure, c.BuildFromUTF32(0xFFFFFFFFu));
  EXPECT_STREQ("?", c.CastToCharPtr());
  EXPECT_EQ('?', TPXChar(static_cast<char>(0xE9)).ConvertToUTF32());
}

TEST(TPXCharCase, OnlyAsciiLettersMove) {
  const char* rows[][3] = {
      {"A", "a", "A"}, {"z", "z", "Z"}, {"[", "[", "["}, {"\xC3\x89", "\xC3\x89", "\xC3\x89"}};
  for (const auto& row : rows) {
    TPXChar lower = TPXChar::Make(row[0]);
    lower.ASCIIToLower();
    EXPECT_STREQ(row[1], lower.CastToCharPtr());
    TPXChar upper = TPXChar::Make(row[0]);
    upper.ASCIIToUpper();
    EXPECT_STREQ(row[2], upper.CastToCharPtr());
  }
  EXPECT_TRUE(TPXChar::Make("a") < TPXChar::Make("\xC3\xA9"));
  EXPECT_TRUE(TPXChar::Make("\xF0\x9F\x98\x80") > TPXChar::Make("\xE2\x82\xAC"));
}
