// atr_TestSupport.h: the byte string's protected operations, statistics capture, scoped
// locales and dictionaries on disk, shared by the string and translation suites.
#ifndef ATR_TESTSUPPORT_H
#define ATR_TESTSUPPORT_H

#include "KLDTPXBasCoreUtils.h"
#include "gtest/gtest.h"
#include "kld_TestSupport.h"

#include <clocale>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <stdlib.h>
#include <string>
#include <utility>
#include <vector>

namespace atr_test {

/// The byte string with every protected operation public, and a look at its header.
class TestString : public atr_StringBase {
 public:
  TestString() = default;
  template <class... A>
  explicit TestString(A&&... a) : atr_StringBase(std::forward<A>(a)...) {}
  using atr_StringBase::operator=, atr_StringBase::operator[], atr_StringBase::Append,
        atr_StringBase::append, atr_StringBase::Capitalize, atr_StringBase::Compare,
        atr_StringBase::CStr, atr_StringBase::Erase, atr_StringBase::Find,
        atr_StringBase::GetBuffPtr, atr_StringBase::insert, atr_StringBase::LeftTrim,
        atr_StringBase::Length, atr_StringBase::NormaliseExponent, atr_StringBase::replace,
        atr_StringBase::Replace, atr_StringBase::Reverse, atr_StringBase::rfind,
        atr_StringBase::RightTrim, atr_StringBase::SetStringLength, atr_StringBase::Substitute,
        atr_StringBase::Substr, atr_StringBase::ToLower, atr_StringBase::ToUpper,
        atr_StringBase::Trim;

  int Capacity() const { return m_StringRep != nullptr ? m_StringRep->Capacity() : -1; }
  int References() const { return m_StringRep != nullptr ? m_StringRep->References() : 0; }
  bool HasHeader() const { return m_StringRep != nullptr; }
  /// The text lives in one block with the header.
  bool Inline() const { return m_StringRep != nullptr && m_Buff == m_StringRep->InlineText(); }
  std::string Text() const { return std::string(CStr(), static_cast<std::size_t>(Length())); }
};

/// A string of exactly these bytes, zero bytes included.
inline TestString Of(const std::string& t) { return TestString(t.data(), int(t.size())); }

/// Runs work with the string module alone brought up with ATR_SUMMARY as given; gives the
/// report written at its finalise and the figures read back from it.
inline std::pair<std::string, std::vector<double>> StatisticsOf(const std::function<void()>& work,
                                                                const char* summary = "") {
  kld_test::FreshLibrary fresh;
  kld_test::ScopedEnv env("ATR_SUMMARY", summary);
  int tally = 0;
  TPXBasAtr_initialize(tally);
  work();
  testing::internal::CaptureStderr();
  TPXBasAtr_finalize(tally);
  std::pair<std::string, std::vector<double>> s{testing::internal::GetCapturedStderr(), {}};
  std::istringstream in(s.first);
  std::string rest;
  for (double figure; in >> figure && std::getline(in, rest);) s.second.push_back(figure);
  return s;
}

/// Sets one category of the process locale for the scope (nullptr: only restores it).
class ScopedCtype {
 public:
  explicit ScopedCtype(const char* name, int category = LC_CTYPE)
      : m_category(category), m_old(std::setlocale(category, nullptr)) {
    m_ok = name == nullptr || std::setlocale(category, name) != nullptr;
  }
  ~ScopedCtype() { std::setlocale(m_category, m_old.c_str()); }
  bool ok() const { return m_ok; }

 private:
  int m_category;
  std::string m_old;
  bool m_ok = false;
};

inline constexpr const char kRelativeDictionary[] =
    "/TPXQorModules/Runtree/TPX/Configuration/Xresources/en_US/en_US_Dict.py";

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
  const std::string& Path() const { return m_path; }
  /// Writes bytes to relative (parents created; the default dictionary's place by default).
  std::string Write(const std::string& bytes,
                    const std::string& relative = kRelativeDictionary) const {
    std::filesystem::path file(m_path + relative);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
    return file.string();
  }

 private:
  std::string m_path;
};

/// The environment of a host that searches kalPath (and dictDir) for the default dictionary;
/// releases the dictionary on both ends.
struct SearchEnv {
  explicit SearchEnv(const std::string& kalPath, const char* dictDir = nullptr)
      : kal("KAL_PATH", kalPath.c_str()), dir("QFN_DICT_DIR", dictDir) {
    atr_trReleaseDB();
  }
  ~SearchEnv() { atr_trReleaseDB(); }
  kld_test::ScopedEnv kal, dir, supported{"KALDER_SUPPORTED_LOCALE", nullptr},
      dictionary{"KALDER_TRANSLATION_DICTIONARY", nullptr};
};

inline std::string Entry(const std::string& key, const std::string& translation) {
  return "d['" + key + "'] = r'" + translation + "'\n";
}
inline std::string Utf8(const char* text) { return atr_raw(text, TPXBasStringMode(false)).CStr(); }

}  // namespace atr_test

#endif  // ATR_TESTSUPPORT_H
