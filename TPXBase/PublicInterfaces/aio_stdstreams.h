/// @file aio_stdstreams.h
/// The standard stream objects.
#ifndef AIO_STDSTREAMS_H
#define AIO_STDSTREAMS_H

#include "KLDTPXBasExport.h"
#include "aio_istream.h"
#include "aio_ostream.h"

/// The process's standard input, output and error. The objects are built at compile time
/// (unattached) and are never destroyed, so they stay usable while the process exits, after
/// every static destructor. The library's set-up attaches them, not owned, to stdin, stdout
/// and stderr, so the library never closes those files. They are references to the objects:
/// use them as the objects themselves.
/// @{
extern KLDTPXBAS_API aio_istream& aio_cin;   ///< the standard input, on stdin
extern KLDTPXBAS_API aio_ostream& aio_cout;  ///< the standard output, on stdout
extern KLDTPXBAS_API aio_ostream& aio_cerr;  ///< the standard error, on stderr
/// @}

#endif  // AIO_STDSTREAMS_H
