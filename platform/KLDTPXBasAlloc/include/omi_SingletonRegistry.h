/// @file omi_SingletonRegistry.h
/// The allocation library's registry of process-wide singletons.
#ifndef OMI_SINGLETONREGISTRY_H
#define OMI_SINGLETONREGISTRY_H

#include "KLDTPXBasAllocExport.h"

/// Maps a singleton's type name to its object, so that the host can list what lives for the
/// whole process. Thread-safe. The registry itself is never destroyed, so singletons torn down
/// by the library's unload hook can still remove themselves.
class KLDTPXBASALLOC_API omi_SingletonRegistry {
 public:
  /// The registry, or null while the test control has disabled it.
  static omi_SingletonRegistry* Instance();
  /// Registers object under name, replacing an earlier entry; returns 0.
  int Add(const char* name, void* object);
  /// Removes name; returns 0, or -1 when nothing was registered under it.
  int Remove(const char* name);
  /// The object registered under name, or null.
  void* Find(const char* name) const;

 private:
  omi_SingletonRegistry() = default;
};

#endif  // OMI_SINGLETONREGISTRY_H
