// TPXBasCamSizeRecorder.cpp: power-of-two histogram of allocation sizes.
#include "TPXBasCamSizeRecorder.h"

template class TPXBasAtiGlobalSingleton<TPXBasCamSizeRecorder>;

TPXBasCamSizeRecorder::TPXBasCamSizeRecorder() : m_totalBytes(0), m_totalCount(0), m_file(nullptr) {
  unsigned int bound = 2;
  for (int i = 0; i < kClasses; ++i) {
    m_bounds[i] = bound;
    bound *= 2;  // passes 32 bits after 2^31: the last four bounds are 0
    m_bytes[i] = 0;
    m_counts[i] = 0;
  }
}

TPXBasCamSizeRecorder::~TPXBasCamSizeRecorder() {}

int TPXBasCamSizeRecorder::GetBin(unsigned int size) const {
  for (int i = 0; i < kClasses; ++i)
    if (m_bounds[i] >= size) return i;
  return kClasses - 1;
}

void TPXBasCamSizeRecorder::Register(unsigned int size) {
  int cls = GetBin(size);
  m_bytes[cls] += size;
  ++m_counts[cls];
  m_totalBytes += size;
  ++m_totalCount;
}

void TPXBasCamSizeRecorder::Summary() {
  if (m_file == nullptr) return;
  std::fprintf(m_file, "BinSize -- TotalSize -- Size Percentage -- TotalNum -- Num Percentage\n");
  for (int i = 0; i < kClasses; ++i) {
    unsigned int b = m_bounds[i];
    char label[32];
    if (b < 1024u)
      std::snprintf(label, sizeof(label), "%d Bytes", static_cast<int>(b));
    else if (b < 1048576u)
      std::snprintf(label, sizeof(label), "%d KB", static_cast<int>(b / 1024u));
    else if (b < 1073741824u)
      std::snprintf(label, sizeof(label), "%d MB", static_cast<int>(b / 1048576u));
    else
      std::snprintf(label, sizeof(label), "%d GB", static_cast<int>(b / 1073741824u));
    double bytes = m_bytes[i];
    double count = m_counts[i];
    double byteShare = m_totalBytes != 0 ? bytes / m_totalBytes : bytes;
    double countShare = m_totalCount != 0 ? count / m_totalCount : count;
    std::fprintf(m_file, "%s -- %f -- %f -- %f -- %f\n", label, bytes, byteShare, count,
                 countShare);
  }
  std::fprintf(m_file, "\n\n");
}
