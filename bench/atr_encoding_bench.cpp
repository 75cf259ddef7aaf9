// UTF-8 validation, Latin-1 to UTF-8 and UTF-8 to UCS-4 against glibc iconv on the same 1 MB
// texts. iconv decodes UTF-8 to UCS-4 (the work a validating decoder must do at least) and
// converts ISO-8859-1 to UTF-8; the library validates in place, converts measure-then-write
// and decodes into a block of one code point per byte. The library's benchmarks take the path
// as their last argument: -1 the one chosen for this processor, 0 plain words, 1 SSE2, 2 AVX2.
#include "../TPXBase/TPXBasAtr.m/src/atr_utf8Simd.h"
#include "KLDTPXBasCoreUtils.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstring>
#include <iconv.h>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kTextBytes = 1 << 20;

// Prose-like ASCII: words of 2 to 9 letters, blanks, some punctuation and line ends.
std::string AsciiText() {
  std::string s;
  std::uint32_t seed = 12345;
  auto next = [&seed] { return seed = seed * 1103515245u + 12345u, seed >> 8; };
  while (s.size() < kTextBytes) {
    std::size_t word = 2 + next() % 8;
    for (std::size_t i = 0; i < word; ++i) s += static_cast<char>('a' + next() % 26);
    s += (next() % 12 == 0) ? ".\n" : " ";
  }
  s.resize(kTextBytes);
  return s;
}

// About 30% of the characters multi-byte: accented Latin, Cyrillic, Greek, CJK and a few
// four-byte characters, mixed into ASCII words.
std::string MixedText() {
  static const char* const kMulti[] = {
      "\xC3\xA9", "\xC3\xBC",     "\xD0\x96",     "\xD0\xBB",     "\xCE\xB1",
      "\xCE\xA9", "\xE2\x82\xAC", "\xE4\xB8\xAD", "\xE6\x96\x87", "\xF0\x9F\x98\x80"};
  std::string s;
  std::uint32_t seed = 777;
  auto next = [&seed] { return seed = seed * 1103515245u + 12345u, seed >> 8; };
  while (s.size() < kTextBytes - 8) {
    if (next() % 10 < 3)
      s += kMulti[next() % 10];
    else
      s += (next() % 7 == 0) ? ' ' : static_cast<char>('a' + next() % 26);
  }
  return s;
}

// Latin-1 prose with accented letters (about 5%) and no control bytes.
std::string Latin1Text() {
  std::string s = AsciiText();
  std::uint32_t seed = 99;
  for (char& c : s) {
    seed = seed * 1103515245u + 12345u;
    if (c != ' ' && c != '\n' && (seed >> 8) % 20 == 0)
      c = static_cast<char>(0xC0 + (seed >> 16) % 64);
  }
  return s;
}

const std::string& Text(int which) {
  static const std::string ascii = AsciiText();
  static const std::string mixed = MixedText();
  static const std::string latin1 = Latin1Text();
  return which == 0 ? ascii : which == 1 ? mixed : latin1;
}

// Runs the library on the path of the benchmark's last argument while it lives.
class UsePath {
 public:
  UsePath(benchmark::State& state, int arg)
      : m_ok(atr_utf8_simd_use(static_cast<int>(state.range(arg)))) {
    if (!m_ok) state.SkipWithError("this processor cannot run the path");
  }
  ~UsePath() { atr_utf8_simd_use(atr_Utf8SimdBest); }
  bool ok() const { return m_ok; }

 private:
  bool m_ok;
};

void BM_Utf8Validate_atr(benchmark::State& state) {
  const std::string& text = Text(static_cast<int>(state.range(0)));
  const UsePath path(state, 1);
  if (!path.ok()) return;
  for (auto _ : state) {
    bool ok =
        atr_encoding_validate_sized(atr_EncodingUtf8, text.data(), static_cast<int>(text.size()));
    benchmark::DoNotOptimize(ok);
    if (!ok) state.SkipWithError("text does not validate");
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

// iconv with a reused descriptor and output buffer: the fastest way a caller can use it.
void RunIconv(benchmark::State& state, const char* to, const char* from, const std::string& text,
              std::size_t outFactor) {
  iconv_t cd = iconv_open(to, from);
  if (cd == reinterpret_cast<iconv_t>(-1)) {
    state.SkipWithError("iconv_open failed");
    return;
  }
  std::vector<char> out(text.size() * outFactor + 16);
  for (auto _ : state) {
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    char* in = const_cast<char*>(text.data());
    std::size_t inLeft = text.size();
    char* o = out.data();
    std::size_t outLeft = out.size();
    std::size_t r = iconv(cd, &in, &inLeft, &o, &outLeft);
    benchmark::DoNotOptimize(r);
    benchmark::DoNotOptimize(o);
    if (r == static_cast<std::size_t>(-1) || inLeft != 0) state.SkipWithError("iconv failed");
  }
  iconv_close(cd);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void BM_Utf8Validate_iconv(benchmark::State& state) {
  RunIconv(state, "UCS-4LE", "UTF-8", Text(static_cast<int>(state.range(0))), 4);
}

void BM_Latin1ToUtf8_atr(benchmark::State& state) {
  const std::string& text = Text(2);
  const UsePath path(state, 0);
  if (!path.ok()) return;
  std::vector<char> out(text.size() * 2 + 1);
  for (auto _ : state) {
    // What a caller does: measure, then convert into a block of that size.
    int n = atr_utf8_from_encoding_sized(static_cast<char*>(nullptr), atr_EncodingLatin1,
                                         text.data(), static_cast<int>(text.size()), true);
    int w = atr_utf8_from_encoding_sized(out.data(), atr_EncodingLatin1, text.data(),
                                         static_cast<int>(text.size()), true);
    benchmark::DoNotOptimize(n);
    benchmark::DoNotOptimize(w);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void BM_Latin1ToUtf8_iconv(benchmark::State& state) {
  RunIconv(state, "UTF-8", "ISO-8859-1", Text(2), 2);
}

// A whole text to code points: one 32-bit value per character, in a block sized by the byte
// count (which always suffices), so no measuring pass is needed.
void BM_Utf8ToUcs4_atr(benchmark::State& state) {
  const std::string& text = Text(static_cast<int>(state.range(0)));
  const UsePath path(state, 1);
  if (!path.ok()) return;
  std::vector<unsigned int> out(text.size());
  const unsigned char* in = reinterpret_cast<const unsigned char*>(text.data());
  for (auto _ : state) {
    int n = atr_utf8_to_ucs4_sized(out.data(), in, static_cast<int>(text.size()));
    benchmark::DoNotOptimize(n);
    benchmark::ClobberMemory();
    if (n < 0) state.SkipWithError("text does not decode");
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void BM_Utf8ToUcs4_iconv(benchmark::State& state) {
  RunIconv(state, "UCS-4LE", "UTF-8", Text(static_cast<int>(state.range(0))), 4);
}

void BM_Utf8ToWcharT_iconv(benchmark::State& state) {
  RunIconv(state, "WCHAR_T", "UTF-8", Text(static_cast<int>(state.range(0))), 4);
}

// Text argument: 0 ASCII, 1 mixed (~30% multi-byte characters).
BENCHMARK(BM_Utf8Validate_atr)->ArgsProduct({{0, 1}, {-1, 0, 1, 2}});
BENCHMARK(BM_Utf8Validate_iconv)->Arg(0)->Arg(1);
BENCHMARK(BM_Latin1ToUtf8_atr)->Arg(-1)->Arg(0)->Arg(1)->Arg(2);
BENCHMARK(BM_Latin1ToUtf8_iconv);
BENCHMARK(BM_Utf8ToUcs4_atr)->ArgsProduct({{0, 1}, {-1, 0, 1, 2}});
BENCHMARK(BM_Utf8ToUcs4_iconv)->Arg(0)->Arg(1);
BENCHMARK(BM_Utf8ToWcharT_iconv)->Arg(0)->Arg(1);

}  // namespace

BENCHMARK_MAIN();
