/// @file DXLSysTSExport.h
/// The export macro of DXLSysTS, the platform string classes.
#ifndef DXLSYSTSEXPORT_H
#define DXLSYSTSEXPORT_H

/// Marks a class or function as part of the library's interface; everything else is built
/// with hidden visibility.
#define DXLSYSTS_API __attribute__((visibility("default")))

#endif  // DXLSYSTSEXPORT_H
