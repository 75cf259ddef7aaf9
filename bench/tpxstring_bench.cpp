// tpxstring_bench.cpp: character-indexed queries of TPXString on ASCII and mixed text (with the
// character index: its first access, which builds it, and repeated access), next to ICU's
// UTF-8 walks on the same bytes; and its UTF-16 conversion next to ICU's u_strFromUTF8.
#include "KLDTPXBasCoreUtils.h"

#include <benchmark/benchmark.h>
#include <string>
#include <unicode/ustring.h>
#include <unicode/utf8.h>
#include <vector>

namespace {

// Mixed text: mostly ASCII words with accented letters, symbols and an emoji now and then.
std::string MakeText(std::size_t bytes, bool mixed) {
  static const char* const kMixed[] = {"alpha ",
                                       "caf\xC3\xA9 ",
                                       "beta ",
                                       "\xE2\x82\xAC"
                                       "12 ",
                                       "gamma ",
                                       "\xF0\x9F\x98\x80 ",
                                       "delta "};
  static const char* const kAscii[] = {"alpha ", "beta ", "gamma ", "delta "};
  std::string text;
  for (std::size_t i = 0; text.size() < bytes; ++i) text += mixed ? kMixed[i % 7] : kAscii[i % 4];
  // Cut on a character boundary.
  while (text.size() > bytes) text.pop_back();
  while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0) == 0x80) text.pop_back();
  if (!text.empty() && static_cast<unsigned char>(text.back()) >= 0xC0) text.pop_back();
  return text;
}

TPXString MakeString(std::size_t bytes, bool mixed) {
  const std::string text = MakeText(bytes, mixed);
  TPXString s;
  s.BuildFromUTF8(text.data(), static_cast<unsigned>(text.size()));
  return s;
}

constexpr std::size_t kMegabyte = 1 << 20;

void BM_LengthInChar(benchmark::State& state) {
  const TPXString s = MakeString(kMegabyte, state.range(0) != 0);
  for (auto _ : state) benchmark::DoNotOptimize(s.GetLengthInChar());
  state.SetBytesProcessed(static_cast<long>(state.iterations()) * s.GetLengthInByte());
  state.SetLabel(s.IsAscii() ? "ascii" : "mixed");
}
BENCHMARK(BM_LengthInChar)->Arg(0)->Arg(1);

// The last character: constant time for ASCII text whatever its size, a walk for mixed text.
void BM_IndexLast(benchmark::State& state) {
  const bool mixed = state.range(1) != 0;
  const TPXString s = MakeString(static_cast<std::size_t>(state.range(0)), mixed);
  const unsigned last = static_cast<unsigned>(s.GetLengthInChar() - 1);
  for (auto _ : state) benchmark::DoNotOptimize(s[last]);
  state.SetLabel(mixed ? "mixed" : "ascii");
}
BENCHMARK(BM_IndexLast)->ArgsProduct({benchmark::CreateRange(1 << 10, 1 << 20, 8), {0}});
BENCHMARK(BM_IndexLast)->ArgsProduct({benchmark::CreateRange(1 << 10, 1 << 20, 8), {1}});

// The last character of a fresh representation each time: the first access builds the index
// (for mixed text), as after any change of the text. The copy is made outside the timing.
void BM_IndexLastFirstAccess(benchmark::State& state) {
  const bool mixed = state.range(0) != 0;
  const std::string text = MakeText(kMegabyte, mixed);
  const unsigned last = static_cast<unsigned>(MakeString(kMegabyte, mixed).GetLengthInChar() - 1);
  for (auto _ : state) {
    state.PauseTiming();
    TPXString s;
    s.BuildFromUTF8(text.data(), static_cast<unsigned>(text.size()));
    state.ResumeTiming();
    benchmark::DoNotOptimize(s[last]);
  }
  state.SetLabel(mixed ? "mixed" : "ascii");
}
BENCHMARK(BM_IndexLastFirstAccess)->Arg(0)->Arg(1);

// Comparator: ICU's walk to the same character on the same bytes (what an unindexed string
// pays on every access).
void BM_IndexLast_IcuFwdN(benchmark::State& state) {
  const bool mixed = state.range(0) != 0;
  const std::string text = MakeText(kMegabyte, mixed);
  const int32_t last = MakeString(kMegabyte, mixed).GetLengthInChar() - 1;
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  const auto length = static_cast<int32_t>(text.size());
  for (auto _ : state) {
    int32_t i = 0;
    U8_FWD_N(bytes, i, length, last);
    UChar32 c;
    U8_NEXT(bytes, i, length, c);
    benchmark::DoNotOptimize(c);
  }
  state.SetLabel(mixed ? "mixed" : "ascii");
}
BENCHMARK(BM_IndexLast_IcuFwdN)->Arg(0)->Arg(1);

// Iteration from a position: the 16 characters from 1000 before the end.
void BM_IterateFromPosition(benchmark::State& state) {
  const bool mixed = state.range(0) != 0;
  const TPXString s = MakeString(kMegabyte, mixed);
  const int from = s.GetLengthInChar() - 1000;
  for (auto _ : state) {
    int sum = 0;
    TPXStringiterator it = s.Begin() + from;
    for (int k = 0; k < 16; ++k, ++it) sum += it.CodeAsUTF32();
    benchmark::DoNotOptimize(sum);
  }
  state.SetLabel(mixed ? "mixed" : "ascii");
}
BENCHMARK(BM_IterateFromPosition)->Arg(0)->Arg(1);

void BM_IterateFromPosition_IcuFwdN(benchmark::State& state) {
  const bool mixed = state.range(0) != 0;
  const std::string text = MakeText(kMegabyte, mixed);
  const int32_t from = MakeString(kMegabyte, mixed).GetLengthInChar() - 1000;
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  const auto length = static_cast<int32_t>(text.size());
  for (auto _ : state) {
    int sum = 0;
    int32_t i = 0;
    U8_FWD_N(bytes, i, length, from);
    for (int k = 0; k < 16; ++k) {
      UChar32 c;
      U8_NEXT(bytes, i, length, c);
      sum += c;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetLabel(mixed ? "mixed" : "ascii");
}
BENCHMARK(BM_IterateFromPosition_IcuFwdN)->Arg(0)->Arg(1);

// A search that starts 1000 characters before the end of 1 MB: the start is found through the
// index, and only the rest of the text is scanned.
void BM_FindPositionNearEnd(benchmark::State& state) {
  const bool mixed = state.range(0) != 0;
  TPXString s = MakeString(kMegabyte, mixed);
  s += "needle";
  const TPXString pattern("needle");
  const int from = s.GetLengthInChar() - 1000;
  for (auto _ : state) benchmark::DoNotOptimize(s.FindPosition(pattern, from));
  state.SetLabel(mixed ? "mixed" : "ascii");
}
BENCHMARK(BM_FindPositionNearEnd)->Arg(0)->Arg(1);

// Comparator: ICU's walk to the start, std::string::find, and a count of the characters up to
// the match.
void BM_FindPositionNearEnd_IcuStd(benchmark::State& state) {
  const bool mixed = state.range(0) != 0;
  const std::string text = MakeText(kMegabyte, mixed) + "needle";
  const TPXString s(text.c_str());
  const int32_t from = s.GetLengthInChar() - 1000;
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  const auto length = static_cast<int32_t>(text.size());
  for (auto _ : state) {
    int32_t i = 0;
    U8_FWD_N(bytes, i, length, from);
    const std::size_t at = text.find("needle", static_cast<std::size_t>(i));
    int32_t index = from;
    for (auto k = static_cast<std::size_t>(i); k < at; ++k) index += (bytes[k] & 0xC0) != 0x80;
    benchmark::DoNotOptimize(index);
  }
  state.SetLabel(mixed ? "mixed" : "ascii");
}
BENCHMARK(BM_FindPositionNearEnd_IcuStd)->Arg(0)->Arg(1);

void BM_FindPosition(benchmark::State& state) {
  const bool mixed = state.range(0) != 0;
  TPXString s = MakeString(kMegabyte, mixed);
  s += mixed ? "n\xC3\xA9\xC3\xA9"
               "dle"
             : "needle";  // only at the very end
  const TPXString pattern(mixed ? "n\xC3\xA9\xC3\xA9"
                                  "dle"
                                : "needle");
  for (auto _ : state) benchmark::DoNotOptimize(s.FindPosition(pattern, 0));
  state.SetBytesProcessed(static_cast<long>(state.iterations()) * s.GetLengthInByte());
  state.SetLabel(mixed ? "mixed" : "ascii");
}
BENCHMARK(BM_FindPosition)->Arg(0)->Arg(1);

void BM_ConvertToUTF16_TPXString(benchmark::State& state) {
  const TPXString s = MakeString(kMegabyte, state.range(0) != 0);
  std::vector<unsigned short> out(static_cast<std::size_t>(s.GetLengthInByte()) + 1);
  for (auto _ : state) {
    unsigned count = 0;
    s.ConvertToUTF16(out.data(), &count);
    benchmark::DoNotOptimize(count);
  }
  state.SetBytesProcessed(static_cast<long>(state.iterations()) * s.GetLengthInByte());
  state.SetLabel(state.range(0) ? "mixed" : "ascii");
}
BENCHMARK(BM_ConvertToUTF16_TPXString)->Arg(0)->Arg(1);

void BM_ConvertToUTF16_IcuFromUTF8(benchmark::State& state) {
  const std::string text = MakeText(kMegabyte, state.range(0) != 0);
  std::vector<UChar> out(text.size() + 1);
  for (auto _ : state) {
    int32_t count = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(out.data(), static_cast<int32_t>(out.size()), &count, text.data(),
                  static_cast<int32_t>(text.size()), &status);
    benchmark::DoNotOptimize(count);
  }
  state.SetBytesProcessed(static_cast<long>(state.iterations()) * static_cast<long>(text.size()));
  state.SetLabel(state.range(0) ? "mixed" : "ascii");
}
BENCHMARK(BM_ConvertToUTF16_IcuFromUTF8)->Arg(0)->Arg(1);

}  // namespace
BENCHMARK_MAIN();
