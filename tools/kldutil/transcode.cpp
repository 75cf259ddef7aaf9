// transcode.cpp: "kldutil transcode": converts text between the library's encodings.
#include "kldutil.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <strings.h>

namespace kldutil {
namespace {

constexpr const char kHelp[] =
    "Usage: kldutil transcode --from ENC --to ENC [--replace CHAR] [FILE]\n"
    "Convert FILE (standard input when none, or '-') from one encoding to another and write\n"
    "the result to the standard output.\n"
    "\n"
    "ENC is one of:\n"
    "  locale   the multibyte encoding of the process locale (LC_ALL, LC_CTYPE, LANG)\n"
    "  utf-8    UTF-8 (also: utf8)\n"
    "  latin-1  ISO 8859-1 (also: latin1, iso-8859-1); bytes 0x7F to 0x9F are invalid\n"
    "\n"
    "Options:\n"
    "  --from ENC      encoding of the input\n"
    "  --to ENC        encoding of the output\n"
    "  --replace CHAR  write the byte CHAR for each character the output encoding cannot\n"
    "                  represent, instead of failing (CHAR is one byte, such as '?')\n"
    "  -h, --help      show this help\n"
    "\n"
    "Invalid input is reported with its line and byte offset (from 0); nothing is written\n"
    "then. The replacement never applies to invalid input.\n"
    "Exit status: 0 success, 1 invalid input or a character the output cannot represent,\n"
    "2 usage error or a file that cannot be read.\n";

struct Encoding {
  const char* name;
  int id;
};
constexpr Encoding kEncodings[] = {
    {"locale", atr_EncodingLocale}, {"utf-8", atr_EncodingUtf8},
    {"utf8", atr_EncodingUtf8},     {"latin-1", atr_EncodingLatin1},
    {"latin1", atr_EncodingLatin1}, {"iso-8859-1", atr_EncodingLatin1},
};

/// The identifier of an encoding name (case ignored), or 0.
int EncodingId(const char* name) {
  for (const Encoding& e : kEncodings)
    if (strcasecmp(name, e.name) == 0) return e.id;
  return 0;
}

const char* EncodingName(int id) {
  for (const Encoding& e : kEncodings)
    if (e.id == id) return e.name;
  return "none";
}

/// Longest byte sequence of one character in any of the encodings.
constexpr int kLongestCharacter = 16;

/// Finds the first character of the input that stops the conversion: the byte offset, and
/// whether it is invalid input (true) or a character the target cannot represent (false).
/// Walks one character at a time with the library's validation: the shortest window that is
/// valid is one character.
size_t FirstFailure(int to, int from, const char* in, size_t length, char replacement,
                    bool& invalid, int& codePoint) {
  size_t p = 0;
  codePoint = -1;
  while (p < length) {
    int width = 0;
    for (int w = 1; w <= kLongestCharacter && p + static_cast<size_t>(w) <= length; ++w) {
      if (atr_encoding_validate_sized(from, in + p, w)) {
        width = w;
        break;
      }
    }
    if (width == 0) {
      invalid = true;
      return p;
    }
    if (atr_encoding_convert(to, static_cast<char*>(nullptr), from, in + p, width, replacement,
                             false) < 0) {
      char utf8[kLongestCharacter * 4 + 1];
      if (atr_utf8_from_encoding_sized(utf8, from, in + p, width, true) > 0)
        codePoint = atr_utf8_to_ucs4(utf8, nullptr);
      invalid = codePoint < 0;
      return p;
    }
    p += static_cast<size_t>(width);
  }
  invalid = true;  // the converter refused the whole but no part of it: report the end
  return length;
}

size_t LineOf(const char* in, size_t offset) {
  size_t line = 1;
  for (size_t i = 0; i < offset; ++i)
    if (in[i] == '\n') ++line;
  return line;
}

}  // namespace

int RunTranscode(int argc, char** argv) {
  int from = -1, to = -1;
  char replacement = 0;
  const char* input = nullptr;
  bool options = true;
  for (int i = 0; i < argc; ++i) {
    const char* arg = argv[i];
    if (options && arg[0] == '-' && arg[1] != '\0') {
      if (IsHelp(arg)) return PrintHelp(kHelp);
      if (std::strcmp(arg, "--") == 0) {
        options = false;
        continue;
      }
      const char* names[] = {"--from", "--to", "--replace"};
      const char* value = nullptr;
      int which = -1;
      for (int k = 0; k < 3 && which < 0; ++k) {
        size_t n = std::strlen(names[k]);
        if (std::strncmp(arg, names[k], n) != 0) continue;
        if (arg[n] == '=') {
          which = k;
          value = arg + n + 1;
        } else if (arg[n] == '\0') {
          which = k;
          if (i + 1 == argc) return UsageError("transcode", "option '%s' needs a value", arg);
          value = argv[++i];
        }
      }
      if (which < 0) return UsageError("transcode", "unknown option '%s'", arg);
      if (which == 2) {
        if (std::strlen(value) != 1)
          return UsageError("transcode", "--replace takes one byte, not '%s'", value);
        replacement = value[0];
        continue;
      }
      int id = EncodingId(value);
      if (id == 0)
        return UsageError("transcode", "unknown encoding '%s' (use locale, utf-8 or latin-1)",
                          value);
      (which == 0 ? from : to) = id;
      continue;
    }
    if (input != nullptr) return UsageError("transcode", "more than one input file");
    input = arg;
  }
  if (from < 0) return UsageError("transcode", "--from ENC is required");
  if (to < 0) return UsageError("transcode", "--to ENC is required");

  const char* name;
  std::FILE* file = OpenInput(input != nullptr ? input : "-", name);
  if (file == nullptr) return kUsage;
  Bytes text;
  bool read = ReadAll(file, name, text);
  CloseInput(file);
  if (!read) return kUsage;
  if (text.Size() > static_cast<size_t>(INT_MAX)) {
    std::fprintf(stderr, "kldutil transcode: %s: input larger than %d bytes\n", name, INT_MAX);
    return kBadInput;
  }

  const int length = static_cast<int>(text.Size());
  // The input must be valid as the library validates it (Latin-1 refuses 0x7F to 0x9F,
  // which its converter alone would take) before it is converted.
  int size = atr_encoding_validate_sized(from, text.Data(), length)
                 ? atr_encoding_convert(to, static_cast<char*>(nullptr), from, text.Data(), length,
                                        replacement, false)
                 : -1;
  if (size < 0) {
    bool invalid;
    int codePoint;
    size_t offset =
        FirstFailure(to, from, text.Data(), text.Size(), replacement, invalid, codePoint);
    size_t line = LineOf(text.Data(), offset);
    if (invalid)
      std::fprintf(stderr, "%s:%zu: invalid %s input at byte offset %zu\n", name, line,
                   EncodingName(from), offset);
    else
      std::fprintf(stderr,
                   "%s:%zu: character U+%04X at byte offset %zu cannot be represented in %s "
                   "(see --replace)\n",
                   name, line, static_cast<unsigned>(codePoint), offset, EncodingName(to));
    return kBadInput;
  }
  Bytes out;
  out.Reserve(static_cast<size_t>(size) + 1);
  atr_encoding_convert(to, out.Data(), from, text.Data(), length, replacement, true);
  std::fwrite(out.Data(), 1, static_cast<size_t>(size), stdout);
  return kOk;
}

}  // namespace kldutil
