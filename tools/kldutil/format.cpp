// format.cpp: "kldutil format": builds one message as the library does.
#include "kldutil.h"

#include <cerrno>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <getopt.h>

namespace kldutil {
namespace {

constexpr const char kHelp[] =
    "Usage: kldutil format [--dict FILE] [--locale] [--conversions] [--strict] FORMAT\n"
    "                      [TYPE:VALUE...]\n"
    "Format one message from the printf-style FORMAT and the arguments exactly as the\n"
    "library builds its messages, and write it to the standard output.\n"
    "\n"
    "Arguments, given in order (argument 1 first):\n"
    "  int:N      32-bit signed integer      uint:N     32-bit unsigned integer\n"
    "  int64:N    64-bit signed integer      uint64:N   64-bit unsigned integer\n"
    "  double:X   double                     float:X    float\n"
    "  str:TEXT   text                       ptr:N      pointer value (0x... allowed)\n"
    "\n"
    "Options:\n"
    "  --dict FILE     load FILE as the translation dictionary first; the line\n"
    "                  'translation: TEXT' (or 'translation: none') comes before the message\n"
    "  --locale        texts in and out are in the locale's encoding (default: UTF-8)\n"
    "  --conversions   list the conversions of the text used, one per line, before the\n"
    "                  message: 'argument N: CONVERSION (letter L, number M)'\n"
    "  --strict        a warning below is an error (exit 1)\n"
    "  -h, --help      show this help\n"
    "\n"
    "Warnings on the standard error stream: an argument missing (the conversion shows as\n"
    "'%s') or extra (not shown), a text given for a number conversion (shown as it is), and\n"
    "a '%' followed by a flag the formatter does not know ('+', ' ', '#', ...: the '%'\n"
    "vanishes and the rest shows as text). The message is written all the same.\n"
    "\n"
    "Exit status: 0 success, 1 a FORMAT the library cannot format (it holds '%$') or a\n"
    "warning under --strict, 2 usage error or a dictionary that cannot be read.\n";

/// One argument of the message, as typed on the command line.
struct Argument {
  enum Type { Int, UInt, Int64, UInt64, Double, Float, Text, Pointer } type;
  long long integer;
  unsigned long long unsignedInteger;
  double real;
  const char* text;
};

bool ParseSigned(const char* text, long long low, long long high, long long& value) {
  if (*text == '\0') return false;
  char* end;
  errno = 0;
  value = std::strtoll(text, &end, 0);
  return *end == '\0' && errno == 0 && value >= low && value <= high;
}

bool ParseUnsigned(const char* text, unsigned long long high, unsigned long long& value) {
  if (*text == '\0' || *text == '-') return false;
  char* end;
  errno = 0;
  value = std::strtoull(text, &end, 0);
  return *end == '\0' && errno == 0 && value <= high;
}

/// A finite number that fits the type: a value too large for it would only be rounded to
/// infinity (written "inf" or "nan" it is taken as it stands).
bool ParseReal(const char* text, double& value, double largest) {
  if (*text == '\0') return false;
  char* end;
  errno = 0;
  value = std::strtod(text, &end);
  if (*end != '\0') return false;
  if (!std::isfinite(value)) return errno != ERANGE;
  return value <= largest && value >= -largest;
}

/// Reads TYPE:VALUE; false when the type is unknown or the value does not fit it.
bool ParseArgument(const char* arg, Argument& out) {
  const char* colon = std::strchr(arg, ':');
  if (colon == nullptr) return false;
  size_t n = static_cast<size_t>(colon - arg);
  const char* value = colon + 1;
  auto is = [&](const char* type) { return std::strlen(type) == n && !std::strncmp(arg, type, n); };
  out = Argument{Argument::Text, 0, 0, 0.0, value};
  if (is("str")) return true;
  if (is("int")) {
    out.type = Argument::Int;
    return ParseSigned(value, INT_MIN, INT_MAX, out.integer);
  }
  if (is("int64")) {
    out.type = Argument::Int64;
    return ParseSigned(value, LLONG_MIN, LLONG_MAX, out.integer);
  }
  if (is("uint")) {
    out.type = Argument::UInt;
    return ParseUnsigned(value, UINT_MAX, out.unsignedInteger);
  }
  if (is("uint64") || is("ptr")) {
    out.type = is("ptr") ? Argument::Pointer : Argument::UInt64;
    return ParseUnsigned(value, ULLONG_MAX, out.unsignedInteger);
  }
  if (is("double") || is("float")) {
    out.type = is("float") ? Argument::Float : Argument::Double;
    return ParseReal(value, out.real, is("float") ? FLT_MAX : DBL_MAX);
  }
  return false;
}

void Substitute(atr_translate& message, int n, const Argument& a, TPXBasStringMode mode) {
  switch (a.type) {
    case Argument::Int:
      return atr_SubstituteFormat(message, n, static_cast<int>(a.integer), mode);
    case Argument::UInt:
      return atr_SubstituteFormat(message, n, static_cast<unsigned int>(a.unsignedInteger), mode);
    case Argument::Int64:
      return atr_SubstituteFormat(message, n, a.integer, mode);
    case Argument::UInt64:
      return atr_SubstituteFormat(message, n, a.unsignedInteger, mode);
    case Argument::Double:
      return atr_SubstituteFormat(message, n, a.real, mode);
    case Argument::Float:
      return atr_SubstituteFormat(message, n, static_cast<float>(a.real), mode);
    case Argument::Text:
      return atr_SubstituteFormat(message, n, a.text, mode);
    case Argument::Pointer:
      return atr_SubstituteFormat(
          message, n, reinterpret_cast<const void*>(static_cast<uintptr_t>(a.unsignedInteger)),
          mode);
  }
}

/// Warns about arguments that do not fit the conversions of the text used; gives the count.
int WarnArguments(const atr_FormatConversions& conversions, const Array<Argument>& arguments) {
  int warnings = 0;
  const int count = conversions.Count();
  const int given = static_cast<int>(arguments.Size());
  for (int n = 1; n <= count || n <= given; ++n) {
    const atr_FormatConversion* c = conversions.ForArgument(n);
    if (n > given) {
      std::fprintf(stderr,
                   "kldutil format: warning: argument %d (\"%s\") is missing: it shows as "
                   "\"%%s\"\n",
                   n, c->m_format);
    } else if (n > count) {
      std::fprintf(stderr,
                   "kldutil format: warning: argument %d is extra: the text has %d "
                   "conversion%s; it is not shown\n",
                   n, count, count == 1 ? "" : "s");
    } else if (arguments[static_cast<size_t>(n - 1)].type == Argument::Text && c->m_letter != 's') {
      std::fprintf(stderr,
                   "kldutil format: warning: argument %d is a text for \"%s\": it is "
                   "shown as it is\n",
                   n, c->m_format);
    } else {
      continue;
    }
    ++warnings;
  }
  return warnings;
}

/// Warns about each "%" whose next character is neither a conversion character nor one the
/// formatter reads as part of one: the "%" vanishes and the rest shows as text.
int WarnFlags(const char* text) {
  int warnings = 0;
  for (const char* p = text; (p = std::strchr(p, '%')) != nullptr;) {
    if (p[1] == '%') {
      p += 2;
      continue;
    }
    const char* q = p + 1;
    while (*q != '\0' && std::strchr("0123456789.-l$", *q) != nullptr) ++q;
    if (*q != '\0' && std::strchr("EXcdefgosux", *q) == nullptr) {
      std::fprintf(stderr,
                   "kldutil format: warning: \"%.*s\" is not a conversion: the flag '%c' "
                   "is not one the formatter knows; the '%%' vanishes and the rest shows as text\n",
                   static_cast<int>(q - p + 1), p, *q);
      ++warnings;
    }
    p = *q != '\0' ? q + 1 : q;
  }
  return warnings;
}

void ListConversions(const atr_FormatConversions& conversions) {
  for (int n = 1; n <= conversions.Count(); ++n) {
    const atr_FormatConversion* c = conversions.ForArgument(n);
    std::printf("argument %d: %s (letter %c, number %d%s)\n", n, c->m_format, c->m_letter,
                c->m_number, c->m_numbered ? ", written" : "");
  }
}

}  // namespace

int RunFormat(int argc, char** argv) {
  enum { kDict = 1, kLocale, kConversions, kStrict };
  static const option kOptions[] = {{"dict", required_argument, nullptr, kDict},
                                    {"locale", no_argument, nullptr, kLocale},
                                    {"conversions", no_argument, nullptr, kConversions},
                                    {"strict", no_argument, nullptr, kStrict},
                                    {"help", no_argument, nullptr, 'h'},
                                    {nullptr, 0, nullptr, 0}};
  const char* dictionary = nullptr;
  bool locale = false, listConversions = false, strict = false;
  // Options come before FORMAT, which may itself start with "-".
  ParseOptions parse("format", argc, argv, "+h", kOptions);
  for (int c; (c = parse.Next()) != -1;) {
    switch (c) {
      case kDict:
        dictionary = parse.Argument();
        break;
      case kLocale:
        locale = true;
        break;
      case kConversions:
        listConversions = true;
        break;
      case kStrict:
        strict = true;
        break;
      case 'h':
        return PrintHelp(kHelp);
      default:
        return parse.Error();
    }
  }
  const char* format = parse.OperandCount() > 0 ? parse.Operand(0) : nullptr;
  Array<Argument> arguments;
  for (int i = 1; i < parse.OperandCount(); ++i) {
    const char* arg = parse.Operand(i);
    Argument a;
    if (!ParseArgument(arg, a))
      return UsageError("format",
                        "bad argument '%s' (TYPE:VALUE, TYPE one of int, uint, "
                        "int64, uint64, double, float, str, ptr)",
                        arg);
    arguments.Push(a);
  }
  if (format == nullptr) return UsageError("format", "no FORMAT given");
  const TPXBasStringMode mode(locale);

  const char* translation = nullptr;
  if (dictionary != nullptr) {
    const char* name;
    std::FILE* file = OpenInput(dictionary, name);
    if (file == nullptr) return kUsage;
    CloseInput(file);
    atr_trLoadFile(dictionary);
    translation = atr_trLookup(format);
  }

  // The library takes a usable translation as it stands; otherwise it parses the format
  // itself, where a "%$" is a broken invariant that would stop the process.
  atr_FormatConversions ofTranslation(translation);
  bool translated = translation != nullptr && ofTranslation.Ok();
  atr_FormatConversions ofFormat(format, atr_FormatConversions::AsFormat);
  if (!translated && !ofFormat.Ok()) {
    std::fprintf(stderr,
                 "kldutil format: the format holds \"%%$\": the library cannot format it\n");
    return kBadInput;
  }

  if (dictionary != nullptr) {
    if (translation == nullptr)
      std::printf("translation: none\n");
    else if (translated)
      std::printf("translation: %s\n", translation);
    else
      std::printf("translation: %s (not used: it holds \"%%$\")\n", translation);
  }
  const atr_FormatConversions& used = translated ? ofTranslation : ofFormat;
  if (listConversions) ListConversions(used);
  int warnings = WarnArguments(used, arguments);
  warnings += WarnFlags(translated ? translation : format);

  atr_translate message(format, mode);
  for (size_t i = 0; i < arguments.Size(); ++i)
    Substitute(message, static_cast<int>(i) + 1, arguments[i], mode);
  atr_String result = message.Result(mode);
  std::fwrite(result.CStr(), 1, result.Length(), stdout);
  std::putchar('\n');
  return strict && warnings > 0 ? kBadInput : kOk;
}

}  // namespace kldutil
