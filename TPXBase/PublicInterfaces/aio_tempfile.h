/// @file aio_tempfile.h
/// Uniquely named temporary files.
#ifndef AIO_TEMPFILE_H
#define AIO_TEMPFILE_H

#include "KLDTPXBasExport.h"

#include <cstdio>

/// Creates a new, empty file named utl followed by six unique characters in the directory
/// named by TMPDIR or, when that is unset or empty, by TEMP, and returns it open for reading
/// and writing (binary). name receives the file's full path in UTF-8, in a block the caller
/// releases with mem_Free. The file is not deleted by the library.
///
/// Fatal: with neither variable set, or when no file can be created in the directory, a
/// message starting with "*** Error:" is written to stderr and the process aborts. Returns
/// null (name still set) if the created file cannot be opened as a stream.
KLDTPXBAS_API FILE* aio_createTempFile(char*& name);

#endif  // AIO_TEMPFILE_H
