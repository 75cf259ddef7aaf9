// dict_merge.cpp: "kldutil dict merge": brings a translated dictionary up to date with a
// fresh extract, keeping every translation and every comment of the translator.
#include "kldutil.h"

#include <algorithm>
#include <cerrno>
#include <getopt.h>
#include <string>
#include <vector>

namespace kldutil {
namespace {

constexpr const char kHelp[] =
    "Usage: kldutil dict merge [-o FILE] TRANSLATED TEMPLATE\n"
    "Bring the translated dictionary TRANSLATED up to date with TEMPLATE, a fresh\n"
    "'kldutil dict extract', and write the result (standard output, or FILE):\n"
    "  - every key of TEMPLATE, in the library's key order, with TEMPLATE's '# FILE:LINE'\n"
    "    comments of its uses;\n"
    "  - its translation from TRANSLATED when there is one, after the translator's comments;\n"
    "    a translation whose conversions no longer match the key gets '# check:' comments\n"
    "    (and a FILE:LINE: warning), as dict check reports them;\n"
    "  - otherwise its identity line, marked '# new' until it is translated;\n"
    "  - every key of TRANSLATED that TEMPLATE no longer has, as an '#~ ' obsolete line the\n"
    "    library ignores, with its comments: nothing is dropped, and a key that comes back\n"
    "    gets its translation again.\n"
    "Both files are read as the library reads them; an entry line it does not load is left\n"
    "out with a FILE:LINE: warning. Merging the result with the same TEMPLATE again gives\n"
    "the same file.\n"
    "\n"
    "Options:\n"
    "  -o, --output FILE  write to FILE (it may be TRANSLATED itself)\n"
    "  -h, --help         show this help\n"
    "\n"
    "Exit status: 0 success, 1 a translation to check or a line left out, 2 usage error or a\n"
    "file that cannot be read or written.\n";

constexpr char kMarker[] = "'] = r'";
constexpr char kObsoleteMarker[] = "'] =r'";
constexpr char kObsolete[] = "#~ ";

/// One key of a dictionary, as merge sees it.
struct Item {
  std::string key, text;
  bool translated = false;  ///< an entry whose text is not the key
  int line = 0;
  std::vector<std::string> comments;  ///< translator's comments (or, in TEMPLATE, the uses)
};

bool StartsWith(const std::string& s, const char* prefix) { return s.rfind(prefix, 0) == 0; }

size_t EndsWithCr(const std::string& s) { return !s.empty() && s.back() == '\r' ? 1 : 0; }

/// Comments merge writes itself, and so reads as its own, not the translator's.
bool Generated(const std::string& line) {
  if (line == "# new" || StartsWith(line, "# check: ") || StartsWith(line, "# (not written: "))
    return true;
  // "# FILE:LINE": a use, from the template.
  if (!StartsWith(line, "# ") || line.find(' ', 2) != std::string::npos) return false;
  const size_t colon = line.rfind(':');
  return colon != std::string::npos && colon + 1 < line.size() &&
         line.find_first_not_of("0123456789", colon + 1) == std::string::npos;
}

/// Reads the entry of one line as the library reads it; false when it holds none.
bool ReadLine(const std::string& line, std::string& key, std::string& text, bool& identity) {
  std::string bytes = line + "\n";
  std::FILE* file = fmemopen(bytes.data(), bytes.size(), "rb");
  if (file == nullptr) throw std::bad_alloc();
  atr_DictScanner scanner(file);
  atr_DictLine entry;
  bool found = scanner.Next(entry) &&
               (entry.m_kind == atr_DictLineEntry || entry.m_kind == atr_DictLineIdentity);
  if (found) {
    identity = entry.m_kind == atr_DictLineIdentity;
    if (!identity) {
      key.assign(entry.m_key, static_cast<size_t>(entry.m_keyLength));
      text.assign(entry.m_text, static_cast<size_t>(entry.m_textLength));
    } else {
      // An identity line's texts are not unescaped: read its key as the key of an entry.
      const std::string raw(entry.m_rawKey, static_cast<size_t>(entry.m_rawKeyLength));
      std::string other;
      bool again;
      found = ReadLine("d['" + raw + kMarker + (raw == "x" ? "y" : "x") + "'", key, other, again);
      text = key;
    }
  }
  std::fclose(file);
  return found;
}

/// The lines of a file, as they are ("\r" of a "\r\n" line end included).
bool ReadLines(const char* path, std::vector<std::string>& lines) {
  const char* name;
  std::FILE* file = OpenInput(path, name);
  if (file == nullptr) return false;
  Bytes bytes;
  const bool ok = ReadAll(file, name, bytes);
  CloseInput(file);
  if (!ok) return false;
  SplitLines(std::string(bytes.Data() != nullptr ? bytes.Data() : "", bytes.Size()), lines);
  return true;
}

/// A dictionary as merge sees it.
struct Dictionary {
  std::vector<Item> items;
  std::vector<std::string> header;   ///< the comments before the first blank line, when no
                                     ///< entry comes first
  std::vector<std::string> trailer;  ///< the comments after the last entry
  int problems = 0;                  ///< entry lines the library does not load
};

/// The keys of a dictionary with the comments above each (blank lines and other lines in
/// between do not part a comment from the entry it precedes). Obsolete lines count as keys
/// too. An entry line the library does not load is reported as a FILE:LINE: warning and left
/// out. With keepGenerated, the comments merge writes itself are kept too.
void Parse(const char* path, const std::vector<std::string>& lines, Dictionary& dictionary,
           bool keepGenerated) {
  size_t i = 0;
  for (; i < lines.size() && StartsWith(lines[i], "#") && !StartsWith(lines[i], kObsolete) &&
         lines[i].find(kMarker) == std::string::npos;
       ++i)
    ;
  if (i < lines.size() && (lines[i].empty() || lines[i] == "\r"))
    dictionary.header.assign(lines.begin(), lines.begin() + static_cast<long>(i));
  else
    i = 0;
  std::vector<std::string> comments;
  for (; i < lines.size(); ++i) {
    const std::string& line = lines[i];
    std::string entryLine = line;
    if (line.find(kMarker) != std::string::npos) {
      // An entry, as the library reads it, even when the line starts with "#".
    } else if (StartsWith(line, kObsolete) && line.find(kObsoleteMarker) != std::string::npos) {
      entryLine = line.substr(std::strlen(kObsolete));
      const size_t at = entryLine.find(kObsoleteMarker);
      entryLine.replace(at, std::strlen(kObsoleteMarker), kMarker);
    } else {
      // A "\r\n" line end is the library's "\n": it does not make a comment the translator's.
      const bool generated = Generated(line.substr(0, line.size() - EndsWithCr(line)));
      if (StartsWith(line, "#") && (keepGenerated || !generated)) comments.push_back(line);
      continue;
    }
    Item item;
    bool identity = false;
    if (!ReadLine(entryLine, item.key, item.text, identity)) {
      std::fprintf(stderr, "%s:%zu: not an entry the library loads (see dict check): left out\n",
                   path, i + 1);
      ++dictionary.problems;
      continue;
    }
    item.translated = !identity && item.text != item.key;
    item.line = static_cast<int>(i) + 1;
    item.comments.swap(comments);
    // A later definition wins, as in the library; an obsolete line never beats a live one.
    // The comments of both are kept.
    auto same = std::find_if(dictionary.items.begin(), dictionary.items.end(),
                             [&](const Item& other) { return other.key == item.key; });
    if (same == dictionary.items.end()) {
      dictionary.items.push_back(item);
    } else {
      std::vector<std::string> both = same->comments;
      both.insert(both.end(), item.comments.begin(), item.comments.end());
      if (item.translated || !same->translated) *same = item;
      same->comments.swap(both);
    }
  }
  dictionary.trailer.swap(comments);
}

/// Writes one line as it was read, zero bytes included.
void PutLine(std::FILE* out, const std::string& line) {
  std::fwrite(line.data(), 1, line.size(), out);
  std::fputc('\n', out);
}

bool KeyLess(const Item& a, const Item& b) {
  return atr_DictKeyCompare(a.key.data(), static_cast<int>(a.key.size()), b.key.data(),
                            static_cast<int>(b.key.size())) < 0;
}

/// Writes one entry line; an obsolete one gets the form the library ignores: its assignment
/// loses a blank and every "]" of its translation is escaped, so no "'] = r'" remains.
bool WriteEntry(std::FILE* out, const std::string& key, const std::string& text, bool obsolete) {
  char* bytes = nullptr;
  size_t size = 0;
  std::FILE* line = open_memstream(&bytes, &size);
  if (line == nullptr) throw std::bad_alloc();
  const bool written = atr_DictWriteEntry(line, key.data(), static_cast<int>(key.size()),
                                          text.data(), static_cast<int>(text.size()));
  std::fclose(line);
  std::string s(bytes != nullptr ? bytes : "", size);
  std::free(bytes);
  if (!written) return false;
  if (obsolete) {
    const size_t at = s.find(kMarker);
    std::string tail = s.substr(at + std::strlen(kMarker));
    std::string escaped;
    for (char c : tail) escaped += c == ']' ? std::string("\\135") : std::string(1, c);
    s = kObsolete + s.substr(0, at) + kObsoleteMarker + escaped;
  }
  std::fputs(s.c_str(), out);
  return true;
}

struct CheckContext {
  std::FILE* out;
  const char* name;
  int line;
  int count;
};

}  // namespace

int RunDictMerge(int argc, char** argv) {
  static const option kOptions[] = {{"output", required_argument, nullptr, 'o'},
                                    {"help", no_argument, nullptr, 'h'},
                                    {nullptr, 0, nullptr, 0}};
  const char* output = nullptr;
  ParseOptions parse("dict merge", argc, argv, "o:h", kOptions);
  for (int c; (c = parse.Next()) != -1;) {
    if (c == 'h') return PrintHelp(kHelp);
    if (c != 'o') return parse.Error();
    output = parse.Argument();
  }
  if (parse.OperandCount() != 2)
    return UsageError("dict merge", "TRANSLATED and TEMPLATE are needed, and no more");
  const char* translatedPath = parse.Operand(0);
  std::vector<std::string> translatedLines, templateLines;
  if (!ReadLines(translatedPath, translatedLines) || !ReadLines(parse.Operand(1), templateLines))
    return kUsage;
  Dictionary translatedDictionary, templateDictionary;
  Parse(translatedPath, translatedLines, translatedDictionary, false);
  Parse(parse.Operand(1), templateLines, templateDictionary, true);
  std::vector<Item>& translated = translatedDictionary.items;
  std::vector<Item>& used = templateDictionary.items;
  const std::vector<std::string>& header =
      translatedDictionary.header.empty() ? templateDictionary.header : translatedDictionary.header;
  std::sort(used.begin(), used.end(), KeyLess);
  std::sort(translated.begin(), translated.end(), KeyLess);

  std::FILE* out = OpenOutput(output);
  if (out == nullptr) return kUsage;
  for (const std::string& line : header) PutLine(out, line);
  int checks = translatedDictionary.problems + templateDictionary.problems;
  // An entry that cannot be written as a dictionary line is reported where it was read.
  const auto write = [&](const char* path, int line, const std::string& key,
                         const std::string& text, bool obsolete) {
    if (WriteEntry(out, key, text, obsolete)) return;
    std::fprintf(out, "# (not written: a zero byte, invalid UTF-8 or a line too long)\n");
    std::fprintf(stderr,
                 "%s:%d: this entry cannot be written to a dictionary (a zero byte, invalid "
                 "UTF-8 or a line too long)\n",
                 path, line);
    ++checks;
  };
  for (const Item& item : used) {
    std::fputc('\n', out);
    for (const std::string& use : item.comments)
      if (Generated(use)) PutLine(out, use);
    auto found = std::find_if(translated.begin(), translated.end(),
                              [&](const Item& t) { return t.key == item.key; });
    if (found != translated.end())
      for (const std::string& comment : found->comments) PutLine(out, comment);
    if (found != translated.end() && found->translated) {
      CheckContext context{out, translatedPath, found->line, 0};
      checks += ConversionProblems(
          found->key.c_str(), found->text.c_str(),
          [](const char* message, void* raw) {
            auto* c = static_cast<CheckContext*>(raw);
            std::fprintf(c->out, "# check: %s\n", message);
            std::fprintf(stderr, "%s:%d: %s\n", c->name, c->line, message);
          },
          &context);
      write(translatedPath, found->line, found->key, found->text, false);
    } else {
      std::fprintf(out, "# new\n");
      write(parse.Operand(1), item.line, item.key, item.key, false);
    }
  }
  bool anyObsolete = false;
  for (const Item& item : translated) {
    if (std::any_of(used.begin(), used.end(), [&](const Item& u) { return u.key == item.key; }))
      continue;
    std::fputc('\n', out);
    for (const std::string& comment : item.comments) PutLine(out, comment);
    write(translatedPath, item.line, item.key, item.text, true);
    anyObsolete = true;
  }
  // The translator's closing comments; a header alone keeps the blank line that makes it one.
  if (!translatedDictionary.trailer.empty() || (used.empty() && !anyObsolete && !header.empty()))
    std::fputc('\n', out);
  for (const std::string& comment : translatedDictionary.trailer) PutLine(out, comment);
  if (!CloseOutput(out, output)) return kUsage;
  return checks > 0 ? kBadInput : kOk;
}

}  // namespace kldutil
