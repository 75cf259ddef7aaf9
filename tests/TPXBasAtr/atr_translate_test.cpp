// atr_translate_test.cpp: parsing formats, substituting arguments, assembling messages.
#include "atr_TestSupport.h"

#include <cstdint>
#include <cstdio>
#include <thread>

namespace {

const TPXBasStringMode kUtf8(false);
const TPXBasStringMode kLocale(true);

template <class... A>
std::string Msg(const char* format, A... args) {
  return atr<A...>(format, args..., kUtf8).CStr();
}

/// The message of format with argument n substituted as "<n>": shows which argument each
/// conversion receives ("<2> <1> <3>" for "%2$s %s %s").
std::string Receivers(const char* format, int count) {
  atr_translate message(format, kUtf8);
  for (int n = 1; n <= count; ++n) {
    char value[16];
    std::snprintf(value, sizeof(value), "<%d>", n);
    atr_SubstituteFormat(message, n, value, kUtf8);
  }
  return message.Result(kUtf8).CStr();
}

}  // namespace

TEST(atr_translateParse, TemplatesFromFormats) {
  const std::string text(200, '.'), longFormat = text + "%s" + text + "%s",
                                    longExpected = text + "<1>" + text + "<2>";
  // 40 conversions numbered backwards: argument n goes to the n-th lowest number.
  std::string many, manyExpected;
  for (int i = 40; i >= 1; --i) {
    many += "%" + std::to_string(i) + "$s,";
    manyExpected += "<" + std::to_string(i) + ">,";
  }
  // expected: every conversion filled with "<n>", n its argument
  // clang-format off
  struct Row { const char* format; const char* expected; } rows[] = {
      {"", ""}, {"100%% done", "100% done"}, {"%d%%s", "<1>%s"}, {"abc %", "abc "},
      {"abc %5", "abc "}, {"abc %2$", "abc "}, {"%5k", "k"}, {"%hd", "hd"}, {"%+d", "+d"},
      {"% d", " d"}, {"%#x", "#x"}, {"%*d", "*d"}, {"%Lf", "Lf"}, {"%5%d", "%d"},
      {"%2$s %s %s", "<2> <1> <3>"}, {"%3$s %3$s %1$s", "<2> <3> <1>"},
      {"%10$s %20$s %5$s", "<2> <3> <1>"}, {"%s %1$s", "<2> <1>"}, {"%0$s %s", "<1> <2>"},
      {"%99999999999999$s|%s", "<2>|<1>"}, {"a%-5.3ld b", "a<1> b"}, {"%ls%lls", "<1><2>"},
      {"\\@ only a note", ""}, {"Open %s\\@menu %s", "Open <1>"},
      {"%\xc3\xa9%s\xc3\xa9", "\xc3\xa9<1>\xc3\xa9"}, {"%s%s%s%s%s%s", "<1><2><3><4><5><6>"},
      {longFormat.c_str(), longExpected.c_str()},  // the template lives on the heap
      {many.c_str(), manyExpected.c_str()},
      // clang-format on
  };
  // The second pass finds each template kept from the first.
  for (int pass = 0; pass < 2; ++pass)
    for (const Row& row : rows) EXPECT_EQ(row.expected, Receivers(row.format, 40)) << row.format;
}

TEST(atr_translateParse, ConversionTextsAsWritten) {
  struct Row {
    const char* format;
    int n;
    const char* expected;
  } rows[] = {{"%ld", 1, "%d"},   {"%lld", 1, "%ld"},    {"%-08.3lx", 1, "%-08.3x"},
              {"%s", 0, nullptr}, {"%s", 2, nullptr},    {"%2$5s %-3d", 2, "%5s"},
              {"%l", 1, nullptr}, {"%1$s %1$d", 2, "%d"}};
  for (int pass = 0; pass < 2; ++pass)
    for (const Row& row : rows) {
      atr_translate message(row.format, kUtf8);
      const char* got = message.Format(row.n);
      EXPECT_STREQ(row.expected ? row.expected : "(null)", got ? got : "(null)") << row.format;
    }
}

TEST(atr_translateParse, TemplatesAreKeptPerThreadAndEvictedSafely) {
  // More distinct formats than a thread keeps, in two threads at once and then again: every
  // message must come out as if parsed afresh.
  auto work = [](int seed, int* failures) {
    for (int round = 0; round < 3; ++round)
      for (int i = 0; i < 300; ++i) {
        std::string format =
            "%" + std::to_string(i % 3 + 1) + "$s #" + std::to_string(i + seed) + " %s %s";
        std::string expected = "<" + std::to_string(i % 3 + 1) + "> #" + std::to_string(i + seed) +
                               (i % 3 == 0   ? " <2> <3>"
                                : i % 3 == 1 ? " <1> <3>"
                                             : " <1> <2>");
        if (Receivers(format.c_str(), 3) != expected) ++*failures;
      }
  };
  int failures[2] = {0, 0};
  std::thread other(work, 0, &failures[1]);
  work(150, &failures[0]);
  other.join();
  EXPECT_EQ(0, failures[0]);
  EXPECT_EQ(0, failures[1]);

  // A message whose template is kept needs one allocation only: its result.
  const char* format = "Exception: %s in file %s at line %d";
  EXPECT_EQ("Exception: a in file b at line 1", Msg(format, "a", "b", 1));
  kld_test::AllocationFailureGuard one(1);
  EXPECT_EQ("Exception: c in file d at line 2", Msg(format, "c", "d", 2));
}

TEST(atr_translateSubstitute, EveryArgumentTypeUnderEveryLetter) {
  int value = 0;
  const void* p = &value;
  char pointer[64];
  std::snprintf(pointer, sizeof(pointer), "%llx",
                static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(p)));
  char buffer[] = "mutable";
  short s = -2;
  std::size_t size = 12;
  // clang-format off
  struct Row { std::string got; std::string expected; } rows[] = {
      {Msg("Value %d", 5), "Value 5"},
      {atr("Value %d", kUtf8).CStr(), "Value %s"},
      {Msg("%5s|", 5), "5|"},  // an int under "%s": "%d", no padding
      {Msg("%8.3f", 5), "5.000000"},
      {Msg("%x|%X|%o|%c|%u", 255, 255, 8, 65, -1), "ff|FF|10|A|4294967295"},
      {Msg("%05d|%-4d|%+d|%d|%s", 42, 7, -2147483647 - 1, -5), "00042|7   |+d|-2147483648|-5"},
      {Msg("%lld", 7), "7"},  // '%ld' after the length letter is dropped: still the int's value
      {Msg("%d", 4294967295u), "4294967295"},
      {Msg("%s|%x|%g|%u|%5u", 7u, 255u, 2u, 8u, 9u), "7|ff|2|8|    9"},
      {Msg("%s", 5000000000LL), "5000000000"},
      {Msg("%d|%u|%s", -5000000000LL, -1LL, -9223372036854775807LL - 1), "-5000000000|18446744073709551615|-9223372036854775808"},
      {Msg("%x|%5c|%-3c|", 0x1234567890LL, 0x141LL, 66LL), "1234567890|    A|B  |"},
      {Msg("%d|%s|%u", 18446744073709551615ULL, 1ULL, 2ULL), "18446744073709551615|1|2"},
      {Msg("%f", 3LL), "3.000000"},
      {Msg("%5.2f", 3.14159), " 3.14"},
      {Msg("%s", 1.0), "1.000000e+00"},
      {Msg("%d", 2.5), "2.500000e+00"},
      {Msg("%E|%g", 1e100, 0.5), "1.000000E+100|0.5"},
      {Msg("%.3e", 1.5e-300), "1.500e-300"},
      {Msg("%f", 2.5f), "2.500000"},
      {Msg("%s and %s", "a", static_cast<const char*>(nullptr)), "a and "},
      {Msg("%d", "text"), "text"},  // a text under a numeric conversion is shown as it is
      {Msg("%25s", "ab"), std::string(23, ' ') + "ab"},
      {Msg("%3.1s|%-4.2s|%.9s|%.s|", "abc", "abc", "abc", "abc"), "  a|ab  |abc|abc|"},
      {Msg("%2$s before %1$s", "a", "b"), "b before a"},
      {Msg("%s %s %s", "A"), "A %s %s"},
      {Msg("%s", "A", "B", 3), "A"},  // extra arguments are dropped
      {Msg("%-7s|", atr_MakeAtrString("str")), "str    |"},
      {Msg("%c", 0), ""},
      {Msg("%x", p), pointer},
      {Msg("%d", static_cast<const void*>(nullptr)), "0"},
      {atr("%s %d %u %g %c", buffer, s, size, 1.5f, 'c', kUtf8).CStr(), "mutable -2 12 1.5 c"},
      {atr(static_cast<const char*>(nullptr), kUtf8).CStr(), ""},
      {atr<int>(nullptr, 5, kUtf8).CStr(), ""},
      {atr_raw(nullptr, kUtf8).CStr(), ""},
      {atr_raw("Open the file\\@menu", kUtf8).CStr(), "Open the file"},
      {atr_raw("50% %d", kUtf8).CStr(), "50% %d"},
      // clang-format on
  };
  for (const Row& row : rows) EXPECT_EQ(row.expected, row.got);

  // Only the substitutions for arguments 1 and 3: the walk stops at the first gap.
  atr_translate message("%s %s %s", kUtf8);
  atr_SubstituteFormat(message, 1, "A", kUtf8);
  atr_SubstituteFormat(message, 3, "B", kUtf8);
  atr_SubstituteFormat(message, 4, "ignored", kUtf8);
  atr_SubstituteFormat(message, 0, "ignored", kUtf8);
  EXPECT_STREQ("A %s %s", message.Result(kUtf8).CStr());
  EXPECT_STREQ("A %s %s", message.Result(kUtf8).CStr());  // Result changes nothing
  atr_SubstituteFormat(message, 2, 2, kUtf8);
  EXPECT_STREQ("A 2 B", message.Result(kUtf8).CStr());
  atr_SubstituteFormat(message, 2, "a much longer replacement text", kUtf8);
  EXPECT_STREQ("A a much longer replacement text B", message.Result(kUtf8).CStr());

  atr_translate narrow("%x", kUtf8);
  ForwardVoidPBySize<4>::Format(narrow, 1, reinterpret_cast<const void*>(0x123456789ULL));
  EXPECT_STREQ("23456789", narrow.Result(kUtf8).CStr());
}

TEST(atr_translateSubstitute, NumericFieldsAreBoundedTextsAreNot) {
  const size_t max = static_cast<size_t>(atr_translate::MaxField);
  // clang-format off
  struct Row { std::string got; size_t length; std::string suffix; } rows[] = {
      {Msg("%5000d", 7), max, "7"},
      {Msg("%-99999999999d|", 7), max + 1, " |"},
      {Msg("%.2000d", 7), max, "07"},
      {Msg("%.2000f", 1.0), 2 + max, "00"},
      {Msg("%2000.2000f", -1e308), 310 + 1 + max, "00"},
      {Msg("%.2000e", 1e308), 2 + max + 5, "e+308"},
      {Msg("%5000.3000x", 0xffLL), max, "ff"},
      {Msg("%.2000000000s", "ab"), 2, "ab"},
      // Texts are justified by bytes without a bound.
      {Msg("%2000s", "x"), 2000, std::string(1999, ' ') + "x"},
      {Msg("%-3000s|", "x"), 3001, "x" + std::string(2999, ' ') + "|"},
      {Msg("%.5s", "abcdefgh"), 5, "abcde"},
      {Msg("%4000.2s", "abcdefgh"), 4000, std::string(3998, ' ') + "ab"},
      {Msg("%-4000.2s", "\xC3\xA9t\xC3\xA9"), 4000, "\xC3\xA9" + std::string(3998, ' ')},
      // clang-format on
  };
  for (const Row& row : rows) {
    EXPECT_EQ(row.length, row.got.size()) << row.got.substr(0, 40);
    EXPECT_EQ(row.suffix, row.got.substr(row.got.size() - row.suffix.size()));
  }
}

TEST(atr_translateSubstitute, FixExponentAndFmtRewriting) {
  const char* fixes[][2] = {
      {"1.5e-007", "1.5e-07"},    {"1e+100", "1e+100"}, {"1.5E+005", "1.5E+005"},
      {"2.0e+0051", "2.0e+0051"}, {"e", "e"},           {"", ""}};
  for (const auto& fix : fixes) {
    char text[32];
    std::snprintf(text, sizeof(text), "%s", fix[0]);
    atr_translate::FixExponent(text);
    EXPECT_STREQ(fix[1], text) << fix[0];
  }

  struct FmtRow {
    const char* fmt;
    atr_Fmt::DataSize size;
    char letter;
    const char* format;
    const char* noWidth;
  } fmts[] = {
      // clang-format off
      {"%8.3d", atr_Fmt::SizeDefault, 0, "%8.3d", "%d"},
      {"%8.3d", atr_Fmt::SizeShort, 0, "%8.3hd", "%hd"},
      {"%8.3d", atr_Fmt::SizeChar, 'x', "%8.3hx", "%hx"},
      {"%d", atr_Fmt::SizeLongLong, 'u', "%u", "%u"},
      {"d", atr_Fmt::SizeUnsignedShort, 0, "hd", "%hd"},
      {"", atr_Fmt::SizeShort, 'x', "", "%hx"},
      // clang-format on
  };
  for (const FmtRow& row : fmts) {
    atr_Fmt fmt(row.fmt);
    EXPECT_TRUE(fmt.Ok());
    EXPECT_STREQ(row.format, fmt.Format(row.size, row.letter)) << row.fmt;
    EXPECT_STREQ(row.noWidth, fmt.FormatNoWidth(row.size, row.letter)) << row.fmt;
  }
  atr_Fmt none(nullptr);
  EXPECT_FALSE(none.Ok());
  EXPECT_EQ(nullptr, none.Format(atr_Fmt::SizeShort, 'd'));
  EXPECT_EQ(0, none.Letter());
}

TEST(atr_translateDictionary, TranslatedMessagesReorderAndFallBack) {
  atr_test::SearchEnv env(KLD_TEST_DATA_DIR);
  testing::internal::CaptureStderr();
  atr_tr_enable(true);
  testing::internal::GetCapturedStderr();
  // clang-format off
  struct Row { std::string got; const char* expected; } rows[] = {
      {Msg("Exception: %s in file %s at line %d", "E", "a.cpp", 12), "Exception : E dans le fichier a.cpp à la ligne 12"},
      {Msg("Copy %s to %s", "src", "dst"), "Copier vers dst depuis src"},
      {Msg("%s has %d items", "box", 3), "3 éléments dans box"},
      {Msg("Value %d", 5), "Valeur 5"},
      {atr("Value %d", kUtf8).CStr(), "Valeur %s"},
      {Msg("Ratio %5.2f", 0.5), "Rapport  0.50"},
      {Msg("Done %d%%", 50), "Fait à 50 %"},
      {Msg("Name: %-8s|", "ab"), "Nom : ab      |"},
      {Msg("Zoom %d%%", 200), "Zoom 200 %"},
      {Msg("%1$s of %2$s", "a", "b"), "b : a"},
      {Msg("Count %d", 5), "Count 5"},  // its translation holds "%$": the text is used
      {atr("Open the file\\@menu", kUtf8).CStr(), "Ouvrir le fichier (menu)"},
      {atr("Open the file\\@other", kUtf8).CStr(), "Open the file"},
      {atr("Open", kUtf8).CStr(), "Open"},
      {Msg("Not in the dictionary %d", 1), "Not in the dictionary 1"},
      // clang-format on
  };
  for (const Row& row : rows) EXPECT_EQ(row.expected, row.got);
  // A template kept before the release is not mistaken for the translation afterwards.
  atr_trReleaseDB();
  EXPECT_EQ("Value 5", Msg("Value %d", 5));
}

TEST(atr_translateDirect, RecordsFollowTheBytesAndTheDictionary) {
  // One buffer, reused for other formats: each call gives the message of its current bytes.
  char format[64];
  std::snprintf(format, sizeof format, "A %%s B %%d");
  EXPECT_EQ("A x B 1", Msg(format, "x", 1));
  EXPECT_EQ("A y B -2147483648", Msg(format, "y", INT32_MIN));
  std::snprintf(format, sizeof format, "%%d then %%s");
  EXPECT_EQ("2 then y", Msg(format, 2, "y"));
  std::snprintf(format, sizeof format, "%%2$s<%%1$s|%%s");
  EXPECT_EQ("b<a|%s", Msg(format, "a", "b"));  // the third conversion has no argument
  // Arguments the one-pass form does not format itself, beside those it does.
  std::snprintf(format, sizeof format, "%%5d|%%s|%%u|%%-4s|%%x");
  EXPECT_EQ("   42|7|4294967295|ab  |ff", Msg(format, 42, 7, -1, "ab", 255));
  EXPECT_EQ("t|u|v|w   |z", Msg(format, "t", "u", "v", "w", "z"));
  EXPECT_EQ("|1|%s|%s|%s", Msg(format, static_cast<const char*>(nullptr), 1));

  // The same format before a dictionary is loaded, with it, and after its release.
  std::snprintf(format, sizeof format, "Value %%d");
  EXPECT_EQ("Value 5", Msg(format, 5));
  atr_test::SearchEnv env(KLD_TEST_DATA_DIR);
  testing::internal::CaptureStderr();
  atr_tr_enable(true);
  testing::internal::GetCapturedStderr();
  EXPECT_EQ("Valeur 5", Msg(format, 5));
  atr_trReleaseDB();
  EXPECT_EQ("Value 6", Msg(format, 6));
}

TEST(atr_translateModes, LocaleModeConvertsAtTheEdges) {
  atr_test::ScopedCtype ctype("C.UTF-8");
  ASSERT_TRUE(ctype.ok());
  EXPECT_STREQ("Caf\xc3\xa9 \xc3\xa9t\xc3\xa9 5",
               atr("Caf\xc3\xa9 %s %d", "\xc3\xa9t\xc3\xa9", 5, kLocale).CStr());
  // In the "C" locale bytes above 0x7F are not characters: the conversion says so in-band.
  std::setlocale(LC_CTYPE, "C");
  // The argument fails on its way in, and its unconverted byte makes the message fail again
  // on its way out: each edge adds its own report.
  EXPECT_EQ("****ERROR: Transcoding Error: ****ERROR: Transcoding Error: \xc3\xa9",
            std::string(atr("%s", "\xc3\xa9", kLocale).CStr()));
  EXPECT_EQ("****ERROR: Transcoding Error: \xc3\xa9",
            std::string(atr_raw("\xc3\xa9", kLocale).CStr()))
      << "a text that is only converted on its way out fails once";
  EXPECT_STREQ("plain 5", atr("plain %d", 5, kLocale).CStr());
  EXPECT_STREQ("\xc3\xa9", atr("%s", "\xc3\xa9", kUtf8).CStr());

  atr_String text = atr_MakeAtrString("shared");
  EXPECT_EQ(text.CStr(), TPXBasAtrStringMode::ModalToUTF8(text, kUtf8).CStr());
  EXPECT_EQ(text.CStr(), TPXBasAtrStringMode::Utf8ToModal(text, kUtf8).CStr());
}

TEST(atr_translateModes, AllocationFailureLeaksNothing) {
  for (long n = 0; n < 12; ++n) {
    kld_test::AllocationFailureGuard fail(n);
    try {
      atr_String s = atr("%s %d %s %5s and a long tail that does not fit inline %s", "x", 1,
                         "a text longer than the inline buffer of a conversion", "y",
                         atr_MakeAtrString("z"), kUtf8);
      EXPECT_STREQ(
          "x 1 a text longer than the inline buffer of a conversion     y and a long tail that "
          "does not fit inline z",
          s.CStr());
    } catch (const std::bad_alloc&) {
    }
  }
}

TEST(atr_translateDeathTest, DollarWithoutNumberInTheProgramsFormat) {
  EXPECT_DEATH(atr("broken %$s", kUtf8),
               "AssertionFailed:0 \\[TPXBase/TPXBasAtr.m/src/atr_translate:[0-9]+\\]");
}
