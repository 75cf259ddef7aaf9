// TPXBasPrfAnalysis.cpp: the profiling interface, complete and recording nothing.
#include "TPXBasPrfAnalysis.h"

template class TPXBasAtiGlobalSingleton<TPXBasPrfAnalysis>;

TPXBasPrfAnalysis::TPXBasPrfAnalysis() : m_first(0), m_second(0) {}
TPXBasPrfAnalysis::~TPXBasPrfAnalysis() = default;

void TPXBasPrfAnalysis::IterationBegin(int, int, int, int) {}
void TPXBasPrfAnalysis::IterationEnd(int, int, int, int) {}
void TPXBasPrfAnalysis::PhaseStart(int, TPXBasPrfParamList&) {}
void TPXBasPrfAnalysis::PhaseEnd(int, TPXBasPrfParamList&) {}
void TPXBasPrfAnalysis::InfoEvent(int, TPXBasPrfParamList&) {}
void TPXBasPrfAnalysis::WriteIOEvent(const char*, int, int) {}
void TPXBasPrfAnalysis::MarkTime(const char*) {}
void TPXBasPrfAnalysis::RetrieveBlockStart(TPXBasPrfParamList&) {}

void* VANTERA::ProfilingDomains::Solver = nullptr;
void* VANTERA::ProfilingDomains::Eloop = nullptr;
void* VANTERA::ProfilingDomains::Output = nullptr;

VANTERA::ProfilingDomains::ProfilingDomains() = default;
VANTERA::ProfilingDomains::~ProfilingDomains() = default;
void VANTERA::ProfilingDomains::Initialize() {}

// Fortran callers: no exception may reach their frames, so a profiling singleton that
// cannot be made (memory ran out) records nothing, as it would record nothing anyway.
void tpxbasprfiterbegin(int* a, int* b, int* c, int* d) {
  if (a == nullptr || b == nullptr || c == nullptr || d == nullptr) return;
  try {
    TPXBasAtiGlobalSingleton<TPXBasPrfAnalysis>::Instance().IterationBegin(*a, *b, *c, *d);
  } catch (...) {
  }
}

void tpxbasprfiterend(int* a, int* b, int* c, int* d) {
  if (a == nullptr || b == nullptr || c == nullptr || d == nullptr) return;
  try {
    TPXBasAtiGlobalSingleton<TPXBasPrfAnalysis>::Instance().IterationEnd(*a, *b, *c, *d);
  } catch (...) {
  }
}

void tpxbasprfiterbegin_(int* a, int* b, int* c, int* d) { tpxbasprfiterbegin(a, b, c, d); }
void tpxbasprfiterend_(int* a, int* b, int* c, int* d) { tpxbasprfiterend(a, b, c, d); }
