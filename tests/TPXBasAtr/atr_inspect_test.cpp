// atr_inspect_test.cpp: the dictionary scanner, the conversion listing and loading by name.
#include "atr_TestSupport.h"

#include <cstdio>
#include <iterator>
#include <map>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

struct Scanned {
  int number;
  atr_DictLineEnm kind;
  std::string rawKey, key, text;
  int piece = 0;
};

std::vector<Scanned> Scan(const std::string& bytes) {
  atr_test::TempDir dir;
  std::FILE* in = std::fopen(dir.Write(bytes).c_str(), "rb");
  std::vector<Scanned> lines;
  if (in == nullptr) return lines;
  atr_DictScanner scanner(in);
  atr_DictLine line;
  while (scanner.Next(line))
    lines.push_back({line.m_number, line.m_kind,
                     std::string(line.m_rawKey, static_cast<size_t>(line.m_rawKeyLength)),
                     std::string(line.m_key, static_cast<size_t>(line.m_keyLength)),
                     std::string(line.m_text, static_cast<size_t>(line.m_textLength)),
                     line.m_piece});
  std::fclose(in);
  return lines;
}

const std::string kDictionary =
    "# header\n"                                    // 1: passed over
    "d['Open'] = r'Ouvrir'\n"                       // 2
    "d['Bare'] = r'\n"                              // 3: nothing after the assignment
    "d['Open'] = r'Open'\n"                         // 4
    "d['Bad'] = r'\xff'\n"                          // 5
    "d['Cut'] = r'no quote\n"                       // 6: the last character is dropped
    "d['Empty'] = r''\n"                            // 7
    "d[''] = r'Nothing'\n"                          // 8
    "d['Zero\\0'] = r'Null'\n"                      // 9
    "'] = r'no key'\n"                              // 10: passed over
    "d['Tab\\tx'] = r'It\\'s \\x41\\101\\q'  \r\n"  // 11
    "d['Long'] = r'" +
    std::string(8200, 'y') + "'\n"                                      // 12: two pieces
    + "# " + std::string(8189, 'x') + "d['Split'] = r'Coup\xc3\xa9'\n"  // 13: the 2nd an entry
    + "d['Exact'] = r'" + std::string(8175, 'z') + "'\n"                // 14: 8191 bytes, whole
    + "d['Last'] = r'Dernier'";                                         // 15: no newline at the end

TEST(atr_DictScanner, ClassifiesEveryLineAsTheLoaderDoes) {
  const std::vector<Scanned> expected = {
      {2, atr_DictLineEntry, "Open", "Open", "Ouvrir"},
      {3, atr_DictLineNoTranslation, "Bare", "", ""},
      {4, atr_DictLineIdentity, "Open", "", ""},
      {5, atr_DictLineInvalidUtf8, "Bad", "", ""},
      {6, atr_DictLineEntry, "Cut", "Cut", "no quot"},
      {7, atr_DictLineEntry, "Empty", "Empty", ""},       // replaces its message with ""
      {8, atr_DictLineEntry, "", "", "Nothing"},          // an empty key is a key
      {9, atr_DictLineEntry, "Zero\\0", "Zero", "Null"},  // the escaped zero ends the key
      // "\r\n" ends a line like "\n"; the blank before it is taken as the closing quote.
      {11, atr_DictLineEntry, "Tab\\tx", "Tab\tx", "It's AA\\q' "},
      // A line longer than 8191 bytes is read as several lines, each parsed on its own.
      {12, atr_DictLineEntry, "Long", "Long", std::string(8175, 'y'), 1},
      {12, atr_DictLineOverLong, "", "", "", 2},
      {13, atr_DictLineOverLong, "", "", "", 1},
      {13, atr_DictLineEntry, "Split", "Split", "Coup\xc3\xa9", 2},
      {14, atr_DictLineEntry, "Exact", "Exact", std::string(8175, 'z')},
      {15, atr_DictLineEntry, "Last", "Last", "Dernier"},
  };
  std::vector<Scanned> got = Scan(kDictionary);
  ASSERT_EQ(expected.size(), got.size());
  for (size_t i = 0; i < got.size(); ++i) {
    SCOPED_TRACE("line " + std::to_string(expected[i].number));
    EXPECT_EQ(expected[i].number, got[i].number);
    EXPECT_EQ(expected[i].kind, got[i].kind);
    EXPECT_EQ(expected[i].rawKey, got[i].rawKey);
    EXPECT_EQ(expected[i].key, got[i].key);
    EXPECT_EQ(expected[i].text, got[i].text);
    EXPECT_EQ(expected[i].piece, got[i].piece);
  }
}

TEST(atr_DictScanner, LoaderStoresExactlyTheScannedEntriesLastDefinitionFirst) {
  const std::string bytes =
      kDictionary + "\nd['Open'] = r'Ouvrir encore'\nd['Bad'] = r'B\xc3\xa9'\n";
  std::map<std::string, std::string> last;
  int entries = 0;
  for (const Scanned& line : Scan(bytes))
    if (line.kind == atr_DictLineEntry) {
      last[line.key] = line.text;
      ++entries;
    }
  atr_test::TempDir dir;
  const std::string file = dir.Write(bytes);
  atr_trReleaseDB();
  testing::internal::CaptureStderr();
  EXPECT_EQ(entries, atr_trLoadFile(file.c_str()));
  EXPECT_EQ("WARNING: atr: Invalid UTF-8 string.\n\"Bad\"\n\n",
            testing::internal::GetCapturedStderr());
  for (const auto& [key, text] : last) {
    const char* found = atr_trLookup(key.c_str());
    ASSERT_NE(nullptr, found) << key;
    EXPECT_EQ(text, found) << key;
  }
  EXPECT_STREQ("no quot", atr_trLookup("Cut"));
  EXPECT_EQ(std::string("Ouvrir encore"), atr("Open", TPXBasStringMode(false)).CStr());
  // An empty translation replaces the message; only a missing key keeps the English text.
  EXPECT_EQ(std::string(""), atr("Empty", TPXBasStringMode(false)).CStr());
  EXPECT_EQ(std::string(""), atr_raw("Empty", TPXBasStringMode(false)).CStr());
  EXPECT_EQ(std::string("Missing"), atr("Missing", TPXBasStringMode(false)).CStr());
  EXPECT_EQ(std::string("Coup\xc3\xa9"), atr("Split", TPXBasStringMode(false)).CStr());

  EXPECT_EQ(entries, atr_trLoadFile("/nonexistent"));  // a second load is a no-op
  atr_trReleaseDB();
  EXPECT_EQ(0, atr_trLoadFile("/nonexistent"));  // remembered like a failed search
  EXPECT_EQ(0, atr_trLoadFile(file.c_str()));
  // Neither a directory nor a FIFO nobody writes to is read (the FIFO must not block).
  const std::string fifo = dir.Path() + "/dict.fifo";
  ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
  for (const std::string& path : {dir.Path(), fifo}) {
    atr_trReleaseDB();
    EXPECT_EQ(0, atr_trLoadFile(path.c_str())) << path;
  }
  atr_trReleaseDB();
}

// What the writer writes, the reader gives back exactly; what it cannot write so, it refuses
// and writes nothing.
TEST(atr_DictWriteEntry, TheReaderGivesBackWhatItWrote) {
  const std::pair<std::string, std::string> pairs[] = {
      {"Open", "Ouvrir"},
      {"It's", "C'est"},
      {"a'] = r'b", "x'] = r'y"},  // the assignment itself inside both texts
      {"] = r", "key that meets the written assignment"},
      {"end'] = r", "likewise at its end"},
      {"back\\slash\\", "tab\there\\"},
      {"two\nlines\r", "deux\nlignes"},
      {"\\047 and \\x41", "\\n"},
      {"Caf\xc3\xa9 %1$s", "%1$s caf\xc3\xa9"},
      {"", "empty key"},
      {"Blank", ""},
      {"Same", "Same"},            // an identity line: written, not stored
      {"[x] = r'y", "[x] = r'y"},  // likewise, whatever it holds
  };
  atr_test::TempDir dir;
  const std::string path = dir.Path() + "/written.py";
  std::FILE* out = std::fopen(path.c_str(), "wb");
  ASSERT_NE(nullptr, out);
  for (const auto& [key, text] : pairs)
    EXPECT_TRUE(atr_DictWriteEntry(out, key.data(), static_cast<int>(key.size()), text.data(),
                                   static_cast<int>(text.size())))
        << key;
  // Refused: a zero byte, a text that is not UTF-8, a line too long for the reader.
  const std::string zero("a\0b", 3), bad("\xff"), longText(9000, 'x');
  EXPECT_FALSE(atr_DictWriteEntry(out, zero.data(), 3, "x", 1));
  EXPECT_FALSE(atr_DictWriteEntry(out, "k", 1, bad.data(), 1));
  EXPECT_FALSE(atr_DictWriteEntry(out, "k", 1, longText.data(), 9000));
  std::fclose(out);

  std::FILE* in = std::fopen(path.c_str(), "rb");
  ASSERT_NE(nullptr, in);
  atr_DictScanner scanner(in);
  atr_DictLine line;
  size_t i = 0;
  while (scanner.Next(line) && i < std::size(pairs)) {
    const auto& [key, text] = pairs[i++];
    if (key == text) {
      EXPECT_EQ(atr_DictLineIdentity, line.m_kind);
      continue;
    }
    ASSERT_EQ(atr_DictLineEntry, line.m_kind) << key;
    EXPECT_EQ(key, std::string(line.m_key, static_cast<size_t>(line.m_keyLength)));
    EXPECT_EQ(text, std::string(line.m_text, static_cast<size_t>(line.m_textLength)));
  }
  EXPECT_EQ(std::size(pairs), i);
  EXPECT_FALSE(scanner.Next(line)) << "the refused pairs left no line";
  std::fclose(in);

  EXPECT_LT(atr_DictKeyCompare("Zoom", 4, "apple", 5), 0) << "bytes, not letters";
  EXPECT_LT(atr_DictKeyCompare("abc", 3, "abcd", 4), 0);
  EXPECT_GT(atr_DictKeyCompare("\xc3\xa9", 2, "z", 1), 0) << "unsigned";
  EXPECT_EQ(0, atr_DictKeyCompare("", 0, "", 0));
}

TEST(atr_FormatConversions, ReportsWhatTheFormatterParses) {
  const auto kTr = atr_FormatConversions::AsTranslation, kFormat = atr_FormatConversions::AsFormat;
  // Each conversion as "argument<number[$] letter format;" ('$': numbered in the text).
  const struct {
    const char* text;
    atr_FormatConversions::SourceMode source;
    bool ok;
    const char* conversions;
  } cases[] = {
      // clang-format off
      {"Exception: %s in file %s at line %d", kTr, true, "1<1 s %s;2<2 s %s;3<3 d %d;"},
      {"%2$s %s %s", kTr, true, "2<2$ s %s;1<1 s %s;3<3 s %s;"},
      {"%1$s %3$s", kTr, true, "1<1$ s %s;2<3$ s %s;"},  // the n-th lowest number takes argument n
      {"%-5.2lf|%lld|%5k|%hd|100%%|%+d|%", kTr, true, "1<1 f %-5.2f;2<2 d %ld;"},
      {"bad %$s here", kTr, false, ""},
      {"Open %d\\@menu %s", kTr, true, "1<1 d %d;2<2 s %s;"},
      {"Open %d\\@menu %s", kFormat, true, "1<1 d %d;"}, {"Open %d\\@ %$", kFormat, true, "1<1 d %d;"},
      {nullptr, kFormat, true, ""},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text != nullptr ? c.text : "(null)");
    atr_FormatConversions list(c.text, c.source);
    EXPECT_EQ(c.ok, list.Ok());
    std::string got;
    for (int i = 0; i < list.Count(); ++i) {
      const auto& v = list[i];
      got += std::to_string(v.m_argument) + "<" + std::to_string(v.m_number) +
             (v.m_numbered ? "$ " : " ") + v.m_letter + " " + v.m_format + ";";
      EXPECT_EQ(&v, list.ForArgument(v.m_argument)) << i;
    }
    EXPECT_EQ(c.conversions, got);
    EXPECT_EQ(nullptr, list.ForArgument(0));
    EXPECT_EQ(nullptr, list.ForArgument(list.Count() + 1));
  }
}

TEST(atr_FormatConversions, FailedAllocationThrowsAndLeavesNothing) {
  for (long n = 0; n < 6; ++n) {
    SCOPED_TRACE(n);
    bool threw = false;
    {
      kld_test::AllocationFailureGuard failing(n);
      try {
        atr_FormatConversions list("%s and %2$d, %s\\@note", atr_FormatConversions::AsFormat);
        EXPECT_EQ(3, list.Count());
      } catch (const std::bad_alloc&) {
        threw = true;
      }
    }
    if (!threw) break;  // enough allocations: every failure point was passed
  }
}

TEST(atr_FormatConversionsDeathTest, IndexOutOfRange) {
  atr_FormatConversions list("%d");
  EXPECT_DEATH(
      (void)list[1],
      "AssertionFailed:i >= 0 && i < m_count \\[TPXBase/TPXBasAtr.m/src/atr_inspect:[0-9]+\\]");
}

}  // namespace
