/// @file mem_ToOs.h
/// Where the allocation library keeps the process's OS-string converter.
#ifndef MEM_TOOS_H
#define MEM_TOOS_H

#include "KLDTPXBasAllocExport.h"

class TPXToOsBase;

/// Holds the converter that turns the library's strings into the operating system's forms.
/// The converter is owned by whoever registers it; registering again replaces it.
class KLDTPXBASALLOC_API mem_ToOs {
 public:
  /// Makes converter the process's converter, replacing the one registered before; null
  /// removes it. The caller keeps ownership and keeps converter alive while registered.
  static void Register(TPXToOsBase* converter);
  /// The converter registered last, or null.
  static TPXToOsBase* Registered();
};

#endif  // MEM_TOOS_H
