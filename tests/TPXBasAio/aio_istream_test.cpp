// Tests of the input stream: bytes, blocks, lines, skipping and scans, at and near the end.
#include "aio_istream.h"

#include "aio_TestSupport.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

const int kFail = aio_ios::failbit;
const int kEof = aio_ios::eofbit;
const int kBad = aio_ios::badbit;

// An input stream owning a temporary file with the given bytes.
struct Input {
  explicit Input(const std::string& bytes, int flags = 0) {
    in.attach(aio_test::FileWith(bytes), true);
    in.setf(flags, 0);
  }
  aio_istream in;
};

TEST(aio_istreamBytes, GetPeekPutbackAtTheEnds) {
  Input t(
      "\xff"
      "a");
  EXPECT_EQ(255, t.in.peek());  // a byte 0xFF is not mistaken for the end
  EXPECT_EQ(255, t.in.get());
  EXPECT_EQ('a', t.in.peek());
  EXPECT_EQ('a', t.in.get());
  EXPECT_EQ(0, t.in.rdstate());
  EXPECT_EQ(-1, t.in.peek());
  EXPECT_EQ(kFail | kEof, t.in.rdstate());
  t.in.clear(0);
  EXPECT_EQ(-1, t.in.get());
  EXPECT_EQ(kFail | kEof, t.in.rdstate());
  // Putting back after the end, a 0xFF byte included, makes the byte readable again.
  t.in.clear(0);
  t.in.putback('\xff');
  EXPECT_EQ(0, t.in.rdstate());
  EXPECT_EQ(255, t.in.get());
}

TEST(aio_istreamBytes, ReadShortAndExact) {
  struct Row {
    const char* name;
    std::string content;
    int n, count, state;
  } rows[] = {
      {"10 from 4", "abcd", 10, 4, kFail | kEof}, {"exactly all", "abcd", 4, 4, 0},
      {"fewer than held", "abcd", 2, 2, 0},       {"nothing asked", "abcd", 0, 0, 0},
      {"empty file", "", 5, 0, kFail | kEof},     {"negative count", "abcd", -1, 0, kFail},
  };
  for (const Row& row : rows) {
    Input t(row.content);
    char buf[16];
    std::memset(buf, '#', sizeof buf);
    EXPECT_EQ(row.count, t.in.read(buf, row.n)) << row.name;
    EXPECT_EQ(row.state, t.in.rdstate()) << row.name;
    EXPECT_EQ(0, std::memcmp(buf, row.content.data(), row.count)) << row.name;
    // A NUL after a short read, nothing past the bytes asked otherwise.
    EXPECT_EQ(row.count < row.n ? '\0' : '#', buf[row.count]) << row.name;
  }
}

TEST(aio_istreamLines, GetlineCompleteIncompleteAndEnd) {
  struct Step {
    int n;
    std::string line;  // bytes of buf up to and including its NUL
    int state;
  };
  struct Row {
    const char* name;
    std::string content;
    std::vector<Step> steps;
  } rows[] = {
      {"last line without newline",
       "abc\ndef",
       {{10, {"abc\0", 4}, 0}, {10, {"def\0", 4}, kFail | kEof}, {10, {"\0", 1}, kFail | kEof}}},
      {"line longer than the buffer leaves the rest in the file",
       "abcdef\nx\n",
       {{4, {"abc\0", 4}, kFail | kEof}, {10, {"def\0", 4}, 0}}},
      {"n - 1 bytes without room for the newline",
       "abc\n",
       {{4, {"abc\0", 4}, kFail | kEof}, {4, {"\0", 1}, 0}}},
      {"line and newline fill the buffer", "abc\n", {{5, {"abc\0", 4}, 0}}},
      {"NUL bytes inside a complete line", {"a\0b\nc", 5}, {{10, {"a\0b\0", 4}, 0}}},
      {"empty file", "", {{10, {"\0", 1}, kFail | kEof}}},
      {"buffer of one byte", "abc\n", {{1, {"\0", 1}, kFail | kEof}}},
      {"CR stays in the line", "ab\r\n", {{10, {"ab\r\0", 4}, 0}}},
  };
  for (const Row& row : rows) {
    Input t(row.content);
    for (size_t i = 0; i < row.steps.size(); ++i) {
      const Step& step = row.steps[i];
      // A newline left in the buffer by earlier use must never count as the line's end.
      char buf[16];
      std::memset(buf, '\n', sizeof buf);
      t.in.clear(0);
      t.in.getline(buf, step.n);
      EXPECT_EQ(step.line, std::string(buf, step.line.size())) << row.name << " step " << i;
      EXPECT_EQ(step.state, t.in.rdstate()) << row.name << " step " << i;
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
  struct Row {
    const char* name;
    std::string content;
    int n, delim, next, state;  // next: the byte read afterwards, -1 for the end
  } rows[] = {
      {"through the delimiter", "abc\ndef", 10, '\n', 'd', 0},
      {"count reached first", "abc\ndef", 2, '\n', 'c', 0},
      {"negative count", "abc", -3, '\n', 'a', 0},
      {"end of file sets end only", "abc", 10, '\n', -1, kEof},
      {"delimiter compared as a signed char",
       "a\xff"
       "z",
       10, -1, 'z', 0},
      {"delimiter above 127 never matches",
       "a\xff"
       "z",
       10, 0xff, -1, kEof},
  };
  for (const Row& row : rows) {
    Input t(row.content);
    t.in.ignore(row.n, row.delim);
    EXPECT_EQ(row.state, t.in.rdstate()) << row.name;
    t.in.clear(0);
    EXPECT_EQ(row.next, t.in.get()) << row.name;
  }
}

using Scan = long double (*)(aio_istream&);
const Scan kScanInt = [](aio_istream& i) -> long double { return i.scan_int(); };
const Scan kScanUInt = [](aio_istream& i) -> long double { return i.scan_u_int(); };
const Scan kScanInt64 = [](aio_istream& i) -> long double { return i.scan_int64(); };
const Scan kScanUInt64 = [](aio_istream& i) -> long double { return i.scan_u_int64(); };
const Scan kScanDouble = [](aio_istream& i) -> long double { return i.scan_double(); };
const Scan kScanFloat = [](aio_istream& i) -> long double { return i.scan_float(); };

TEST(aio_istreamScan, NumbersByBase) {
  const int hex = aio_ios::hex, oct = aio_ios::oct;
  struct Row {
    std::string content;
    int flags;
    Scan scan;
    long double expected;
  } rows[] = {
      {"  -42 ", 0, kScanInt, -42},
      {"ff", hex, kScanInt, 255},
      {"17", oct, kScanInt, 15},
      {"17", hex | oct, kScanInt, 17},
      {"-9223372036854775808", 0, kScanInt64, -9223372036854775807.0L - 1},
      {"18446744073709551615", 0, kScanUInt64, 18446744073709551615.0L},
      {"1777777777777777777777", oct, kScanUInt64, 18446744073709551615.0L},
      {"2.5e3", 0, kScanDouble, 2500.0},
      {"1.5", 0, kScanFloat, 1.5},
  };
  for (const Row& row : rows) {
    Input t(row.content, row.flags);
    EXPECT_EQ(row.expected, row.scan(t.in)) << row.content;
    EXPECT_EQ(0, t.in.fail()) << row.content;
  }
  for (Scan scan : {kScanInt, kScanUInt, kScanInt64, kScanUInt64, kScanDouble, kScanFloat}) {
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

  struct Row {
    const char* name;
    std::string content;
    int n;
    const char* word;
    int state, next;  // next: byte read afterwards
  } rows[] = {
      {"fits", "  abc def", 8, "abc", 0, ' '},
      {"exact fit before a space", "abcdef gh", 7, "abcdef", 0, ' '},
      {"exact fit at the end", "abcdef", 7, "abcdef", 0, -1},
      {"cut short: the rest stays", "abcdefgh", 4, "abc", kFail, 'd'},
      {"only white space", "   ", 8, "", kFail | kEof, -1},
      {"buffer of one byte", "abc", 1, "", kFail, 'a'},
  };
  for (const Row& row : rows) {
    Input b(row.content);
    char buf[16];
    std::memset(buf, '#', sizeof buf);
    b.in.scan_string(buf, row.n);
    EXPECT_STREQ(row.word, buf) << row.name;
    EXPECT_EQ(row.state, b.in.rdstate()) << row.name;
    EXPECT_EQ('#', buf[row.n]) << row.name << ": wrote past the buffer";
    b.in.clear(0);
    EXPECT_EQ(row.next, b.in.get()) << row.name;
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
  using Read = void (*)(aio_istream&, char*);
  for (Read read : std::initializer_list<Read>{[](aio_istream&i, char*) { i.get(); },
                                               [](aio_istream&i, char*b) { i.read(b, 8); },
                                               [](aio_istream&i, char*b) { i.getline(b, 8); },
                                               [](aio_istream&i, char*) { i.ignore(3, '\n'); }}) {
    in.clear(0);
    read(in, buf);
    EXPECT_EQ(kFail | kBad, in.rdstate());
  }
}

}  // namespace
