// Tests of the output stream: formatting rules, one-shot width, failures and copying.
#include "aio_ostream.h"

#include "aio_TestSupport.h"
#include "aio_istream.h"
#include "aio_manip.h"

#include <climits>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

using Writer = std::function<void(aio_ostream&)>;

// What the writer puts into a fresh stream on a temporary file, and the state it leaves.
std::string Output(const Writer& write, int* state = nullptr) {
  FILE* f = std::tmpfile();
  aio_ostream out;
  out.attach(f, false);
  write(out);
  if (state != nullptr) *state = out.rdstate();
  std::string text = aio_test::Contents(f);
  std::fclose(f);
  return text;
}

struct FormatRow {
  const char* name;
  Writer write;
  const char* expected;
};

void ExpectRows(const std::vector<FormatRow>& rows) {
  for (const FormatRow& row : rows) {
    int state = -1;
    EXPECT_EQ(row.expected, Output(row.write, &state)) << row.name;
    EXPECT_EQ(0, state) << row.name;
  }
}

Writer Fmt(int flags, int precision, double d, int width = 0) {
  return [=](aio_ostream& o) {
    o.setf(flags, 0);
    o.setprecision(precision);
    if (width != 0) o.setwidth(width, false);
    o.print_double(d);
  };
}

TEST(aio_ostreamFormat, Doubles) {
  const int fixed = aio_ios::fixed, sci = aio_ios::scientific, left = aio_ios::left;
  const int point = aio_ios::showpoint;
  ExpectRows({
      {"default 3.5", Fmt(0, 6, 3.5), "3.5"},
      {"default 1e20", Fmt(0, 6, 1.0e20), "1e+20"},
      {"default -0.0", Fmt(0, 6, -0.0), "0"},
      {"default 1/3", Fmt(0, 6, 1.0 / 3), "0.333333"},
      {"fixed -0.001 p2", Fmt(fixed, 2, -0.001), "0.00"},
      {"fixed -0.001 p2 w8", Fmt(fixed, 2, -0.001, 8), "    0.00"},
      {"fixed -0.001 p2 w8 left", Fmt(fixed | left, 2, -0.001, 8), " 0.00   "},
      {"fixed -0.0001 p3", Fmt(fixed, 3, -0.0001), "0.000"},
      {"fixed -0.005 p3 is not zero", Fmt(fixed, 3, -0.005), "-0.005"},
      {"fixed -10.0 p0 keeps its sign", Fmt(fixed, 0, -10.0), "-10"},
      {"fixed -0.5 p0 rounds to -0", Fmt(fixed, 0, -0.4), "0"},
      {"scientific -0.0", Fmt(sci, 2, -0.0), "0.00e+00"},
      {"scientific -1e-300", Fmt(sci, 2, -1e-300), "-1.00e-300"},
      {"general -0.0001", Fmt(0, 6, -0.0001), "-0.0001"},
      {"general -1e-20", Fmt(0, 3, -1e-20), "-1e-20"},
      {"both float bits mean general", Fmt(fixed | sci, 6, 1.0e20), "1e+20"},
      {"showpoint p0 fixed", Fmt(fixed | point, 0, 3.0), "3."},
      {"showpoint p0 general", Fmt(point, 0, 3.0), "3."},
      {"showpoint p0 negative zero", Fmt(fixed | point, 0, -0.0), "0."},
      {"showpoint only with p0", Fmt(point, 1, 3.0), "3"},
      {"no showpoint p0", Fmt(fixed, 0, 3.0), "3"},
      {"-inf stays", Fmt(0, 6, -HUGE_VAL), "-inf"},
      {"-nan stays", Fmt(0, 6, -std::nan("")), "-nan"},
      {"width right", Fmt(0, 6, 2.5, 6), "   2.5"},
      {"width left", Fmt(left, 6, 2.5, 6), "2.5   "},
  });
}

TEST(aio_ostreamFormat, TextLongerThanTheFormattingBufferIsWrittenWhole) {
  int state = -1;
  const std::string text = Output(Fmt(0, 6, 1.5, 2000), &state);
  EXPECT_EQ(std::string(1997, ' ') + "1.5", text);
  EXPECT_EQ(0, state);
  // A long negative zero keeps its field too.
  EXPECT_EQ(std::string(1996, ' ') + " 0.0", Output(Fmt(aio_ios::fixed, 1, -0.0, 2000)));
  EXPECT_EQ("0." + std::string(1500, '0'), Output(Fmt(aio_ios::fixed, 1500, -0.0)));
}

Writer Int(int flags, int width, const std::function<void(aio_ostream&)>& print) {
  return [=](aio_ostream& o) {
    o.setf(flags, 0);
    if (width != 0) o.setwidth(width, false);
    print(o);
  };
}

TEST(aio_ostreamFormat, IntegersBasesAndWidths) {
  const int hex = aio_ios::hex, oct = aio_ios::oct, left = aio_ios::left;
  auto i = [](int v) { return [v](aio_ostream& o) { o.print_int(v); }; };
  auto u = [](unsigned v) { return [v](aio_ostream& o) { o.print_u_int(v); }; };
  auto l = [](long long v) { return [v](aio_ostream& o) { o.print_int64(v); }; };
  auto ul = [](unsigned long long v) { return [v](aio_ostream& o) { o.print_u_int64(v); }; };
  ExpectRows({
      {"dec", Int(0, 0, i(-42)), "-42"},
      {"hex 255", Int(hex, 0, i(255)), "ff"},
      {"oct 8", Int(oct, 0, i(8)), "10"},
      {"hex|oct means decimal", Int(hex | oct, 0, i(255)), "255"},
      {"dec bit means decimal", Int(aio_ios::dec, 0, i(255)), "255"},
      {"hex of -1", Int(hex, 0, i(-1)), "ffffffff"},
      {"int min", Int(0, 0, i(INT_MIN)), "-2147483648"},
      {"u max", Int(0, 0, u(UINT_MAX)), "4294967295"},
      {"u hex", Int(hex, 0, u(0xABCDEFu)), "abcdef"},
      {"width 5 right", Int(0, 5, i(42)), "   42"},
      {"width 5 left", Int(left, 5, i(42)), "42   "},
      {"both adjust bits pad left", Int(aio_ios::adjustfield, 5, i(42)), "   42"},
      {"hex width left", Int(hex | left, 4, i(255)), "ff  "},
      {"width smaller than text", Int(0, 2, i(12345)), "12345"},
      {"int64 min", Int(0, 0, l(LLONG_MIN)), "-9223372036854775808"},
      {"int64 max", Int(0, 0, l(LLONG_MAX)), "9223372036854775807"},
      {"int64 hex -1", Int(hex, 0, l(-1)), "ffffffffffffffff"},
      {"int64 above 32 bits", Int(0, 0, l(1LL << 40)), "1099511627776"},
      {"uint64 max", Int(0, 0, ul(ULLONG_MAX)), "18446744073709551615"},
      {"uint64 oct max", Int(oct, 0, ul(ULLONG_MAX)), "1777777777777777777777"},
      {"uint64 width 22 left", Int(left, 22, ul(1ULL << 63)), "9223372036854775808   "},
  });
}

// The integer output equals what printf gives for the conversion named by the flags, for
// values of every magnitude, every base and width, negative widths included.
TEST(aio_ostreamFormat, IntegersMatchThePrintfConversions) {
  std::mt19937_64 gen(12345);
  const int bases[] = {0, aio_ios::oct, aio_ios::hex, aio_ios::oct | aio_ios::hex};
  const int widths[] = {0, 1, 5, 25, -7};
  for (int round = 0; round < 400; ++round) {
    const unsigned long long bits = gen() >> (gen() % 64);
    const int base = bases[round % 4];
    const int width = widths[(round / 4) % 5];
    const bool leftAdjust = round % 3 == 0;
    const char* conv = base == aio_ios::oct ? "o" : base == aio_ios::hex ? "x" : nullptr;
    struct Case {
      std::string format;
      Writer print;
      std::string expected;
    } cases[] = {
        {conv ? conv : "d", [&](aio_ostream& o) { o.print_int(static_cast<int>(bits)); }, ""},
        {conv ? conv : "u", [&](aio_ostream& o) { o.print_u_int(static_cast<unsigned>(bits)); },
         ""},
        {std::string("ll") + (conv ? conv : "d"),
         [&](aio_ostream& o) { o.print_int64(static_cast<long long>(bits)); }, ""},
        {std::string("ll") + (conv ? conv : "u"), [&](aio_ostream& o) { o.print_u_int64(bits); },
         ""},
        {"#llx", [&](aio_ostream& o) { o.print_address(reinterpret_cast<const void*>(bits)); }, ""},
    };
    char text[64];
    const std::string pct = std::string("%") + (leftAdjust ? "-" : "");
    std::snprintf(text, sizeof text, (pct + "*" + cases[0].format).c_str(), width,
                  static_cast<int>(bits));
    cases[0].expected = text;
    std::snprintf(text, sizeof text, (pct + "*" + cases[1].format).c_str(), width,
                  static_cast<unsigned>(bits));
    cases[1].expected = text;
    std::snprintf(text, sizeof text, (pct + "*" + cases[2].format).c_str(), width,
                  static_cast<long long>(bits));
    cases[2].expected = text;
    std::snprintf(text, sizeof text, (pct + "*" + cases[3].format).c_str(), width, bits);
    cases[3].expected = text;
    std::snprintf(text, sizeof text, ("%#" + std::string(leftAdjust ? "-" : "") + "*llx").c_str(),
                  width, bits);
    cases[4].expected = text;
    for (const Case& c : cases) {
      const std::string got = Output([&](aio_ostream& o) {
        o.setf(base | (leftAdjust ? aio_ios::left : 0), 0);
        if (width != 0) o.setwidth(width, false);
        c.print(o);
      });
      EXPECT_EQ(c.expected, got) << "%" << c.format << " of " << bits << " width " << width;
    }
  }
}

TEST(aio_ostreamFormat, AddressesTextsAndCharacters) {
  auto addr = [](unsigned long long a) {
    return [a](aio_ostream& o) { o.print_address(reinterpret_cast<const void*>(a)); };
  };
  ExpectRows({
      {"null address", addr(0), "0"},
      {"small address", addr(0x1234), "0x1234"},
      {"full 64-bit address", addr(0xffffffff12345678ULL), "0xffffffff12345678"},
      {"address width 10", Int(0, 10, addr(0x1234)), "    0x1234"},
      {"address width 8 left", Int(aio_ios::left, 8, addr(0x1234)), "0x1234  "},
      {"address ignores the base bits", Int(aio_ios::oct, 0, addr(8)), "0x8"},
      {"text", Int(0, 0, [](aio_ostream& o) { o.print("ab"); }), "ab"},
      {"text left 4", Int(aio_ios::left, 4, [](aio_ostream& o) { o.print("ab"); }), "ab  "},
      {"text right 4", Int(0, 4, [](aio_ostream& o) { o.print("ab"); }), "  ab"},
      {"char width 3", Int(0, 3, [](aio_ostream& o) { o.put('x'); }), "  x"},
      {"char left 3", Int(aio_ios::left, 3, [](aio_ostream& o) { o.put('x'); }), "x  "},
      {"byte 0xFF", Int(0, 0, [](aio_ostream& o) { o.put('\xff'); }), "\xff"},
  });
  EXPECT_EQ(std::string("a\0b", 3), Output([](aio_ostream& o) { o.write("a\0b", 3); }));
}

TEST(aio_ostreamWidth, OneShotAndKeptWidths) {
  ExpectRows({
      {"one-shot width pads the first output only",
       [](aio_ostream& o) { aio_setwidth(o, 5).print_int(42).print_int(7); }, "   427"},
      {"kept width pads every output",
       [](aio_ostream& o) {
         o.setwidth(5, true);
         o.print_int(42).print_int(7);
       },
       "   42    7"},
      {"newline ignores the width and leaves it in force",
       [](aio_ostream& o) { aio_setwidth(o, 5).put('\n').print_int(7).print_int(8); }, "\n    78"},
      {"one-shot width is used by a double",
       [](aio_ostream& o) { aio_setwidth(o, 4).print_double(1.5).print_double(2.5); }, " 1.52.5"},
      {"one-shot width is used by a text",
       [](aio_ostream& o) { aio_setwidth(o, 3).print("a").print("b"); }, "  ab"},
      {"write and an unpadded put leave a one-shot width in force",
       [](aio_ostream& o) { aio_setwidth(o, 3).write("w", 1).print_int(1).print_int(2); }, "w  12"},
  });
  // The one-shot bit goes with the width it cleared; a later kept width is not affected.
  FILE* f = std::tmpfile();
  aio_ostream out;
  out.attach(f, true);
  aio_setwidth(out, 4).print_int(1);
  EXPECT_EQ(0, out.width());
  EXPECT_EQ(0, out.flags() & aio_ios::widthonce);
  out.setwidth(3, true).setwidth(3, true);
  static_cast<aio_ostream&>(out).print_int(2).print_int(3);
  EXPECT_EQ("   1  2  3", aio_test::Contents(f));
}

// Every output operation, for the tables of failure cases below.
const std::vector<std::pair<const char*, Writer>>& AllOutputs() {
  static const std::vector<std::pair<const char*, Writer>> ops = {
      {"put", [](aio_ostream& o) { o.put('x'); }},
      {"put newline", [](aio_ostream& o) { o.put('\n'); }},
      {"print", [](aio_ostream& o) { o.print("text"); }},
      {"print width", [](aio_ostream& o) { aio_setwidth(o, 9).print("text"); }},
      {"print_int", [](aio_ostream& o) { o.print_int(1); }},
      {"print_int width", [](aio_ostream& o) { aio_setwidth(o, 9).print_int(1); }},
      {"print_u_int", [](aio_ostream& o) { o.print_u_int(1); }},
      {"print_int64", [](aio_ostream& o) { o.print_int64(1); }},
      {"print_u_int64", [](aio_ostream& o) { o.print_u_int64(1); }},
      {"print_address", [](aio_ostream& o) { o.print_address(&o); }},
      {"print_double", [](aio_ostream& o) { o.print_double(1.5); }},
      {"print_double width", [](aio_ostream& o) { aio_setwidth(o, 9).print_double(-0.0); }},
      {"write", [](aio_ostream& o) { o.write("abc", 3); }},
  };
  return ops;
}

TEST(aio_ostreamFailure, UnattachedStreamSetsFailureOnly) {
  for (const auto& op : AllOutputs()) {
    aio_ostream out;
    op.second(out);
    EXPECT_EQ(aio_ios::failbit, out.rdstate()) << op.first;
  }
  aio_ostream out;
  out.flush();
  EXPECT_EQ(aio_ios::failbit, out.rdstate());
}

TEST(aio_ostreamFailure, FullDiskSetsFailureAndError) {
  const int fds = aio_test::OpenFdCount();
  for (const auto& op : AllOutputs()) {
    FILE* full = std::fopen("/dev/full", "w");
    ASSERT_NE(nullptr, full);
    std::setvbuf(full, nullptr, _IONBF, 0);  // every write reaches the device
    aio_ostream out;
    out.attach(full, true);
    op.second(out);
    EXPECT_EQ(aio_ios::failbit | aio_ios::badbit, out.rdstate()) << op.first;
  }
  {
    // Buffered: the failure shows when the buffer is flushed, and close reports it.
    aio_ostream out;
    out.attach(std::fopen("/dev/full", "w"), true);
    out.print("buffered");
    EXPECT_EQ(0, out.rdstate());
    out.flush();
    EXPECT_EQ(aio_ios::failbit | aio_ios::badbit, out.rdstate());
    out.print("again");
    EXPECT_TRUE(out.close());
  }
  EXPECT_EQ(fds, aio_test::OpenFdCount());
}

TEST(aio_ostreamFailure, RejectedArguments) {
  int state = 0;
  EXPECT_EQ("", Output([](aio_ostream& o) { o.write("abc", -1); }, &state));
  EXPECT_EQ(aio_ios::failbit, state);
  EXPECT_EQ("", Output([](aio_ostream& o) { o.print(nullptr); }, &state));
  EXPECT_EQ(aio_ios::failbit, state);
  EXPECT_EQ("", Output([](aio_ostream& o) { o.write("abc", 0); }, &state));
  EXPECT_EQ(0, state);
}

TEST(aio_ostreamCopy, CopiesEveryBlockAndFlushes) {
  std::string data;
  for (int i = 0; i < 40000; ++i) data += static_cast<char>('a' + i % 26);
  data[100] = '\0';
  FILE* source = aio_test::FileWith(data);
  aio_istream in;
  in.attach(source, true);
  FILE* sink = std::tmpfile();
  aio_ostream out;
  out.attach(sink, true);
  out.copy(in);
  EXPECT_EQ(0, out.rdstate());
  EXPECT_EQ(aio_ios::failbit | aio_ios::eofbit, in.rdstate());
  // The copy was flushed: the descriptor sees every byte.
  EXPECT_EQ(static_cast<long>(data.size()), lseek(fileno(sink), 0, SEEK_CUR));
  EXPECT_EQ(data, aio_test::Contents(sink));
}

TEST(aio_ostreamCopy, FailuresOnEitherSide) {
  {
    // Output on a full disk: the input is still read to its end.
    aio_istream in;
    in.attach(aio_test::FileWith(std::string(50000, 'x')), true);
    aio_ostream out;
    out.attach(std::fopen("/dev/full", "w"), true);
    out.copy(in);
    EXPECT_EQ(aio_ios::failbit | aio_ios::badbit, out.rdstate());
    EXPECT_EQ(-1, in.get());
  }
  {
    // Output without a file.
    aio_istream in;
    in.attach(aio_test::FileWith("abc"), true);
    aio_ostream out;
    out.copy(in);
    EXPECT_EQ(aio_ios::failbit, out.rdstate());
    EXPECT_EQ(aio_ios::failbit | aio_ios::eofbit, in.rdstate());
  }
  {
    // Input without a file, or already failed: nothing is read or written.
    aio_istream none;
    aio_istream failed;
    failed.attach(aio_test::FileWith("abc"), true);
    failed.clear(aio_ios::failbit);
    EXPECT_EQ("", Output([&](aio_ostream& o) { o.copy(none).copy(failed); }));
    EXPECT_EQ('a', failed.get());
  }
}

TEST(aio_ostreamAdopt, OwnsTheDescriptorItOpened) {
  const int fds = aio_test::OpenFdCount();
  int pipeFds[2];
  ASSERT_EQ(0, pipe(pipeFds));
  {
    aio_ostream out;
    out.adopt(pipeFds[1]);
    EXPECT_TRUE(out.owned());
    EXPECT_EQ(pipeFds[1], out.fd());
    out.print("via pipe").flush();
    EXPECT_EQ(0, out.rdstate());
  }
  char buf[16] = {};
  EXPECT_EQ(8, ::read(pipeFds[0], buf, sizeof buf));  // the writer end is closed: no hang
  EXPECT_EQ(0, ::read(pipeFds[0], buf, sizeof buf));
  EXPECT_STREQ("via pipe", buf);
  ::close(pipeFds[0]);

  aio_ostream bad;
  bad.adopt(-1);
  EXPECT_EQ(nullptr, bad.fptr());
  EXPECT_FALSE(bad.owned());
  EXPECT_EQ(aio_ios::failbit, bad.rdstate());
  EXPECT_EQ(fds, aio_test::OpenFdCount());
}

}  // namespace
