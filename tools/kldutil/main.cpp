// main.cpp: kldutil's entry point: chooses the subcommand.
#include "kldutil.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

namespace {

constexpr const char kHelp[] =
    "Usage: kldutil COMMAND [OPTION...] [ARG...]\n"
    "Command-line tool over the core utilities library: it sorts, transcodes, checks\n"
    "translation dictionaries and formats messages with the library's own routines.\n"
    "\n"
    "Commands:\n"
    "  natsort    sort lines in natural order ('part9' before 'part10')\n"
    "  transcode  convert text between the locale's encoding, UTF-8 and Latin-1\n"
    "  dict       check, extract, merge and count translation dictionaries\n"
    "  format     format one message as the library does, with its translation\n"
    "\n"
    "Run 'kldutil COMMAND --help' (or 'kldutil help COMMAND') for the options of a command,\n"
    "'kldutil --version' for the version of the library it runs on.\n"
    "\n"
    "Exit status: 0 success, 1 bad input found, 2 usage error or a file that cannot be read.\n";

}  // namespace

int main(int argc, char** argv) {
  using namespace kldutil;
  if (argc < 2) {
    std::fputs(kHelp, stderr);
    return kUsage;
  }
  const char* command = argv[1];
  // "kldutil help CMD [SUB]" is "kldutil CMD [SUB] --help".
  char helpOption[] = "--help";
  char* helpArgv[5] = {argv[0], nullptr, nullptr, nullptr, nullptr};
  if (std::strcmp(command, "help") == 0 && argc >= 3) {
    int n = 1;
    helpArgv[n++] = argv[2];
    if (argc >= 4) helpArgv[n++] = argv[3];
    helpArgv[n++] = helpOption;
    argc = n;
    argv = helpArgv;
    command = argv[1];
  }
  int result;
  try {
    if (IsHelp(command) || std::strcmp(command, "help") == 0)
      result = PrintHelp(kHelp);
    else if (std::strcmp(command, "--version") == 0)
      result = std::printf("kldutil %s\n", TPXBasCoreUtils_version()) < 0 ? kUsage : kOk;
    else if (std::strcmp(command, "natsort") == 0)
      result = RunNatsort(argc - 2, argv + 2);
    else if (std::strcmp(command, "transcode") == 0)
      result = RunTranscode(argc - 2, argv + 2);
    else if (std::strcmp(command, "dict") == 0)
      result = RunDict(argc - 2, argv + 2);
    else if (std::strcmp(command, "format") == 0)
      result = RunFormat(argc - 2, argv + 2);
    else {
      std::fprintf(stderr, "kldutil: unknown command '%s'\nTry 'kldutil --help'.\n", command);
      result = kUsage;
    }
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "kldutil %s: out of memory\n", command);
    result = kUsage;
  }
  atr_trReleaseDB();
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
    std::fprintf(stderr, "kldutil %s: cannot write the standard output: %s\n", command,
                 std::strerror(errno));
    if (result == kOk) result = kUsage;
  }
  return result;
}
