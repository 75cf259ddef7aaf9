/// @file aio_manip.h
/// Format manipulators of the output streams. Each returns its stream, so calls chain:
/// aio_setwidth(out, 5).print_int(42).
#ifndef AIO_MANIP_H
#define AIO_MANIP_H

#include "KLDTPXBasExport.h"
#include "aio_ostream.h"

/// Or's bits into the flags.
KLDTPXBAS_API aio_ostream& aio_setiosflags(aio_ostream& out, int bits);
/// Clears bits of the flags.
KLDTPXBAS_API aio_ostream& aio_resetiosflags(aio_ostream& out, int bits);
/// Sets the precision of floating-point output to p.
KLDTPXBAS_API aio_ostream& aio_setprecision(aio_ostream& out, int p);
/// Width w for the next formatted output only.
KLDTPXBAS_API aio_ostream& aio_setwidth(aio_ostream& out, int w);

#endif  // AIO_MANIP_H
