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

namespace kldutil {
namespace {

constexpr const char kHelp[] =
    "Usage: kldutil format [--dict FILE] [--locale] [--conversions] FORMAT [TYPE:VALUE...]\n"
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
    "  -h, --help      show this help\n"
    "\n"
    "Exit status: 0 success, 1 a FORMAT the library cannot format (it holds '%$'),\n"
    "2 usage error or a dictionary that cannot be read.\n";

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

void ListConversions(const atr_FormatConversions& conversions) {
  for (int n = 1; n <= conversions.Count(); ++n) {
    const atr_FormatConversion* c = conversions.ForArgument(n);
    std::printf("argument %d: %s (letter %c, number %d%s)\n", n, c->m_format, c->m_letter,
                c->m_number, c->m_numbered ? ", written" : "");
  }
}

}  // namespace

int RunFormat(int argc, char** argv) {
  const char* dictionary = nullptr;
  bool locale = false;
  bool listConversions = false;
  const char* format = nullptr;
  Array<Argument> arguments;
  bool options = true;
  for (int i = 0; i < argc; ++i) {
    const char* arg = argv[i];
    if (format == nullptr && options && arg[0] == '-' && arg[1] != '\0') {
      if (IsHelp(arg)) return PrintHelp(kHelp);
      if (std::strcmp(arg, "--") == 0) {
        options = false;
      } else if (std::strcmp(arg, "--dict") == 0) {
        if (i + 1 == argc) return UsageError("format", "option '--dict' needs a file");
        dictionary = argv[++i];
      } else if (std::strncmp(arg, "--dict=", 7) == 0) {
        dictionary = arg + 7;
      } else if (std::strcmp(arg, "--locale") == 0) {
        locale = true;
      } else if (std::strcmp(arg, "--conversions") == 0) {
        listConversions = true;
      } else {
        return UsageError("format", "unknown option '%s'", arg);
      }
      continue;
    }
    if (format == nullptr) {
      format = arg;
      continue;
    }
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
  if (listConversions) ListConversions(translated ? ofTranslation : ofFormat);

  atr_translate message(format, mode);
  for (size_t i = 0; i < arguments.Size(); ++i)
    Substitute(message, static_cast<int>(i) + 1, arguments[i], mode);
  atr_String result = message.Result(mode);
  std::fwrite(result.CStr(), 1, result.Length(), stdout);
  std::putchar('\n');
  return kOk;
}

}  // namespace kldutil
