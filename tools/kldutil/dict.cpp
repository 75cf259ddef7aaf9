// dict.cpp: "kldutil dict check": lints translation dictionaries with the library's reader.
#include "kldutil.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <getopt.h>

namespace kldutil {
namespace {

constexpr const char kHelp[] =
    "Usage: kldutil dict check FILE...\n"
    "Check translation dictionaries line by line as the library loads them, and report on\n"
    "the standard error stream, as FILE:LINE: message, every line it would skip and every\n"
    "entry that would not translate its message faithfully:\n"
    "  - a translation that is not valid UTF-8 (the library skips the line with a warning)\n"
    "  - an identity translation, written exactly as its key (not loaded)\n"
    "  - a line with nothing after the assignment or with a zero byte (skipped)\n"
    "  - a translation that does not end with a closing quote (its last character is\n"
    "    dropped as if it were one; trailing blanks count)\n"
    "  - an empty translation (loaded: the message becomes the empty text)\n"
    "  - a line longer than 8191 bytes (read as several lines, each parsed on its own)\n"
    "  - a key defined again with a different translation (the last definition is used)\n"
    "  - an overlong UTF-8 form in a key or translation, such as an encoded NUL (C0 80),\n"
    "    which the conversion to the locale turns into the character it spells\n"
    "  - conversions of the translation that do not match the key's: another letter ('%d'\n"
    "    translated as '%s'), a missing or extra argument, an argument number out of range\n"
    "    or given twice, or a '%$' (the translation is then not used)\n"
    "For each FILE ('-' is standard input) a summary 'FILE: N entries loaded, M problems'\n"
    "goes to the standard output.\n"
    "\n"
    "Exit status: 0 no problem, 1 a problem found, 2 usage error or a file that cannot be\n"
    "read.\n";

constexpr const char kDictHelp[] =
    "Usage: kldutil dict check FILE...\n"
    "       kldutil dict stats [--format=json] FILE...\n"
    "       kldutil dict extract [-k NAME]... [-o FILE] [-r] SOURCE...\n"
    "       kldutil dict merge [-o FILE] TRANSLATED TEMPLATE\n"
    "Run 'kldutil dict COMMAND --help' for more.\n";

/// Longest excerpt of a key quoted in a message.
constexpr size_t kExcerpt = 60;

/// One stored entry: where its key and translation are in the arena.
struct Definition {
  int line;
  size_t key;
  size_t text;
};

struct Problem {
  int line;
  size_t order;    ///< keeps problems of one line in the order found
  size_t message;  ///< in the arena
};

/// The problems of one file, sorted by line when printed.
class Report {
 public:
  explicit Report(const char* name) : m_name(name) {}

  void Add(int line, const char* format, ...) __attribute__((format(printf, 3, 4))) {
    char message[1024];
    va_list args;
    va_start(args, format);
    int n = std::vsnprintf(message, sizeof(message), format, args);
    va_end(args);
    if (n < 0) n = 0;
    if (static_cast<size_t>(n) >= sizeof(message)) n = sizeof(message) - 1;
    m_problems.Push(Problem{line, m_problems.Size(), AppendText(m_arena, message, n)});
  }

  size_t Count() const { return m_problems.Size(); }
  /// Problem i in the order found.
  const char* Message(size_t i) const { return m_arena.Data() + m_problems[i].message; }

  void Print() {
    std::sort(m_problems.Data(), m_problems.Data() + m_problems.Size(),
              [](const Problem& a, const Problem& b) {
                return a.line != b.line ? a.line < b.line : a.order < b.order;
              });
    for (size_t i = 0; i < m_problems.Size(); ++i)
      std::fprintf(stderr, "%s:%d: %s\n", m_name, m_problems[i].line,
                   m_arena.Data() + m_problems[i].message);
  }

 private:
  const char* m_name;
  Bytes m_arena;
  Array<Problem> m_problems;
};

/// A quotable excerpt of a key: at most kExcerpt bytes, cut before a UTF-8 character.
struct Excerpt {
  Excerpt(const char* text, size_t length) {
    size_t n = length;
    if (n > kExcerpt) {
      n = kExcerpt;
      while (n > 0 && (static_cast<unsigned char>(text[n]) & 0xC0) == 0x80) --n;
    }
    std::memcpy(m_text, text, n);
    std::strcpy(m_text + n, length > n ? "..." : "");
  }
  char m_text[kExcerpt + 4];
};

/// Argument numbers that are out of range or given twice.
void CheckNumbers(Report& report, int line, const char* which,
                  const atr_FormatConversions& conversions) {
  const int count = conversions.Count();
  Bytes seen;  // seen[k - 1]: number k was given already
  seen.Reserve(static_cast<size_t>(count));
  for (int k = 0; k < count; ++k) seen.Push(0);
  for (int i = 0; i < count; ++i) {
    const atr_FormatConversion& c = conversions[i];
    if (!c.m_numbered) continue;
    if (c.m_number < 1 || c.m_number > count) {
      report.Add(line,
                 "%s: argument number %d of \"%s\" is out of range 1 to %d (it receives "
                 "argument %d)",
                 which, c.m_number, c.m_format, count, c.m_argument);
      continue;
    }
    if (seen[c.m_number - 1]) {
      report.Add(line, "%s: argument number %d is given twice", which, c.m_number);
      continue;
    }
    seen.Data()[c.m_number - 1] = 1;
  }
}

/// Overlong UTF-8 forms: the library reads them as the characters they spell, but the
/// conversion to the locale writes those characters out, so "\xC0\x80" becomes a real zero
/// byte that cuts the message for C callers and "\xC0\xAF" a "/". Reports the first one.
void CheckForms(Report& report, int line, const char* which, const char* text, int length) {
  for (int at = 0; at < length;) {
    int bytes = 0;
    const int code = atr_utf8_to_ucs4(text + at, &bytes);
    if (code < 0 || bytes < 1) return;  // not the library's UTF-8: reported elsewhere
    if (bytes > atr_utf8_len(code)) {
      char form[20] = "";
      for (int i = 0; i < bytes; ++i)
        std::snprintf(form + 4 * i, sizeof form - 4 * i, "\\x%02X",
                      static_cast<unsigned char>(text[at + i]));
      if (code == 0)
        report.Add(line,
                   "%s holds an encoded NUL (\"%s\") at byte %d: in locale mode it becomes a "
                   "zero byte that ends the message",
                   which, form, at);
      else
        report.Add(line, "%s holds an overlong form \"%s\" of U+%04X at byte %d", which, form,
                   static_cast<unsigned>(code), at);
      return;
    }
    at += bytes;
  }
}

/// The conversions of a translation against those of its key.
void CheckConversions(Report& report, const atr_DictLine& entry) {
  atr_FormatConversions key(entry.m_key, atr_FormatConversions::AsFormat);
  atr_FormatConversions text(entry.m_text, atr_FormatConversions::AsTranslation);
  if (!key.Ok()) {
    report.Add(entry.m_number, "key holds \"%%$\": formatting it stops the program");
    return;
  }
  if (!text.Ok()) {
    report.Add(entry.m_number,
               "translation holds \"%%$\": it is not used, the key is shown instead");
    return;
  }
  CheckNumbers(report, entry.m_number, "key", key);
  CheckNumbers(report, entry.m_number, "translation", text);
  const int count = std::max(key.Count(), text.Count());
  for (int n = 1; n <= count; ++n) {
    const atr_FormatConversion* k = key.ForArgument(n);
    const atr_FormatConversion* t = text.ForArgument(n);
    if (t == nullptr)
      report.Add(entry.m_number, "translation misses argument %d (\"%s\" in the key)", n,
                 k->m_format);
    else if (k == nullptr)
      report.Add(entry.m_number,
                 "translation has an extra argument %d (\"%s\"); the key has %d: it shows as "
                 "\"%%s\"",
                 n, t->m_format, key.Count());
    else if (k->m_letter != t->m_letter)
      report.Add(entry.m_number, "argument %d is \"%s\" in the key but \"%s\" in the translation",
                 n, k->m_format, t->m_format);
  }
}

/// What "dict stats" counts of one file.
struct Stats {
  long entries = 0;       ///< stored by the library
  long translated = 0;    ///< stored, with a translation that is neither empty nor the key
  long untranslated = 0;  ///< identity lines, and entries whose text equals the key
  long empty = 0;         ///< stored with an empty translation
  long obsolete = 0;      ///< "#~ " lines that dict merge keeps for keys no longer used
  size_t problems = 0;    ///< everything dict check reports but the two counts above
};

/// The lines that start with the given prefix.
long CountLines(const Bytes& text, const char* prefix) {
  const size_t n = std::strlen(prefix);
  long count = 0;
  for (size_t at = 0; at + n <= text.Size();) {
    if (std::memcmp(text.Data() + at, prefix, n) == 0) ++count;
    const void* end = std::memchr(text.Data() + at, '\n', text.Size() - at);
    if (end == nullptr) break;
    at = static_cast<size_t>(static_cast<const char*>(end) - text.Data()) + 1;
  }
  return count;
}

/// Checks one file and gives its exit status; with stats, counts instead of reporting.
int CheckFile(const char* path, Stats* stats = nullptr) {
  const char* name;
  std::FILE* input = OpenInput(path, name);
  if (input == nullptr) return kUsage;
  Bytes all;
  const bool readError = !ReadAll(input, name, all);
  CloseInput(input);
  if (readError) return kUsage;
  all.Push('\0');  // fmemopen needs a buffer, even for an empty file
  std::FILE* file = fmemopen(all.Data(), all.Size() - 1 > 0 ? all.Size() - 1 : 1, "rb");
  if (file == nullptr) throw std::bad_alloc();
  if (all.Size() == 1) std::fgetc(file);  // an empty file: nothing to read
  atr_DictScanner scanner(file);
  if (!scanner.Ok()) {
    std::fclose(file);
    throw std::bad_alloc();
  }
  Report report(name);
  Bytes arena;
  Array<Definition> definitions;
  atr_DictLine line;
  long loaded = 0;
  while (scanner.Next(line)) {
    Excerpt key(line.m_rawKey, static_cast<size_t>(line.m_rawKeyLength));
    if (line.m_piece == 1)
      report.Add(line.m_number,
                 "line longer than %d bytes: the library reads it as several lines of at most "
                 "%d bytes, each parsed on its own",
                 atr_DictScanner::MaxLine, atr_DictScanner::MaxLine);
    const bool hasText = line.m_kind == atr_DictLineEntry || line.m_kind == atr_DictLineIdentity ||
                         line.m_kind == atr_DictLineInvalidUtf8;
    if (hasText && line.m_rawText[line.m_rawTextLength] != '\'')
      report.Add(line.m_number,
                 "translation of '%s' does not end with a closing quote: the library takes its "
                 "last character '%c' for one and drops it",
                 key.m_text, line.m_rawText[line.m_rawTextLength]);
    switch (line.m_kind) {
      case atr_DictLineEntry:
        ++loaded;
        if (stats != nullptr) {
          const bool same = line.m_keyLength == line.m_textLength &&
                            std::memcmp(line.m_key, line.m_text, line.m_keyLength) == 0;
          ++(line.m_textLength == 0 ? stats->empty
             : same                 ? stats->untranslated
                                    : stats->translated);
        }
        if (line.m_keyLength == 0)
          report.Add(line.m_number, "empty key (loaded): only an empty message text finds it");
        if (line.m_textLength == 0 && stats == nullptr)
          report.Add(line.m_number,
                     "empty translation of '%s': the message is replaced by the empty text",
                     key.m_text);
        definitions.Push(Definition{line.m_number, AppendText(arena, line.m_key, line.m_keyLength),
                                    AppendText(arena, line.m_text, line.m_textLength)});
        CheckForms(report, line.m_number, "key", line.m_key, line.m_keyLength);
        CheckForms(report, line.m_number, "translation", line.m_text, line.m_textLength);
        CheckConversions(report, line);
        break;
      case atr_DictLineIdentity:
        if (stats != nullptr)
          ++stats->untranslated;
        else
          report.Add(line.m_number, "identity translation of '%s' (not loaded)", key.m_text);
        break;
      case atr_DictLineInvalidUtf8:
        report.Add(line.m_number, "translation of '%s' is not valid UTF-8 (line skipped)",
                   key.m_text);
        break;
      case atr_DictLineNoTranslation:
        report.Add(line.m_number, "nothing after the assignment for '%s' (line skipped)",
                   key.m_text);
        break;
      case atr_DictLineUnusable:
        report.Add(line.m_number, "zero byte in the line of '%s' (line skipped)", key.m_text);
        break;
      case atr_DictLineOverLong:  // a piece without an entry: reported with its line above
        break;
    }
  }
  std::fclose(file);

  // Keys defined more than once: the last definition is the one looked up.
  Array<size_t> order;
  for (size_t i = 0; i < definitions.Size(); ++i) order.Push(i);
  const char* base = arena.Data();
  std::sort(order.Data(), order.Data() + order.Size(), [&](size_t a, size_t b) {
    int c = std::strcmp(base + definitions[a].key, base + definitions[b].key);
    return c != 0 ? c < 0 : a < b;
  });
  for (size_t i = 0; i < order.Size();) {
    size_t end = i + 1;
    while (end < order.Size() &&
           std::strcmp(base + definitions[order[i]].key, base + definitions[order[end]].key) == 0)
      ++end;
    const Definition& last = definitions[order[end - 1]];
    for (size_t j = i + 1; j < end; ++j) {
      const Definition& earlier = definitions[order[j - 1]];
      const Definition& later = definitions[order[j]];
      if (std::strcmp(base + earlier.text, base + later.text) == 0) continue;
      const char* key = base + later.key;
      Excerpt excerpt(key, std::strlen(key));
      report.Add(later.line,
                 "key '%s' is also defined at line %d with a different translation; line %d "
                 "is used",
                 excerpt.m_text, earlier.line, last.line);
    }
    i = end;
  }

  if (stats != nullptr) {
    stats->entries = loaded;
    stats->obsolete = CountLines(all, "#~ ");
    stats->problems = report.Count();
    return kOk;
  }
  report.Print();
  std::printf("%s: %ld %s loaded, %zu %s\n", name, loaded, loaded == 1 ? "entry" : "entries",
              report.Count(), report.Count() == 1 ? "problem" : "problems");
  return report.Count() > 0 ? kBadInput : kOk;
}

constexpr const char kStatsHelp[] =
    "Usage: kldutil dict stats [--format=text|json] FILE...\n"
    "Count, for each dictionary FILE ('-' is standard input), as the library reads it:\n"
    "  entries       entries the library stores\n"
    "  translated    stored with a translation that is neither empty nor the key\n"
    "  untranslated  identity lines (the key as its own translation), not stored\n"
    "  empty         stored with an empty translation: the message becomes empty\n"
    "  obsolete      '#~ ' lines kept by dict merge for keys no longer used\n"
    "  problems      everything else dict check reports\n"
    "and the percentage translated (of translated, untranslated and empty).\n"
    "\n"
    "Options:\n"
    "  --format=json  one JSON object per file, in an array, for scripts\n"
    "  -h, --help     show this help\n"
    "\n"
    "Exit status: 0 success, 2 usage error or a file that cannot be read.\n";

double PercentTranslated(const Stats& s) {
  const long all = s.translated + s.untranslated + s.empty;
  return all == 0 ? 0.0 : 100.0 * static_cast<double>(s.translated) / static_cast<double>(all);
}

/// A JSON string: the name with quotes, backslashes and control bytes escaped.
void PrintJsonString(const char* text) {
  std::putchar('"');
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text); *p != 0; ++p) {
    if (*p == '"' || *p == '\\')
      std::printf("\\%c", *p);
    else if (*p < 0x20)
      std::printf("\\u%04x", *p);
    else
      std::putchar(*p);
  }
  std::putchar('"');
}

int RunStats(int argc, char** argv) {
  enum { kFormat = 1 };
  static const option kOptions[] = {{"format", required_argument, nullptr, kFormat},
                                    {"help", no_argument, nullptr, 'h'},
                                    {nullptr, 0, nullptr, 0}};
  bool json = false;
  ParseOptions parse("dict stats", argc, argv, "h", kOptions);
  for (int c; (c = parse.Next()) != -1;) {
    if (c == 'h') return PrintHelp(kStatsHelp);
    if (c != kFormat) return parse.Error();
    if (std::strcmp(parse.Argument(), "json") != 0 && std::strcmp(parse.Argument(), "text") != 0)
      return UsageError("dict stats", "unknown format '%s' (text or json)", parse.Argument());
    json = std::strcmp(parse.Argument(), "json") == 0;
  }
  if (parse.OperandCount() == 0) return UsageError("dict stats", "no dictionary file given");
  int result = kOk;
  if (json) std::printf("[");
  for (int i = 0; i < parse.OperandCount(); ++i) {
    Stats s;
    const int status = CheckFile(parse.Operand(i), &s);
    result = std::max(result, status);
    if (status != kOk) continue;
    const char* name = std::strcmp(parse.Operand(i), "-") == 0 ? kStdinName : parse.Operand(i);
    if (json) {
      std::printf("%s\n  {\"file\": ", i > 0 ? "," : "");
      PrintJsonString(name);
      std::printf(
          ", \"entries\": %ld, \"translated\": %ld, \"untranslated\": %ld, "
          "\"empty\": %ld, \"obsolete\": %ld, \"problems\": %zu, "
          "\"percent_translated\": %.1f}",
          s.entries, s.translated, s.untranslated, s.empty, s.obsolete, s.problems,
          PercentTranslated(s));
    } else {
      std::printf(
          "%s: %ld %s, %ld translated, %ld untranslated, %ld empty, %ld obsolete, "
          "%zu %s (%.1f%% translated)\n",
          name, s.entries, s.entries == 1 ? "entry" : "entries", s.translated, s.untranslated,
          s.empty, s.obsolete, s.problems, s.problems == 1 ? "problem" : "problems",
          PercentTranslated(s));
    }
  }
  if (json) std::printf("\n]\n");
  return result;
}

}  // namespace

int ConversionProblems(const char* key, const char* text, void (*each)(const char*, void*),
                       void* context) {
  Report report("");
  atr_DictLine entry{};
  entry.m_key = key;
  entry.m_keyLength = static_cast<int>(std::strlen(key));
  entry.m_text = text;
  entry.m_textLength = static_cast<int>(std::strlen(text));
  CheckConversions(report, entry);
  for (size_t i = 0; i < report.Count(); ++i) each(report.Message(i), context);
  return static_cast<int>(report.Count());
}

int RunDict(int argc, char** argv) {
  if (argc == 0) return UsageError("dict", "missing subcommand (check, extract, merge or stats)");
  if (IsHelp(argv[0])) return PrintHelp(kDictHelp);
  if (std::strcmp(argv[0], "stats") == 0) return RunStats(argc - 1, argv + 1);
  if (std::strcmp(argv[0], "extract") == 0) return RunDictExtract(argc - 1, argv + 1);
  if (std::strcmp(argv[0], "merge") == 0) return RunDictMerge(argc - 1, argv + 1);
  if (std::strcmp(argv[0], "check") != 0)
    return UsageError("dict", "unknown subcommand '%s' (use check, extract, merge or stats)",
                      argv[0]);
  static const option kOptions[] = {{"help", no_argument, nullptr, 'h'}, {nullptr, 0, nullptr, 0}};
  ParseOptions parse("dict check", argc - 1, argv + 1, "h", kOptions);
  for (int c; (c = parse.Next()) != -1;) {
    if (c == 'h') return PrintHelp(kHelp);
    return parse.Error();
  }
  Array<const char*> files;
  for (int i = 0; i < parse.OperandCount(); ++i) files.Push(parse.Operand(i));
  if (files.Size() == 0) return UsageError("dict check", "no dictionary file given");
  int result = kOk;
  for (size_t i = 0; i < files.Size(); ++i) result = std::max(result, CheckFile(files[i]));
  return result;
}

}  // namespace kldutil
