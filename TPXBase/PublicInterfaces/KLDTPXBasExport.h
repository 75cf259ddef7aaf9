/// @file KLDTPXBasExport.h
/// The one export macro of the library and its platform stand-ins.
#ifndef KLDTPXBASEXPORT_H
#define KLDTPXBASEXPORT_H

/// Marks a class or function as part of a shared library's interface. Everything else is
/// built with hidden visibility, so `nm -D --defined-only` of a library lists its API only.
#define KLDTPXBAS_API __attribute__((visibility("default")))

#endif  // KLDTPXBASEXPORT_H
