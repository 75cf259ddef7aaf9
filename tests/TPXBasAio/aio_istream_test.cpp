// Tests of the input stream: bytes, blocks, lines, skipping and scans, at and near the end.
#include "aio_istream.h"

#include "aio_TestSupport.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

const int kFail = aio_ios::failbit;
const int kEof = aio_ios::eofbit;

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
  EXPECT_EQ('a', t.in.peek());  // peek does not consume
  EXPECT_EQ('a', t.in.get());
  EXPECT_EQ(0, t.in.rdstate());
  EXPECT_EQ(-1, t.in.peek());
  EXPECT_EQ(kFail | kEof, t.in.rdstate());
  t.in.clear(0);
  EXPECT_EQ(1, t.in.good());
  EXPECT_EQ(-1, t.in.get());
  EXPECT_EQ(kFail | kEof, t.in.rdstate());
  EXPECT_NE(0, t.in.fail());

  // Putting back after the end, a 0xFF byte included, makes the bytes readable again.
  t.in.clear(0);
  t.in.putback('\xff');
  EXPECT_EQ(0, t.in.rdstate());
  EXPECT_EQ(255, t.in.get());
  t.in.putback('z').putback('y');  // glibc takes more than the one guaranteed byte
  EXPECT_EQ('y', t.in.get());
  EXPECT_EQ('z', t.in.get());
}

TEST(aio_istreamBytes, ReadShortAndExact) {
  struct Row {
    const char* name;
    std::string content;
    int n;
    int expectedCount;
    int expectedState;
  } rows[] = {
      {"10 from 4", "abcd", 10, 4, kFail | kEof},     {"exactly all", "abcd", 4, 4, 0},
      {"fewer than held", "abcd", 2, 2, 0},           {"nothing asked", "abcd", 0, 0, 0},
      {"from an empty file", "", 5, 0, kFail | kEof}, {"negative count", "abcd", -1, 0, kFail},
  };
  for (const Row& row : rows) {
    Input t(row.content);
    char buf[16];
    std::memset(buf, '#', sizeof buf);
    EXPECT_EQ(row.expectedCount, t.in.read(buf, row.n)) << row.name;
    EXPECT_EQ(row.expectedState, t.in.rdstate()) << row.name;
    EXPECT_EQ(0, std::memcmp(buf, row.content.data(), row.expectedCount)) << row.name;
    if (row.expectedCount < row.n)
      EXPECT_EQ('\0', buf[row.expectedCount]) << row.name;
    else
      EXPECT_EQ('#', buf[row.expectedCount]) << row.name << ": wrote past the bytes asked";
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
      {"lines then a last line without newline",
       "abc\ndef",
       {{10, std::string("abc\0", 4), 0},
        {10, std::string("def\0", 4), kFail | kEof},
        {10, std::string("\0", 1), kFail | kEof}}},
      {"line longer than the buffer leaves the rest in the file",
       "abcdef\nx\n",
       {{4, std::string("abc\0", 4), kFail | kEof}, {10, std::string("def\0", 4), 0}}},
      {"n - 1 bytes without room for the newline",
       "abc\n",
       {{4, std::string("abc\0", 4), kFail | kEof}, {4, std::string("\0", 1), 0}}},
      {"line and newline fill the buffer", "abc\n", {{5, std::string("abc\0", 4), 0}}},
      {"empty line", "\nz", {{10, std::string("\0", 1), 0}}},
      {"NUL bytes inside a complete line",
       std::string("a\0b\nc", 5),
       {{10, std::string("a\0b\0", 4), 0}}},
      {"empty file", "", {{10, std::string("\0", 1), kFail | kEof}}},
      {"buffer of one byte", "abc\n", {{1, std::string("\0", 1), kFail | kEof}}},
      {"CR stays in the line", "ab\r\n", {{10, std::string("ab\r\0", 4), 0}}},
  };
  for (const Row& row : rows) {
    Input t(row.content);
    int i = 0;
    for (const Step& step : row.steps) {
      char buf[16];
      std::memset(buf, '#', sizeof buf);
      t.in.clear(0);
      t.in.getline(buf, step.n);
      EXPECT_EQ(step.line, std::string(buf, step.line.size())) << row.name << " step " << i;
      EXPECT_EQ(step.state, t.in.rdstate()) << row.name << " step " << i;
      ++i;
    }
  }
}

TEST(aio_istreamLines, GetlineNeverTrustsStaleBufferBytes) {
  // The buffer holds a newline from earlier use past the text now read: the last line of the
  // file, which has no newline, must still be reported as incomplete.
  Input t("ab");
  char buf[10];
  std::memcpy(buf, "xxxx\nxxxx", 10);
  t.in.getline(buf, 10);
  EXPECT_STREQ("ab", buf);
  EXPECT_EQ(kFail | kEof, t.in.rdstate());

  // Nothing may be written for a size below 1.
  Input u("abc\n");
  char guard = '#';
  u.in.getline(&guard, 0);
  EXPECT_EQ('#', guard);
  EXPECT_EQ(kFail, u.in.rdstate());
  u.in.clear(0);
  u.in.getline(nullptr, -5);
  EXPECT_EQ(kFail, u.in.rdstate());
  EXPECT_EQ('a', u.in.get());
}

TEST(aio_istreamSkip, IgnoreStopsAfterTheDelimiterOrAtTheEnd) {
  struct Row {
    const char* name;
    std::string content;
    int n;
    int delim;
    int next;  // the byte read afterwards, -1 for the end
    int state;
  } rows[] = {
      {"through the delimiter", "abc\ndef", 10, '\n', 'd', 0},
      {"count reached first", "abc\ndef", 2, '\n', 'c', 0},
      {"zero count", "abc", 0, '\n', 'a', 0},
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

TEST(aio_istreamScan, NumbersByBase) {
  struct Row {
    const char* name;
    std::string content;
    int flags;
    long double expected;
    int which;  // 0 int, 1 unsigned, 2 int64, 3 uint64, 4 double, 5 float
  } rows[] = {
      {"decimal", "  -42 ", 0, -42, 0},
      {"hex ff", "ff", aio_ios::hex, 255, 0},
      {"hex with prefix", "0x1F", aio_ios::hex, 31, 0},
      {"octal", "17", aio_ios::oct, 15, 0},
      {"hex|oct is decimal", "17", aio_ios::hex | aio_ios::oct, 17, 0},
      {"unsigned max", "4294967295", 0, 4294967295.0L, 1},
      {"unsigned hex", "ffffffff", aio_ios::hex, 4294967295.0L, 1},
      {"int64 min", "-9223372036854775808", 0, -9223372036854775807.0L - 1, 2},
      {"int64 hex", "7fffffffffffffff", aio_ios::hex, 9223372036854775807.0L, 2},
      {"uint64 max", "18446744073709551615", 0, 18446744073709551615.0L, 3},
      {"uint64 octal", "1777777777777777777777", aio_ios::oct, 18446744073709551615.0L, 3},
      {"double", "2.5e3", 0, 2500.0, 4},
      {"double ignores the base", "10", aio_ios::hex, 10.0, 4},
      {"float", "1.5", 0, 1.5, 5},
  };
  for (const Row& row : rows) {
    Input t(row.content, row.flags);
    long double got = 0;
    switch (row.which) {
      case 0:
        got = t.in.scan_int();
        break;
      case 1:
        got = t.in.scan_u_int();
        break;
      case 2:
        got = t.in.scan_int64();
        break;
      case 3:
        got = t.in.scan_u_int64();
        break;
      case 4:
        got = t.in.scan_double();
        break;
      default:
        got = t.in.scan_float();
    }
    EXPECT_EQ(row.expected, got) << row.name;
    EXPECT_EQ(0, t.in.fail()) << row.name;
  }
}

TEST(aio_istreamScan, FailuresGiveZeroAndTheState) {
  using Scan = long double (*)(aio_istream&);
  const std::pair<const char*, Scan> scans[] = {
      {"int", [](aio_istream& i) -> long double { return i.scan_int(); }},
      {"u_int", [](aio_istream& i) -> long double { return i.scan_u_int(); }},
      {"int64", [](aio_istream& i) -> long double { return i.scan_int64(); }},
      {"u_int64", [](aio_istream& i) -> long double { return i.scan_u_int64(); }},
      {"double", [](aio_istream& i) -> long double { return i.scan_double(); }},
      {"float", [](aio_istream& i) -> long double { return i.scan_float(); }},
  };
  for (const auto& scan : scans) {
    Input letters("abc");  // nothing converted, not at the end: the letters stay
    EXPECT_EQ(0, scan.second(letters.in)) << scan.first;
    EXPECT_EQ(kFail, letters.in.rdstate()) << scan.first;
    letters.in.clear(0);
    EXPECT_EQ('a', letters.in.get()) << scan.first;

    Input blank("  \n ");  // only white space: the end
    EXPECT_EQ(0, scan.second(blank.in)) << scan.first;
    EXPECT_EQ(kFail | kEof, blank.in.rdstate()) << scan.first;

    aio_istream none;
    EXPECT_EQ(0, scan.second(none)) << scan.first;
    EXPECT_EQ(kFail, none.rdstate()) << scan.first;
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
}

TEST(aio_istreamScan, BoundedWords) {
  struct Row {
    const char* name;
    std::string content;
    int n;
    const char* word;
    int state;
    int next;  // byte read afterwards
  } rows[] = {
      {"fits", "  abc def", 8, "abc", 0, ' '},
      {"exact fit before a space", "abcdef gh", 7, "abcdef", 0, ' '},
      {"exact fit at the end", "abcdef", 7, "abcdef", 0, -1},
      {"cut short: the rest stays", "abcdefgh", 4, "abc", kFail, 'd'},
      {"only white space", "   ", 8, "", kFail | kEof, -1},
      {"buffer of one byte", "abc", 1, "", kFail, 'a'},
  };
  for (const Row& row : rows) {
    Input t(row.content);
    char buf[16];
    std::memset(buf, '#', sizeof buf);
    t.in.scan_string(buf, row.n);
    EXPECT_STREQ(row.word, buf) << row.name;
    EXPECT_EQ(row.state, t.in.rdstate()) << row.name;
    EXPECT_EQ('#', buf[row.n]) << row.name << ": wrote past the buffer";
    t.in.clear(0);
    EXPECT_EQ(row.next, t.in.get()) << row.name;
  }
  Input t("abc");
  char guard = '#';
  t.in.scan_string(&guard, 0);
  EXPECT_EQ('#', guard);
  EXPECT_EQ(kFail, t.in.rdstate());
}

TEST(aio_istreamFailure, UnattachedStreamSetsFailureOnly) {
  aio_istream in;
  char buf[8] = "keep";
  EXPECT_EQ(-1, in.get());
  EXPECT_EQ(-1, in.peek());
  in.putback('a');
  EXPECT_EQ(0, in.read(buf, 4));
  in.getline(buf, 8);
  in.ignore(5, '\n');
  in.scan_string(buf);
  in.scan_string(buf, 8);
  EXPECT_EQ(0, in.scan_char());
  EXPECT_STREQ("keep", buf);
  EXPECT_EQ(kFail, in.rdstate());
}

TEST(aio_istreamFailure, ReadErrorSetsTheErrorBit) {
  // A descriptor open for writing only: every read fails with an error, not the end.
  FILE* f = std::fopen("/dev/null", "w");
  ASSERT_NE(nullptr, f);
  aio_istream in;
  in.attach(f, true);
  char buf[8];
  EXPECT_EQ(-1, in.get());
  EXPECT_EQ(kFail | aio_ios::badbit, in.rdstate());
  in.clear(0);
  in.getline(buf, 8);
  EXPECT_EQ(kFail | aio_ios::badbit, in.rdstate());
  in.clear(0);
  EXPECT_EQ(0, in.read(buf, 8));
  EXPECT_EQ(kFail | aio_ios::badbit, in.rdstate());
  in.clear(0);
  in.ignore(3, '\n');
  EXPECT_EQ(kFail | aio_ios::badbit, in.rdstate());
}

TEST(aio_istreamAdopt, OwnsTheDescriptorItOpened) {
  const int fds = aio_test::OpenFdCount();
  int pipeFds[2];
  ASSERT_EQ(0, pipe(pipeFds));
  ASSERT_EQ(3, ::write(pipeFds[1], "hi\n", 3));
  ::close(pipeFds[1]);
  {
    aio_istream in;
    in.adopt(pipeFds[0]);
    char line[8];
    in.getline(line, 8);
    EXPECT_STREQ("hi", line);
    EXPECT_EQ(0, in.rdstate());
    EXPECT_EQ(pipeFds[0], in.fd());
  }
  EXPECT_EQ(fds, aio_test::OpenFdCount());
  aio_istream bad;
  bad.adopt(-1);
  EXPECT_EQ(nullptr, bad.fptr());
  EXPECT_EQ(kFail, bad.rdstate());
}

}  // namespace
