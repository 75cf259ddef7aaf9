// TPXOsString_test.cpp: OS strings in both forms, the registered converter, and the C and
// Fortran entry points with their result codes.
#include "TPXStringTestSupport.h"
#include "kld_TestSupport.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char* kLatin1 = "en_US.iso88591";
using Units = std::vector<unsigned short>;

Units UnitsOf(const unsigned short* p) {
  Units units;
  do units.push_back(*p);
  while (*p++ != 0);
  return units;
}

// "ok", "cast" (TPXBasOsStringCast "Locale") or "conversion" (TPXBasOsStringConversion).
template <class F>
std::string Outcome(F call) {
  try {
    call();
    return "ok";
  } catch (const TPXBasOsStringCast& e) {
    return std::string("cast ") + e.GetType();
  } catch (const TPXBasOsStringConversion&) {
    return "conversion";
  }
}

}  // namespace

TEST(TPXOsStringForms, ConvertsOnceIntoTheFormAskedAndRefusesTheOther) {
  ScopedCtype ctype(kLatin1);
  ASSERT_TRUE(ctype.ok);
  struct Case {
    const char* name;
    const char* utf8;
    Units utf16;         // empty: no UTF-16 form
    const char* locale;  // null: no locale form
  } cases[] = {
      {"ascii", "AB", {0x41, 0x42, 0}, "AB"},
      {"empty", "", {0}, ""},
      {"null text", nullptr, {0}, ""},
      {"latin-1 letter", "caf\xC3\xA9", {'c', 'a', 'f', 0xE9, 0}, "caf\xE9"},
      {"beyond latin-1", "\xE2\x82\xAC", {0x20AC, 0}, nullptr},
      {"beyond the BMP", "\xF0\x9F\x98\x80", {0xD83D, 0xDE00, 0}, nullptr},
      {"invalid utf-8", "\xC3\x28", {}, nullptr},
      // Overlong forms and encoded surrogates are valid in a TPXString, but would reach the
      // system as other characters ("/", a terminator, half a pair).
      {"overlong slash", "a\xC0\xAF", {}, nullptr},
      {"overlong nul", "a\xC0\x80", {}, nullptr},
      {"overlong three bytes", "a\xE0\x80\xAF", {}, nullptr},
      {"overlong four bytes", "a\xF0\x80\x80\xAF", {}, nullptr},
      {"encoded surrogate", "\xED\xA0\x80", {}, nullptr},
      {"last before the surrogates", "\xED\x9F\xBF", {0xD7FF, 0}, nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const TPXOsString wide(c.utf8, TPXOsString::OsUTF16);
    if (c.utf16.empty()) {
      EXPECT_EQ(0, wide.GetType());
      EXPECT_EQ("conversion", Outcome([&] { wide.ToOS(); }));
    } else {
      EXPECT_EQ(c.utf16, UnitsOf(wide.ToOS()));
      EXPECT_EQ(wide.ToOS(), wide.ToUTF16());
    }
    EXPECT_EQ("cast Locale", Outcome([&] { wide.ToLocale(); }));

    const TPXOsString local(TPXString(c.utf8), TPXOsString::OsLocale);
    if (c.locale == nullptr) {
      EXPECT_EQ(0, local.GetType());
      EXPECT_EQ("cast Locale", Outcome([&] { local.ToLocale(); }));
    } else {
      EXPECT_STREQ(c.locale, local.ToLocale());
    }
    EXPECT_EQ("conversion", Outcome([&] { local.ToOS(); }));
  }
  // A type that is neither form holds nothing.
  const TPXOsString neither("AB", static_cast<TPXOsString::OsType>(7));
  EXPECT_EQ("conversion", Outcome([&] { neither.ToOS(); }));
  EXPECT_EQ("cast Locale", Outcome([&] { neither.ToLocale(); }));
}

TEST(TPXOsStringConverter, CopiesBoundedByTheByteCount) {
  TPXToOs converter;
  struct Case {
    const char* name;
    int outBytes;
    Units expected;  // the buffer afterwards, 0xFFFF where nothing was written
  } cases[] = {
      {"room to spare", 100, {0x41, 0x42, 0, 0xFFFF}},
      {"exactly the terminator", 6, {0x41, 0x42, 0, 0xFFFF}},
      {"cut before the terminator", 4, {0x41, 0x42, 0xFFFF, 0xFFFF}},
      {"half a unit", 3, {0x41, 0xFF42, 0xFFFF, 0xFFFF}},
      {"nothing", 0, {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF}},
      {"negative", -4, {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Units out(64, 0xFFFF);
    EXPECT_EQ(out.data(), converter.ToUTF16("AB", out.data(), c.outBytes));
    out.resize(4);
    EXPECT_EQ(c.expected, out);
  }
  EXPECT_EQ("conversion", Outcome([&] {
              unsigned short out[8];
              converter.ToUTF16("\xC3\x28", out, sizeof out);
            }));

  // ToLocale copies as strncpy does: zero-padded, unterminated when the text fills out.
  char out[8];
  std::memset(out, '#', sizeof out);
  EXPECT_EQ(out, converter.ToLocale("abc", out, 6));
  EXPECT_EQ(std::string("abc\0\0\0##", 8), std::string(out, 8));
  std::memset(out, '#', sizeof out);
  converter.ToLocale("abc", out, 2);
  EXPECT_EQ(std::string("ab######"), std::string(out, 8));
  ScopedCtype ctype("C");
  EXPECT_EQ("cast Locale", Outcome([&] { converter.ToLocale("caf\xC3\xA9", out, 8); }));
}

TEST(TPXOsStringConverter, RegisteredAtFirstInitialiseForTheWholeProcess) {
  TPXToOsBase* registered = mem_ToOs::Registered();
  ASSERT_NE(nullptr, dynamic_cast<TPXToOs*>(registered));
  // Through the interface the allocation library sees.
  unsigned short units[4] = {9, 9, 9, 9};
  EXPECT_EQ(units, registered->ToUTF16("hi", units, sizeof units));
  EXPECT_EQ((Units{'h', 'i', 0, 9}), Units(units, units + 4));
  char bytes[4];
  EXPECT_STREQ("hi", registered->ToLocale("hi", bytes, sizeof bytes));

  // Replaced by someone else, it comes back with the next first initialise, same object.
  TPXToOs other;
  mem_ToOs::Register(&other);
  { kld_test::FreshLibrary fresh; }
  EXPECT_EQ(registered, mem_ToOs::Registered());
}

TEST(TPXOsStringC, MakeReadRelease) {
  TPXOsString* s = TPXBasOsStringMake("a\xC3\xA9");
  ASSERT_NE(nullptr, s);
  EXPECT_EQ((Units{'a', 0xE9, 0}), UnitsOf(TPXBasOsStringToOS(s)));
  TPXBasOsStringRelease(s);

  s = TPXBasOsStringMake(nullptr);
  ASSERT_NE(nullptr, s);
  EXPECT_EQ(Units{0}, UnitsOf(TPXBasOsStringToOS(s)));
  TPXBasOsStringRelease(s);

  // Invalid UTF-8 and exhausted memory give null; null is accepted everywhere.
  EXPECT_EQ(nullptr, TPXBasOsStringMake("\xC3\x28"));
  {
    kld_test::AllocationFailureGuard fail(0);
    EXPECT_EQ(nullptr, TPXBasOsStringMake("abc"));
  }
  EXPECT_EQ(nullptr, TPXBasOsStringToOS(nullptr));
  TPXBasOsStringRelease(nullptr);
}

TEST(TPXOsStringFortran, ConvertsBlankPaddedVariables) {
  using Entry = int (*)(const char*, char*, size_t, size_t);
  struct Case {
    const char* name;
    const char* locale;
    Entry entry;
    std::string text;
    size_t outLength;
    int result;
    std::string out;  // the whole output afterwards ('#' untouched)
  } cases[] = {
      {"padded input", "C", tpxbasstrlocaletoutf8, "abc  ", 8, 5, "abc     "},
      {"exact fit", "C", tpxbasstrlocaletoutf8_, "abc", 3, 3, "abc"},
      {"too short", "C", tpxbasstrlocaletoutf8, "abc", 2, -2, "##"},
      {"empty", "C", tpxbasstrlocaletoutf8, "", 3, 0, "   "},
      {"zero byte ends the text", "C", tpxbasstrlocaletoutf8, std::string("ab\0cd", 5), 4, 2,
       "ab  "},
      {"latin-1 to utf-8", kLatin1, tpxbasstrlocaletoutf8, "caf\xE9", 6, 5, "caf\xC3\xA9 "},
      {"utf-8 grows past out", kLatin1, tpxbasstrlocaletoutf8_, "caf\xE9", 4, -2, "####"},
      {"invalid in a utf-8 locale", "C.UTF-8", tpxbasstrlocaletoutf8, "\xFF", 4, -1, "####"},
      {"utf-8 to latin-1", kLatin1, tpxbasstrutf8tolocale, "caf\xC3\xA9", 5, 4, "caf\xE9 "},
      {"utf-8 padded", "C", tpxbasstrutf8tolocale_, "ab ", 4, 3, "ab  "},
      {"invalid utf-8", "C", tpxbasstrutf8tolocale, "\xC3\x28", 4, -1, "####"},
      {"cut sequence", kLatin1, tpxbasstrutf8tolocale, "caf\xC3", 8, -1, "########"},
      {"locale too short", kLatin1, tpxbasstrutf8tolocale, "caf\xC3\xA9", 3, -2, "###"},
      // No locale form is a code for a Fortran caller, never an exception.
      {"not in the locale", "C", tpxbasstrutf8tolocale, "\xC3\xA9", 8, -2, "########"},
      {"overlong nul", "C.UTF-8", tpxbasstrutf8tolocale, "\xC0\x80xyz", 16, -2,
       std::string(16, '#')},
      {"encoded surrogate", "C.UTF-8", tpxbasstrutf8tolocale_, "\xED\xA0\x80", 4, -2, "####"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ScopedCtype ctype(c.locale);
    ASSERT_TRUE(ctype.ok);
    std::string out(c.outLength, '#');
    EXPECT_EQ(c.result, c.entry(c.text.data(), out.data(), c.text.size(), out.size()));
    EXPECT_EQ(c.out, out);
  }
}

// Every entry point for C and Fortran, with memory failing at each step in turn: each gives
// its documented result and no exception reaches the caller.
TEST(TPXOsStringFortran, FailingAllocationsGiveCodesNeverExceptions) {
  ScopedCtype ctype("C.UTF-8");
  ASSERT_TRUE(ctype.ok);
  char dirTemplate[] = "/tmp/kldosXXXXXX";
  ASSERT_NE(nullptr, mkdtemp(dirTemplate));
  const std::string name = std::string(dirTemplate) + "/caf\xC3\xA9.txt";
  const int write = 0x40000000, always = 2, none = 0;
  const std::string longText(300, 'x');  // past the conversions' stack buffers
  for (long n = 0; n < 24; ++n) {
    SCOPED_TRACE(n);
    char out[512];
    int results[4] = {};
    TPXOsString* made = nullptr;
    {
      kld_test::AllocationFailureGuard fail(n);
      EXPECT_EQ(
          "ok", Outcome([&] {
            results[0] = tpxbasstrlocaletoutf8(longText.data(), out, longText.size(), sizeof out);
            results[1] = tpxbasstrutf8tolocale("caf\xC3\xA9", out, 5, sizeof out);
            results[2] = tpxbasstrutf8fortranopen(name.data(), &write, &none, nullptr, &always,
                                                  &none, nullptr, nullptr, name.size());
            made = TPXBasOsStringMake(longText.c_str());
            results[3] = TPXBasOsStringToOS(made) != nullptr;
          }));
    }
    EXPECT_TRUE(results[0] == 300 || results[0] == -1) << results[0];
    EXPECT_TRUE(results[1] == 5 || results[1] == -1) << results[1];
    EXPECT_EQ(made != nullptr, results[3] == 1);
    if (results[2] >= 0) close(results[2]);
    TPXBasOsStringRelease(made);
  }
  unlink(name.c_str());
  rmdir(dirTemplate);
}

TEST(TPXOsStringFortran, OpensWithTheDispositionAsked) {
  char dirTemplate[] = "/tmp/kldosXXXXXX";
  ASSERT_NE(nullptr, mkdtemp(dirTemplate));
  const std::string dir = dirTemplate;
  const int read = static_cast<int>(0x80000000u), write = 0x40000000, both = read | write;
  const int none = 0;
  auto open = [&](const std::string& name, int access, int creation) {
    return tpxbasstrutf8fortranopen_(name.data(), &access, &none, nullptr, &creation, &none,
                                     nullptr, nullptr, name.size());
  };
  const std::string file = dir + "/f.txt";
  struct Case {
    const char* name;
    int access;
    int creation;
    bool opens;
    const char* before;  // content written first (null: the file is missing)
    const char* after;   // content after writing "xy" when it opened (null: missing)
  } cases[] = {
      {"create new, missing", write, 1, true, nullptr, "xy"},
      {"create new, existing", write, 1, false, "old", "old"},
      {"create always truncates", write, 2, true, "old", "xy"},
      {"open existing, missing", write, 3, false, nullptr, nullptr},
      {"open existing keeps the rest", both, 3, true, "old", "xyd"},
      {"open always creates", write, 4, true, nullptr, "xy"},
      {"truncate existing", write, 5, true, "old", "xy"},
      {"truncate without write access", read, 5, false, "old", "old"},
      {"unknown disposition", write, 6, false, nullptr, nullptr},
      {"read only cannot write", read, 3, true, "old", "old"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    unlink(file.c_str());
    if (c.before != nullptr) {
      FILE* f = std::fopen(file.c_str(), "wb");
      std::fputs(c.before, f);
      std::fclose(f);
    }
    const int fd = open(file, c.access, c.creation);
    EXPECT_EQ(c.opens, fd >= 0);
    if (fd >= 0) {
      (void)!::write(fd, "xy", 2);
      EXPECT_NE(0, fcntl(fd, F_GETFD) & FD_CLOEXEC);
      close(fd);
    }
    std::string text = "<missing>";
    if (FILE* f = std::fopen(file.c_str(), "rb")) {
      for (text.clear(); !std::feof(f);) text += static_cast<char>(std::fgetc(f));
      text.pop_back();
      std::fclose(f);
    }
    EXPECT_EQ(c.after ? c.after : "<missing>", text);
  }

  // Names: UTF-8 in the locale's form; invalid UTF-8, a name the locale cannot hold, a zero
  // byte or an empty name open nothing.
  {
    ScopedCtype ctype(kLatin1);
    const int fd = open(dir + "/caf\xC3\xA9", write, 1);
    EXPECT_GE(fd, 0);
    close(fd);
    EXPECT_EQ(0, access((dir + "/caf\xE9").c_str(), F_OK));
    unlink((dir + "/caf\xE9").c_str());
  }
  ScopedCtype ctype("C");
  for (const std::string& bad :
       {dir + "/caf\xC3\xA9", dir + "/\xC3\x28", dir + std::string("/a\0b", 4), std::string()}) {
    EXPECT_EQ(-1, open(bad, write, 4)) << bad;
  }
  unlink(file.c_str());
  EXPECT_EQ(0, rmdir(dir.c_str())) << "a refused name created a file";
}
