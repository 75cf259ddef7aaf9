// aio_TestSupport.h: file and locale seams shared by the stream I/O tests.
#ifndef AIO_TESTSUPPORT_H
#define AIO_TESTSUPPORT_H

#include <clocale>
#include <cstdio>
#include <dirent.h>
#include <ftw.h>
#include <stdlib.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace aio_test {

/// A temporary file (deleted when closed) holding bytes, positioned at its start.
inline FILE* FileWith(const std::string& bytes) {
  FILE* f = std::tmpfile();
  std::fwrite(bytes.data(), 1, bytes.size(), f);
  std::rewind(f);
  return f;
}

/// Everything the file holds, read from its start.
inline std::string Contents(FILE* f) {
  std::fflush(f);
  std::rewind(f);
  std::string text;
  for (int c; (c = std::fgetc(f)) != EOF;) text += static_cast<char>(c);
  return text;
}

/// The whole content of a named file, or "<missing>".
inline std::string FileText(const std::string& path) {
  FILE* f = std::fopen(path.c_str(), "rb");
  if (f == nullptr) return "<missing>";
  std::string text = Contents(f);
  std::fclose(f);
  return text;
}

/// Names of the entries of a directory.
inline std::vector<std::string> Files(const std::string& dir) {
  std::vector<std::string> names;
  if (DIR* d = opendir(dir.c_str())) {
    while (dirent* e = readdir(d))
      if (e->d_name[0] != '.') names.push_back(e->d_name);
    closedir(d);
  }
  return names;
}

/// Number of descriptors the process has open (less the one that lists them).
inline int OpenFdCount() { return static_cast<int>(Files("/proc/self/fd").size()) - 1; }

/// A fresh directory under /tmp, removed with its content at the end of the scope.
struct TempDir {
  TempDir() {
    char name[] = "/tmp/aio_testXXXXXX";
    if (mkdtemp(name) != nullptr) path = name;
  }
  ~TempDir() {
    auto remove = [](const char* p, const struct stat*, int, struct FTW*) {
      return std::remove(p);
    };
    if (!path.empty()) nftw(path.c_str(), remove, 16, FTW_DEPTH | FTW_PHYS);
  }
  std::string operator/(const std::string& name) const { return path + "/" + name; }
  std::string path;
};

/// Switches LC_CTYPE for the scope.
struct ScopedCType {
  explicit ScopedCType(const char* name) : old(std::setlocale(LC_CTYPE, nullptr)) {
    ok = std::setlocale(LC_CTYPE, name) != nullptr;
  }
  ~ScopedCType() { std::setlocale(LC_CTYPE, old.c_str()); }
  std::string old;
  bool ok;
};

}  // namespace aio_test

#endif  // AIO_TESTSUPPORT_H
