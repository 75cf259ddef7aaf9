// Sorting 100,000 file-name-like strings with strnatcmp and with glibc's strverscmp.
#include "KLDTPXBasCoreUtils.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

// Names as they come out of simulation runs and file systems: shared prefixes, numbers with
// and without leading zeros, versions and extensions, in random order.
std::vector<std::string> MakeNames() {
  static const char* const kFormats[] = {"result_step%u.dat",    "IMG_%04u.JPG",
                                         "part%u_rev%u.stp",     "mesh-%u.%u.%u.inp",
                                         "job%u/output%03u.odb", "Sample %u (copy %u).txt",
                                         "frame%06u.png",        "case_%u_load%u.csv"};
  std::vector<std::string> names;
  names.reserve(100000);
  std::uint32_t seed = 2024;
  auto next = [&seed] { return seed = seed * 1103515245u + 12345u, seed >> 8; };
  char buf[128];
  while (names.size() < 100000) {
    const char* fmt = kFormats[next() % 8];
    std::snprintf(buf, sizeof buf, fmt, next() % 5000, next() % 300, next() % 40);
    names.emplace_back(buf);
  }
  return names;
}

// The names lie one after the other in one block, as a directory listing read into memory.
const std::vector<const char*>& Names() {
  static const std::vector<char> block = [] {
    std::vector<char> b;
    for (const std::string& s : MakeNames()) b.insert(b.end(), s.c_str(), s.c_str() + s.size() + 1);
    return b;
  }();
  static const std::vector<const char*> pointers = [] {
    std::vector<const char*> p;
    for (const char* s = block.data(); s < block.data() + block.size(); s += std::strlen(s) + 1)
      p.push_back(s);
    return p;
  }();
  return pointers;
}

template <int (*Compare)(const char*, const char*)>
void SortWith(benchmark::State& state) {
  const std::vector<const char*>& names = Names();
  std::vector<const char*> work;
  for (auto _ : state) {
    state.PauseTiming();
    work = names;
    state.ResumeTiming();
    std::sort(work.begin(), work.end(),
              [](const char* a, const char* b) { return Compare(a, b) < 0; });
    benchmark::DoNotOptimize(work.data());
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * names.size()));
}

int Strnat(const char* a, const char* b) { return strnatcmp(a, b); }
int Strvers(const char* a, const char* b) { return strverscmp(a, b); }

void BM_Sort100k_strnatcmp(benchmark::State& state) { SortWith<&Strnat>(state); }
void BM_Sort100k_strverscmp(benchmark::State& state) { SortWith<&Strvers>(state); }

// The comparison alone: every name against its neighbour in a list already in order, where
// names share their longest prefixes.
template <int (*Compare)(const char*, const char*)>
void CompareNeighbours(benchmark::State& state) {
  std::vector<const char*> sorted = Names();
  std::sort(sorted.begin(), sorted.end(),
            [](const char* a, const char* b) { return std::strcmp(a, b) < 0; });
  for (auto _ : state) {
    int sum = 0;
    for (std::size_t i = 1; i < sorted.size(); ++i) sum += Compare(sorted[i - 1], sorted[i]);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * (sorted.size() - 1)));
}

void BM_Neighbours_strnatcmp(benchmark::State& state) { CompareNeighbours<&Strnat>(state); }
void BM_Neighbours_strverscmp(benchmark::State& state) { CompareNeighbours<&Strvers>(state); }

BENCHMARK(BM_Sort100k_strnatcmp)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sort100k_strverscmp)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Neighbours_strnatcmp)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Neighbours_strverscmp)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
