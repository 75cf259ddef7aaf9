// TPXBasException_test.cpp: reports, translation, cloning, rethrowing and call-stack recording
// of the exception base, its general-purpose and string-conversion classes; the system error.
#include "KLDTPXBasCoreUtils.h"
#include "kld_TestSupport.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <typeinfo>

namespace {

const TPXBasStringMode kUtf8(false);
const TPXBasStringMode kLocale(true);

std::string User(const TPXBasException& e) { return e.UserReport(kUtf8).CStr(); }
std::string Developer(const TPXBasException& e) { return e.DeveloperReport(kUtf8).CStr(); }

/// A dictionary at the default place below a fresh directory that KAL_PATH names, loaded for
/// the scope and released afterwards.
class ScopedDictionary {
 public:
  explicit ScopedDictionary(const std::string& lines) {
    std::string pattern = (std::filesystem::temp_directory_path() / "tpx_excXXXXXX").string();
    m_dir = mkdtemp(pattern.data()) ? pattern : std::string();
    const std::filesystem::path file =
        m_dir + "/TPXQorModules/Runtree/TPX/Configuration/Xresources/en_US/en_US_Dict.py";
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << lines;
    m_env = std::make_unique<kld_test::ScopedEnv>("KAL_PATH", m_dir.c_str());
    atr_trReleaseDB();
    atr_tr_enable(true);
  }
  ~ScopedDictionary() {
    atr_trReleaseDB();
    m_env.reset();
    std::error_code ignored;
    std::filesystem::remove_all(m_dir, ignored);
  }

 private:
  std::string m_dir;
  std::unique_ptr<kld_test::ScopedEnv> m_env;
};

}  // namespace

TEST(TPXBasExceptionReports, EachClassFormatsClonesAndRethrowsAsItself) {
  // The assertion's field holds conversions: it is substituted through "%s" and stays text.
  const TPXBasAssertException assertion("100%d %s");
  const TPXBasExecException exec(-7);
  const TPXBasPatternException pattern(12, "unmatched (");
  const TPXBasOsStringConversion conversion;
  const TPXBasOsStringCast cast("Locale");
  const TPXBasToUTF8Exception toUtf8("caf\xE9");
  const TPXBasFromUTF8Exception fromUtf8(TPXString("caf\xC3\xA9"));
  struct Row {
    const TPXBasException& e;
    int code;
    std::string user;
  } rows[] = {
      {assertion, 300, "Assertion Failure: 100%d %s"},
      {exec, 301, "rgx_match: exec error: -7"},
      {pattern, 302, "rgx_match: error in regex at offset 12: unmatched ("},
      {conversion, 309, "Trouble coverting string to current locale"},
      {cast, 310, "Attempt to access OS string using unexpected format: Locale"},
      {toUtf8, 311, "Trouble converting string to UTF8: caf\xE9"},
      {fromUtf8, 312, "Trouble converting string to current locale: caf\xC3\xA9"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.user);
    EXPECT_EQ(row.code, row.e.GetCode());
    EXPECT_EQ(row.user, User(row.e));
    // Not thrown with Throw: no file, line 0.
    EXPECT_EQ("Exception: " + row.user + " in file  at line 0", Developer(row.e));
    std::unique_ptr<TPXBasException> clone(row.e.Clone());
    const TPXBasException& cloned = *clone;
    EXPECT_EQ(typeid(row.e), typeid(cloned));
    EXPECT_EQ(row.user, User(*clone));
    try {
      clone->Propagate();
    } catch (const TPXBasException& caught) {
      EXPECT_EQ(typeid(row.e), typeid(caught));
      EXPECT_EQ(row.user, User(caught));
    }
  }
  EXPECT_STREQ("100%d %s", assertion.GetCondition());
  EXPECT_EQ(-7, exec.GetCount());
  EXPECT_EQ(12, pattern.GetOffset());
  EXPECT_STREQ("unmatched (", pattern.GetMsg());
  EXPECT_STREQ("Locale", cast.GetType());
  EXPECT_STREQ("caf\xE9", toUtf8.GetLocaleString());
  // Clones and copies share their strings: one representation, not a copy.
  std::unique_ptr<TPXBasException> clone(pattern.Clone()), utf(fromUtf8.Clone());
  EXPECT_EQ(pattern.GetMsg(), dynamic_cast<TPXBasPatternException&>(*clone).GetMsg());
  EXPECT_EQ(fromUtf8.GetUtfString().CastToCharPtr(),
            dynamic_cast<TPXBasFromUTF8Exception&>(*utf).GetUtfString().CastToCharPtr());
  EXPECT_EQ(cast.GetType(), TPXBasOsStringCast(cast).GetType());
  // A null text is an empty field, not a crash; the accessor gives the empty text.
  EXPECT_STREQ("", TPXBasAssertException(nullptr).GetCondition());
  EXPECT_STREQ("", TPXBasOsStringCast(nullptr).GetType());
  EXPECT_EQ("rgx_match: error in regex at offset 0: ", User(TPXBasPatternException(0, nullptr)));
}

TEST(TPXBasExceptionReports, LocaleModeConvertsOnlyTheDeveloperReport) {
  const TPXBasPatternException e(1, "caf\xC3\xA9");  // UTF-8 é
  // The user report stays UTF-8 whatever the mode.
  EXPECT_EQ(User(e), std::string(e.UserReport(kLocale).CStr()));
  const atr_String developer = e.DeveloperReport(kLocale);
  const atr_String expected = e.DeveloperReport(kUtf8).UTF8ToLocale();
  EXPECT_STREQ(expected.CStr(), developer.CStr());
}

TEST(TPXBasExceptionReports, TranslatedFormatsAreUsed) {
  ScopedDictionary dictionary(
      "d['rgx_match: exec error: %d'] = r'rgx_match: erreur %d'\n"
      "d['Exception: %s in file %s at line %d'] = r'%3$d:%2$s: %1$s'\n");
  try {
    TPXBasExecException(9).Throw("f.cpp", 7);
  } catch (const TPXBasException& e) {
    EXPECT_EQ("rgx_match: erreur 9", User(e));
    EXPECT_EQ("7:f.cpp: rgx_match: erreur 9", Developer(e));
  }
  // Untranslated formats keep their English text.
  EXPECT_EQ("Assertion Failure: a", User(TPXBasAssertException("a")));
}

TEST(TPXBasExceptionCallStack, PushedOnlyWhileTheErrorStackIsActive) {
  const int before = mem_Testing::ErrorStackDepth();
  EXPECT_THROW(TPXBasExecException(1).Throw("f", 1), TPXBasExecException);
  EXPECT_EQ(before, mem_Testing::ErrorStackDepth());

  mem_Testing::SetErrorStackActive(true);
  EXPECT_THROW(TPXBasExecException(1).Throw("f", 1), TPXBasException);
  const int after = mem_Testing::ErrorStackDepth();
  // A plain throw records nothing.
  try {
    throw TPXBasExecException(2);
  } catch (const TPXBasException&) {
  }
  mem_Testing::SetErrorStackActive(false);
  EXPECT_EQ(before + 1, after);
  EXPECT_EQ(after, mem_Testing::ErrorStackDepth());
}

TEST(TPXBasExceptionCallStack, FailureWhileRecordingStillThrowsTheException) {
  TPXBasAssertException e("x");  // made first: its text is allocated
  mem_Testing::SetErrorStackActive(true);
  {
    kld_test::AllocationFailureGuard failing(0);
    EXPECT_THROW(e.Throw("f", 2), TPXBasAssertException);
  }
  mem_Testing::SetErrorStackActive(false);
}

TEST(TPXBasSystemErrorMessage, KnownCodesUnknownCodesAndCaching) {
  const TPXBasSystemError noEntry(ENOENT);
  const char* first = noEntry.AsString();
  EXPECT_STREQ("No such file or directory", first);
  EXPECT_EQ(first, noEntry.AsString());  // asked once, kept
  const TPXBasSystemError copy(noEntry);
  EXPECT_EQ(first, copy.AsString());  // copies share the message
  TPXBasSystemError assigned(0);
  assigned = noEntry;
  EXPECT_EQ(ENOENT, assigned.GetCode());
  EXPECT_STREQ("No such file or directory", assigned.AsString());
  // A code the system does not know still gives a text.
  const TPXBasSystemError unknown(987654);
  EXPECT_NE(std::string(), unknown.AsString());
}
