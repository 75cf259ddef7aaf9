// kldutil_FuzzFiles.h: what the kldutil fuzz targets share: a scratch directory for the
// files a subcommand reads and writes, running a subcommand with its warnings silenced, and
// reading a dictionary text line by line with the library's own reader.
#ifndef KLDUTIL_FUZZFILES_H
#define KLDUTIL_FUZZFILES_H

#include "kldutil.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

namespace fuzz_files {

/// Aborts, naming what failed (with errno's meaning after a system call), unless ok.
inline void Require(bool ok, const char* what, bool systemCall = true) {
  if (!ok) {
    if (systemCall)
      std::fprintf(stderr, "%s: %s\n", what, std::strerror(errno));
    else
      std::fprintf(stderr, "%s\n", what);
    std::abort();
  }
}

/// A fresh directory under the temporary directory, removed with everything in it.
class Scratch {
 public:
  Scratch() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kldutil-fuzz-XXXXXX").string();
    Require(mkdtemp(pattern.data()) != nullptr, "mkdtemp");
    m_dir = pattern;
  }
  ~Scratch() {
    std::error_code ignored;
    std::filesystem::remove_all(m_dir, ignored);
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  std::string Path(const char* name) const { return m_dir + "/" + name; }

 private:
  std::string m_dir;
};

inline void Write(const std::string& path, const std::string& bytes) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  Require(file != nullptr, path.c_str());
  Require(std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size(), path.c_str());
  Require(std::fclose(file) == 0, path.c_str());
}

inline std::string Read(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  Require(file != nullptr, path.c_str());
  std::string bytes;
  char buffer[4096];
  for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, file)) > 0;) bytes.append(buffer, n);
  std::fclose(file);
  return bytes;
}

/// Runs a subcommand on args (its arguments after its name) with the standard output and
/// error streams silenced; gives its exit code.
inline int Run(int (*command)(int, char**), std::initializer_list<const char*> args) {
  std::vector<char*> argv;
  for (const char* a : args) argv.push_back(const_cast<char*>(a));
  argv.push_back(nullptr);
  static std::FILE* const sink = std::fopen("/dev/null", "w");
  std::FILE* const out = stdout;
  std::FILE* const err = stderr;
  stdout = sink;
  stderr = sink;
  const int exit = command(static_cast<int>(args.size()), argv.data());
  stdout = out;
  stderr = err;
  return exit;
}

/// Whether the library can write the pair as a dictionary line.
inline bool Writable(const std::string& key, const std::string& text) {
  static std::FILE* const sink = std::fopen("/dev/null", "w");
  return atr_DictWriteEntry(sink, key.data(), static_cast<int>(key.size()), text.data(),
                            static_cast<int>(text.size()));
}

/// The lines of a text, without their "\n".
inline std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  kldutil::SplitLines(text, lines);
  return lines;
}

/// Hands each line the library's dictionary reader takes from text to each; gives their count.
template <class Each>
int ReadEntries(const std::string& text, Each each) {
  if (text.empty()) return 0;
  std::string bytes = text;
  std::FILE* file = fmemopen(bytes.data(), bytes.size(), "rb");
  Require(file != nullptr, "fmemopen");
  atr_DictScanner scanner(file);
  atr_DictLine line;
  int count = 0;
  while (scanner.Next(line)) {
    each(line);
    ++count;
  }
  std::fclose(file);
  return count;
}

/// An entry of a dictionary as the library reads it.
struct Entry {
  std::string key, text;  ///< unescaped
  bool identity;          ///< written as its own translation: not loaded
};

/// The entry and identity lines the library's reader takes from text, in order. An identity
/// line is not unescaped by the reader; its key is read as the reader reads it once the line
/// is translated.
inline std::vector<Entry> Entries(const std::string& text) {
  std::vector<Entry> entries;
  ReadEntries(text, [&entries](const atr_DictLine& line) {
    if (line.m_kind == atr_DictLineEntry) {
      entries.push_back({std::string(line.m_key, static_cast<size_t>(line.m_keyLength)),
                         std::string(line.m_text, static_cast<size_t>(line.m_textLength)), false});
    } else if (line.m_kind == atr_DictLineIdentity) {
      const std::string raw(line.m_rawKey, static_cast<size_t>(line.m_rawKeyLength));
      const std::string translated = "d['" + raw + "'] = r'" + (raw == "x" ? "y" : "x") + "'\n";
      std::string key;
      ReadEntries(translated, [&key](const atr_DictLine& again) {
        key.assign(again.m_key, static_cast<size_t>(again.m_keyLength));
      });
      entries.push_back({key, key, true});
    }
  });
  return entries;
}

}  // namespace fuzz_files

#endif  // KLDUTIL_FUZZFILES_H
