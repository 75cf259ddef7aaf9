/// @file aio_ios.h
/// Base of the library's streams over standard I/O files.
#ifndef AIO_IOS_H
#define AIO_IOS_H

#include "KLDTPXBasExport.h"
#include "mem_AllocationOperators.h"

#include <cstdio>

/// Holds a standard I/O file (`FILE*`), the format settings and the state bits shared by the
/// input and output streams. The stream owns its file only when attached with owned = true:
/// an owned file is closed by close(), by attaching another file and by the destructor; a file
/// that is not owned is never closed by the stream.
///
/// No operation throws: failures accumulate in the state bits (eofbit, failbit, badbit) until
/// clear() or close(). Streams are not copyable and take no locks: one stream belongs to one
/// thread at a time. No virtual functions: the classes are plain and cheap to build, and the
/// standard objects are built at compile time.
class KLDTPXBAS_API aio_ios : public mem_AllocationOperators {
 public:
  /// State bits.
  enum : int {
    eofbit = 1,   ///< a read reached the end of the file
    failbit = 2,  ///< an operation failed
    badbit = 4    ///< the file reported an error
  };

  /// Format flags the streams look at; other bits are stored but have no effect.
  enum : int {
    left = 0x0002,         ///< pad on the right; only when the adjustfield bits equal left
    right = 0x0004,        ///< pad on the left (as any adjustfield value other than left)
    adjustfield = 0x0006,  ///< mask of the padding side: left, right
    dec = 0x0010,          ///< decimal (as any basefield value other than oct or hex)
    oct = 0x0020,          ///< octal integers, when the basefield bits equal oct
    hex = 0x0040,          ///< lower-case hexadecimal integers, when the basefield bits equal hex
    basefield = 0x0070,    ///< mask of the integer radix: dec, oct, hex
    showpoint = 0x0100,    ///< floating point with precision 0 still prints the decimal point
    scientific = 0x0800,   ///< `e` notation, when the floatfield bits equal scientific
    fixed = 0x1000,        ///< `f` notation, when the floatfield bits equal fixed; else `g`
    floatfield = 0x1800,   ///< mask of the floating-point notation: scientific, fixed
    widthonce = 0x2000     ///< the width applies to the next formatted output only
  };

  /// Seek origins, passed to the seek of the standard I/O library as they are.
  enum seek_dir {
    beg = 0,  ///< from the start of the file
    cur = 1,  ///< from the current position
    end = 2   ///< from the end of the file
  };

  /// Closes the file when the stream owns it.
  ~aio_ios();

  aio_ios(const aio_ios&) = delete;
  aio_ios& operator=(const aio_ios&) = delete;

  /// Closes the current file first when the stream owns it (the state then becomes 0);
  /// the state is left as it is when the current file is not owned. f may be null.
  aio_ios& attach(FILE* f, bool owned);
  /// Closes the file when there is one (owned or not) and resets the state to 0 and owned to
  /// false. Returns true when fclose reported a failure.
  bool close();
  /// Sets the whole state to s (not or'ed in).
  void clear(int s = 0) { m_state = s; }
  /// 1 when the state is 0, else 0.
  int good() const { return m_state == 0 ? 1 : 0; }
  /// Non-zero when the failure or the error bit is set.
  int fail() const { return m_state & (failbit | badbit); }
  /// The state bits.
  int rdstate() const { return m_state; }
  /// The file's descriptor, or -1 without a file.
  int fd() const;
  /// The file, or null.
  FILE* fptr() const { return m_file; }
  /// Whether the stream closes its file.
  bool owned() const { return m_owned; }

  /// Returns the flags as they were. With mask 0 the bits are or'ed in; otherwise the bits
  /// under mask are replaced by bits & mask.
  unsigned int setf(int bits, int mask);
  /// Returns the flags as they were and clears bits.
  unsigned int unsetf(int bits);
  /// The format flags.
  int flags() const { return m_flags; }
  /// Sets the precision of floating-point output (6 at first).
  aio_ios& setprecision(int p);
  /// The precision of floating-point output.
  int precision() const { return m_precision; }
  /// keep = false makes the width apply to the next formatted output only (sets widthonce);
  /// keep = true leaves widthonce as it is, so a width set to keep stays in force.
  aio_ios& setwidth(int w, bool keep);
  /// The width of formatted output; 0 means no padding.
  int width() const { return m_width; }

 protected:
  constexpr aio_ios() noexcept = default;

  FILE* m_file = nullptr;  ///< The file; null when unattached.
  int m_flags = 0;         ///< The format flags.
  int m_state = 0;         ///< The state bits.
  int m_precision = 6;     ///< The precision of floating-point output.
  int m_width = 0;         ///< The width of formatted output.
  bool m_owned = false;    ///< Whether the stream closes its file.
};

#endif  // AIO_IOS_H
