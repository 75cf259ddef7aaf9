// common.cpp: what kldutil's subcommands share: input and output files, usage errors, help
// and option parsing. Everything but main() lives in the commands library, so that the
// fuzz targets drive the subcommands exactly as the tool does.
#include "kldutil.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace kldutil {

size_t AppendText(Bytes& arena, const char* text, size_t length) {
  size_t offset = arena.Size();
  arena.Append(text, length);
  arena.Push('\0');
  return offset;
}

std::FILE* OpenInput(const char* name, const char*& displayName) {
  if (std::strcmp(name, "-") == 0) {
    displayName = kStdinName;
    return stdin;
  }
  displayName = name;
  // Opened without blocking, so that a FIFO cannot stall the tool before it is refused.
  int fd = ::open(name, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) {
    std::fprintf(stderr, "kldutil: %s: cannot open: %s\n", name, std::strerror(errno));
    return nullptr;
  }
  struct stat info;
  if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
    ::close(fd);
    std::fprintf(stderr, "kldutil: %s: not a regular file\n", name);
    return nullptr;
  }
  ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
  std::FILE* file = ::fdopen(fd, "rb");
  if (file == nullptr) {
    std::fprintf(stderr, "kldutil: %s: cannot open: %s\n", name, std::strerror(errno));
    ::close(fd);
  }
  return file;
}

void CloseInput(std::FILE* file) {
  if (file != nullptr && file != stdin) std::fclose(file);
}

std::FILE* OpenOutput(const char* name) {
  if (name == nullptr || std::strcmp(name, "-") == 0) return stdout;
  std::FILE* file = std::fopen(name, "wb");
  if (file == nullptr)
    std::fprintf(stderr, "kldutil: %s: cannot write: %s\n", name, std::strerror(errno));
  return file;
}

bool CloseOutput(std::FILE* file, const char* name) {
  if (file == stdout) return true;
  if (std::fclose(file) == 0) return true;
  std::fprintf(stderr, "kldutil: %s: cannot write: %s\n", name, std::strerror(errno));
  return false;
}

bool ReadAll(std::FILE* file, const char* displayName, Bytes& bytes) {
  char chunk[65536];
  size_t n;
  while ((n = std::fread(chunk, 1, sizeof(chunk), file)) > 0) bytes.Append(chunk, n);
  if (std::ferror(file)) {
    std::fprintf(stderr, "kldutil: %s: read error: %s\n", displayName, std::strerror(errno));
    return false;
  }
  return true;
}

int UsageError(const char* command, const char* format, ...) {
  std::fprintf(stderr, "kldutil %s: ", command);
  va_list args;
  va_start(args, format);
  std::vfprintf(stderr, format, args);
  va_end(args);
  std::fprintf(stderr, "\nTry 'kldutil %s --help'.\n", command);
  return kUsage;
}

ParseOptions::ParseOptions(const char* command, int argc, char** argv, const char* shortOptions,
                           const option* longOptions)
    : m_command(command), m_argc(argc + 1), m_short(shortOptions), m_long(longOptions) {
  m_argv.Push(const_cast<char*>(command));
  for (int i = 0; i < argc; ++i) m_argv.Push(argv[i]);
  m_argv.Push(nullptr);
  optind = 0;  // a fresh scan
  opterr = 0;  // the messages are ours
}

int ParseOptions::Next() {
  // A leading ':' makes a missing argument ':' rather than '?'.
  // A leading '+' (stop at the first operand) must stay first.
  char shortOptions[64] = "";
  const bool stopAtOperand = m_short[0] == '+';
  std::strcat(shortOptions, stopAtOperand ? "+:" : ":");
  std::strncat(shortOptions, m_short + (stopAtOperand ? 1 : 0), sizeof(shortOptions) - 3);
  m_last = getopt_long(m_argc, m_argv.Data(), shortOptions, m_long, nullptr);
  if (m_last == -1) m_first = optind;
  return m_last;
}

const char* ParseOptions::Argument() const { return optarg; }

int ParseOptions::Error() const {
  const char* arg = optind > 0 && optind <= m_argc ? m_argv.Data()[optind - 1] : "";
  if (m_last == ':') return UsageError(m_command, "option '%s' needs an argument", arg);
  if (optopt != 0 && arg[0] == '-' && arg[1] != '-')
    return UsageError(m_command, "unknown option '-%c'", optopt);
  return UsageError(m_command, "unknown option '%s'", arg);
}

void SplitLines(const std::string& text, std::vector<std::string>& lines) {
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
}

int PrintHelp(const char* text) {
  std::fputs(text, stdout);
  return kOk;
}

}  // namespace kldutil
