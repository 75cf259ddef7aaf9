// The copy-on-write byte string against std::string: copying a 100-byte string, appending one
// byte at a time up to 200 bytes, taking a sub-string and searching.
#include "KLDTPXBasCoreUtils.h"

#include <benchmark/benchmark.h>
#include <string>

namespace {

const std::string kHundred(100, 'h');

// A text of about size bytes with "needle" at its end. With frequentFirstByte the text is full
// of the needle's first byte, so that a search cannot skip straight to the end.
std::string Haystack(bool frequentFirstByte, std::size_t size) {
  const std::string filler =
      frequentFirstByte ? "element node number " : "lorem ipsum dolor sit amet, ";
  std::string text;
  while (text.size() + filler.size() + 6 <= size) text += filler;
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

// Arguments: whether the needle's first byte is frequent, and the haystack's size (a short
// name, or about 1 KB).
void FindArguments(benchmark::internal::Benchmark* b) {
  b->ArgNames({"frequentFirstByte", "size"});
  for (int frequent : {0, 1})
    for (int size : {32, 1024}) b->Args({frequent, size});
}

void BM_Find_atr(benchmark::State& state) {
  const std::string source = Haystack(state.range(0) != 0, std::size_t(state.range(1)));
  const atr_String text = atr_MakeAtrString(source.c_str());
  for (auto _ : state) benchmark::DoNotOptimize(text.Find("needle", 0));
}
BENCHMARK(BM_Find_atr)->Apply(FindArguments);

void BM_Find_std(benchmark::State& state) {
  const std::string text = Haystack(state.range(0) != 0, std::size_t(state.range(1)));
  for (auto _ : state) benchmark::DoNotOptimize(text.find("needle", 0));
}
BENCHMARK(BM_Find_std)->Apply(FindArguments);

}  // namespace

BENCHMARK_MAIN();
