/// @file PV0COREExport.h
/// The export macro of PV0CORE, the fatal-error service.
#ifndef PV0COREEXPORT_H
#define PV0COREEXPORT_H

/// Marks a class or function as part of the library's interface; everything else is built
/// with hidden visibility.
#define PV0CORE_API __attribute__((visibility("default")))

#endif  // PV0COREEXPORT_H
