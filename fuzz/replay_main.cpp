// replay_main.cpp: runs a fuzz target over every file of its corpus folders, without libFuzzer.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
  namespace fs = std::filesystem;
  long replayed = 0;
  for (int i = 1; i < argc; ++i) {
    if (!fs::exists(argv[i])) continue;
    std::vector<fs::path> files;
    if (fs::is_directory(argv[i])) {
      for (const auto& entry : fs::recursive_directory_iterator(argv[i]))
        if (entry.is_regular_file()) files.push_back(entry.path());
    } else {
      files.emplace_back(argv[i]);
    }
    for (const fs::path& file : files) {
      std::ifstream in(file, std::ios::binary);
      std::vector<char> bytes((std::istreambuf_iterator<char>(in)),
                              std::istreambuf_iterator<char>());
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
      ++replayed;
    }
  }
  std::printf("replayed %ld inputs\n", replayed);
  return 0;
}
