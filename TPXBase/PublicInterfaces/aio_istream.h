/// @file aio_istream.h
/// Input stream over a standard I/O file.
#ifndef AIO_ISTREAM_H
#define AIO_ISTREAM_H

#include "KLDTPXBasExport.h"
#include "aio_ios.h"

/// Reads bytes, lines, blocks and scanned numbers from its file. Without a file every
/// operation sets failbit and returns at once (-1, 0, 0.0 or the stream). A failed read sets
/// failbit, plus badbit when the file reports an error, else eofbit when it is at its end.
/// The base bits of the flags (oct, hex) choose the radix of the integer scans.
class KLDTPXBAS_API aio_istream : public aio_ios {
 public:
  constexpr aio_istream() noexcept = default;
  /// The next byte (0 to 255), or -1 at end of file or failure.
  int get();
  /// The next byte without consuming it, or -1.
  int peek();
  /// Pushes c back into the file (one byte is always possible).
  aio_istream& putback(char c);
  /// Reads up to n bytes into buf and returns how many were read. Fewer than n is a failure,
  /// and then a NUL is stored after the bytes read (buf holds n bytes). n < 0 is a failure.
  int read(char* buf, int n);
  /// Reads one line into buf (n bytes): at most n - 1 bytes, up to and including a newline.
  /// A complete line comes back NUL-terminated without its newline. A line that does not fit,
  /// or a last line without a newline, leaves the bytes read in buf (NUL-terminated), the rest
  /// of the line in the file, and sets failbit | eofbit. n < 1 is a failure that stores nothing.
  aio_istream& getline(char* buf, int n);
  /// Skips up to n bytes, stopping after the first byte equal to delim (compared as a signed
  /// char). End of file sets eofbit only.
  aio_istream& ignore(int n, int delim);
  /// The next byte, white space included; 0 on failure.
  char scan_char();
  /// Skips white space and stores the next word, unbounded: buf must hold the longest word.
  /// On failure buf becomes the empty string.
  aio_istream& scan_string(char* buf);
  /// Bounded form: stores at most n - 1 bytes of the next word and a NUL. A word that does not
  /// fit sets failbit; its first n - 1 bytes are in buf and the rest stays in the file.
  aio_istream& scan_string(char* buf, int n);
  /// @{
  /// Integer scans in the radix of the base bits; 0 when nothing could be converted.
  int scan_int();
  unsigned int scan_u_int();
  long long scan_int64();
  unsigned long long scan_u_int64();
  /// @}
  /// @{
  /// 0.0 when nothing could be converted.
  double scan_double();
  float scan_float();
  /// @}
  /// Attaches, owned, a file opened for reading on descriptor fd. When the descriptor cannot
  /// be opened the stream is left without a file and failbit is set; fd stays the caller's.
  aio_istream& adopt(int fd);

 protected:
  /// Failure epilogue of input: failbit, then badbit on a file error, else eofbit at its end.
  void postmortem();

 private:
  // Formats by the base bits: one of three conversions.
  const char* baseFormat(const char* o, const char* x, const char* d) const;
};

#endif  // AIO_ISTREAM_H
