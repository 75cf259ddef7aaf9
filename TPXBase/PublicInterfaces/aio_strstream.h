/// @file aio_strstream.h
/// Output string stream backed by a temporary file.
#ifndef AIO_STRSTREAM_H
#define AIO_STRSTREAM_H

#include "KLDTPXBasExport.h"
#include "aio_ostream.h"

/// Output stream whose text goes to a temporary file of its own (aio_createTempFile, so
/// creating one is fatal when no temporary directory is usable). The text is held in memory
/// only in the snapshots str() and adoptString() hand out. The destructor deletes the file;
/// a file that cannot be deleted is fatal.
class KLDTPXBAS_API aio_ostrstream : public aio_ostream {
 public:
  aio_ostrstream();
  ~aio_ostrstream();

  /// Everything written so far, NUL-terminated, owned by the stream: valid until the next
  /// str() or the stream's destruction.
  char* str();
  /// Everything written so far, NUL-terminated, in a buffer of (bytes written + 1) obtained
  /// from allocate and owned by the caller. Returns null when allocate does, or when the text
  /// reaches 4 GiB - 1 bytes (failbit). Writing continues at the end afterwards.
  char* adoptString(void* (*allocate)(unsigned int));

 private:
  char* m_string = nullptr;  // last result of str(), from the host allocation service
  char* m_name = nullptr;    // the temporary file's path in UTF-8, from mem_Malloc
};

#endif  // AIO_STRSTREAM_H
