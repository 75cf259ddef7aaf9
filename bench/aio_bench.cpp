// aio_bench: formatted output of the library's streams beside fprintf and std::ofstream, and
// the string stream beside std::ostringstream.
#include "aio_ostream.h"
#include "aio_strstream.h"
#include "mem_Alloc.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <stdlib.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

// Every writer formats into the same sink, so the figures compare the formatting paths.
constexpr const char* kSink = "/dev/null";
constexpr int kValues = 1024;

const std::vector<int>& Ints() {
  static const std::vector<int> values = [] {
    std::mt19937 gen(42);
    std::vector<int> v(kValues);
    for (int& x : v) x = static_cast<int>(gen()) >> (gen() % 31);  // every magnitude
    return v;
  }();
  return values;
}

const std::vector<double>& Doubles() {
  static const std::vector<double> values = [] {
    std::mt19937 gen(7);
    std::uniform_real_distribution<double> mantissa(-10.0, 10.0);
    std::vector<double> v(kValues);
    int e = -20;
    for (double& x : v) x = mantissa(gen) * std::pow(10.0, (e++ % 40));
    return v;
  }();
  return values;
}

void BM_PrintInt_aio_ostream(benchmark::State& state) {
  aio_ostream out;
  out.attach(std::fopen(kSink, "w"), true);
  const std::vector<int>& v = Ints();
  size_t i = 0;
  for (auto _ : state) out.print_int(v[i++ % kValues]).put(' ');
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_PrintInt_aio_ostream);

void BM_PrintInt_fprintf(benchmark::State& state) {
  FILE* f = std::fopen(kSink, "w");
  const std::vector<int>& v = Ints();
  size_t i = 0;
  for (auto _ : state) {
    std::fprintf(f, "%d", v[i++ % kValues]);
    std::fputc(' ', f);
  }
  std::fclose(f);
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_PrintInt_fprintf);

void BM_PrintInt_std_ofstream(benchmark::State& state) {
  std::ofstream out(kSink);
  const std::vector<int>& v = Ints();
  size_t i = 0;
  for (auto _ : state) out << v[i++ % kValues] << ' ';
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_PrintInt_std_ofstream);

void BM_PrintDouble_aio_ostream(benchmark::State& state) {
  aio_ostream out;
  out.attach(std::fopen(kSink, "w"), true);
  const std::vector<double>& v = Doubles();
  size_t i = 0;
  for (auto _ : state) out.print_double(v[i++ % kValues]).put(' ');
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_PrintDouble_aio_ostream);

void BM_PrintDouble_fprintf(benchmark::State& state) {
  FILE* f = std::fopen(kSink, "w");
  const std::vector<double>& v = Doubles();
  size_t i = 0;
  for (auto _ : state) {
    std::fprintf(f, "%.*g", 6, v[i++ % kValues]);
    std::fputc(' ', f);
  }
  std::fclose(f);
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_PrintDouble_fprintf);

void BM_PrintDouble_std_ofstream(benchmark::State& state) {
  std::ofstream out(kSink);
  const std::vector<double>& v = Doubles();
  size_t i = 0;
  for (auto _ : state) out << v[i++ % kValues] << ' ';
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_PrintDouble_std_ofstream);

// 1 MB of text in 64-byte pieces, then the whole text back as one string.
constexpr int kPieces = (1 << 20) / 64;
const char kPiece[] = "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcde\n";

void BM_StringStream1MB_aio_ostrstream(benchmark::State& state) {
  for (auto _ : state) {
    aio_ostrstream s;
    for (int i = 0; i < kPieces; ++i) s.write(kPiece, 64);
    benchmark::DoNotOptimize(s.str());
  }
  state.SetBytesProcessed(state.iterations() * (1 << 20));
}
BENCHMARK(BM_StringStream1MB_aio_ostrstream)->Unit(benchmark::kMillisecond);

void BM_StringStream1MB_std_ostringstream(benchmark::State& state) {
  for (auto _ : state) {
    std::ostringstream s;
    for (int i = 0; i < kPieces; ++i) s.write(kPiece, 64);
    std::string text = s.str();
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(state.iterations() * (1 << 20));
}
BENCHMARK(BM_StringStream1MB_std_ostringstream)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  // The string stream needs a temporary directory.
  setenv("TMPDIR", "/tmp", 0);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
