// TPXBasStringExceptions_test.cpp: the string-conversion exceptions and the system error.
#include "KLDTPXBasCoreUtils.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace {
std::string User(const TPXBasException& e) { return e.UserReport(TPXBasStringMode(false)).CStr(); }
}  // namespace

TEST(TPXBasStringExceptionsReports, CodesAndTexts) {
  const TPXBasOsStringConversion conversion;
  const TPXBasOsStringCast cast("Locale");
  const TPXBasToUTF8Exception toUtf8("caf\xE9");
  const TPXBasFromUTF8Exception fromUtf8(TPXString("caf\xC3\xA9"));
  struct Row {
    const TPXBasException& e;
    int code;
    std::string user;
  } rows[] = {
      {conversion, 309, "Trouble coverting string to current locale"},
      {cast, 310, "Attempt to access OS string using unexpected format: Locale"},
      {toUtf8, 311, "Trouble converting string to UTF8: caf\xE9"},
      {fromUtf8, 312, "Trouble converting string to current locale: caf\xC3\xA9"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(row.code, row.e.GetCode());
    EXPECT_EQ(row.user, User(row.e));
    // Each rethrows as itself and clones as itself.
    std::unique_ptr<TPXBasException> clone(row.e.Clone());
    EXPECT_EQ(row.user, User(*clone));
    EXPECT_EQ(typeid(row.e), typeid(*clone));
    try {
      row.e.Propagate();
    } catch (const TPXBasException& caught) {
      EXPECT_EQ(typeid(row.e), typeid(caught));
    }
  }
  EXPECT_STREQ("Locale", cast.GetType());
  EXPECT_STREQ("caf\xE9", toUtf8.GetLocaleString());
  EXPECT_STREQ("", TPXBasOsStringCast(nullptr).GetType());
}

TEST(TPXBasStringExceptionsSharing, Utf8StringIsSharedNotCopied) {
  const TPXString text("\xE2\x82\xAC 5");
  const TPXBasFromUTF8Exception e(text);
  EXPECT_EQ(text.CastToCharPtr(), e.GetUtfString().CastToCharPtr());
  std::unique_ptr<TPXBasException> clone(e.Clone());
  EXPECT_EQ(text.CastToCharPtr(),
            dynamic_cast<TPXBasFromUTF8Exception&>(*clone).GetUtfString().CastToCharPtr());
  const TPXBasOsStringCast cast("UTF16");
  const TPXBasOsStringCast copy(cast);
  EXPECT_EQ(cast.GetType(), copy.GetType());
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
