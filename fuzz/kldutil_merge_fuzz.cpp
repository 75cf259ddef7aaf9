// Fuzz target: "kldutil dict merge" of two arbitrary dictionaries, a translated one and a
// template. The command ends with exit 0 or 1, and its result
//  - holds no line outside its entries that the library's reader could take for an entry;
//  - has a live entry for every key the library reads from the template, carrying the
//    translation of the translated dictionary when that holds a single translation of it;
//  - loses no key of the translated dictionary: each is live or on an obsolete line;
//  - and where a key cannot be written as a dictionary line, says so with exit 1;
//  - comes back byte for byte when merged with the same template again.
#include "kldutil.h"
#include "kldutil_FuzzFiles.h"

#include <cstdint>
#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

// A failed property names itself before the fuzzer records the input.
#define Check(ok) fuzz_files::Require((ok), "property failed: " #ok, false)

constexpr char kMarker[] = "'] = r'";

/// The keys of the obsolete lines of a merged dictionary, read as the entries they were.
std::set<std::string> ObsoleteKeys(const std::string& merged) {
  std::set<std::string> keys;
  for (std::string line : fuzz_files::Lines(merged)) {
    if (line.compare(0, 3, "#~ ") != 0) continue;
    line.erase(0, 3);
    const size_t at = line.find("'] =r'");
    if (at == std::string::npos) continue;
    line.replace(at, 6, kMarker);
    for (const fuzz_files::Entry& e : fuzz_files::Entries(line + "\n")) keys.insert(e.key);
  }
  return keys;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2 || size > 16384) return 0;
  static const fuzz_files::Scratch scratch;
  // The first two bytes give the length of the translated dictionary; the rest is the template.
  const std::string input(reinterpret_cast<const char*>(data) + 2, size - 2);
  const size_t split = (static_cast<size_t>(data[0]) << 8 | data[1]) % (input.size() + 1);
  const std::string translated = input.substr(0, split), templ = input.substr(split);
  const std::string translatedPath = scratch.Path("translated.dict");
  const std::string templatePath = scratch.Path("template.dict");
  const std::string mergedPath = scratch.Path("merged.dict");
  const std::string againPath = scratch.Path("again.dict");
  fuzz_files::Write(translatedPath, translated);
  fuzz_files::Write(templatePath, templ);

  int exit = fuzz_files::Run(kldutil::RunDictMerge, {"-o", mergedPath.c_str(),
                                                     translatedPath.c_str(), templatePath.c_str()});
  Check(exit == kldutil::kOk || exit == kldutil::kBadInput);
  const std::string merged = fuzz_files::Read(mergedPath);

  for (const std::string& line : fuzz_files::Lines(merged))
    if (line.compare(0, 3, "d['") != 0) Check(line.find(kMarker) == std::string::npos);

  std::map<std::string, std::string> live;
  for (const fuzz_files::Entry& e : fuzz_files::Entries(merged)) {
    Check(live.count(e.key) == 0);
    live[e.key] = e.text;
  }
  for (const fuzz_files::Entry& e : fuzz_files::Entries(templ))
    Check(live.count(e.key) == 1 ||
          (!fuzz_files::Writable(e.key, e.key) && exit == kldutil::kBadInput));

  std::map<std::string, int> definitions;
  const std::vector<fuzz_files::Entry> before = fuzz_files::Entries(translated);
  for (const fuzz_files::Entry& e : before) ++definitions[e.key];
  const std::set<std::string> obsolete = ObsoleteKeys(merged);
  for (const fuzz_files::Entry& e : before) {
    const auto found = live.find(e.key);
    Check(found != live.end() || obsolete.count(e.key) == 1 ||
          (!fuzz_files::Writable(e.key, e.text) && exit == kldutil::kBadInput));
    if (found != live.end() && definitions[e.key] == 1 && !e.identity)
      Check(found->second == e.text);
  }

  exit = fuzz_files::Run(kldutil::RunDictMerge,
                         {"-o", againPath.c_str(), mergedPath.c_str(), templatePath.c_str()});
  Check(exit == kldutil::kOk || exit == kldutil::kBadInput);
  Check(fuzz_files::Read(againPath) == merged);
  return 0;
}
