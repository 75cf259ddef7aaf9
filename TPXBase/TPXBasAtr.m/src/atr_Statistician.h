// atr_Statistician.h: counts of the byte strings' allocations, reported at the last finalise.
#ifndef ATR_STATISTICIAN_H
#define ATR_STATISTICIAN_H

/// Collector of string statistics: at most one per process, alive from the module's first
/// initialise (when ATR_SUMMARY exists) to its last finalise. Updated without locks: the
/// counts are exact in a process that uses strings from one thread.
class atr_Statistician {
 public:
  /// bytes 0: a header created alone; otherwise a size-classed block of that capacity.
  void Allocate(int bytes);
  void Extend() { ++m_extensionFailures; }
  /// A header released with the length of its text and the capacity it held (0 for a
  /// separate or borrowed buffer, which then adds nothing to the length and spare sums).
  void Release(int length, int capacity);
  /// Writes the eleven figures to the standard error stream.
  void Report() const;

  /// The process-wide collector, or null while statistics are off.
  static atr_Statistician* Current() { return s_current; }
  static void Start();
  static void Stop();

 private:
  int m_repsCreated;
  int m_stringsCreated;
  int m_extensionFailures;
  int m_active;
  int m_bytesInUse;
  int m_maximumActive;
  int m_maximumBytesInUse;
  float m_lengthSum;
  float m_lengthSquareSum;
  float m_spareSum;
  float m_spareSquareSum;

  static atr_Statistician* s_current;
};

#endif  // ATR_STATISTICIAN_H
