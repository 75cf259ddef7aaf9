/// @file TPXBasPrfAnalysis.h
/// The profiling interface: iterations, phases, I/O and informational
/// events with parameter lists. This build records nothing.
#ifndef TPXBASPRFANALYSIS_H
#define TPXBASPRFANALYSIS_H

#include "KLDTPXBasExport.h"
#include "TPXBasAtiGlobalSingleton.h"
#include "mem_AllocationOperators.h"

/// Parameters of a profiling event. Stores nothing: every list is empty and every read
/// gives a neutral value. Cheap to build on the stack around each event.
class KLDTPXBAS_API TPXBasPrfParamList {
 public:
  TPXBasPrfParamList();
  ~TPXBasPrfParamList();

  /// Empties the list; returns it, so calls chain.
  TPXBasPrfParamList& clear();
  /// @{
  /// Would append value; this build stores nothing. Returns the list, so calls chain.
  TPXBasPrfParamList& add(int value);
  TPXBasPrfParamList& add(double value);
  TPXBasPrfParamList& add(char* text);
  /// @}

  /// @{
  /// 0, 0.0 and "N/A" whatever the index; the text is constant: callers must not modify it.
  int getInt(int index);
  double getDouble(int index);
  char* getString(int index);
  /// @}

  /// @{
  /// Number of values of each kind; always 0.
  int intListLength();
  int doubleListLength();
  int stringListLength();
  /// @}

 private:
  void expandIntList(int value);
  void expandDoubleList(double value);
  void expandStringList(char* text);
};

/// The process-wide profiling analysis, created on first use from any thread
/// (TPXBasAtiGlobalSingleton<TPXBasPrfAnalysis>::Instance()) and destroyed only by that
/// template's Finalize(). Every event operation returns without effect.
class KLDTPXBAS_API TPXBasPrfAnalysis : public TPXBasAtiGlobalSingleton<TPXBasPrfAnalysis> {
 public:
  /// Marks the start of an iteration given by four numbers; records nothing.
  void IterationBegin(int, int, int, int);
  /// Marks the end of an iteration given by four numbers; records nothing.
  void IterationEnd(int, int, int, int);
  /// Marks the start of a phase with its parameters; records nothing.
  void PhaseStart(int, TPXBasPrfParamList&);
  /// Marks the end of a phase with its parameters; records nothing.
  void PhaseEnd(int, TPXBasPrfParamList&);
  /// Records an informational event with its parameters; records nothing here.
  void InfoEvent(int, TPXBasPrfParamList&);
  /// Records an output event on a named file; records nothing here.
  void WriteIOEvent(const char*, int, int);
  /// Records a named point in time; records nothing here.
  void MarkTime(const char*);
  /// Would fill the list with the parameters of the current block; leaves it empty.
  void RetrieveBlockStart(TPXBasPrfParamList&);

 private:
  friend class TPXBasAtiGlobalSingleton<TPXBasPrfAnalysis>;
  TPXBasPrfAnalysis();
  ~TPXBasPrfAnalysis();

  [[maybe_unused]] int m_first;   // reserved
  [[maybe_unused]] int m_second;  // reserved
};

// Hosts use the library's one instantiation, so there is one instance per process.
extern template class TPXBasAtiGlobalSingleton<TPXBasPrfAnalysis>;

namespace VANTERA {

/// Names of the profiling domains; all null in this build.
class KLDTPXBAS_API ProfilingDomains {
 public:
  ProfilingDomains();
  ~ProfilingDomains();
  /// Does nothing.
  static void Initialize();

  static void* Solver;  ///< the Solver domain; null in this build
  static void* Eloop;   ///< the Eloop domain; null in this build
  static void* Output;  ///< the Output domain; null in this build
};

}  // namespace VANTERA

/// Entry points for Fortran callers, also exported with gfortran's trailing underscore:
/// the four values go, in order, to IterationBegin or IterationEnd of the analysis
/// singleton, which the first call creates.
extern "C" {
/// @{
KLDTPXBAS_API void tpxbasprfiterbegin(int* a, int* b, int* c, int* d);
KLDTPXBAS_API void tpxbasprfiterend(int* a, int* b, int* c, int* d);
KLDTPXBAS_API void tpxbasprfiterbegin_(int* a, int* b, int* c, int* d);
KLDTPXBAS_API void tpxbasprfiterend_(int* a, int* b, int* c, int* d);
/// @}
}

#endif  // TPXBASPRFANALYSIS_H
