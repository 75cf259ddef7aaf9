// atr_translate_testing.h: dictionaries on disk for the translation suites.
#ifndef ATR_TRANSLATE_TESTING_H
#define ATR_TRANSLATE_TESTING_H

#include "KLDTPXBasCoreUtils.h"
#include "kld_TestSupport.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <stdlib.h>
#include <string>

namespace atr_test {

inline constexpr const char kRelativeDictionary[] =
    "/TPXQorModules/Runtree/TPX/Configuration/Xresources/en_US/en_US_Dict.py";

inline std::string FixtureDir() { return KLD_TEST_DATA_DIR; }

/// A fresh directory under the system's temporary directory, removed with everything in it.
class TempDir {
 public:
  TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "atr_trXXXXXX").string();
    m_path = mkdtemp(pattern.data()) ? pattern : std::string();
  }
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::string& Path() const { return m_path; }

  /// Writes bytes to relative (parents created) and gives the full name.
  std::string Write(const std::string& relative, const std::string& bytes) const {
    std::filesystem::path file = std::filesystem::path(m_path + relative);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
    return file.string();
  }
  /// Writes a dictionary at the default place below this directory.
  std::string WriteDictionary(const std::string& bytes) const {
    return Write(kRelativeDictionary, bytes);
  }

 private:
  std::string m_path;
};

/// The environment of a host that searches dir for the default dictionary: KAL_PATH is dir,
/// the other variables of the search are unset. Releases the dictionary on both ends.
class SearchEnv {
 public:
  explicit SearchEnv(const std::string& kalPath, const char* dictDir = nullptr)
      : m_kalPath("KAL_PATH", kalPath.c_str()),
        m_dictDir("QFN_DICT_DIR", dictDir),
        m_supported("KALDER_SUPPORTED_LOCALE", nullptr),
        m_dictionary("KALDER_TRANSLATION_DICTIONARY", nullptr) {
    atr_trReleaseDB();
  }
  ~SearchEnv() { atr_trReleaseDB(); }

 private:
  kld_test::ScopedEnv m_kalPath;
  kld_test::ScopedEnv m_dictDir;
  kld_test::ScopedEnv m_supported;
  kld_test::ScopedEnv m_dictionary;
};

inline std::string Utf8(const char* text) { return atr_raw(text, TPXBasStringMode(false)).CStr(); }

}  // namespace atr_test

#endif  // ATR_TRANSLATE_TESTING_H
