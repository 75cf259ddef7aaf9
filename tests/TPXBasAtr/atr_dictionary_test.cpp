// atr_dictionary_test.cpp: reading the dictionary file, the search for it and the locales.
#include "atr_TestSupport.h"

#include <sys/stat.h>
#include <unistd.h>

using atr_test::Entry;
using atr_test::SearchEnv;
using atr_test::TempDir;
using atr_test::Utf8;

static const TPXBasStringMode kUtf8(false);

TEST(atr_DictionaryFixture, LoadsEveryUsableLineAsAHostWould) {
  SearchEnv env(KLD_TEST_DATA_DIR);
  testing::internal::CaptureStderr();
  atr_tr_enable(true);
  std::string warnings = testing::internal::GetCapturedStderr();

  const char* rows[][2] = {
      // clang-format off
      {"Open file", "Ouvrir le fichier"}, {"Settings", "Paramètres"}, {"Line one\nLine two", "Ligne un\nLigne deux"},
      {"Say \"hi\"", "Dites \"salut\""}, {"Path C:\\temp", "Chemin C:\\temp"},
      {"Ends with a backslash", "Finit par une barre\\"}, {"Bell and friends", "\a\b\f\r\v"},
      {"Open the file\\@status", "Open the file"},  // no entry: the note is cut off
      {"Café", "Coffee shop"}, {"Twice", "Second"},  // the later definition wins
      {"Trailing blanks", "Blancs finaux'  "},  // the last character stands for the quote {"Windows line", "Ligne Windows"},
      {"Nul translation", ""},  // its translation is an escaped zero byte: it ends there
      {"Last line", "Dernière ligne"},  // no newline at the end of the file
      {"Open file ", "Open file "}, {"open file", "open file"},  // lookups are exact
      {"Zoom %d%%", "Zoom %1$d %%"},  // atr_raw interprets no conversion
      // clang-format on
  };
  for (const auto& row : rows) EXPECT_EQ(row[1], Utf8(row[0])) << "text: " << row[0];

  EXPECT_EQ("WARNING: atr: Invalid UTF-8 string.\n\"Invalid bytes\"\n\n", warnings);
}

TEST(atr_DictionarySearch, FollowsQfnDictDirThenKalPath) {
  TempDir first, second, third;
  first.Write(Entry("Close", "from first"));
  second.Write(Entry("Close", "from second"));
  // A directory named like the dictionary is not a dictionary: the search goes on.
  std::filesystem::create_directories(third.Path() + atr_test::kRelativeDictionary);

  // clang-format off
  struct Row { std::string kalPath; const char* dictDir; const char* expected; } rows[] = {
      {first.Path() + ";" + second.Path(), nullptr, "from first"},
      {second.Path() + ";" + first.Path(), nullptr, "from second"},
      {first.Path(), second.Path().c_str(), "from second"},  // QFN_DICT_DIR comes first
      {";;" + third.Path() + "/;" + second.Path() + "//;", nullptr, "from second"},
      {third.Path() + "/nowhere;" + first.Path() + "\\", nullptr, "from first"},
      {"", first.Path().c_str(), "from first"},  // KAL_PATH set, even empty: QFN_DICT_DIR counts
      {"", nullptr, "Close"},                    // an empty search list finds nothing
  };
  // clang-format on
  for (const Row& row : rows) {
    SearchEnv env(row.kalPath, row.dictDir);
    atr_tr_enable(true);
    EXPECT_EQ(row.expected, Utf8("Close")) << "KAL_PATH=" << row.kalPath;
  }

  {  // without KAL_PATH nothing is searched, not even QFN_DICT_DIR
    SearchEnv env("", first.Path().c_str());
    kld_test::ScopedEnv noKalPath("KAL_PATH", nullptr);
    atr_StringBasePrv path("unchanged");
    EXPECT_FALSE(atr_setlocale(&path));
    EXPECT_STREQ("unchanged", path.CStr());
    atr_tr_enable(true);
    EXPECT_EQ("Close", Utf8("Close"));
  }
  {  // the name found, separators made '/' and trailing ones removed
    SearchEnv env(third.Path() + ";" + second.Path() + "\\\\");
    atr_StringBasePrv path;
    EXPECT_TRUE(atr_setlocale(&path));
    EXPECT_EQ(second.Path() + atr_test::kRelativeDictionary, path.CStr());
    EXPECT_TRUE(atr_setlocale(nullptr));
  }
}

TEST(atr_DictionarySearch, SupportedLocaleChoosesTheNamedDictionary) {
  atr_test::ScopedCtype locales(nullptr, LC_ALL);
  TempDir dir;
  dir.Write(Entry("Close", "Fermer"), "/lang/fr/fr_Dict.py");
  dir.Write(Entry("Close", "default place"));
  SearchEnv env(dir.Path());
  kld_test::ScopedEnv supported("KALDER_SUPPORTED_LOCALE", "1");
  kld_test::ScopedEnv dictionary("KALDER_TRANSLATION_DICTIONARY", "lang\\fr/fr_Dict.py");
  kld_test::ScopedEnv lang("KALDER_LANG", "C.UTF-8");
  kld_test::ScopedEnv lcAll("KLD_LC_ALL", nullptr);

  atr_StringBasePrv path;
  ASSERT_TRUE(atr_setlocale(&path));
  EXPECT_EQ(dir.Path() + "/lang/fr/fr_Dict.py", path.CStr());
  EXPECT_STREQ("C", std::setlocale(LC_NUMERIC, nullptr));
  EXPECT_STREQ("C.UTF-8", std::setlocale(LC_CTYPE, nullptr));
  ASSERT_NE(nullptr, std::getenv("KLD_LC_ALL"));
  EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), std::getenv("KLD_LC_ALL"));

  atr_tr_enable(true);
  EXPECT_EQ("Fermer", Utf8("Close"));

  // Without the pair of variables the default dictionary is searched and locales stay.
  atr_trReleaseDB();
  kld_test::ScopedEnv noSupported("KALDER_SUPPORTED_LOCALE", nullptr);
  std::setlocale(LC_NUMERIC, "C.UTF-8");
  atr_tr_enable(true);
  EXPECT_EQ("default place", Utf8("Close"));
  EXPECT_STREQ("C.UTF-8", std::setlocale(LC_NUMERIC, nullptr));
}

TEST(atr_DictionaryState, LoadsOnceAndRetriesOnlyAfterRelease) {
  TempDir dir;
  SearchEnv env(dir.Path());

  atr_tr_enable(true);  // nothing there: the failed load is remembered
  EXPECT_EQ("Close", Utf8("Close"));
  dir.Write(Entry("Close", "Fermer"));
  atr_tr_enable(true);
  EXPECT_EQ("Close", Utf8("Close")) << "a failed load must not search again";

  atr_tr_enable(false);
  atr_tr_enable(true);
  EXPECT_EQ("Fermer", Utf8("Close"));

  dir.Write(Entry("Close", "Clore"));
  atr_tr_enable(true);
  EXPECT_EQ("Fermer", Utf8("Close")) << "a loaded dictionary is read once";
  atr_trReleaseDB();
  EXPECT_EQ("Close", Utf8("Close"));
  atr_tr_enable(true);
  EXPECT_EQ("Clore", Utf8("Close"));

  // A file that holds no usable line counts as a failed load.
  atr_trReleaseDB();
  dir.Write(Entry("Close", "Close") + "# nothing else\n");
  atr_tr_enable(true);
  dir.Write(Entry("Close", "Fermer"));
  atr_tr_enable(true);
  EXPECT_EQ("Close", Utf8("Close"));
}

TEST(atr_DictionaryHostileFiles, KeepTheLibraryWorkingAndLoseNoValidEntry) {
  const std::string good = Entry("Close", "Fermer");
  const std::string longLine = "d['Long'] = r'" + std::string(9000, 'x') + "'\n";
  // clang-format off
  struct Row { const char* name; std::string content; bool closeTranslated; } rows[] = {
      {"empty file", "", false},
      {"long line before", longLine + good, true},
      {"long line after", good + longLine, true},
      {"a line of exactly 8191 bytes", "#" + std::string(8190, 'c') + "\n" + good, true},
      {"only a long line", longLine, false},
      {"lone backslashes", Entry("A\\", "B\\") + "\\\n" + good, true},
      {"zero bytes", std::string("d['Nul'] = r'a\0b'\n", 18) + good, true},
      {"carriage returns only", "d['Close'] = r'Fermer'\r", true},
      {"binary noise", std::string("\xff\xfe\x00\x01'] = r'\n\n\n", 14) + good, true},
  };
  // clang-format on
  for (const Row& row : rows) {
    TempDir dir;
    dir.Write(row.content);
    SearchEnv env(dir.Path());
    testing::internal::CaptureStderr();
    atr_tr_enable(true);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(row.closeTranslated ? "Fermer" : "Close", Utf8("Close")) << row.name;
    // A long line is read 8191 bytes at a time: its first piece is an entry of its own.
    const bool hasLong = row.content.find("d['Long']") != std::string::npos;
    EXPECT_EQ(hasLong ? std::string(8175, 'x') : "Long", Utf8("Long")) << row.name;
    // Formatting goes on working whatever was read.
    EXPECT_STREQ("Value 5", atr<int>("Value %d", 5, kUtf8).CStr()) << row.name;
  }
}

// The file exists but this user may not read it: as root (CI) the check runs in a child that
// has dropped to the unprivileged user "nobody" first.
TEST(atr_DictionaryHostileFiles, UnreadableFileIsNotFound) {
  TempDir dir;
  std::string file = dir.Write(Entry("Close", "Fermer"));
  {  // the same file, readable, is found: the search itself is right
    SearchEnv env(dir.Path());
    atr_tr_enable(true);
    ASSERT_EQ("Fermer", Utf8("Close"));
  }
  ASSERT_EQ(0, chmod(file.c_str(), 0));
  ASSERT_EQ(0, chmod(dir.Path().c_str(), 0755));  // nobody may still walk to the file
  if (geteuid() != 0 && access(file.c_str(), R_OK) == 0)
    GTEST_SKIP() << "permissions do not apply to this user";
  SearchEnv env(dir.Path());
  EXPECT_EXIT(
      {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) std::_Exit(2);
        struct stat seen;
        if (stat(file.c_str(), &seen) != 0 || access(file.c_str(), R_OK) == 0) std::_Exit(3);
        atr_tr_enable(true);
        bool untranslated = Utf8("Close") == "Close" &&
                            std::string(atr<int>("Value %d", 5, kUtf8).CStr()) == "Value 5";
        std::fprintf(stderr, untranslated ? "untranslated\n" : "translated\n");
        std::_Exit(untranslated ? 0 : 1);
      },
      testing::ExitedWithCode(0), "untranslated");
}

TEST(atr_DictionaryEscapes, AreUndoneOnceInKeysAndTranslations) {
  const char* rows[][2] = {
      // clang-format off
      {"\\\\n", "\\n"},  // an escaped backslash is not escaped again
      {"\\\\\\\\", "\\\\"}, {"a\\'b\\\"c", "a'b\"c"}, {"\\7\\77\\101x", "\a?Ax"},
      {"\\1011", "A1"},  // at most three octal digits
      {"\\x41\\x4aZ", "AJZ"}, {"\\x4a2", "\xa2"},  // "2" is one more hex digit
      {"\\x141", "A"},  // as many hex digits as follow, kept to 8 bits
      {"\\xg", "\\xg"}, {"\\9\\z", "\\9\\z"}, {"end\\", "end\\"}, {"\\n\\t\\r", "\n\t\r"},
      // clang-format on
  };
  TempDir dir;
  std::string file;
  for (size_t i = 0; i < sizeof(rows) / sizeof(rows[0]); ++i) {
    file += Entry("k" + std::to_string(i), rows[i][0]);
    file += Entry(std::string("key ") + rows[i][0], "v" + std::to_string(i));
  }
  dir.Write(file);
  SearchEnv env(dir.Path());
  atr_tr_enable(true);
  for (size_t i = 0; i < sizeof(rows) / sizeof(rows[0]); ++i) {
    EXPECT_EQ(rows[i][1], Utf8(("k" + std::to_string(i)).c_str())) << rows[i][0];
    EXPECT_EQ("v" + std::to_string(i), Utf8((std::string("key ") + rows[i][1]).c_str()))
        << rows[i][0];
  }
}

TEST(atr_DictionaryTable, FindsEveryKeyOfALargeUnsortedFile) {
  TempDir dir;
  std::string file;
  std::vector<std::string> keys;
  for (int i = 0; i < 3000; ++i) {
    // Keys in no particular order, some differing only in bytes above 0x7F.
    std::string key = "k" + std::to_string((i * 7919) % 3000) + (i % 3 == 0 ? "\xc3\xa9" : "");
    keys.push_back(key);
    file += Entry(key, "t" + key);
  }
  dir.Write(file);
  SearchEnv env(dir.Path());
  atr_tr_enable(true);
  for (const std::string& key : keys) ASSERT_EQ("t" + key, Utf8(key.c_str())) << key;
  EXPECT_EQ("k", Utf8("k"));
  EXPECT_EQ("k99999", Utf8("k99999"));
  EXPECT_EQ("\xff", Utf8("\xff"));  // above every key
}

TEST(atr_DictionaryTable, SurvivesAllocationFailureAtEveryStep) {
  TempDir dir;
  std::string file;
  for (int i = 0; i < 20; ++i) file += Entry("k" + std::to_string(i), "t" + std::to_string(i));
  dir.Write(file);
  for (long n = 0; n < 30; ++n) {
    SearchEnv env(dir.Path());
    {
      kld_test::AllocationFailureGuard fail(n);
      atr_tr_enable(true);
    }
    // Each entry is either fully loaded or absent.
    for (int i = 0; i < 20; ++i) {
      std::string got = Utf8(("k" + std::to_string(i)).c_str());
      EXPECT_TRUE(got == "t" + std::to_string(i) || got == "k" + std::to_string(i))
          << "allocation " << n << ": " << got;
    }
  }
}
