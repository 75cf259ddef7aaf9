/// @file TPXBasPrfTrkLibExport.h
/// The export macro of the profiling-tracking library.
#ifndef TPXBASPRFTRKLIBEXPORT_H
#define TPXBASPRFTRKLIBEXPORT_H

/// Marks a class or function as part of the library's interface; everything else is built
/// with hidden visibility.
#define KLDTPXBASPRFTRK_API __attribute__((visibility("default")))

#endif  // TPXBASPRFTRKLIBEXPORT_H
