// The copy-on-write byte string against std::string: copying a 100-byte string, appending one
// byte at a time up to 200 bytes, taking a sub-string and searching.
#include "KLDTPXBasCoreUtils.h"

#include <benchmark/benchmark.h>
#include <string>

namespace {

const std::string kHundred(100, 'h');

// About 1 KB of text with "needle" at its end. With frequentFirstByte the text is full of the
// needle's first byte, so that a search cannot skip straight to the end.
std::string Haystack(bool frequentFirstByte) {
  std::string text;
  while (text.size() < 1000)
    text += frequentFirstByte ? "element node number " : "lorem ipsum dolor sit amet, ";
  return text + "needle";
}

void BM_Copy100_atr(benchmark::State& state) {
  const atr_String source = atr_MakeAtrString(kHundred.c_str());
  mem_Testing::FailAllocationsAfter(0);  // copying must not allocate: it would throw here
  for (auto _ : state) {
    atr_String copy = source;
    benchmark::DoNotOptimize(copy);
  }
  mem_Testing::FailAllocationsAfter(-1);
  state.counters["allocations_refused"] = 1;
  state.counters["sizeof"] = sizeof(atr_String);
}
BENCHMARK(BM_Copy100_atr);

void BM_Copy100_std(benchmark::State& state) {
  const std::string source = kHundred;
  for (auto _ : state) {
    std::string copy = source;
    benchmark::DoNotOptimize(copy);
  }
  state.counters["sizeof"] = sizeof(std::string);
}
BENCHMARK(BM_Copy100_std);

void BM_AppendTo200_atr(benchmark::State& state) {
  const atr_String one = atr_MakeAtrString("x");
  for (auto _ : state) {
    atr_String s;
    for (int i = 0; i < 200; ++i) s.Append(one);
    benchmark::DoNotOptimize(s);
  }
}
BENCHMARK(BM_AppendTo200_atr);

void BM_AppendTo200_std(benchmark::State& state) {
  const std::string one = "x";
  for (auto _ : state) {
    std::string s;
    for (int i = 0; i < 200; ++i) s.append(one);
    benchmark::DoNotOptimize(s);
  }
}
BENCHMARK(BM_AppendTo200_std);

void BM_Substr_atr(benchmark::State& state) {
  const atr_String source = atr_MakeAtrString(kHundred.c_str());
  for (auto _ : state) {
    atr_String part = source.Substr(20, 40);
    benchmark::DoNotOptimize(part);
  }
}
BENCHMARK(BM_Substr_atr);

void BM_Substr_std(benchmark::State& state) {
  const std::string source = kHundred;
  for (auto _ : state) {
    std::string part = source.substr(20, 40);
    benchmark::DoNotOptimize(part);
  }
}
BENCHMARK(BM_Substr_std);

void BM_Find_atr(benchmark::State& state) {
  const atr_String text = atr_MakeAtrString(Haystack(state.range(0) != 0).c_str());
  for (auto _ : state) benchmark::DoNotOptimize(text.Find("needle", 0));
}
BENCHMARK(BM_Find_atr)->ArgName("frequentFirstByte")->Arg(0)->Arg(1);

void BM_Find_std(benchmark::State& state) {
  const std::string text = Haystack(state.range(0) != 0);
  for (auto _ : state) benchmark::DoNotOptimize(text.find("needle", 0));
}
BENCHMARK(BM_Find_std)->ArgName("frequentFirstByte")->Arg(0)->Arg(1);

}  // namespace

BENCHMARK_MAIN();
