// atr_translate_bench.cpp: message formatting against snprintf and {fmt} (a runtime format),
// and the dictionary's load and lookup against std::unordered_map, side by side.
#include "KLDTPXBasCoreUtils.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <stdlib.h>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

constexpr char kFormat[] = "Exception: %s in file %s at line %d";
constexpr int kEntries = 20000;
const TPXBasStringMode kUtf8(false);

/// A 20,000-entry dictionary below a private directory that KAL_PATH names.
struct Dictionary {
  std::string dir;
  std::vector<std::string> keys;
  std::vector<std::string> translations;

  Dictionary() {
    std::string pattern = (std::filesystem::temp_directory_path() / "atr_benchXXXXXX").string();
    dir = mkdtemp(pattern.data());
    std::filesystem::path file =
        dir + "/TPXQorModules/Runtree/TPX/Configuration/Xresources/en_US/en_US_Dict.py";
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    out << "# generated\nd = {}\n";
    for (int i = 0; i < kEntries - 1; ++i) {
      keys.push_back("Message " + std::to_string(i * 7919 % kEntries) + ": %s could not be %s");
      translations.push_back("Le message " + std::to_string(i) + " : %2$s de %1$s impossible");
    }
    keys.push_back("Exception: %s in a file %s at line %d");  // not the benchmarked text
    translations.push_back("Exception : %s dans %s ligne %d");
    for (int i = 0; i < kEntries; ++i)
      out << "d['" << keys[i] << "'] = r'" << translations[i] << "'\n";
    setenv("KAL_PATH", dir.c_str(), 1);
    unsetenv("QFN_DICT_DIR");
    unsetenv("KALDER_SUPPORTED_LOCALE");
  }
  ~Dictionary() { std::filesystem::remove_all(dir); }
};

Dictionary& TheDictionary() {
  static Dictionary dictionary;
  return dictionary;
}

void Load() {
  TheDictionary();
  atr_trReleaseDB();
  atr_tr_enable(true);
}

void BM_snprintf(benchmark::State& state) {
  char buffer[256];
  for (auto _ : state) {
    int n =
        std::snprintf(buffer, sizeof(buffer), kFormat, "Out of memory", "atr_translate.cpp", 412);
    benchmark::DoNotOptimize(n);
    benchmark::DoNotOptimize(buffer);
  }
}
BENCHMARK(BM_snprintf);

// The same message as a std::string from a format read at run time, as a dictionary's would be.
void BM_fmt_RuntimeFormat(benchmark::State& state) {
  const std::string format = "Exception: {} in file {} at line {}";
  for (auto _ : state) {
    std::string s = fmt::format(fmt::runtime(format), "Out of memory", "atr_translate.cpp", 412);
    benchmark::DoNotOptimize(s.data());
  }
}
BENCHMARK(BM_fmt_RuntimeFormat);

void BM_atr_NoDictionary(benchmark::State& state) {
  atr_trReleaseDB();
  for (auto _ : state) {
    atr_String s = atr<const char*, const char*, int>(kFormat, "Out of memory", "atr_translate.cpp",
                                                      412, kUtf8);
    benchmark::DoNotOptimize(s.CStr());
  }
}
BENCHMARK(BM_atr_NoDictionary);

void BM_atr_NoDictionary_NewFormatEachTime(benchmark::State& state) {
  // 1024 different format texts in turn: more than a thread keeps, so every message parses.
  atr_trReleaseDB();
  std::vector<std::string> formats;
  for (int i = 0; i < 1024; ++i)
    formats.push_back("Exception " + std::to_string(i) + ": %s in file %s at line %d");
  std::size_t i = 0;
  for (auto _ : state) {
    atr_String s = atr<const char*, const char*, int>(formats[i].c_str(), "Out of memory",
                                                      "atr_translate.cpp", 412, kUtf8);
    benchmark::DoNotOptimize(s.CStr());
    i = (i + 1) % formats.size();
  }
}
BENCHMARK(BM_atr_NoDictionary_NewFormatEachTime);

void BM_snprintf_NewFormatEachTime(benchmark::State& state) {
  std::vector<std::string> formats;
  for (int i = 0; i < 1024; ++i)
    formats.push_back("Exception " + std::to_string(i) + ": %s in file %s at line %d");
  char buffer[256];
  std::size_t i = 0;
  for (auto _ : state) {
    int n = std::snprintf(buffer, sizeof(buffer), formats[i].c_str(), "Out of memory",
                          "atr_translate.cpp", 412);
    benchmark::DoNotOptimize(n);
    benchmark::DoNotOptimize(buffer);
    i = (i + 1) % formats.size();
  }
}
BENCHMARK(BM_snprintf_NewFormatEachTime);

void BM_atr_Dictionary20k_NotFound(benchmark::State& state) {
  Load();
  for (auto _ : state) {
    atr_String s = atr<const char*, const char*, int>(kFormat, "Out of memory", "atr_translate.cpp",
                                                      412, kUtf8);
    benchmark::DoNotOptimize(s.CStr());
  }
  atr_trReleaseDB();
}
BENCHMARK(BM_atr_Dictionary20k_NotFound);

void BM_atr_Dictionary20k_Translated(benchmark::State& state) {
  Load();
  const char* key = TheDictionary().keys.back().c_str();
  for (auto _ : state) {
    atr_String s =
        atr<const char*, const char*, int>(key, "Out of memory", "atr_translate.cpp", 412, kUtf8);
    benchmark::DoNotOptimize(s.CStr());
  }
  atr_trReleaseDB();
}
BENCHMARK(BM_atr_Dictionary20k_Translated);

void BM_LoadDictionary20k(benchmark::State& state) {
  TheDictionary();
  for (auto _ : state) {
    atr_trReleaseDB();
    atr_tr_enable(true);
  }
  atr_trReleaseDB();
}
BENCHMARK(BM_LoadDictionary20k)->Unit(benchmark::kMillisecond);

void BM_LoadUnorderedMap20k(benchmark::State& state) {
  // The same file read line by line into a std::unordered_map, for scale.
  std::string file = TheDictionary().dir +
                     "/TPXQorModules/Runtree/TPX/Configuration/Xresources/en_US/en_US_Dict.py";
  for (auto _ : state) {
    std::unordered_map<std::string, std::string> map;
    std::ifstream in(file, std::ios::binary);
    std::string line;
    while (std::getline(in, line)) {
      std::size_t marker = line.find("'] = r'");
      std::size_t quote = line.find('\'');
      if (marker == std::string::npos || quote >= marker || line.back() != '\'') continue;
      map.emplace(line.substr(quote + 1, marker - quote - 1),
                  line.substr(marker + 7, line.size() - marker - 8));
    }
    benchmark::DoNotOptimize(map.size());
  }
}
BENCHMARK(BM_LoadUnorderedMap20k)->Unit(benchmark::kMillisecond);

void BM_Lookup_atr_raw(benchmark::State& state) {
  Load();
  const std::vector<std::string>& keys = TheDictionary().keys;
  std::size_t i = 0;
  for (auto _ : state) {
    atr_String s = atr_raw(keys[i].c_str(), kUtf8);
    benchmark::DoNotOptimize(s.CStr());
    i = i + 1 == keys.size() ? 0 : i + 1;
  }
  atr_trReleaseDB();
}
BENCHMARK(BM_Lookup_atr_raw);

void BM_Lookup_UnorderedMap(benchmark::State& state) {
  const Dictionary& d = TheDictionary();
  std::unordered_map<std::string, std::string> map;
  for (int k = 0; k < kEntries; ++k) map.emplace(d.keys[k], d.translations[k]);
  std::size_t i = 0;
  for (auto _ : state) {
    auto found = map.find(d.keys[i]);
    benchmark::DoNotOptimize(found);
    i = i + 1 == d.keys.size() ? 0 : i + 1;
  }
}
BENCHMARK(BM_Lookup_UnorderedMap);

void BM_Lookup_UnorderedMapToString(benchmark::State& state) {
  // The map's lookup plus the string that atr_raw hands back, for like with like.
  const Dictionary& d = TheDictionary();
  std::unordered_map<std::string, std::string> map;
  for (int k = 0; k < kEntries; ++k) map.emplace(d.keys[k], d.translations[k]);
  std::size_t i = 0;
  for (auto _ : state) {
    auto found = map.find(d.keys[i]);
    atr_String s = atr_MakeAtrString(found->second.c_str());
    benchmark::DoNotOptimize(s.CStr());
    i = i + 1 == d.keys.size() ? 0 : i + 1;
  }
}
BENCHMARK(BM_Lookup_UnorderedMapToString);

}  // namespace

// The conversion listing of a text with many conversions, beside formatting the same text:
// both grow linearly with the number of conversions.
std::string ManyConversions(int n) {
  std::string text;
  for (int i = 0; i < n; ++i) text += "%s ";
  return text;
}

void BM_FormatConversions_Many(benchmark::State& state) {
  std::string text = ManyConversions(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    atr_FormatConversions conversions(text.c_str());
    benchmark::DoNotOptimize(conversions.ForArgument(conversions.Count()));
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_FormatConversions_Many)
    ->Arg(10000)
    ->Arg(40000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

void BM_FormatMessage_Many(benchmark::State& state) {
  atr_trReleaseDB();
  std::string text = ManyConversions(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    atr_translate message(text.c_str(), kUtf8);
    benchmark::DoNotOptimize(message.Result(kUtf8).CStr());
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_FormatMessage_Many)
    ->Arg(10000)
    ->Arg(40000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

BENCHMARK_MAIN();
