// transcode.cpp: "kldutil transcode": converts text between the library's encodings.
#include "kldutil.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <getopt.h>
#include <strings.h>

namespace kldutil {
namespace {

constexpr const char kHelp[] =
    "Usage: kldutil transcode -f ENC -t ENC [-c | --replace CHAR] [-o FILE] [FILE...]\n"
    "Convert the FILEs (standard input when none, or for '-'), one after the other, from one\n"
    "encoding to another and write the result to the standard output.\n"
    "\n"
    "ENC is one of (case is ignored; 'kldutil transcode -l' lists them):\n"
    "  locale    the multibyte encoding of the process locale (LC_ALL, LC_CTYPE, LANG)\n"
    "  utf-8     UTF-8 (also: utf8)\n"
    "  latin-1   ISO 8859-1 (also: latin1, iso-8859-1); bytes 0x7F to 0x9F are invalid\n"
    "  utf-16    UTF-16 with a byte order mark: read in the order the mark gives (big-endian\n"
    "            without one), written little-endian after the mark FF FE\n"
    "  utf-16le  UTF-16 little-endian, no mark written (a leading mark is read as U+FEFF)\n"
    "  utf-16be  UTF-16 big-endian, likewise\n"
    "\n"
    "Options:\n"
    "  -f, --from ENC      encoding of the input\n"
    "  -t, --to ENC        encoding of the output\n"
    "  -o, --output FILE   write to FILE instead of the standard output\n"
    "  -c                  leave out characters the output cannot represent\n"
    "  --replace CHAR      write the byte CHAR for each character the output encoding cannot\n"
    "                      represent, instead of failing (CHAR is one byte, such as '?')\n"
    "  -l, --list          list the encodings and exit\n"
    "  -h, --help          show this help\n"
    "\n"
    "Invalid input is reported with its line and byte offset (from 0); nothing more is written\n"
    "then. Neither -c nor the replacement applies to invalid input. UTF-16 goes through the\n"
    "library's own UTF-16 routines: surrogates must pair, and a unit 0 is invalid.\n"
    "Exit status: 0 success, 1 invalid input or a character the output cannot represent,\n"
    "2 usage error or a file that cannot be read or written.\n";

/// The UTF-16 forms, beside the library's byte encodings (identifiers 1 to 3).
enum Utf16 { kUtf16 = 16, kUtf16Le = 17, kUtf16Be = 18 };

struct Encoding {
  const char* name;
  int id;
};
constexpr Encoding kEncodings[] = {
    {"locale", atr_EncodingLocale},
    {"utf-8", atr_EncodingUtf8},
    {"utf8", atr_EncodingUtf8},
    {"latin-1", atr_EncodingLatin1},
    {"latin1", atr_EncodingLatin1},
    {"iso-8859-1", atr_EncodingLatin1},
    {"utf-16", kUtf16},
    {"utf-16le", kUtf16Le},
    {"utf-16be", kUtf16Be},
};

bool IsUtf16(int id) { return id >= kUtf16; }

/// UTF-16 bytes as UTF-8, through TPXString's own UTF-16 reading. False for an odd byte
/// count, a lone surrogate or a unit 0.
bool Utf16ToUtf8(const Bytes& in, int form, Bytes& out) {
  if (in.Size() % 2 != 0) return false;
  const unsigned char* b = reinterpret_cast<const unsigned char*>(in.Data());
  size_t n = in.Size() / 2, first = 0;
  bool little = form == kUtf16Le;
  if (form == kUtf16 && n > 0 &&
      ((b[0] == 0xFF && b[1] == 0xFE) || (b[0] == 0xFE && b[1] == 0xFF))) {
    little = b[0] == 0xFF;
    first = 1;
  }
  Array<unsigned short> units;
  for (size_t i = first; i < n; ++i)
    units.Push(static_cast<unsigned short>(little ? b[2 * i] | b[2 * i + 1] << 8
                                                  : b[2 * i] << 8 | b[2 * i + 1]));
  if (units.Size() > static_cast<size_t>(INT_MAX)) return false;
  TPXString text;
  if (text.BuildFromUTF16(units.Data(), static_cast<unsigned>(units.Size())) != TPXString::Success)
    return false;
  out.Append(text.CastToCharPtr(), static_cast<size_t>(text.GetLengthInByte()));
  return true;
}

/// UTF-8 bytes as UTF-16 in the form asked, through TPXString's own UTF-16 writing.
bool Utf8ToUtf16(const Bytes& in, int form, Bytes& out) {
  TPXString text;
  if (in.Size() > 0 &&
      text.BuildFromUTF8(in.Data(), static_cast<unsigned>(in.Size())) != TPXString::Success)
    return false;
  unsigned count = 0;
  text.ConvertToUTF16(nullptr, &count);
  Array<unsigned short> units;
  units.Reserve(count + 1);
  text.ConvertToUTF16(units.Data(), &count);
  const bool little = form != kUtf16Be;
  if (form == kUtf16) out.Append("\xFF\xFE", 2);
  for (unsigned i = 0; i < count; ++i) {
    const unsigned short u = units[i];
    const char pair[2] = {static_cast<char>(little ? u & 0xFF : u >> 8),
                          static_cast<char>(little ? u >> 8 : u & 0xFF)};
    out.Append(pair, 2);
  }
  return true;
}

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

namespace {

/// Appends the conversion of n bytes, whose converted size is known, to out.
void Append(Bytes& out, int to, int from, const char* in, int n, char replacement, int size) {
  const size_t at = out.Size();
  out.Resize(at + static_cast<size_t>(size) + 1);  // room for the terminator written
  atr_encoding_convert(to, out.Data() + at, from, in, n, replacement, true);
  out.Resize(at + static_cast<size_t>(size));
}

/// Converts one input between the library's byte encodings into out; on failure reports where
/// and gives kBadInput. With omit, characters the target cannot represent are left out.
int ConvertBytes(const char* name, const Bytes& text, int from, int to, char replacement, bool omit,
                 Bytes& out) {
  if (text.Size() > static_cast<size_t>(INT_MAX)) {
    std::fprintf(stderr, "kldutil transcode: %s: input larger than %d bytes\n", name, INT_MAX);
    return kBadInput;
  }
  const char* in = text.Data();
  const int length = static_cast<int>(text.Size());
  // The input must be valid as the library validates it (Latin-1 refuses 0x7F to 0x9F,
  // which its converter alone would take) before it is converted.
  const int size = atr_encoding_validate_sized(from, in, length)
                       ? atr_encoding_convert(to, static_cast<char*>(nullptr), from, in, length,
                                              replacement, false)
                       : -1;
  if (size >= 0) {
    Append(out, to, from, in, length, replacement, size);
    return kOk;
  }
  bool invalid;
  int codePoint;
  const size_t offset =
      FirstFailure(to, from, in, static_cast<size_t>(length), replacement, invalid, codePoint);
  if (omit && !invalid) {
    // Character by character (linear however many are left out): each one the target can
    // hold is converted, the others are left out; invalid input still stops it.
    for (size_t p = 0; p < text.Size();) {
      int width = 0;
      for (int w = 1; w <= kLongestCharacter && p + static_cast<size_t>(w) <= text.Size(); ++w)
        if (atr_encoding_validate_sized(from, in + p, w)) {
          width = w;
          break;
        }
      if (width == 0) {
        std::fprintf(stderr, "%s:%zu: invalid %s input at byte offset %zu\n", name, LineOf(in, p),
                     EncodingName(from), p);
        return kBadInput;
      }
      const int one = atr_encoding_convert(to, static_cast<char*>(nullptr), from, in + p, width,
                                           replacement, false);
      if (one >= 0) Append(out, to, from, in + p, width, replacement, one);
      p += static_cast<size_t>(width);
    }
    return kOk;
  }
  const size_t line = LineOf(in, offset);
  if (invalid)
    std::fprintf(stderr, "%s:%zu: invalid %s input at byte offset %zu\n", name, line,
                 EncodingName(from), offset);
  else
    std::fprintf(stderr,
                 "%s:%zu: character U+%04X at byte offset %zu cannot be represented in %s "
                 "(see -c and --replace)\n",
                 name, line, static_cast<unsigned>(codePoint), offset, EncodingName(to));
  return kBadInput;
}

/// Converts one whole input; UTF-16 on either side goes through UTF-8.
int ConvertInput(const char* name, const Bytes& text, int from, int to, char replacement, bool omit,
                 Bytes& out) {
  const Bytes* source = &text;
  Bytes decoded;
  if (IsUtf16(from)) {
    if (!Utf16ToUtf8(text, from, decoded)) {
      std::fprintf(stderr,
                   "%s: invalid %s input (an odd byte count, a lone surrogate or a unit 0)\n", name,
                   EncodingName(from));
      return kBadInput;
    }
    source = &decoded;
    from = atr_EncodingUtf8;
  }
  if (!IsUtf16(to)) return ConvertBytes(name, *source, from, to, replacement, omit, out);
  Bytes utf8;
  int result = ConvertBytes(name, *source, from, atr_EncodingUtf8, replacement, omit, utf8);
  if (result != kOk) return result;
  Utf8ToUtf16(utf8, to, out);
  return kOk;
}

}  // namespace

int RunTranscode(int argc, char** argv) {
  enum { kReplace = 1 };
  static const option kOptions[] = {{"from", required_argument, nullptr, 'f'},
                                    {"to", required_argument, nullptr, 't'},
                                    {"output", required_argument, nullptr, 'o'},
                                    {"replace", required_argument, nullptr, kReplace},
                                    {"list", no_argument, nullptr, 'l'},
                                    {"help", no_argument, nullptr, 'h'},
                                    {nullptr, 0, nullptr, 0}};
  int from = -1, to = -1;
  char replacement = 0;
  bool omit = false;
  const char* output = nullptr;
  ParseOptions parse("transcode", argc, argv, "f:t:o:clh", kOptions);
  for (int c; (c = parse.Next()) != -1;) {
    switch (c) {
      case 'f':
      case 't': {
        int id = EncodingId(parse.Argument());
        if (id == 0)
          return UsageError("transcode", "unknown encoding '%s' (see 'kldutil transcode -l')",
                            parse.Argument());
        (c == 'f' ? from : to) = id;
        break;
      }
      case 'o':
        output = parse.Argument();
        break;
      case 'c':
        omit = true;
        break;
      case kReplace:
        if (std::strlen(parse.Argument()) != 1)
          return UsageError("transcode", "--replace takes one byte, not '%s'", parse.Argument());
        replacement = parse.Argument()[0];
        break;
      case 'l':
        for (const Encoding& e : kEncodings) std::printf("%s\n", e.name);
        return kOk;
      case 'h':
        return PrintHelp(kHelp);
      default:
        return parse.Error();
    }
  }
  if (from < 0) return UsageError("transcode", "--from ENC is required");
  if (to < 0) return UsageError("transcode", "--to ENC is required");

  Array<const char*> files;
  for (int i = 0; i < parse.OperandCount(); ++i) files.Push(parse.Operand(i));
  if (files.Size() == 0) files.Push("-");
  Bytes out;
  for (size_t f = 0; f < files.Size(); ++f) {
    const char* name;
    std::FILE* file = OpenInput(files[f], name);
    if (file == nullptr) return kUsage;
    Bytes text;
    bool read = ReadAll(file, name, text);
    CloseInput(file);
    if (!read) return kUsage;
    int result = ConvertInput(name, text, from, to, replacement, omit, out);
    if (result != kOk) return result;
  }
  std::FILE* sink = OpenOutput(output);
  if (sink == nullptr) return kUsage;
  std::fwrite(out.Data(), 1, out.Size(), sink);
  if (!CloseOutput(sink, output)) return kUsage;
  return kOk;
}

}  // namespace kldutil
