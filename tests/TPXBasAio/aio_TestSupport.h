// aio_TestSupport.h: file seams shared by the stream I/O tests.
#ifndef AIO_TESTSUPPORT_H
#define AIO_TESTSUPPORT_H

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
  if (f == nullptr) return nullptr;
  std::fwrite(bytes.data(), 1, bytes.size(), f);
  std::rewind(f);
  return f;
}

/// Everything the file holds, read from its start; the position is left at the end.
inline std::string Contents(FILE* f) {
  std::fflush(f);
  std::rewind(f);
  std::string text;
  char block[4096];
  size_t got;
  while ((got = std::fread(block, 1, sizeof block, f)) > 0) text.append(block, got);
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

inline void WriteFile(const std::string& path, const std::string& bytes) {
  FILE* f = std::fopen(path.c_str(), "wb");
  std::fwrite(bytes.data(), 1, bytes.size(), f);
  std::fclose(f);
}

inline bool Exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

inline std::vector<std::string> Files(const std::string& dir);

/// Number of descriptors the process has open (less the one that lists them).
inline int OpenFdCount() { return static_cast<int>(Files("/proc/self/fd").size()) - 1; }

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

/// A fresh directory under /tmp, removed with its content at the end of the scope.
class TempDir {
 public:
  TempDir() {
    char name[] = "/tmp/aio_testXXXXXX";
    if (mkdtemp(name) != nullptr) m_path = name;
  }
  ~TempDir() {
    if (!m_path.empty())
      nftw(
          m_path.c_str(),
          [](const char* p, const struct stat*, int, struct FTW*) { return std::remove(p); }, 16,
          FTW_DEPTH | FTW_PHYS);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::string& path() const { return m_path; }
  std::string operator/(const std::string& name) const { return m_path + "/" + name; }

 private:
  std::string m_path;
};

}  // namespace aio_test

#endif  // AIO_TESTSUPPORT_H
