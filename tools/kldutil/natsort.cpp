// natsort.cpp: "kldutil natsort": sorts lines in natural order, or byte by byte.
#include "kldutil.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace kldutil {
namespace {

constexpr const char kHelp[] =
    "Usage: kldutil natsort [-r] [--bytes | --natural] [FILE...]\n"
    "Sort the lines of the FILEs (standard input when none, or for '-') and write them to\n"
    "the standard output.\n"
    "\n"
    "Natural order compares runs of digits by value ('part9' before 'part10'); a run with a\n"
    "leading zero compares digit by digit like a decimal fraction ('1.05' before '1.5').\n"
    "Other bytes compare as signed values, with no case folding. The default follows the\n"
    "library's switch: natural order, unless KLD_USE_NATURAL_ORDER_SORT is set.\n"
    "\n"
    "Options:\n"
    "  -r, --reverse  reverse the order\n"
    "  --bytes        compare byte by byte (unsigned), as when natural order is off\n"
    "  --natural      compare in natural order even when KLD_USE_NATURAL_ORDER_SORT is set\n"
    "  -h, --help     show this help\n"
    "\n"
    "Every line is written with a newline, also a last line that had none.\n"
    "Exit status: 0 success, 2 usage error or a file that cannot be read.\n";

/// One line: its text (zero-terminated in the buffer) and where it came in the input.
struct Line {
  size_t offset;
  size_t length;
  size_t index;
};

}  // namespace

int RunNatsort(int argc, char** argv) {
  bool reverse = false;
  bool natural = atr_getNaturalOrder() != 0;
  Array<const char*> files;
  bool options = true;
  for (int i = 0; i < argc; ++i) {
    const char* arg = argv[i];
    if (options && arg[0] == '-' && arg[1] != '\0') {
      if (IsHelp(arg)) return PrintHelp(kHelp);
      if (std::strcmp(arg, "--") == 0)
        options = false;
      else if (std::strcmp(arg, "-r") == 0 || std::strcmp(arg, "--reverse") == 0)
        reverse = true;
      else if (std::strcmp(arg, "--bytes") == 0)
        natural = false;
      else if (std::strcmp(arg, "--natural") == 0)
        natural = true;
      else
        return UsageError("natsort", "unknown option '%s'", arg);
      continue;
    }
    files.Push(arg);
  }
  if (files.Size() == 0) files.Push("-");

  // All inputs in one buffer; every line ends with a newline, made a terminator below.
  Bytes text;
  int result = kOk;
  for (size_t f = 0; f < files.Size(); ++f) {
    const char* name;
    std::FILE* file = OpenInput(files[f], name);
    if (file == nullptr) {
      result = kUsage;
      continue;
    }
    size_t before = text.Size();
    if (!ReadAll(file, name, text)) result = kUsage;
    CloseInput(file);
    if (text.Size() > before && text[text.Size() - 1] != '\n') text.Push('\n');
  }
  if (result != kOk) return result;

  Array<Line> lines;
  size_t start = 0;
  for (size_t i = 0; i < text.Size(); ++i) {
    if (text[i] != '\n') continue;
    text[i] = '\0';
    lines.Push(Line{start, i - start, lines.Size()});
    start = i + 1;
  }

  const char* base = text.Data();
  auto before = [&](const Line& a, const Line& b) {
    const Line& x = reverse ? b : a;
    const Line& y = reverse ? a : b;
    int c;
    if (natural) {
      c = strnatcmp(base + x.offset, base + y.offset);
    } else {
      c = std::memcmp(base + x.offset, base + y.offset, std::min(x.length, y.length));
      if (c == 0) c = x.length < y.length ? -1 : x.length > y.length ? 1 : 0;
    }
    return c != 0 ? c < 0 : a.index < b.index;  // equal lines keep their input order
  };
  std::sort(lines.Data(), lines.Data() + lines.Size(), before);

  for (size_t i = 0; i < lines.Size(); ++i) {
    std::fwrite(base + lines[i].offset, 1, lines[i].length, stdout);
    std::putchar('\n');
  }
  return kOk;
}

}  // namespace kldutil
