/// @file TPXBasGenericsLibExport.h
/// The export macro of the generics library.
#ifndef TPXBASGENERICSLIBEXPORT_H
#define TPXBASGENERICSLIBEXPORT_H

/// Marks a class or function as part of the library's interface; everything else is built
/// with hidden visibility.
#define KLDTPXBASGENERICS_API __attribute__((visibility("default")))

#endif  // TPXBASGENERICSLIBEXPORT_H
