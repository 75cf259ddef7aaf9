// Tests of the input stream: bytes, blocks, lines, skipping and scans, at and near the end.
#include "aio_istream.h"

#include "aio_TestSupport.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

const int kFail = aio_ios::failbit, kEof = aio_ios::eofbit, kBad = aio_ios::badbit;

// An input stream owning a temporary file with the given bytes.
struct Input {
  explicit Input(const std::string& bytes, int flags = 0) {
    in.attach(aio_test::FileWith(bytes), true);
    in.setf(flags, 0);
  }
  aio_istream in;
};

TEST(aio_istreamBytes, GetPeekPutbackAndRead) {
  Input t("\xff\x61");
  EXPECT_EQ(255, t.in.peek());  // a byte 0xFF is not mistaken for the end
  EXPECT_EQ(255, t.in.get());
  EXPECT_EQ('a', t.in.get());
  EXPECT_EQ(0, t.in.rdstate());
  EXPECT_EQ(-1, t.in.peek());
  EXPECT_EQ(kFail | kEof, t.in.rdstate());
  // Putting back after the end, a 0xFF byte included, makes the byte readable again.
  t.in.clear(0);
  t.in.putback('\xff');
  EXPECT_EQ(0, t.in.rdstate());
  EXPECT_EQ(255, t.in.get());
  struct Case {
    std::string content;
    int n, count, state;
  } cases[] = {
      {"abcd", 10, 4, kFail | kEof}, {"abcd", 4, 4, 0},     {"abcd", 2, 2, 0}, {"abcd", 0, 0, 0},
      {"", 5, 0, kFail | kEof},      {"abcd", -1, 0, kFail}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.content + " " + std::to_string(c.n));
    Input r(c.content);
    char buf[16];
    std::memset(buf, '#', sizeof buf);
    EXPECT_EQ(c.count, r.in.read(buf, c.n));
    EXPECT_EQ(c.state, r.in.rdstate());
    EXPECT_EQ(0, std::memcmp(buf, c.content.data(), c.count));
    // A NUL after a short read, nothing past the bytes asked otherwise.
    EXPECT_EQ(c.count < c.n ? '\0' : '#', buf[c.count]);
  }
}

TEST(aio_istreamLines, GetlineCompleteIncompleteAndEnd) {
  struct Step {
    int n;
    std::string line;  // bytes of buf up to and including its NUL
    int state;
  };
  const std::string nul(1, '\0'), abc = "abc" + nul;
  struct Case {
    std::string content;
    std::vector<Step> steps;
  } cases[] = {
      {"abc\ndef", {{10, abc, 0}, {10, "def" + nul, kFail | kEof}, {10, nul, kFail | kEof}}},
      {"abcdef\nx\n", {{4, abc, kFail | kEof}, {10, "def" + nul, 0}}},  // rest stays in the file
      {"abc\n", {{4, abc, kFail | kEof}, {4, nul, 0}}},                 // no room for the newline
      {"abc\n", {{5, abc, 0}}},
      {{"a\0b\nc", 5}, {{10, "a" + nul + "b" + nul, 0}}},
      {"", {{10, nul, kFail | kEof}}},
      {"abc\n", {{1, nul, kFail | kEof}}},
      {"ab\r\n", {{10, "ab\r" + nul, 0}}},
  };
  for (const Case& c : cases) {
    Input t(c.content);
    for (size_t i = 0; i < c.steps.size(); ++i) {
      SCOPED_TRACE(c.content + " step " + std::to_string(i));
      // A newline left in the buffer by earlier use must never count as the line's end.
      char buf[16];
      std::memset(buf, '\n', sizeof buf);
      t.in.clear(0);
      t.in.getline(buf, c.steps[i].n);
      EXPECT_EQ(c.steps[i].line, std::string(buf, c.steps[i].line.size()));
      EXPECT_EQ(c.steps[i].state, t.in.rdstate());
    }
  }
  // Nothing is written for a size below 1.
  Input u("abc\n");
  char guard = '#';
  u.in.getline(&guard, 0);
  EXPECT_EQ('#', guard);
  EXPECT_EQ(kFail, u.in.rdstate());
  EXPECT_EQ('a', u.in.get());
}

TEST(aio_istreamSkip, IgnoreStopsAfterTheDelimiterOrAtTheEnd) {
  struct Case {
    std::string content;
    int n, delim, next, state;  // next: the byte read afterwards, -1 for the end
  } cases[] =
      {
          {"abc\ndef", 10, '\n', 'd', 0},    {"abc\ndef", 2, '\n', 'c', 0},
          {"abc", -3, '\n', 'a', 0},         {"abc", 10, '\n', -1, kEof},
          {"a\xff\x7a", 10, -1, 'z', 0},      // the delimiter is compared as a signed char
          {"a\xff\x7a", 10, 0xff, -1, kEof},  // so one above 127 never matches
      };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.content + " " + std::to_string(c.n) + " " + std::to_string(c.delim));
    Input t(c.content);
    t.in.ignore(c.n, c.delim);
    EXPECT_EQ(c.state, t.in.rdstate());
    t.in.clear(0);
    EXPECT_EQ(c.next, t.in.get());
  }
}

using Scan = long double (*)(aio_istream&);
const Scan kScans[] = {[](aio_istream& i) -> long double { return i.scan_int(); },
                       [](aio_istream& i) -> long double { return i.scan_u_int(); },
                       [](aio_istream& i) -> long double { return i.scan_int64(); },
                       [](aio_istream& i) -> long double { return i.scan_u_int64(); },
                       [](aio_istream& i) -> long double { return i.scan_double(); },
                       [](aio_istream& i) -> long double { return i.scan_float(); }};

TEST(aio_istreamScan, NumbersByBase) {
  const int hex = aio_ios::hex, oct = aio_ios::oct;
  const long double maxU64 = 18446744073709551615.0L;
  struct Case {
    std::string content;
    int flags, scan;
    long double expected;
  } cases[] = {
      {"  -42 ", 0, 0, -42},
      {"ff", hex, 0, 255},
      {"17", oct, 0, 15},
      {"17", hex | oct, 0, 17},
      {"-9223372036854775808", 0, 2, -9223372036854775807.0L - 1},
      {"18446744073709551615", 0, 3, maxU64},
      {"1777777777777777777777", oct, 3, maxU64},
      {"2.5e3", 0, 4, 2500.0},
      {"1.5", 0, 5, 1.5},
  };
  for (const Case& c : cases) {
    Input t(c.content, c.flags);
    EXPECT_EQ(c.expected, kScans[c.scan](t.in)) << c.content;
    EXPECT_EQ(0, t.in.fail()) << c.content;
  }
  for (Scan scan : kScans) {
    Input letters("abc");  // nothing converted, not at the end: the letters stay
    EXPECT_EQ(0, scan(letters.in));
    EXPECT_EQ(kFail, letters.in.rdstate());
    letters.in.clear(0);
    EXPECT_EQ('a', letters.in.get());
    Input blank("  \n ");  // only white space: the end
    EXPECT_EQ(0, scan(blank.in));
    EXPECT_EQ(kFail | kEof, blank.in.rdstate());
  }
}

TEST(aio_istreamScan, CharactersAndWords) {
  Input t(" x\thello  world");
  EXPECT_EQ(' ', t.in.scan_char());  // white space is a character too
  EXPECT_EQ('x', t.in.scan_char());
  char word[32];
  t.in.scan_string(word);
  EXPECT_STREQ("hello", word);
  t.in.scan_string(word);
  EXPECT_STREQ("world", word);
  EXPECT_EQ(0, t.in.rdstate());
  t.in.scan_string(word);
  EXPECT_STREQ("", word);
  EXPECT_EQ(kFail | kEof, t.in.rdstate());
  t.in.clear(0);
  EXPECT_EQ(0, t.in.scan_char());
  EXPECT_EQ(kFail | kEof, t.in.rdstate());

  struct Case {
    std::string content;
    int n;
    const char* word;
    int state, next;  // next: byte read afterwards
  } cases[] = {
      {"  abc def", 8, "abc", 0, ' '},  {"abcdef gh", 7, "abcdef", 0, ' '},
      {"abcdef", 7, "abcdef", 0, -1},   {"abcdefgh", 4, "abc", kFail, 'd'},  // cut short
      {"   ", 8, "", kFail | kEof, -1}, {"abc", 1, "", kFail, 'a'},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.content + " " + std::to_string(c.n));
    Input b(c.content);
    char buf[16];
    std::memset(buf, '#', sizeof buf);
    b.in.scan_string(buf, c.n);
    EXPECT_STREQ(c.word, buf);
    EXPECT_EQ(c.state, b.in.rdstate());
    EXPECT_EQ('#', buf[c.n]) << "wrote past the buffer";
    b.in.clear(0);
    EXPECT_EQ(c.next, b.in.get());
  }
}

TEST(aio_istreamFailure, UnattachedStreamAndReadErrors) {
  aio_istream none;
  char buf[8] = "keep";
  EXPECT_EQ(-1, none.get());
  EXPECT_EQ(-1, none.peek());
  none.putback('a');
  EXPECT_EQ(0, none.read(buf, 4));
  none.getline(buf, 8).ignore(5, '\n').scan_string(buf).scan_string(buf, 8);
  EXPECT_EQ(0, none.scan_char());
  EXPECT_EQ(0, none.scan_int());
  EXPECT_STREQ("keep", buf);
  EXPECT_EQ(kFail, none.rdstate());

  // A file open for writing only: every read fails with an error, not the end.
  aio_istream in;
  in.attach(std::fopen("/dev/null", "w"), true);
  for (int op = 0; op < 4; ++op) {
    in.clear(0);
    if (op == 0) in.get();
    if (op == 1) in.read(buf, 8);
    if (op == 2) in.getline(buf, 8);
    if (op == 3) in.ignore(3, '\n');
    EXPECT_EQ(kFail | kBad, in.rdstate()) << op;
  }
}

}  // namespace
