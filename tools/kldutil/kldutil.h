// kldutil.h: what the subcommands of kldutil share: exit codes, buffers drawn from the
// allocation service, input files and usage errors.
#ifndef KLDUTIL_H
#define KLDUTIL_H

#include "KLDTPXBasCoreUtils.h"

#include <cstdio>
#include <cstring>
#include <getopt.h>
#include <new>
#include <string>
#include <vector>

namespace kldutil {

/// Exit codes of every subcommand.
enum Exit { kOk = 0, kBadInput = 1, kUsage = 2 };

/// Name shown for standard input in messages.
constexpr const char kStdinName[] = "<stdin>";

/// Growable array of trivially copyable values, drawn from the allocation service. Throws
/// std::bad_alloc when memory runs out.
template <class T>
class Array {
 public:
  Array() = default;
  ~Array() { mem_Free(m_data); }
  Array(const Array&) = delete;
  Array& operator=(const Array&) = delete;

  void Push(const T& value) {
    Reserve(m_size + 1);
    m_data[m_size++] = value;
  }
  /// Appends n values.
  void Append(const T* values, size_t n) {
    if (n == 0) return;
    Reserve(m_size + n);
    std::memcpy(m_data + m_size, values, n * sizeof(T));
    m_size += n;
  }
  void Reserve(size_t n) {
    if (n <= m_capacity) return;
    size_t capacity = m_capacity < 64 ? 64 : m_capacity;
    while (capacity < n) capacity *= 2;
    T* data = static_cast<T*>(mem_Malloc(capacity * sizeof(T)));
    if (data == nullptr) throw std::bad_alloc();
    if (m_size > 0) std::memcpy(data, m_data, m_size * sizeof(T));
    mem_Free(m_data);
    m_data = data;
    m_capacity = capacity;
  }
  /// Grows or shrinks to n values; values added are left uninitialised.
  void Resize(size_t n) {
    Reserve(n);
    m_size = n;
  }
  T* Data() { return m_data; }
  const T* Data() const { return m_data; }
  size_t Size() const { return m_size; }
  T& operator[](size_t i) { return m_data[i]; }
  const T& operator[](size_t i) const { return m_data[i]; }

 private:
  T* m_data = nullptr;
  size_t m_size = 0;
  size_t m_capacity = 0;
};

using Bytes = Array<char>;

/// Appends the zero-terminated text and its terminator; gives the offset where it starts.
size_t AppendText(Bytes& arena, const char* text, size_t length);

/// Opens name for reading ("-" is standard input) or reports why it cannot on the standard
/// error stream and gives null: also for anything that is not a regular file ("FILE: not a
/// regular file"; a FIFO is refused without blocking). displayName receives the name to use
/// in messages.
std::FILE* OpenInput(const char* name, const char*& displayName);
void CloseInput(std::FILE* file);

/// Opens name for writing ("-" or null is standard output) or reports why it cannot and gives
/// null.
std::FILE* OpenOutput(const char* name);
/// Closes a file OpenOutput gave (standard output stays open); false, after a report naming
/// the file, when its data could not be written.
bool CloseOutput(std::FILE* file, const char* name);

/// Appends the lines of text to lines, as they are: without their "\n", a "\r" before it
/// included; a last line without "\n" counts too.
void SplitLines(const std::string& text, std::vector<std::string>& lines);

/// Reads the rest of file into bytes. False (after a report naming the file) on a read error.
bool ReadAll(std::FILE* file, const char* displayName, Bytes& bytes);

/// Reports a usage error of a subcommand and gives kUsage.
int UsageError(const char* command, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Whether arg asks for help.
inline bool IsHelp(const char* arg) {
  return std::strcmp(arg, "--help") == 0 || std::strcmp(arg, "-h") == 0;
}

/// Prints help on the standard output and gives kOk.
int PrintHelp(const char* text);

/// getopt_long over a subcommand's arguments (each subcommand gives one table), with the
/// tool's own usage messages. Options may come anywhere; "--" ends them. Not reentrant: one
/// parse at a time, as getopt itself.
class ParseOptions {
 public:
  ParseOptions(const char* command, int argc, char** argv, const char* shortOptions,
               const option* longOptions);
  bool Ok() const { return m_argv.Size() > 0; }
  /// The next option (its letter or long value), or -1 when the options are done.
  int Next();
  /// The argument of the option Next just gave.
  const char* Argument() const;
  /// Reports the option Next could not take (unknown, or its argument missing) as a usage
  /// error of the command; gives kUsage.
  int Error() const;
  /// The operands left after the options, in order (valid once Next gave -1).
  int OperandCount() const { return m_argc - m_first; }
  char* Operand(int i) const { return m_argv.Data()[m_first + i]; }

 private:
  const char* m_command;
  int m_argc;
  Array<char*> m_argv;  ///< the command's name, the arguments, a null: getopt's own view
  const char* m_short;
  const option* m_long;
  int m_first = 1;
  int m_last = 0;  ///< what Next gave last
};

int RunNatsort(int argc, char** argv);
int RunTranscode(int argc, char** argv);
int RunDict(int argc, char** argv);
int RunDictExtract(int argc, char** argv);
int RunDictMerge(int argc, char** argv);

/// The dict check messages about the conversions of a translation against its key: each is
/// handed to each(message, context); gives their count.
int ConversionProblems(const char* key, const char* text, void (*each)(const char*, void*),
                       void* context);
int RunFormat(int argc, char** argv);

}  // namespace kldutil

#endif  // KLDUTIL_H
