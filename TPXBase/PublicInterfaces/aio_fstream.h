/// @file aio_fstream.h
/// Input and output streams opened on named files.
#ifndef AIO_FSTREAM_H
#define AIO_FSTREAM_H

#include "KLDTPXBasExport.h"
#include "aio_istream.h"
#include "aio_ostream.h"

#include <cstdio>

/// Input stream on a named file. open() takes the name in UTF-8 and opens it under its form
/// in the process locale's encoding. A file that cannot be read sets the state to exactly
/// failbit. A name that is not valid UTF-8, or that the locale cannot represent, throws
/// TPXBasOsStringCast ("Locale") before the stream is touched (state and file unchanged).
/// A file opened by the stream is owned by it. Positions are 64-bit.
class KLDTPXBAS_API aio_ifstream : public aio_istream {
 public:
  /// A stream attached to f (null: unattached).
  explicit aio_ifstream(FILE* f = nullptr, bool owned = false) { attach(f, owned); }
  /// Opens the file named name (UTF-8) for reading, closing an owned file first.
  aio_ifstream& open(const char* name);
  /// Moves the read position. A failed seek changes nothing; without a file it sets failbit.
  aio_ifstream& seekg(long long offset, aio_ios::seek_dir origin);
  /// The read position, or -1 without a file or on failure.
  long long tellg() const;
};

/// As aio_ifstream, with the name handed to the system byte for byte.
class KLDTPXBAS_API aio_ifstreamCae : public aio_istream {
 public:
  /// A stream attached to f (null: unattached).
  explicit aio_ifstreamCae(FILE* f = nullptr, bool owned = false) { attach(f, owned); }
  /// Opens the file named name (bytes as given) for reading, closing an owned file first.
  aio_ifstreamCae& open(const char* name);
  /// As aio_ifstream::seekg.
  aio_ifstreamCae& seekg(long long offset, aio_ios::seek_dir origin);
  /// As aio_ifstream::tellg.
  long long tellg() const;
};

/// Output stream on a named file, name in UTF-8 as for aio_ifstream (the same exception for a
/// name without a locale form). open(name, true) creates
/// a new file and refuses (state exactly failbit) a name that exists; open(name, false)
/// appends, creating the file when missing. A file that cannot be opened sets the state to
/// exactly failbit.
class KLDTPXBAS_API aio_ofstream : public aio_ostream {
 public:
  /// A stream attached to f (null: unattached).
  explicit aio_ofstream(FILE* f = nullptr, bool owned = false) { attach(f, owned); }
  /// Opens the file named name (UTF-8) for writing, closing an owned file first: a new file
  /// when fresh, else appending.
  aio_ofstream& open(const char* name, bool fresh);
  /// Moves the write position. A failed seek changes nothing; without a file it sets failbit.
  aio_ofstream& seekp(long long offset, aio_ios::seek_dir origin);
  /// The write position, or -1 without a file or on failure.
  long long tellp() const;
};

/// As aio_ofstream, with the name handed to the system byte for byte. An existing name with
/// fresh = true sets the state to exactly failbit; any other failed open leaves the stream
/// without a file and the state as it was, so the next output sets failbit.
class KLDTPXBAS_API aio_ofstreamCae : public aio_ostream {
 public:
  /// A stream attached to f (null: unattached).
  explicit aio_ofstreamCae(FILE* f = nullptr, bool owned = false) { attach(f, owned); }
  /// Opens the file named name (bytes as given) for writing, closing an owned file first: a
  /// new file when fresh, else appending.
  aio_ofstreamCae& open(const char* name, bool fresh);
  /// As aio_ofstream::seekp.
  aio_ofstreamCae& seekp(long long offset, aio_ios::seek_dir origin);
  /// As aio_ofstream::tellp.
  long long tellp() const;
};

#endif  // AIO_FSTREAM_H
