// extract.cpp: "kldutil dict extract": finds the message texts a host passes to the library in
// its C, C++ and Fortran sources and writes them as a dictionary to translate.
#include "kldutil.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fnmatch.h>
#include <getopt.h>
#include <string>
#include <strings.h>
#include <sys/stat.h>
#include <vector>

namespace kldutil {
namespace {

constexpr const char kHelp[] =
    "Usage: kldutil dict extract [-k NAME]... [-o FILE] [-r] [--include GLOB]...\n"
    "                            [--exclude GLOB]... SOURCE...\n"
    "Find the message texts that C, C++ and Fortran sources pass to the library and write\n"
    "them as a dictionary: keys in the library's key order, each an identity line (the key\n"
    "as its own translation, which the library does not load) preceded by '# FILE:LINE'\n"
    "comments of its uses.\n"
    "\n"
    "Texts are the string literals given as the format of atr, atr<...>, atr_raw and\n"
    "atr_Fmt, and of the calls named with -k (in Fortran, call NAME('...') or NAME('...')).\n"
    "Adjacent literals are joined and escapes decoded; a text used several times is written\n"
    "once. A format that is not a literal (a macro, a variable), an unterminated literal and\n"
    "a source that cannot be read are reported as FILE:LINE: warnings.\n"
    "\n"
    "Options:\n"
    "  -k, --keyword NAME  also take the texts of calls named NAME (C, C++ and Fortran)\n"
    "  -o, --output FILE   write to FILE instead of the standard output\n"
    "  -r, --recursive     walk directories given as SOURCE\n"
    "  --include GLOB      only files whose name matches GLOB (with -r; several allowed)\n"
    "  --exclude GLOB      skip files and directories whose name matches GLOB\n"
    "  -h, --help          show this help\n"
    "\n"
    "Fortran sources are those ending in .f, .for, .f77, .f90, .f95, .f03, .f08 (any case).\n"
    "Exit status: 0 success, 1 a warning was written, 2 usage error or nothing readable.\n";

struct Use {
  std::string file;
  int line;
};
struct Text {
  std::string key;
  std::vector<Use> uses;
};

class Extractor {
 public:
  std::vector<std::string> names{"atr", "atr_raw", "atr_Fmt"};
  std::vector<Text> texts;
  int warnings = 0;

  void Warn(const std::string& file, int line, const char* message) {
    std::fprintf(stderr, "%s:%d: %s\n", file.c_str(), line, message);
    ++warnings;
  }
  void Add(const std::string& key, const std::string& file, int line) {
    for (Text& t : texts)
      if (t.key == key) {
        t.uses.push_back({file, line});
        return;
      }
    texts.push_back({key, {{file, line}}});
  }
  bool IsName(const std::string& word, bool fortran) const {
    for (const std::string& n : names)
      if (fortran ? strcasecmp(n.c_str(), word.c_str()) == 0 : n == word) return true;
    return false;
  }
  void ScanC(const std::string& file, const std::string& s);
  void ScanFortran(const std::string& file, const std::string& s);
};

bool IdentStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool IdentChar(char c) { return IdentStart(c) || (c >= '0' && c <= '9'); }

void PutUtf8(std::string& out, unsigned long code) {
  char bytes[4];
  const int n = atr_utf8_from_ucs4(bytes, static_cast<int>(code < 0x200000 ? code : '?'));
  out.append(bytes, static_cast<size_t>(n));
}

/// Reads a C string literal whose opening quote is at s[i]; gives the decoded text and leaves i
/// after the closing quote. False when the line or file ends first.
bool ReadCString(const std::string& s, size_t& i, std::string& out, int& line) {
  for (++i; i < s.size(); ++i) {
    char c = s[i];
    if (c == '"') {
      ++i;
      return true;
    }
    if (c == '\n') return false;
    if (c != '\\' || i + 1 >= s.size()) {
      out += c;
      continue;
    }
    char e = s[++i];
    auto hex = [](char h) -> int {
      return h >= '0' && h <= '9'   ? h - '0'
             : h >= 'a' && h <= 'f' ? h - 'a' + 10
             : h >= 'A' && h <= 'F' ? h - 'A' + 10
                                    : -1;
    };
    switch (e) {
      case 'n':
        out += '\n';
        break;
      case 't':
        out += '\t';
        break;
      case 'r':
        out += '\r';
        break;
      case 'a':
        out += '\a';
        break;
      case 'b':
        out += '\b';
        break;
      case 'f':
        out += '\f';
        break;
      case 'v':
        out += '\v';
        break;
      case '\n':
        ++line;
        break;  // a line continued
      case 'x': {
        unsigned value = 0;
        while (i + 1 < s.size() && hex(s[i + 1]) >= 0) value = (value << 4 | hex(s[++i])) & 0xFF;
        out += static_cast<char>(value);
        break;
      }
      case 'u':
      case 'U': {
        unsigned long code = 0;
        for (int k = 0; k < (e == 'u' ? 4 : 8) && i + 1 < s.size() && hex(s[i + 1]) >= 0; ++k)
          code = code << 4 | static_cast<unsigned long>(hex(s[++i]));
        PutUtf8(out, code);
        break;
      }
      default:
        if (e >= '0' && e <= '7') {
          unsigned value = static_cast<unsigned>(e - '0');
          for (int k = 0; k < 2 && i + 1 < s.size() && s[i + 1] >= '0' && s[i + 1] <= '7'; ++k)
            value = value * 8 + static_cast<unsigned>(s[++i] - '0');
          out += static_cast<char>(value & 0xFF);
        } else {
          out += e;  // \\ \' \" \? and anything else: the character itself
        }
    }
  }
  return false;
}

/// Skips blanks, line ends and comments from i; counts lines.
void SkipSpace(const std::string& s, size_t& i, int& line) {
  while (i < s.size()) {
    if (s[i] == '\n') {
      ++line;
      ++i;
    } else if (s[i] == ' ' || s[i] == '\t' || s[i] == '\r' || s[i] == '\f' || s[i] == '\v') {
      ++i;
    } else if (s.compare(i, 2, "//") == 0) {
      while (i < s.size() && s[i] != '\n') ++i;
    } else if (s.compare(i, 2, "/*") == 0) {
      size_t end = s.find("*/", i + 2);
      for (size_t k = i; k < (end == std::string::npos ? s.size() : end); ++k) line += s[k] == '\n';
      i = end == std::string::npos ? s.size() : end + 2;
    } else {
      return;
    }
  }
}

/// A literal's prefix (u8, u, U, L) and R for raw strings, if one starts at i: its length.
size_t LiteralPrefix(const std::string& s, size_t i, bool& raw) {
  static const char* const prefixes[] = {"u8R", "uR", "UR", "LR", "R", "u8", "u", "U", "L"};
  for (const char* p : prefixes) {
    const size_t n = std::strlen(p);
    if (s.compare(i, n, p) == 0 && i + n < s.size() && s[i + n] == '"') {
      raw = p[n - 1] == 'R';
      return n;
    }
  }
  raw = false;
  return s[i] == '"' ? 0 : std::string::npos;
}

/// Reads one literal (any prefix, raw or not) at i; false when none starts there or it is
/// unterminated (then unterminated is set).
bool ReadLiteral(const std::string& s, size_t& i, std::string& out, int& line, bool& unterminated) {
  bool raw;
  const size_t prefix = LiteralPrefix(s, i, raw);
  if (prefix == std::string::npos) return false;
  i += prefix;
  if (!raw) {
    if (ReadCString(s, i, out, line)) return true;
    unterminated = true;
    return false;
  }
  const size_t open = s.find('(', i);
  if (open == std::string::npos) {
    unterminated = true;
    return false;
  }
  const std::string close = ")" + s.substr(i + 1, open - i - 1) + "\"";
  const size_t end = s.find(close, open);
  if (end == std::string::npos) {
    unterminated = true;
    return false;
  }
  out.append(s, open + 1, end - open - 1);
  for (size_t k = i; k < end; ++k) line += s[k] == '\n';
  i = end + close.size();
  return true;
}

void Extractor::ScanC(const std::string& file, const std::string& s) {
  int line = 1;
  for (size_t i = 0; i < s.size();) {
    const char c = s[i];
    if (c == '\n') {
      ++line;
      ++i;
    } else if (s.compare(i, 2, "//") == 0 || s.compare(i, 2, "/*") == 0) {
      SkipSpace(s, i, line);
    } else if (c == '\'') {  // a character literal: its quote is not a string's
      for (++i; i < s.size() && s[i] != '\'' && s[i] != '\n'; ++i)
        if (s[i] == '\\') ++i;
      ++i;
    } else if (bool raw; LiteralPrefix(s, i, raw) != std::string::npos) {
      std::string ignored;
      bool unterminated = false;
      const int at = line;
      if (!ReadLiteral(s, i, ignored, line, unterminated)) {
        if (unterminated)
          Warn(file, at, "unterminated string literal: the rest of the file is skipped");
        return;
      }
    } else if (IdentStart(c)) {
      size_t start = i;
      while (i < s.size() && IdentChar(s[i])) ++i;
      const std::string word = s.substr(start, i - start);
      if (!IsName(word, false)) continue;
      const int at = line;
      size_t j = i;
      int l = line;
      SkipSpace(s, j, l);
      if (j < s.size() && s[j] == '<') {  // template arguments
        int depth = 0;
        for (; j < s.size(); ++j) {
          if (s[j] == '\n') ++l;
          depth += s[j] == '<' ? 1 : s[j] == '>' ? -1 : 0;
          if (depth == 0) break;
        }
        ++j;
        SkipSpace(s, j, l);
      }
      if (j >= s.size() || s[j] != '(') continue;  // not a call: a name, a declaration
      ++j;
      SkipSpace(s, j, l);
      std::string text;
      bool unterminated = false, any = false;
      for (;;) {
        std::string piece;
        if (!ReadLiteral(s, j, piece, l, unterminated)) break;
        text += piece;
        any = true;
        SkipSpace(s, j, l);
      }
      if (unterminated) {
        Warn(file, l, "unterminated string literal: the rest of the file is skipped");
        return;
      }
      if (!any) {
        // A declaration or definition of the name itself takes a type here, not a format.
        const bool declaration =
            j < s.size() && (std::strncmp(s.c_str() + j, "const", 5) == 0 || s[j] == ')');
        if (!declaration) {
          char message[160];
          std::snprintf(message, sizeof message,
                        "the format of %s is not a string literal (a macro or a variable hides "
                        "it): not extracted",
                        word.c_str());
          Warn(file, at, message);
        }
        continue;
      }
      Add(text, file, at);
      i = j;
      line = l;
    } else {
      ++i;
    }
  }
}

void Extractor::ScanFortran(const std::string& file, const std::string& s) {
  int line = 1;
  for (size_t i = 0; i < s.size();) {
    const char c = s[i];
    if (c == '\n') {
      ++line;
      ++i;
    } else if (c == '!') {
      while (i < s.size() && s[i] != '\n') ++i;
    } else if (c == '\'' || c == '"') {  // a literal that is not a format: skipped
      const char q = c;
      for (++i; i < s.size() && s[i] != '\n'; ++i)
        if (s[i] == q) {
          if (i + 1 < s.size() && s[i + 1] == q) {
            ++i;
            continue;
          }
          break;
        }
      ++i;
    } else if (IdentStart(c)) {
      size_t start = i;
      while (i < s.size() && IdentChar(s[i])) ++i;
      if (!IsName(s.substr(start, i - start), true)) continue;
      const int at = line;
      size_t j = i;
      while (j < s.size() && (s[j] == ' ' || s[j] == '\t')) ++j;
      if (j >= s.size() || s[j] != '(') continue;
      ++j;
      while (j < s.size() && (s[j] == ' ' || s[j] == '\t')) ++j;
      if (j >= s.size() || (s[j] != '\'' && s[j] != '"')) {
        Warn(file, at, "the text of this call is not a string literal: not extracted");
        continue;
      }
      const char q = s[j];
      std::string text;
      bool closed = false;
      int l = line;
      for (++j; j < s.size(); ++j) {
        if (s[j] == q) {
          if (j + 1 < s.size() && s[j + 1] == q) {
            text += q;
            ++j;
            continue;
          }
          closed = true;
          ++j;
          break;
        }
        if (s[j] == '&') {  // continued: the text goes on after the next line's "&"
          size_t k = s.find('\n', j);
          if (k == std::string::npos) break;
          ++l;
          size_t amp = k + 1;
          while (amp < s.size() && (s[amp] == ' ' || s[amp] == '\t')) ++amp;
          if (amp < s.size() && s[amp] == '&') {
            j = amp;
            continue;
          }
          break;
        }
        if (s[j] == '\n') break;
        text += s[j];
      }
      if (!closed) {
        Warn(file, at, "unterminated string literal: not extracted");
        i = j;
        line = l;
        continue;
      }
      Add(text, file, at);
      i = j;
      line = l;
    } else {
      ++i;
    }
  }
}

bool IsFortran(const std::string& path) {
  static const char* const endings[] = {".f", ".for", ".f77", ".f90", ".f95", ".f03", ".f08"};
  const size_t dot = path.rfind('.');
  if (dot == std::string::npos) return false;
  for (const char* e : endings)
    if (strcasecmp(path.c_str() + dot, e) == 0) return true;
  return false;
}

struct Walk {
  Extractor& extractor;
  bool recursive;
  std::vector<std::string> includes, excludes;
  bool anyRead = false;

  bool Excluded(const std::string& name) const {
    for (const std::string& g : excludes)
      if (fnmatch(g.c_str(), name.c_str(), 0) == 0) return true;
    return false;
  }
  bool Included(const std::string& name) const {
    if (includes.empty()) return true;
    for (const std::string& g : includes)
      if (fnmatch(g.c_str(), name.c_str(), 0) == 0) return true;
    return false;
  }

  void File(const std::string& path) {
    const char* name;
    std::FILE* file = OpenInput(path.c_str(), name);
    if (file == nullptr) {
      ++extractor.warnings;
      return;
    }
    Bytes bytes;
    const bool ok = ReadAll(file, name, bytes);
    CloseInput(file);
    if (!ok) {
      ++extractor.warnings;
      return;
    }
    anyRead = true;
    const std::string text(bytes.Data() != nullptr ? bytes.Data() : "", bytes.Size());
    if (IsFortran(path))
      extractor.ScanFortran(name, text);
    else
      extractor.ScanC(name, text);
  }

  void Path(const std::string& path, bool top) {
    struct stat info;
    if (path != "-" && stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
      if (!recursive) {
        std::fprintf(stderr, "kldutil: %s: a directory (walk it with -r)\n", path.c_str());
        ++extractor.warnings;
        return;
      }
      DIR* dir = opendir(path.c_str());
      if (dir == nullptr) {
        std::fprintf(stderr, "kldutil: %s: cannot open: %s\n", path.c_str(), std::strerror(errno));
        ++extractor.warnings;
        return;
      }
      std::vector<std::string> entries;
      while (dirent* e = readdir(dir)) {
        const std::string name = e->d_name;
        if (name == "." || name == ".." || Excluded(name)) continue;
        entries.push_back(name);
      }
      closedir(dir);
      std::sort(entries.begin(), entries.end());  // the same order on every file system
      for (const std::string& name : entries) Path(path + "/" + name, false);
      return;
    }
    const std::string base =
        path.substr(path.rfind('/') == std::string::npos ? 0 : path.rfind('/') + 1);
    if (!top && (!Included(base) || Excluded(base))) return;
    if (!top && path != "-" && stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode)) return;
    File(path);
  }
};

}  // namespace

int RunDictExtract(int argc, char** argv) {
  enum { kInclude = 1, kExclude };
  static const option kOptions[] = {{"keyword", required_argument, nullptr, 'k'},
                                    {"output", required_argument, nullptr, 'o'},
                                    {"recursive", no_argument, nullptr, 'r'},
                                    {"include", required_argument, nullptr, kInclude},
                                    {"exclude", required_argument, nullptr, kExclude},
                                    {"help", no_argument, nullptr, 'h'},
                                    {nullptr, 0, nullptr, 0}};
  Extractor extractor;
  Walk walk{extractor, false, {}, {}};
  const char* output = nullptr;
  ParseOptions parse("dict extract", argc, argv, "k:o:rh", kOptions);
  for (int c; (c = parse.Next()) != -1;) {
    switch (c) {
      case 'k':
        extractor.names.push_back(parse.Argument());
        break;
      case 'o':
        output = parse.Argument();
        break;
      case 'r':
        walk.recursive = true;
        break;
      case kInclude:
        walk.includes.push_back(parse.Argument());
        break;
      case kExclude:
        walk.excludes.push_back(parse.Argument());
        break;
      case 'h':
        return PrintHelp(kHelp);
      default:
        return parse.Error();
    }
  }
  if (parse.OperandCount() == 0) return UsageError("dict extract", "no SOURCE given");
  for (int i = 0; i < parse.OperandCount(); ++i) walk.Path(parse.Operand(i), true);
  if (!walk.anyRead) return kUsage;

  std::sort(extractor.texts.begin(), extractor.texts.end(), [](const Text& a, const Text& b) {
    return atr_DictKeyCompare(a.key.data(), static_cast<int>(a.key.size()), b.key.data(),
                              static_cast<int>(b.key.size())) < 0;
  });
  std::FILE* out = OpenOutput(output);
  if (out == nullptr) return kUsage;
  std::fprintf(out, "# Messages to translate, extracted by kldutil dict extract: %zu texts.\n",
               extractor.texts.size());
  std::fprintf(out, "# Each text is its own translation until it is translated.\n");
  for (const Text& t : extractor.texts) {
    std::fputc('\n', out);
    for (const Use& u : t.uses) std::fprintf(out, "# %s:%d\n", u.file.c_str(), u.line);
    const int n = static_cast<int>(t.key.size());
    if (!atr_DictWriteEntry(out, t.key.data(), n, t.key.data(), n)) {
      std::fprintf(out, "# (not written: a zero byte, invalid UTF-8 or a line too long)\n");
      extractor.Warn(t.uses[0].file, t.uses[0].line,
                     "this text cannot be written to a dictionary (a zero byte, invalid UTF-8 "
                     "or a line too long)");
    }
  }
  if (!CloseOutput(out, output)) return kUsage;
  return extractor.warnings > 0 ? kBadInput : kOk;
}

}  // namespace kldutil
