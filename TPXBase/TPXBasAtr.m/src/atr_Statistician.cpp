// atr_Statistician.cpp: the string statistics collector and its report.
#include "atr_Statistician.h"

#include "mem_Alloc.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <new>

atr_Statistician* atr_Statistician::s_current = nullptr;

void atr_Statistician::Allocate(int bytes) {
  if (bytes != 0)
    ++m_stringsCreated;
  else
    ++m_repsCreated;
  if (++m_active > m_maximumActive) m_maximumActive = m_active;
  m_bytesInUse += bytes;
  if (m_bytesInUse > m_maximumBytesInUse) m_maximumBytesInUse = m_bytesInUse;
}

void atr_Statistician::Release(int length, int capacity) {
  if (capacity != 0) {
    const float len = static_cast<float>(length);
    const float spare = static_cast<float>(capacity - length);
    m_lengthSum += len;
    m_lengthSquareSum += len * len;
    m_spareSum += spare;
    m_spareSquareSum += spare * spare;
  }
  m_bytesInUse -= capacity;
  --m_active;
}

namespace {

// Square root in double precision of a single-precision variance; rounding can make a zero
// variance come out a hair below zero, which is reported as 0 rather than as "nan".
float Sigma(float squareSum, float inv, float mean) {
  const float variance = squareSum * inv - mean * mean;
  return variance > 0.0f ? static_cast<float>(std::sqrt(static_cast<double>(variance))) : 0.0f;
}

}  // namespace

void atr_Statistician::Report() const {
  const int k = m_stringsCreated;
  const float inv = static_cast<float>(k != 0 ? 1.0 / k : 0.0);
  const float meanLength = m_lengthSum * inv;
  const float sigmaLength = Sigma(m_lengthSquareSum, inv, meanLength);
  const float meanSpare = m_spareSum * inv;
  const float sigmaSpare = Sigma(m_spareSquareSum, inv, meanSpare);
  std::fprintf(stderr,
               "%8d Reps Created\n%8d Strings Created\n%8d Extension Failures\n%8d Active\n"
               "%8d Bytes in use\n%8d Maximum active\n%8d Maximum bytes in use\n"
               "%8.1f Mean length\n%8.1f Sigma length\n%8.1f Mean spare\n%8.1f Sigma spare\n",
               m_repsCreated, m_stringsCreated, m_extensionFailures, m_active, m_bytesInUse,
               m_maximumActive, m_maximumBytesInUse, static_cast<double>(meanLength),
               static_cast<double>(sigmaLength), static_cast<double>(meanSpare),
               static_cast<double>(sigmaSpare));
}

void atr_Statistician::Start() {
  if (s_current != nullptr || std::getenv("ATR_SUMMARY") == nullptr) return;
  void* block = mem_OperatorNewTinyThrow(sizeof(atr_Statistician));
  s_current = new (block) atr_Statistician();  // value-initialised: every field 0
}

void atr_Statistician::Stop() {
  atr_Statistician* collector = s_current;
  if (collector == nullptr) return;
  collector->Report();
  s_current = nullptr;
  mem_Free(collector);
}
