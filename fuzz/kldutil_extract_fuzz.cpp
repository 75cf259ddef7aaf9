// Fuzz target: "kldutil dict extract" over arbitrary source text, read as C/C++ or as Fortran.
// Whatever the source, the command ends with exit 0 or 1 and writes a dictionary the library
// reads as it is meant: every line that is not an entry is one the reader passes over, every
// entry is an identity line, each key comes once and in the library's key order.
// A third mode writes one message literal (split in two adjacent literals) with every byte as
// an octal escape, and checks that the key the library reads back is exactly that text.
#include "kldutil.h"
#include "kldutil_FuzzFiles.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

// A failed property names itself before the fuzzer records the input.
#define Check(ok) fuzz_files::Require((ok), "property failed: " #ok, false)

/// Checks a dictionary written by extract; gives its keys.
std::vector<std::string> CheckDictionary(const std::string& dictionary) {
  std::vector<std::string> keys;
  for (const std::string& line : fuzz_files::Lines(dictionary)) {
    if (line.compare(0, 3, "d['") != 0) {
      // Comments and blank lines: nothing the reader could take for an entry.
      Check(line.find("'] = r'") == std::string::npos);
      continue;
    }
    const std::vector<fuzz_files::Entry> entries = fuzz_files::Entries(line + "\n");
    Check(entries.size() == 1 && entries[0].identity);
    const std::string& key = entries[0].key;
    if (!keys.empty())
      Check(atr_DictKeyCompare(keys.back().data(), static_cast<int>(keys.back().size()), key.data(),
                               static_cast<int>(key.size())) < 0);
    keys.push_back(key);
  }
  return keys;
}

/// Every byte as an octal escape, so the text survives whatever it holds.
std::string OctalLiteral(const std::string& text) {
  std::string out = "\"";
  for (unsigned char c : text) {
    const char digits[] = {'\\', static_cast<char>('0' + (c >> 6)),
                           static_cast<char>('0' + ((c >> 3) & 7)),
                           static_cast<char>('0' + (c & 7))};
    out.append(digits, sizeof digits);
  }
  return out + "\"";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 16384) return 0;
  static const fuzz_files::Scratch scratch;
  const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
  const int mode = data[0] % 3;

  std::string source = input, text;
  if (mode == 2) {
    text = input.substr(0, input.find('\0'));
    const size_t cut = text.empty() ? 0 : data[0] % (text.size() + 1);
    source = "atr(" + OctalLiteral(text.substr(0, cut)) + "\n    " +
             OctalLiteral(text.substr(cut)) + ");\n";
  }
  const std::string sourcePath = scratch.Path(mode == 1 ? "host.f90" : "host.cpp");
  const std::string outputPath = scratch.Path("messages.dict");
  fuzz_files::Write(sourcePath, source);

  const int exit = fuzz_files::Run(kldutil::RunDictExtract,
                                   {"-k", "msg", "-o", outputPath.c_str(), sourcePath.c_str()});
  Check(exit == kldutil::kOk || exit == kldutil::kBadInput);
  const std::vector<std::string> keys = CheckDictionary(fuzz_files::Read(outputPath));

  if (mode == 2) {
    // The text can be written unless atr_DictWriteEntry refuses it (invalid UTF-8, too long).
    const bool writable = fuzz_files::Writable(text, text);
    Check(keys.size() == (writable ? 1u : 0u));
    Check(!writable || keys[0] == text);
    Check(exit == (writable ? kldutil::kOk : kldutil::kBadInput));
  }
  return 0;
}
