// Tests of the output stream: formatting rules, one-shot width, failures and copying.
#include "aio_ostream.h"

#include "aio_TestSupport.h"
#include "aio_istream.h"
#include "aio_manip.h"

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

void ExpectRows(const std::vector<std::tuple<const char*, Writer, std::string>>& rows) {
  for (const auto& [name, write, expected] : rows) {
    int state = -1;
    EXPECT_EQ(expected, Output(write, &state)) << name;
    EXPECT_EQ(0, state) << name;
  }
}

// flags, precision and an optional one-shot width, then the writer's output.
Writer With(int flags, int precision, int width, const Writer& print) {
  return [=](aio_ostream& o) {
    o.setf(flags, 0);
    o.setprecision(precision);
    if (width != 0) o.setwidth(width, false);
    print(o);
  };
}
Writer Fmt(int flags, int precision, double d, int width = 0) {
  return With(flags, precision, width, [d](aio_ostream& o) { o.print_double(d); });
}

TEST(aio_ostreamFormat, DoublesAndNegativeZero) {
  const int fixed = aio_ios::fixed, sci = aio_ios::scientific, left = aio_ios::left;
  const int point = aio_ios::showpoint;
  ExpectRows({
      {"default 3.5", Fmt(0, 6, 3.5), "3.5"},
      {"default 1e20", Fmt(0, 6, 1.0e20), "1e+20"},
      {"default -0.0", Fmt(0, 6, -0.0), "0"},
      {"fixed -0.001 p2", Fmt(fixed, 2, -0.001), "0.00"},
      {"fixed -0.001 p2 w8", Fmt(fixed, 2, -0.001, 8), "    0.00"},
      {"fixed -0.001 p2 w8 left", Fmt(fixed | left, 2, -0.001, 8), " 0.00   "},
      {"fixed -0.005 p3 is not zero", Fmt(fixed, 3, -0.005), "-0.005"},
      {"fixed -10 p0 keeps its sign", Fmt(fixed, 0, -10.0), "-10"},
      {"scientific -0.0", Fmt(sci, 2, -0.0), "0.00e+00"},
      {"general -0.0001", Fmt(0, 6, -0.0001), "-0.0001"},
      {"both float bits mean general", Fmt(fixed | sci, 6, 1.0e20), "1e+20"},
      {"showpoint p0 fixed", Fmt(fixed | point, 0, 3.0), "3."},
      {"showpoint only with p0", Fmt(point, 1, 3.0), "3"},
      {"-inf stays", Fmt(0, 6, -HUGE_VAL), "-inf"},
      {"width left", Fmt(left, 6, 2.5, 6), "2.5   "},
      // Longer than the 1024-byte formatting buffer: written whole.
      {"wide field", Fmt(0, 6, 1.5, 2000), std::string(1997, ' ') + "1.5"},
      {"long negative zero", Fmt(fixed, 1500, -0.0), "0." + std::string(1500, '0')},
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
    const std::string conv = base == aio_ios::oct ? "o" : base == aio_ios::hex ? "x" : "";
    const std::string pct = leftAdjust ? "%-*" : "%*", s = conv.empty() ? "d" : conv,
                      u = conv.empty() ? "u" : conv;
    char text[5][64];
    std::snprintf(text[0], 64, (pct + s).c_str(), width, static_cast<int>(bits));
    std::snprintf(text[1], 64, (pct + u).c_str(), width, static_cast<unsigned>(bits));
    std::snprintf(text[2], 64, (pct + "ll" + s).c_str(), width, static_cast<long long>(bits));
    std::snprintf(text[3], 64, (pct + "ll" + u).c_str(), width, bits);
    std::snprintf(text[4], 64, leftAdjust ? "%#-*llx" : "%#*llx", width, bits);
    const Writer prints[5] = {
        [&](aio_ostream& o) { o.print_int(static_cast<int>(bits)); },
        [&](aio_ostream& o) { o.print_u_int(static_cast<unsigned>(bits)); },
        [&](aio_ostream& o) { o.print_int64(static_cast<long long>(bits)); },
        [&](aio_ostream& o) { o.print_u_int64(bits); },
        [&](aio_ostream& o) { o.print_address(reinterpret_cast<const void*>(bits)); }};
    for (int i = 0; i < 5; ++i)
      EXPECT_EQ(text[i], Output(With(base | (leftAdjust ? aio_ios::left : 0), 6, width, prints[i])))
          << "print " << i << " of " << bits << " width " << width << " base " << base;
  }
}

TEST(aio_ostreamFormat, NamedCasesTextsAndCharacters) {
  auto addr = [](unsigned long long a) {
    return [a](aio_ostream& o) { o.print_address(reinterpret_cast<const void*>(a)); };
  };
  auto text = [](const char* s) { return [s](aio_ostream& o) { o.print(s); }; };
  auto chr = [](char c) { return [c](aio_ostream& o) { o.put(c); }; };
  ExpectRows({
      {"both adjust bits pad left",
       With(aio_ios::adjustfield, 6, 5, [](aio_ostream& o) { o.print_int(42); }), "   42"},
      {"null address", addr(0), "0"},
      {"small address", addr(0x1234), "0x1234"},
      {"address ignores the base bits", With(aio_ios::oct, 6, 0, addr(8)), "0x8"},
      {"text left 4", With(aio_ios::left, 6, 4, text("ab")), "ab  "},
      {"char width 3", With(0, 6, 3, chr('x')), "  x"},
      {"byte 0xFF", chr('\xff'), "\xff"},
      {"write with NUL", [](aio_ostream& o) { o.write("a\0b", 3); }, std::string("a\0b", 3)},
  });
}

TEST(aio_ostreamWidth, OneShotAndKeptWidths) {
  ExpectRows({
      {"one-shot width pads the first output only",
       [](aio_ostream& o) { aio_setwidth(o, 5).print_int(42).print_int(7); }, "   427"},
      {"kept width pads every output",
       [](aio_ostream& o) {
         static_cast<aio_ostream&>(o.setwidth(5, true)).print_int(42).print_int(7);
       },
       "   42    7"},
      {"newline ignores the width and leaves it in force",
       [](aio_ostream& o) { aio_setwidth(o, 5).put('\n').print_int(7).print_int(8); }, "\n    78"},
      {"one-shot width used by a double",
       [](aio_ostream& o) { aio_setwidth(o, 4).print_double(1.5).print_double(2.5); }, " 1.52.5"},
      {"one-shot width used by a text",
       [](aio_ostream& o) { aio_setwidth(o, 3).print("a").print("b"); }, "  ab"},
      {"write leaves a one-shot width in force",
       [](aio_ostream& o) { aio_setwidth(o, 3).write("w", 1).print_int(1).print_int(2); }, "w  12"},
  });
}

// Every output operation, for the failure tables below.
const std::vector<std::pair<const char*, Writer>>& AllOutputs() {
  static const std::vector<std::pair<const char*, Writer>> ops = {
      {"put", [](aio_ostream& o) { o.put('x'); }},
      {"put newline", [](aio_ostream& o) { o.put('\n'); }},
      {"print", [](aio_ostream& o) { o.print("text"); }},
      {"print width", [](aio_ostream& o) { aio_setwidth(o, 9).print("text"); }},
      {"print_int", [](aio_ostream& o) { o.print_int(1); }},
      {"print_int width", [](aio_ostream& o) { aio_setwidth(o, 9).print_int(1); }},
      {"print_u_int64", [](aio_ostream& o) { o.print_u_int64(1); }},
      {"print_address", [](aio_ostream& o) { o.print_address(&o); }},
      {"print_double", [](aio_ostream& o) { o.print_double(1.5); }},
      {"print_double width", [](aio_ostream& o) { aio_setwidth(o, 9).print_double(-0.0); }},
      {"write", [](aio_ostream& o) { o.write("abc", 3); }},
  };
  return ops;
}

TEST(aio_ostreamFailure, UnattachedStreamAndFullDisk) {
  const int fds = aio_test::OpenFdCount();
  for (const auto& [name, op] : AllOutputs()) {
    aio_ostream none;
    op(none);
    EXPECT_EQ(aio_ios::failbit, none.rdstate()) << name;

    FILE* full = std::fopen("/dev/full", "w");
    std::setvbuf(full, nullptr, _IONBF, 0);  // every write reaches the device
    aio_ostream out;
    out.attach(full, true);
    op(out);
    EXPECT_EQ(aio_ios::failbit | aio_ios::badbit, out.rdstate()) << name;
  }
  aio_ostream none;
  none.flush();
  EXPECT_EQ(aio_ios::failbit, none.rdstate());
  // Buffered: the failure shows when the buffer is flushed, and close reports it.
  aio_ostream out;
  out.attach(std::fopen("/dev/full", "w"), true);
  out.print("buffered");
  EXPECT_EQ(0, out.rdstate());
  out.flush();
  EXPECT_EQ(aio_ios::failbit | aio_ios::badbit, out.rdstate());
  EXPECT_EQ(fds + 1, aio_test::OpenFdCount());

  int state = 0;
  EXPECT_EQ("", Output([](aio_ostream& o) { o.write("abc", -1).print(nullptr); }, &state));
  EXPECT_EQ(aio_ios::failbit, state);
}

TEST(aio_ostreamCopy, CopiesEveryBlockAndFlushes) {
  std::string data;
  for (int i = 0; i < 40000; ++i) data += static_cast<char>('a' + i % 26);
  data[100] = '\0';
  aio_istream in;
  in.attach(aio_test::FileWith(data), true);
  FILE* sink = std::tmpfile();
  aio_ostream out;
  out.attach(sink, true);
  out.copy(in);
  EXPECT_EQ(0, out.rdstate());
  EXPECT_EQ(aio_ios::failbit | aio_ios::eofbit, in.rdstate());
  // Flushed: the descriptor has seen every byte.
  EXPECT_EQ(static_cast<long>(data.size()), lseek(fileno(sink), 0, SEEK_CUR));
  EXPECT_EQ(data, aio_test::Contents(sink));

  // Output on a full disk, or without a file: the input is still read to its end.
  for (FILE* bad : {std::fopen("/dev/full", "w"), static_cast<FILE*>(nullptr)}) {
    aio_istream source;
    source.attach(aio_test::FileWith(data), true);
    aio_ostream failing;
    failing.attach(bad, true);
    failing.copy(source);
    EXPECT_EQ(bad ? aio_ios::failbit | aio_ios::badbit : aio_ios::failbit, failing.rdstate());
    EXPECT_EQ(aio_ios::failbit | aio_ios::eofbit, source.rdstate());
  }
}

}  // namespace
