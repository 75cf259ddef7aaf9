// atr_dictionary_fuzz.cpp: arbitrary dictionary file content, loaded as a host loads it.
//
// The input becomes the dictionary file below a private directory named by KAL_PATH; after
// the load, the raw key of every line that has one is translated and formatted with
// arguments, so that hostile translations reach the format parser too. Every key the
// dictionary scanner reads from the same bytes must then translate to the text of its last
// definition, and a key that is not there to nothing: the loaded table's lookup agrees with
// the plain reading of the file.
#include "KLDTPXBasCoreUtils.h"
#include "fuzz_Widths.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <stdlib.h>
#include <string>
#include <sys/stat.h>

namespace {

constexpr char kRelative[] =
    "/TPXQorModules/Runtree/TPX/Configuration/Xresources/en_US/en_US_Dict.py";

/// The dictionary's name, in a directory made once per process.
const std::string& DictionaryFile() {
  static const std::string file = [] {
    const char* tmp = std::getenv("TMPDIR");
    std::string dir = std::string(tmp && *tmp ? tmp : "/tmp") + "/atr_dict_fuzzXXXXXX";
    if (mkdtemp(dir.data()) == nullptr) std::abort();
    static std::string made = dir;
    std::atexit([] { std::filesystem::remove_all(made); });
    setenv("KAL_PATH", dir.c_str(), 1);
    unsetenv("QFN_DICT_DIR");
    unsetenv("KALDER_SUPPORTED_LOCALE");
    std::string path = dir;
    for (const char* p = kRelative + 1; const char* slash = std::strchr(p, '/'); p = slash + 1) {
      path += "/" + std::string(p, slash);
      mkdir(path.c_str(), 0700);
    }
    return dir + kRelative;
  }();
  return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (HasHugeField(reinterpret_cast<const char*>(data), size)) return 0;
  const std::string& file = DictionaryFile();
  std::FILE* out = std::fopen(file.c_str(), "wb");
  if (out == nullptr) std::abort();
  std::fwrite(data, 1, size, out);
  std::fclose(out);

  atr_tr_enable(true);
  const TPXBasStringMode utf8(false);
  std::string content(reinterpret_cast<const char*>(data), size);
  std::size_t start = 0;
  int lines = 0;
  while (start < content.size() && lines++ < 64) {
    std::size_t end = content.find('\n', start);
    if (end == std::string::npos) end = content.size();
    std::string line = content.substr(start, end - start);
    start = end + 1;
    std::size_t marker = line.find("'] = r'");
    std::size_t quote = line.find('\'');
    if (marker == std::string::npos || quote >= marker) continue;
    std::string key = line.substr(quote + 1, marker - quote - 1).c_str();
    atr_String raw = atr_raw(key.c_str(), utf8);
    if (key.find("%$") != std::string::npos) continue;  // fatal in a program's own format
    atr_String message = atr(key.c_str(), "a", 2, 3.5, utf8);
    if (std::strlen(message.CStr()) != message.Length()) __builtin_trap();
  }

  std::map<std::string, std::string> model;
  if (std::FILE* in = std::fopen(file.c_str(), "rb")) {
    atr_DictScanner scanner(in);
    atr_DictLine line;
    while (scanner.Next(line))
      if (line.m_kind == atr_DictLineEntry)
        model[std::string(line.m_key, static_cast<std::size_t>(line.m_keyLength))] =
            std::string(line.m_text, static_cast<std::size_t>(line.m_textLength));
    std::fclose(in);
  }
  for (const auto& [key, text] : model) {
    const char* found = atr_trLookup(key.c_str());
    if (found == nullptr || text != found) __builtin_trap();
    if (model.count(key + "\x01") == 0 && atr_trLookup((key + "\x01").c_str()) != nullptr)
      __builtin_trap();
  }
  atr_trReleaseDB();
  return 0;
}
