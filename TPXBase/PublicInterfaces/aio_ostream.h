/// @file aio_ostream.h
/// Output stream over a standard I/O file.
#ifndef AIO_OSTREAM_H
#define AIO_OSTREAM_H

#include "KLDTPXBasExport.h"
#include "aio_ios.h"

class aio_istream;

/// Writes bytes, texts and formatted numbers to its file with the printf family. A width
/// other than 0 pads the next formatted output (left when the adjustfield bits equal left);
/// with widthonce set the width goes back to 0 after that output. Integers follow the base
/// bits; floating point follows floatfield, precision and showpoint and never prints a
/// negative zero. Without a file every operation sets failbit and returns; a failed write sets
/// failbit, plus badbit when the file reports an error.
class KLDTPXBAS_API aio_ostream : public aio_ios {
 public:
  constexpr aio_ostream() noexcept = default;
  /// A newline is always written alone: the width is ignored and stays in force.
  aio_ostream& put(char c);
  /// s must not be null (a null text is a failure and writes nothing).
  aio_ostream& print(const char* s);
  /// @{
  /// Prints an integer in the radix of the base bits.
  aio_ostream& print_int(int v);
  aio_ostream& print_u_int(unsigned int v);
  aio_ostream& print_int64(long long v);
  aio_ostream& print_u_int64(unsigned long long v);
  /// @}
  /// The whole address in hexadecimal with a 0x prefix; a null pointer prints as 0.
  aio_ostream& print_address(const void* p);
  /// Prints d as floatfield, precision and showpoint say; a negative zero prints as 0.
  aio_ostream& print_double(double d);
  /// Writes n bytes; fewer written, or n < 0, is a failure.
  aio_ostream& write(const char* buf, int n);
  /// Flushes the file. Without a file every output file of the process is flushed and failbit
  /// is set.
  aio_ostream& flush();
  /// Copies everything in reads until in's state is no longer 0, then flushes.
  aio_ostream& copy(aio_istream& in);
  /// Attaches, owned, a file opened for writing on descriptor fd. When the descriptor cannot
  /// be opened the stream is left without a file and failbit is set; fd stays the caller's.
  aio_ostream& adopt(int fd);

 protected:
  /// Failure epilogue of output: failbit, plus badbit when the file reports an error.
  void postmortem();

 private:
  // Writes "%" [#] [-] "*" from pos; returns the position after the asterisk.
  int getAlignFrmt(char* buf, int pos, bool alt) const;
  // Prints one value with the conversion conv (e.g. "d", "llx") with or without the width.
  template <class T>
  aio_ostream& printValue(const char* conv, bool alt, T value);
  // Writes length bytes of text padded to the width exactly as the printf conversions pad.
  aio_ostream& printPadded(const char* text, int length);
  // After an output that used the width: clears a one-shot width.
  void widthUsed();
};

#endif  // AIO_OSTREAM_H
