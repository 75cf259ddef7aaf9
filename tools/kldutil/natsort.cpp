// natsort.cpp: "kldutil natsort": sorts lines in natural order, or byte by byte.
#include "kldutil.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <getopt.h>
#include <new>

namespace kldutil {
namespace {

constexpr const char kHelp[] =
    "Usage: kldutil natsort [-r] [-u] [-z] [-o FILE] [--bytes | --natural] [FILE...]\n"
    "Sort the lines of the FILEs (standard input when none, or for '-') and write them to\n"
    "the standard output.\n"
    "\n"
    "Natural order compares runs of digits by value ('part9' before 'part10'); a run with a\n"
    "leading zero compares digit by digit like a decimal fraction ('1.05' before '1.5').\n"
    "Other bytes compare as signed values, with no case folding. The default follows the\n"
    "library's switch: natural order, unless KLD_USE_NATURAL_ORDER_SORT is set.\n"
    "\n"
    "Options:\n"
    "  -r, --reverse          reverse the order\n"
    "  -u, --unique           write only the first of lines that compare equal\n"
    "  -z, --zero-terminated  records end with a zero byte, not a newline (input and output)\n"
    "  -o, --output FILE      write to FILE instead of the standard output (after reading\n"
    "                         every input, so FILE may be one of them)\n"
    "  --bytes                compare byte by byte (unsigned), as when natural order is off\n"
    "  --natural              compare in natural order even when KLD_USE_NATURAL_ORDER_SORT\n"
    "                         is set\n"
    "  -h, --help             show this help\n"
    "\n"
    "Every record is written with its terminator, also a last one that had none.\n"
    "Exit status: 0 success, 2 usage error or a file that cannot be read or written.\n";

/// One line: its text (zero-terminated in the buffer) and where it came in the input.
struct Line {
  size_t offset;
  size_t length;
  size_t index;
};

}  // namespace

int RunNatsort(int argc, char** argv) {
  enum { kBytes = 1, kNatural };
  static const option kOptions[] = {{"reverse", no_argument, nullptr, 'r'},
                                    {"unique", no_argument, nullptr, 'u'},
                                    {"zero-terminated", no_argument, nullptr, 'z'},
                                    {"output", required_argument, nullptr, 'o'},
                                    {"bytes", no_argument, nullptr, kBytes},
                                    {"natural", no_argument, nullptr, kNatural},
                                    {"help", no_argument, nullptr, 'h'},
                                    {nullptr, 0, nullptr, 0}};
  bool reverse = false, unique = false;
  char terminator = '\n';
  const char* output = nullptr;
  bool natural = atr_getNaturalOrder() != 0;
  ParseOptions parse("natsort", argc, argv, "ruzo:h", kOptions);
  if (!parse.Ok()) throw std::bad_alloc();
  for (int c; (c = parse.Next()) != -1;) {
    switch (c) {
      case 'r':
        reverse = true;
        break;
      case 'u':
        unique = true;
        break;
      case 'z':
        terminator = '\0';
        break;
      case 'o':
        output = parse.Argument();
        break;
      case kBytes:
        natural = false;
        break;
      case kNatural:
        natural = true;
        break;
      case 'h':
        return PrintHelp(kHelp);
      default:
        return parse.Error();
    }
  }
  Array<const char*> files;
  for (int i = 0; i < parse.OperandCount(); ++i) files.Push(parse.Operand(i));
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
    if (text.Size() > before && text[text.Size() - 1] != terminator) text.Push(terminator);
  }
  if (result != kOk) return result;

  Array<Line> lines;
  size_t start = 0;
  for (size_t i = 0; i < text.Size(); ++i) {
    if (text[i] != terminator) continue;
    text[i] = '\0';
    lines.Push(Line{start, i - start, lines.Size()});
    start = i + 1;
  }

  const char* base = text.Data();
  // Lines compare in the order chosen (memcmp of the lengths' shorter part then the length
  // for bytes: records may hold zero bytes); 0 means equal.
  auto compare = [&](const Line& x, const Line& y) {
    if (natural) return strnatcmp(base + x.offset, base + y.offset);
    int c = std::memcmp(base + x.offset, base + y.offset, std::min(x.length, y.length));
    return c != 0 ? c : x.length < y.length ? -1 : x.length > y.length ? 1 : 0;
  };
  auto before = [&](const Line& a, const Line& b) {
    int c = reverse ? compare(b, a) : compare(a, b);
    return c != 0 ? c < 0 : a.index < b.index;  // equal lines keep their input order
  };
  std::sort(lines.Data(), lines.Data() + lines.Size(), before);

  std::FILE* out = OpenOutput(output);
  if (out == nullptr) return kUsage;
  for (size_t i = 0; i < lines.Size(); ++i) {
    if (unique && i > 0 && compare(lines[i - 1], lines[i]) == 0) continue;
    std::fwrite(base + lines[i].offset, 1, lines[i].length, out);
    std::fputc(terminator, out);
  }
  if (!CloseOutput(out, output)) return kUsage;
  return kOk;
}

}  // namespace kldutil
