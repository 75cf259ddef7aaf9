/// @file TPXBasCamSizeRecorder.h
/// Histogram of allocation sizes in power-of-two classes.
#ifndef TPXBASCAMSIZERECORDER_H
#define TPXBASCAMSIZERECORDER_H

#include "KLDTPXBasExport.h"
#include "TPXBasAtiGlobalSingleton.h"
#include "mem_AllocationOperators.h"

#include <cstdio>

class TPXBasCamSizeRecorder;
extern template class KLDTPXBAS_API TPXBasAtiGlobalSingleton<TPXBasCamSizeRecorder>;

/// Counts allocations by size class: class i holds the sizes up to 2^(i+1) (class 0 up to 2),
/// classes 31 to 34 have the bound 0 and class 34 also takes every size above 2^31. A global
/// singleton: TPXBasAtiGlobalSingleton<TPXBasCamSizeRecorder>::Instance(). It locks nothing;
/// callers on several threads bracket their calls with the singleton's Lock()/Unlock().
class KLDTPXBAS_API TPXBasCamSizeRecorder : public TPXBasAtiGlobalSingleton<TPXBasCamSizeRecorder> {
 public:
  enum { kClasses = 35 /**< number of size classes */ };

  /// Counts one allocation of size bytes in its class.
  void Register(unsigned int size);
  /// Writes the histogram to the summary stream; nothing without one.
  void Summary();
  /// Where Summary writes (null: nowhere, the initial state). Not closed by the recorder.
  void SetSummaryFile(FILE* file) { m_file = file; }

  /// Largest size of class cls (0 for classes 31 to 34); cls in [0, kClasses), unchecked.
  unsigned int Bound(int cls) const { return m_bounds[cls]; }
  /// Bytes registered in class cls (wraps past 2^32).
  unsigned int Bytes(int cls) const { return m_bytes[cls]; }
  /// Allocations registered in class cls.
  unsigned int Count(int cls) const { return m_counts[cls]; }
  /// Bytes registered in all classes (wraps past 2^32).
  unsigned int TotalBytes() const { return m_totalBytes; }
  /// Allocations registered in all classes.
  unsigned int TotalCount() const { return m_totalCount; }

 private:
  friend class TPXBasAtiGlobalSingleton<TPXBasCamSizeRecorder>;
  TPXBasCamSizeRecorder();
  ~TPXBasCamSizeRecorder();
  int GetBin(unsigned int size) const;

  unsigned int m_bounds[kClasses];
  unsigned int m_bytes[kClasses];
  unsigned int m_counts[kClasses];
  unsigned int m_totalBytes;
  unsigned int m_totalCount;
  FILE* m_file;
};

#endif  // TPXBASCAMSIZERECORDER_H
