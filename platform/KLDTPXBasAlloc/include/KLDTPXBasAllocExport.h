/// @file KLDTPXBasAllocExport.h
/// The export macro of the allocation library.
#ifndef KLDTPXBASALLOCEXPORT_H
#define KLDTPXBASALLOCEXPORT_H

/// Marks a class or function as part of the library's interface; everything else is built
/// with hidden visibility.
#define KLDTPXBASALLOC_API __attribute__((visibility("default")))

#endif  // KLDTPXBASALLOCEXPORT_H
